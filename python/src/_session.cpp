// quil_linear._core.read_session: a recorded session read by quil-retarget's own readers
// (tools/session_file.cpp, compiled into the extension), so Python accepts exactly the files
// the tool accepts, with the same messages.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "session_file.h"

namespace py = pybind11;
using namespace quil::retarget;

namespace {

// A vector's doubles as an array that owns them, without a copy.
py::array_t<double> adopt(std::vector<double>&& values, std::vector<py::ssize_t> shape) {
    auto* held = new std::vector<double>(std::move(values));
    py::capsule owner(held, [](void* p) { delete static_cast<std::vector<double>*>(p); });
    return py::array_t<double>(shape, held->data(), owner);
}

}  // namespace

void bind_session(py::module_& m) {
    m.def(
        "read_session",
        [](const std::string& path, const std::string& format, const std::string& time_unit) {
            std::optional<TimeUnit> unit;
            if (!time_unit.empty()) {
                TimeUnit u;
                if (!parse_time_unit(time_unit, u))
                    throw py::value_error("time_unit must be \"s\", \"ms\" or \"us\" (or None to detect it); got \"" +
                                          time_unit + "\"");
                unit = u;
            }
            if (!format.empty() && format != "csv" && format != "f64" && format != "npy")
                throw py::value_error("format must be \"csv\", \"f64\" or \"npy\" (or None: by the extension); got \"" +
                                      format + "\"");
            if (path.find('\0') != std::string::npos) throw py::value_error("a path cannot contain a NUL character");
            const Format f = format.empty() ? format_of_path(path)
                             : format == "f64" ? Format::f64 : format == "npy" ? Format::npy : Format::csv;
            SessionData s;
            std::string error;
            bool io_error = false, ok;
            {
                py::gil_scoped_release released;
                InputFile in(path);
                ok = read_session(in, f, unit, s, error, io_error);
            }
            const std::uint64_t rows = s.rows();
            py::dict d;
            d["path"] = s.path;
            d["format"] = format_name(f);
            d["readings"] = adopt(std::move(s.readings), {static_cast<py::ssize_t>(rows), 12});
            if (s.info.has_time) {
                d["times"] = adopt(s.seconds(), {static_cast<py::ssize_t>(rows)});
                d["time_unit"] = time_unit_name(s.time_unit->unit);
                d["time_name"] = s.info.time_name;
            } else {
                d["times"] = py::none();
                d["time_unit"] = py::none();
                d["time_name"] = py::none();
            }
            py::list names;
            for (const std::string& n : s.info.input_names) names.append(n);
            d["names"] = names;
            py::list notes;
            for (const std::string& n : s.notes) {
                const bool about_time = s.time_unit && n == s.time_unit->note;
                notes.append(about_time ? n + " (time_unit=\"s\", \"ms\" or \"us\" to say otherwise)" : n);
            }
            d["notes"] = notes;
            d["error"] = ok ? py::object(py::none()) : py::object(py::str(error));
            d["io_error"] = io_error;
            return d;
        },
        py::arg("path"), py::arg("format"), py::arg("time_unit"),
        "Reads a whole session; see quil_linear.read_session.");
}
