// quil_linear._core: the hand API of quil_linear/hand.hpp for Python and NumPy.
//
// A Python Hand owns one quil_linear::Hand (one handle, one glove's memory). Readings of any
// real dtype and layout are converted once to C-contiguous float64 and mapped in one
// quil_hand_map_n call; a batch runs with the GIL released, so hands of different gloves map
// on different threads at once. A handle must not be entered by two threads at a time, so each
// Hand carries a mutex that every call on it takes: two Python threads sharing one Hand are
// serialised instead of racing on its pinch latches.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "quil_linear/hand.hpp"

#if defined(__FAST_MATH__)
#error "quil_linear must be built without -ffast-math: the hands' results are bit-exact"
#endif

namespace py = pybind11;
using quil_linear::Dropout;

namespace {

using npy = py::detail::npy_api;

Dropout dropout_from(const std::string& name) {
    const int policy = quil_dropout_from_name(name.c_str());
    if (policy >= 0) return static_cast<Dropout>(policy);
    throw py::value_error(std::string("dropout must be \"") + quil_dropout_name(QUIL_DROPOUT_PASS) +
                          "\" (non-finite readings go to the hand as they are) or \"" + quil_dropout_name(QUIL_DROPOUT_HOLD) +
                          "\" (a dropped channel keeps its last finite reading); got \"" + name + "\"");
}

py::tuple roles_of(const quil_hand_info& info) {
    py::tuple roles(QUIL_TARGETS);
    for (std::size_t s = 0; s < QUIL_TARGETS; ++s) roles[s] = py::str(info.slot_roles[s]);
    return roles;
}

// The shape of the readings as "(a, b)", for error messages.
std::string shape_text(const py::array& a) {
    std::string s = "(";
    for (py::ssize_t d = 0; d < a.ndim(); ++d) s += (d ? ", " : "") + std::to_string(a.shape(d));
    return s + (a.ndim() == 1 ? ",)" : ")");
}

// The readings as an ndarray, whatever sequence they came as; NumPy's own error (a ragged
// list, say) is passed on as it is.
py::array as_ndarray(py::handle readings) {
    if (py::isinstance<py::array>(readings)) return py::reinterpret_borrow<py::array>(readings);
    PyObject* a = npy::get().PyArray_FromAny_(readings.ptr(), nullptr, 0, 0, npy::NPY_ARRAY_ENSUREARRAY_, nullptr);
    if (!a) throw py::error_already_set();
    return py::reinterpret_steal<py::array>(a);
}

// Readings as the C-contiguous, aligned, native float64 rows the hand reads. Only real numbers
// are readings: booleans, complex numbers, strings, objects and dates are refused rather than
// silently converted into finger angles.
using Rows = py::array_t<double, py::array::c_style | py::array::forcecast | npy::NPY_ARRAY_ALIGNED_>;

Rows as_rows(const py::array& a) {
    const char kind = a.dtype().kind();
    if (kind != 'f' && kind != 'i' && kind != 'u')
        throw py::type_error("readings must be real numbers (an integer or floating dtype); got dtype " +
                             std::string(py::str(a.dtype())));
    const bool one = a.ndim() == 1 && a.shape(0) == QUIL_READINGS;
    const bool many = a.ndim() == 2 && a.shape(1) == QUIL_READINGS;
    if (!one && !many)
        throw py::value_error("readings must have shape (12,) for one sample or (N, 12) for N samples; got shape " +
                              shape_text(a));
    return Rows::ensure(a);
}

// A profile's wiring as quil_linear.Profile._wiring() gives it: (hand, hold_after, safe_after,
// [(name, slot, scale, offset, min, max, safe, kind, alpha, min_cutoff, beta, d_cutoff,
// reject_above, max_rate), ...]), absent bounds as +inf and a default safe as NaN.
struct Wiring {
    std::string hand;
    std::vector<std::string> names;
    std::vector<quil_output> outputs;
    quil_profile profile;

    explicit Wiring(const py::tuple& w) {
        if (w.size() != 4) throw py::type_error("a profile's wiring is (hand, hold_after, safe_after, outputs)");
        hand = w[0].cast<std::string>();
        quil_profile_init(&profile);
        profile.hold_after = w[1].cast<double>();
        profile.safe_after = w[2].cast<double>();
        const py::list outs = w[3].cast<py::list>();
        names.reserve(outs.size());
        for (const py::handle& item : outs) {
            const py::tuple o = item.cast<py::tuple>();
            if (o.size() != 14) throw py::type_error("an output's wiring has 14 fields");
            names.push_back(o[0].cast<std::string>());
            quil_output out;
            quil_output_init(&out);
            out.slot = o[1].cast<int>();
            out.scale = o[2].cast<double>();
            out.offset = o[3].cast<double>();
            out.min = o[4].cast<double>();
            out.max = o[5].cast<double>();
            out.safe = o[6].cast<double>();
            out.smoothing.kind = o[7].cast<int>();
            out.smoothing.alpha = o[8].cast<double>();
            out.smoothing.min_cutoff = o[9].cast<double>();
            out.smoothing.beta = o[10].cast<double>();
            out.smoothing.d_cutoff = o[11].cast<double>();
            out.reject_above = o[12].cast<double>();
            out.max_rate = o[13].cast<double>();
            outputs.push_back(out);
        }
        for (std::size_t i = 0; i < outputs.size(); ++i) outputs[i].name = names[i].c_str();
        profile.hand = hand.c_str();
        profile.output_count = outputs.size();
        profile.outputs = outputs.data();
    }
};

// None when the library takes the wiring, else (output index or -1, field, problem).
py::object profile_fault(const py::tuple& wiring) {
    const Wiring w(wiring);
    quil_profile_fault fault{};
    if (quil_profile_check(&w.profile, &fault) == QUIL_OK) return py::none();
    return py::make_tuple(fault.output, std::string(fault.field), std::string(fault.problem));
}

using Times = py::array_t<double, py::array::c_style | py::array::forcecast | npy::NPY_ARRAY_ALIGNED_>;

class PyHand {
  public:
    PyHand(const std::string& name, const std::string& dropout, const py::object& profile = py::none())
        : hand_(open(name, dropout)) {
        if (!profile.is_none()) set_profile(profile);
    }

    void set_profile(const py::object& profile) {
        if (profile.is_none()) {
            const auto lock = acquire();
            hand_.clear_profile();
            profile_ = py::none();
            return;
        }
        if (!py::hasattr(profile, "_wiring"))
            throw py::type_error("profile must be a quil_linear.Profile (Profile.load(path)) or None");
        const Wiring w(profile.attr("_wiring")().cast<py::tuple>());
        const auto lock = acquire();
        try {
            hand_.set_profile(w.profile);
        } catch (const quil_linear::Error& e) {
            std::string what = e.what();
            const py::object source = profile.attr("source");
            if (!source.is_none()) what = py::str(source).cast<std::string>() + ": " + what;
            throw py::value_error(what);
        }
        profile_ = profile;
    }

    py::object profile() { return profile_; }

    py::tuple output_names() {
        const auto lock = acquire();
        const std::vector<std::string> names = hand_.output_names();
        py::tuple t(names.size());
        for (std::size_t i = 0; i < names.size(); ++i) t[i] = py::str(names[i]);
        return t;
    }

    py::dict counters() {
        quil_counters c;
        {
            const auto lock = acquire();
            c = hand_.counters();
        }
        py::dict d;
        d["samples"] = c.samples;
        d["held"] = c.held;
        d["rejected"] = c.rejected;
        d["limited"] = c.limited;
        d["stale"] = c.stale;
        return d;
    }

    py::tuple tick(double t) {
        if (profile_.is_none()) throw py::value_error("tick needs a Hand with a profile");
        py::array_t<double> out(static_cast<py::ssize_t>(hand_.output_count()));
        int rc;
        {
            const auto lock = acquire();
            rc = quil_hand_tick(hand_.get(), t, out.mutable_data());
        }
        return py::make_tuple(out, rc == 1);
    }

    // Readings with their times through the wiring profile (or, without one, the targets).
    py::array map_timed(const py::object& readings, const py::object& times) {
        Rows rows = as_rows(as_ndarray(readings));
        const bool one = rows.ndim() == 1;
        const std::size_t n = one ? 1 : static_cast<std::size_t>(rows.shape(0));
        if (times.is_none())
            throw py::value_error("a Hand with a profile maps samples with their times: map(readings, times=...) "
                                  "with one time in seconds per sample");
        Times ts = Times::ensure(as_ndarray(times));
        if (!ts) throw py::error_already_set();
        const bool shape_ok = one ? ts.size() == 1 && ts.ndim() <= 1 : ts.ndim() == 1 && static_cast<std::size_t>(ts.shape(0)) == n;
        if (!shape_ok)
            throw py::value_error("times must hold one time per sample: " + std::string(one ? "a number" : "shape (N,)") +
                                  " for readings of shape " + shape_text(rows) + "; got shape " + shape_text(ts));
        const std::size_t width = hand_.output_count();
        py::array out = one ? py::array_t<double>(static_cast<py::ssize_t>(width))
                            : py::array_t<double>({static_cast<py::ssize_t>(n), static_cast<py::ssize_t>(width)});
        double* o = static_cast<double*>(out.mutable_data());
        const double* in = rows.data();
        const double* tt = ts.data();
        py::gil_scoped_release released;
        const std::lock_guard<std::mutex> lock(mutex_);
        quil_hand_map_n_at(hand_.get(), n, tt, in, o);
        return out;
    }

    const quil_hand_info& info() const { return *quil_hand_about(hand_.get()); }

    py::array map(const py::object& readings, const py::object& times, const py::object& out) {
        if (!profile_.is_none() || !times.is_none()) {
            if (!out.is_none()) throw py::value_error("out is for the targets of a Hand without a profile and times");
            return map_timed(readings, times);
        }
        Rows rows = as_rows(as_ndarray(readings));
        const std::size_t n = rows.ndim() == 1 ? 1 : static_cast<std::size_t>(rows.shape(0));
        py::array targets = out.is_none() ? new_targets(rows) : caller_targets(out, rows);
        double* t = static_cast<double*>(targets.mutable_data());
        // The hand writes a sample's targets while later samples' readings are still to be read,
        // so readings that share memory with `out` are copied first.
        const auto r = reinterpret_cast<std::uintptr_t>(rows.data());
        const auto tb = reinterpret_cast<std::uintptr_t>(t);
        if (r < tb + n * QUIL_TARGETS * sizeof(double) && tb < r + n * QUIL_READINGS * sizeof(double))
            rows = Rows::ensure(py::array(rows.attr("copy")()));
        const double* in = rows.data();
        if (rows.ndim() == 1) {
            const auto lock = acquire();
            quil_hand_map(hand_.get(), in, t);
        } else {
            // The arrays stay referenced by `rows` and `targets` while the GIL is released.
            py::gil_scoped_release released;
            const std::lock_guard<std::mutex> lock(mutex_);
            quil_hand_map_n(hand_.get(), n, in, t);
        }
        return targets;
    }

    void reset() {
        const auto lock = acquire();
        hand_.reset();
    }

    std::string dropout() {
        const auto lock = acquire();
        return quil_linear::dropout_name(hand_.dropout());
    }

    void set_dropout(const std::string& name) {
        const Dropout d = dropout_from(name);
        const auto lock = acquire();
        hand_.set_dropout(d);
    }

    py::dict memory() {
        quil_hand_memory m;
        {
            const auto lock = acquire();
            m = hand_.memory();
        }
        py::tuple latches(4), held(QUIL_READINGS);
        for (std::size_t i = 0; i < 4; ++i) latches[i] = py::bool_(m.pinch_latches[i] != 0);
        for (std::size_t i = 0; i < QUIL_READINGS; ++i) held[i] = py::float_(m.held_readings[i]);
        py::dict d;
        d["pinch_latches"] = latches;
        d["thumb_references"] = py::make_tuple(m.thumb_references[0], m.thumb_references[1]);
        d["held_readings"] = held;
        d["dropout"] = quil_dropout_name(m.dropout);
        return d;
    }

    py::bytes state() {
        std::vector<unsigned char> buffer;
        std::size_t size;
        {
            const auto lock = acquire();
            buffer.resize(quil_hand_state_size_of(hand_.get()));
            size = quil_hand_save_state(hand_.get(), buffer.data(), buffer.size());
        }
        return py::bytes(reinterpret_cast<const char*>(buffer.data()), size);
    }

    void restore(const py::object& state) {
        if (!PyObject_CheckBuffer(state.ptr()) || py::isinstance<py::str>(state))
            throw py::type_error("a hand state is bytes, as Hand.state gives it; got " +
                                 std::string(py::str(py::type::of(state).attr("__name__"))));
        const py::buffer_info bytes = py::reinterpret_borrow<py::buffer>(state).request();
        if (!is_contiguous(bytes)) throw py::value_error("a hand state must be one contiguous run of bytes");
        const auto lock = acquire();
        try {
            hand_.restore(bytes.ptr, static_cast<std::size_t>(bytes.size * bytes.itemsize));
        } catch (const quil_linear::Error& e) {
            throw py::value_error(e.what());
        }
    }

    // A new Hand of the same hand carrying this one's memory and dropout policy.
    std::unique_ptr<PyHand> copy() {
        const py::bytes s = state();
        auto twin = std::make_unique<PyHand>(info().name, "pass", profile_);
        twin->restore(s);
        return twin;
    }

    std::string repr() {
        const quil_hand_info& i = info();
        return std::string("<quil_linear.Hand '") + i.name + "' " + i.version + ", " +
               (i.keeps_state ? "keeps state between samples" : "no state between samples") + ", dropout='" +
               dropout() + "'>";
    }

  private:
    static py::array new_targets(const Rows& rows) {
        if (rows.ndim() == 1) return py::array_t<double>(QUIL_TARGETS);
        return py::array_t<double>({rows.shape(0), py::ssize_t{QUIL_TARGETS}});
    }

    // The caller's array for the targets: float64, C-contiguous, aligned, writeable, and the
    // shape the readings ask for. Nothing is converted: the targets land where the caller said.
    static py::array caller_targets(py::handle out, const Rows& rows) {
        if (!py::isinstance<py::array>(out)) throw py::type_error("out must be a NumPy array of float64");
        const auto a = py::reinterpret_borrow<py::array>(out);
        if (!npy::get().PyArray_EquivTypes_(a.dtype().ptr(), py::dtype::of<double>().ptr()))
            throw py::type_error("out must be of dtype float64 in native byte order; got " + std::string(py::str(a.dtype())));
        const bool shape_ok = rows.ndim() == 1 ? a.ndim() == 1 && a.shape(0) == QUIL_TARGETS
                                               : a.ndim() == 2 && a.shape(0) == rows.shape(0) && a.shape(1) == QUIL_TARGETS;
        if (!shape_ok) {
            const std::string want = rows.ndim() == 1 ? "(24,)" : "(" + std::to_string(rows.shape(0)) + ", 24)";
            throw py::value_error("out must have shape " + want + " for these readings; got " + shape_text(a));
        }
        const int flags = py::detail::array_proxy(a.ptr())->flags;
        if (!(flags & npy::NPY_ARRAY_C_CONTIGUOUS_) || !(flags & npy::NPY_ARRAY_ALIGNED_) || !a.writeable())
            throw py::value_error("out must be C-contiguous, aligned and writeable");
        return a;
    }

    static quil_linear::Hand open(const std::string& name, const std::string& dropout) {
        const Dropout d = dropout_from(dropout);
        // A name with a NUL would be cut short at it and could open a hand that was not asked for.
        if (name.find('\0') != std::string::npos) throw py::value_error("a hand name cannot contain a NUL character");
        try {
            return quil_linear::Hand(name, d);
        } catch (const quil_linear::Error& e) {
            throw py::value_error(e.what());
        }
    }

    static bool is_contiguous(const py::buffer_info& b) {
        py::ssize_t expect = b.itemsize;
        for (py::ssize_t d = b.ndim - 1; d >= 0; --d) {
            if (b.shape[d] != 1 && b.strides[d] != expect) return false;
            expect *= b.shape[d];
        }
        return true;
    }

    // Takes the Hand's mutex while holding the GIL. If another thread is inside a batch on this
    // Hand (it runs without the GIL), wait for it with the GIL released, so that the batch's
    // thread and every other Python thread keep going.
    std::unique_lock<std::mutex> acquire() {
        std::unique_lock<std::mutex> lock(mutex_, std::try_to_lock);
        if (!lock.owns_lock()) {
            py::gil_scoped_release released;
            lock.lock();
        }
        return lock;
    }

    quil_linear::Hand hand_;
    std::mutex mutex_;
    py::object profile_ = py::none();
};

}  // namespace

void bind_session(py::module_& m);  // _session.cpp

PYBIND11_MODULE(_core, m) {
    m.doc() = "The compiled hand API of quil_linear; use the quil_linear package.";

    m.def("version", [] { return std::string(quil_linear_version()); },
          "The library's version, \"MAJOR.MINOR.PATCH\".");

    m.def("catalogue", [] {
        py::list hands;
        for (std::size_t i = 0; i < quil_hand_count(); ++i) {
            const quil_hand_info& h = *quil_hand_at(i);
            hands.append(py::make_tuple(h.name, h.version, h.keeps_state != 0, h.persistent_buffer != 0, roles_of(h)));
        }
        return hands;
    }, "Every hand as (name, version, keeps_state, persistent_buffer, slot_roles), in catalogue order.");

    m.def("slot_facts", [](const std::string& name) {
        const quil_hand_info* h = quil_hand_find(name.c_str());
        if (!h) throw py::value_error("unknown hand \"" + name + "\"");
        py::list slots;
        for (std::size_t s = 0; s < QUIL_TARGETS; ++s) {
            const quil_slot_info& f = *quil_hand_slot(h, s);
            py::list follows, moved_by;
            for (int src : f.follows)
                if (src >= 0) follows.append(src);
            for (int r = 0; r < QUIL_READINGS; ++r)
                if ((f.moved_by >> r) & 1u) moved_by.append(r);
            slots.append(py::make_tuple(s, f.role, quil_slot_kind_name(f.kind), py::tuple(follows), f.relation,
                                        f.departs, f.value, f.sign, py::make_tuple(f.range_min, f.range_max),
                                        py::tuple(moved_by), f.meaning, f.negative_zero != 0));
        }
        return slots;
    }, py::arg("name"), "The 24 slots of a hand as tuples in the order of quil_linear.Slot.");

    m.def("reading_facts", [] {
        py::list readings;
        for (std::size_t r = 0; r < QUIL_READINGS; ++r) {
            const quil_reading_info& i = *quil_reading(r);
            py::list users;
            for (std::size_t h = 0; h < quil_hand_count(); ++h)
                if (quil_hand_uses_reading(quil_hand_at(h), r)) users.append(quil_hand_at(h)->name);
            readings.append(py::make_tuple(r, i.name, i.finger, i.motion, i.unit, i.meaning, py::tuple(users)));
        }
        return readings;
    }, "The twelve readings as tuples in the order of quil_linear.Reading.");

    m.def("suggest", [](const std::string& name, std::size_t count) {
        py::list names;
        for (std::string_view n : quil_linear::suggest(name, count)) names.append(py::str(n.data(), n.size()));
        return names;
    }, py::arg("name"), py::arg("count") = 3, "The names of the hands closest to `name`, best first.");

    m.attr("STATE_CAPACITY") = QUIL_HAND_STATE_CAPACITY;
    m.attr("DROPOUTS") = py::make_tuple(quil_dropout_name(QUIL_DROPOUT_PASS), quil_dropout_name(QUIL_DROPOUT_HOLD));
    bind_session(m);

    m.def("profile_fault", &profile_fault, py::arg("wiring"),
          "None when the library takes a profile's wiring, else (output index or -1, field, problem).");

    py::class_<PyHand>(m, "Hand", R"doc(
One robot hand driven by one glove, with its own memory from sample to sample.

Hand(name, dropout="pass", profile=None)

name     a hand of quil_linear.hands(), exactly or ignoring case; an unknown name raises
         ValueError naming the closest hands.
dropout  what the hand does with a NaN or infinite reading, as a glove sends when a channel
         drops out: "pass" gives it to the hand as it is (exactly what the C export does),
         "hold" keeps the channel's last finite reading instead.
profile  a quil_linear.Profile (Profile.load(path)): map(readings, times=...) then gives the
         hand driver's commands, named by output_names, after the library's safety stage
         (smoothing, jump rejection, rate limit, clip, stall). ValueError for a profile of
         another hand.

Open one Hand per glove and feed it the samples in time order: hands that keep state remember
a pinch between samples. copy.copy and pickle carry that memory, so a session can move to
another process or machine and carry on exactly where it was.
)doc")
        .def(py::init<const std::string&, const std::string&, const py::object&>(), py::arg("name"),
             py::arg("dropout") = "pass", py::arg("profile") = py::none())
        .def("map", &PyHand::map, py::arg("readings"), py::arg("times") = py::none(), py::arg("out") = py::none(), R"doc(
Maps glove readings to joint targets, in order, through the hand's memory.

readings  12 readings x0..x11 of one sample (shape (12,)) -> targets of shape (24,), or N
          samples (shape (N, 12)) -> targets of shape (N, 24). Any integer or floating dtype
          and any memory layout. A batch runs without the GIL.
out       where to write the targets: a C-contiguous float64 array of that shape (a reused
          buffer, a memory-mapped .npy file). By default a new array.

Returns the targets (`out` when given). Raises ValueError for any other shape and TypeError
for non-real dtypes.

With a profile (Hand(name, profile=...)), `times` is required: one time in seconds per sample
(a number for one sample, shape (N,) for N), and the result is the profile's commands, shape
(outputs,) or (N, outputs), named by output_names, after the safety stage.
)doc")
        .def_property("profile", &PyHand::profile, &PyHand::set_profile,
                      "The Hand's quil_linear.Profile, or None for the 24 targets. Setting one starts its safety stage "
                      "afresh.")
        .def_property_readonly("output_names", &PyHand::output_names,
                               "The names of what map gives per sample: the profile's outputs, or the 24 slot roles.")
        .def_property_readonly("counters", &PyHand::counters,
                               "What the safety stage did: samples, held, rejected, limited (samples) and stale "
                               "(ticks), as a dict.")
        .def("tick", &PyHand::tick, py::arg("t"),
             "The watchdog at time t without a sample: (commands, stale). Needs a profile.")
        .def("reset", &PyHand::reset,
             "Back to the start-up state: pinch latches open, references and held readings 0. Keeps the dropout policy.")
        .def_property_readonly("memory", &PyHand::memory, R"doc(
What the hand remembers between samples, to look at (a new dict each time):

pinch_latches     4 bools: [0] the index pinch, [1] the middle pinch is latched; no hand
                  latches [2] or [3]
thumb_references  the 2 thumb references of the hands that keep them, else 0.0
held_readings     per reading x0..x11, the last finite one seen (0.0 before the first): what
                  dropout="hold" sends in place of a NaN
dropout           "pass" or "hold"

Hand.state holds the same, as bytes to restore from.
)doc")
        .def_property_readonly("state", &PyHand::state,
                               "The hand's memory and dropout policy as a small portable bytes string, for restore().")
        .def("restore", &PyHand::restore, py::arg("state"),
             "Carries on from a `state` of a Hand of the same hand. ValueError for a state of another hand or a "
             "damaged one (the hand is then unchanged).")
        .def_property("dropout", &PyHand::dropout, &PyHand::set_dropout,
                      "\"pass\" or \"hold\": what the hand does with a NaN or infinite reading from the next sample on.")
        .def_property_readonly("name", [](PyHand& h) { return std::string(h.info().name); })
        .def_property_readonly("version", [](PyHand& h) { return std::string(h.info().version); },
                               "What the hand's C export <name>_GetVersion() answers.")
        .def_property_readonly("keeps_state", [](PyHand& h) { return h.info().keeps_state != 0; },
                               "True when the hand remembers pinches or thumb references between samples.")
        .def_property_readonly("slot_roles", [](PyHand& h) { return roles_of(h.info()); },
                               "What the hand's rules drive in each of the 24 output slots.")
        .def("__repr__", &PyHand::repr)
        .def("__copy__", &PyHand::copy)
        .def("__deepcopy__", [](PyHand& h, py::handle) { return h.copy(); }, py::arg("memo"))
        .def(py::pickle([](PyHand& h) { return py::make_tuple(std::string(h.info().name), h.state(), h.profile()); },
                        [](const py::tuple& t) {
                            if (t.size() != 2 && t.size() != 3) throw py::value_error("not a pickled quil_linear.Hand");
                            auto hand = std::make_unique<PyHand>(t[0].cast<std::string>(), "pass",
                                                                 t.size() == 3 ? py::object(t[2]) : py::none());
                            hand->restore(t[1]);
                            return hand;
                        }));
}
