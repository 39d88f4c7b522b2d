// quil_linear hand API for C++17: a header-only wrapper over quil_linear/hand.h.
//
//     quil_linear::Hand hand("RUIYAN_RY_H15", quil_linear::Dropout::hold);
//     const quil_linear::Targets t = hand.map({0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110});
//
// A Hand owns one handle: move-only, closed when it goes out of scope. Everything the C header
// says about exactness, memory and threads holds here: one Hand per glove, one thread at a time
// per Hand, any number of Hands on any threads. Only the constructor allocates (and
// state()/the vector-returning map); mapping never throws.
#ifndef QUIL_LINEAR_HAND_HPP
#define QUIL_LINEAR_HAND_HPP

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "quil_linear/hand.h"

namespace quil_linear {

using Readings = std::array<double, QUIL_READINGS>;  // x0..x11 of one glove sample
using Targets = std::array<double, QUIL_TARGETS>;    // the hand's 24 joint targets

// What a Hand does with a non-finite reading (see QUIL_DROPOUT_PASS and QUIL_DROPOUT_HOLD).
enum class Dropout : int { pass = QUIL_DROPOUT_PASS, hold = QUIL_DROPOUT_HOLD };

// "pass" or "hold" (quil_dropout_name).
inline const char* dropout_name(Dropout policy) noexcept { return quil_dropout_name(static_cast<int>(policy)); }

// A failed call: an unknown hand name, or a saved state that does not fit. code() is the
// QUIL_E_... code, or 0 for an unknown name.
class Error : public std::runtime_error {
  public:
    Error(int code, const std::string& what) : std::runtime_error(what), code_(code) {}
    int code() const noexcept { return code_; }

  private:
    int code_;
};

// A hand of the catalogue, viewing the library's own strings.
struct HandInfo {
    std::string_view name;
    std::string_view version;
    bool keeps_state;
    bool persistent_buffer;
    std::array<std::string_view, QUIL_TARGETS> slot_roles;
    // What each slot is and does (quil_hand_slot): kind, a follower's relation, the value it is
    // held at, its sign, range and the readings that move it. The library's own records.
    std::array<const quil_slot_info*, QUIL_TARGETS> slots;

    explicit HandInfo(const quil_hand_info& i)
        : name(i.name), version(i.version), keeps_state(i.keeps_state != 0),
          persistent_buffer(i.persistent_buffer != 0), slot_roles(), slots() {
        for (std::size_t s = 0; s < slot_roles.size(); ++s) {
            slot_roles[s] = i.slot_roles[s];
            slots[s] = quil_hand_slot(&i, s);
        }
    }
};

// The twelve glove readings x0..x11 as the hands read them (quil_reading): name, finger, motion,
// unit and what the hands do with each.
inline std::array<const quil_reading_info*, QUIL_READINGS> readings() {
    std::array<const quil_reading_info*, QUIL_READINGS> all{};
    for (std::size_t r = 0; r < all.size(); ++r) all[r] = quil_reading(r);
    return all;
}

// Every hand the library serves, in catalogue order.
inline std::vector<HandInfo> hands() {
    std::vector<HandInfo> all;
    for (std::size_t i = 0; i < quil_hand_count(); ++i) all.emplace_back(*quil_hand_at(i));
    return all;
}

// The names of the `count` hands closest to `name`, best first, for "did you mean"
// (quil_hand_suggest).
inline std::vector<std::string_view> suggest(std::string_view name, std::size_t count = 3) {
    std::vector<const quil_hand_info*> best(std::min(count, quil_hand_count()));
    best.resize(quil_hand_suggest(std::string(name).c_str(), best.data(), best.size()));
    std::vector<std::string_view> names;
    for (const quil_hand_info* info : best) names.emplace_back(info->name);
    return names;
}

// The loaded library's version, "MAJOR.MINOR.PATCH", and as MAJOR * 10000 + MINOR * 100 + PATCH.
inline const char* version() noexcept { return quil_linear_version(); }
inline unsigned version_number() noexcept { return quil_linear_version_number(); }

// The policy named "pass" or "hold"; throws Error (QUIL_E_DROPOUT_POLICY) for any other name.
inline Dropout dropout_from_name(std::string_view name) {
    const int policy = quil_dropout_from_name(std::string(name).c_str());
    if (policy < 0) throw Error(policy, std::string(quil_error_text(policy)) + ": \"" + std::string(name) + "\"");
    return static_cast<Dropout>(policy);
}

class Hand {
  public:
    // Opens the hand `name` (exact, else ignoring case) in its start-up state. Throws Error for
    // an unknown name, naming the closest hands, and std::bad_alloc without memory.
    explicit Hand(std::string_view name, Dropout dropout = Dropout::pass) {
        const std::string n(name);
        handle_ = quil_hand_open(n.c_str());
        if (!handle_) {
            if (quil_hand_find(n.c_str())) throw std::bad_alloc();
            throw Error(0, unknown_name_message(n));
        }
        set_dropout(dropout);
    }

    Hand(Hand&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Hand& operator=(Hand&& other) noexcept {
        if (this != &other) {
            quil_hand_close(handle_);
            handle_ = std::exchange(other.handle_, nullptr);
        }
        return *this;
    }
    Hand(const Hand&) = delete;
    Hand& operator=(const Hand&) = delete;
    ~Hand() { quil_hand_close(handle_); }

    // One sample through the hand's memory. (A moved-from Hand maps nothing and returns zeros.)
    Targets map(const Readings& readings) noexcept {
        Targets t{};
        quil_hand_map(handle_, readings.data(), t.data());
        return t;
    }

    // `n` samples in order: n rows of 12 in, n rows of 24 out, row-major, not overlapping. The
    // arguments come in the order of quil_hand_map_n: the count, then the readings, then the
    // targets.
    void map(std::size_t n, const double* readings, double* targets) noexcept {
        quil_hand_map_n(handle_, n, readings, targets);
    }

    // `n` samples in order, as arrays.
    void map(std::size_t n, const Readings* readings, Targets* targets) noexcept {
        static_assert(sizeof(Readings) == sizeof(double) * QUIL_READINGS, "Readings must be 12 packed doubles");
        static_assert(sizeof(Targets) == sizeof(double) * QUIL_TARGETS, "Targets must be 24 packed doubles");
        quil_hand_map_n(handle_, n, readings ? readings->data() : nullptr, targets ? targets->data() : nullptr);
    }

    // The earlier argument order, kept so existing code builds; it warns until moved over.
    [[deprecated("use map(n, readings, targets), the order of quil_hand_map_n")]]
    void map(const double* readings, std::size_t n, double* targets) noexcept { map(n, readings, targets); }
    [[deprecated("use map(n, readings, targets), the order of quil_hand_map_n")]]
    void map(const Readings* readings, std::size_t n, Targets* targets) noexcept { map(n, readings, targets); }

    // A whole contiguous range of samples (std::vector<Readings>, std::array<Readings, N>, a C
    // array of Readings), in order; returns one Targets per sample.
    template <class Range, class = std::enable_if_t<std::is_same_v<
                               std::remove_cv_t<std::remove_pointer_t<decltype(std::data(std::declval<const Range&>()))>>,
                               Readings>>>
    std::vector<Targets> map(const Range& readings) {
        std::vector<Targets> targets(std::size(readings));
        map(targets.size(), std::data(readings), targets.data());
        return targets;
    }

    // Back to the start-up state; the dropout policy is kept.
    void reset() noexcept { quil_hand_reset(handle_); }

    void set_dropout(Dropout policy) {
        const int rc = quil_hand_set_dropout(handle_, static_cast<int>(policy));
        if (rc != QUIL_OK) throw Error(rc, quil_error_text(rc));
    }
    Dropout dropout() const noexcept { return static_cast<Dropout>(quil_hand_dropout(handle_)); }

    // ---- Wiring profiles (see quil_linear/profile.h) ----

    // Wires the hand to its driver's outputs. Throws Error (QUIL_E_PROFILE with where the
    // profile is wrong, or QUIL_E_PROFILE_HAND); the Hand then keeps its previous profile.
    void set_profile(const quil_profile& profile) {
        quil_profile_fault fault{};
        const int rc = quil_hand_set_profile(handle_, &profile, &fault);
        if (rc == QUIL_OK) return;
        std::string what = quil_error_text(rc);
        if (fault.field && *fault.field) {
            what += ": ";
            if (fault.output >= 0) what += "outputs[" + std::to_string(fault.output) + "].";
            what += std::string(fault.field) + " " + fault.problem;
        }
        throw Error(rc, what);
    }
    // Back to the 24 targets.
    void clear_profile() noexcept { quil_hand_set_profile(handle_, nullptr, nullptr); }
    bool has_profile() const noexcept { return quil_hand_has_profile(handle_) != 0; }

    // The outputs per sample (the profile's, or 24) and their names (or the slot roles).
    std::size_t output_count() const noexcept { return quil_hand_output_count(handle_); }
    std::vector<std::string> output_names() const {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < output_count(); ++i) names.emplace_back(quil_hand_output_name(handle_, i));
        return names;
    }

    // One sample at time t (seconds): output_count() commands.
    std::vector<double> map_at(double t, const Readings& readings) {
        std::vector<double> out(output_count());
        quil_hand_map_at(handle_, t, readings.data(), out.data());
        return out;
    }
    // `n` samples with their times: n rows of 12 in, n rows of output_count() out; the order of
    // quil_hand_map_n_at.
    void map_at(std::size_t n, const double* times, const double* readings, double* outputs) noexcept {
        quil_hand_map_n_at(handle_, n, times, readings, outputs);
    }
    [[deprecated("use map_at(n, times, readings, outputs), the order of quil_hand_map_n_at")]]
    void map_at(const double* times, const double* readings, std::size_t n, double* outputs) noexcept {
        map_at(n, times, readings, outputs);
    }

    // The watchdog at time t: the commands without a new sample; `stale` tells whether the
    // input is stale at t. Throws Error without a profile.
    std::vector<double> tick(double t, bool* stale = nullptr) {
        std::vector<double> out(output_count());
        const int rc = quil_hand_tick(handle_, t, out.data());
        if (rc < 0) throw Error(rc, quil_error_text(rc));
        if (stale) *stale = rc == 1;
        return out;
    }

    quil_counters counters() const noexcept {
        quil_counters c{};
        quil_hand_counters(handle_, &c);
        return c;
    }

    // What the hand remembers between samples (pinch latches, thumb references, held readings,
    // dropout policy), to show it; see quil_hand_memory. All zero for a moved-from Hand.
    quil_hand_memory memory() const noexcept {
        quil_hand_memory m{};
        quil_hand_memory_of(handle_, &m);
        return m;
    }

    // The hand's memory and dropout policy (and, with a profile, the safety stage's memory) as a
    // portable byte string (see hand.h), for restore().
    std::vector<std::uint8_t> state() const {
        std::vector<std::uint8_t> bytes(quil_hand_state_size_of(handle_));
        bytes.resize(quil_hand_save_state(handle_, bytes.data(), bytes.size()));
        return bytes;
    }

    // Carries on from a saved state of the same hand. Throws Error (code QUIL_E_STATE_...) for a
    // state of another hand, a truncated or damaged one; the Hand is then unchanged.
    void restore(const void* state, std::size_t size) {
        const int rc = quil_hand_load_state(handle_, state, size);
        if (rc == QUIL_OK) return;
        std::string what = quil_error_text(rc);
        if (rc == QUIL_E_STATE_OTHER_HAND)
            what += std::string(": it is of ") + quil_state_hand(state, size)->name + ", this hand is " + info().name.data();
        throw Error(rc, what);
    }
    void restore(const std::vector<std::uint8_t>& state) { restore(state.data(), state.size()); }

    HandInfo info() const {
        if (!handle_) throw Error(QUIL_E_NULL, "a moved-from Hand has no hand");
        return HandInfo(*quil_hand_about(handle_));
    }

    // The C handle, for calls of hand.h; still owned by this Hand.
    quil_hand* get() const noexcept { return handle_; }

  private:
    static std::string unknown_name_message(const std::string& name) {
        std::string what = "unknown hand \"" + name + "\"; closest: ";
        const std::vector<std::string_view> close = suggest(name);
        for (std::size_t i = 0; i < close.size(); ++i) what += (i ? ", " : "") + std::string(close[i]);
        return what;
    }

    quil_hand* handle_ = nullptr;
};

}  // namespace quil_linear

#endif  // QUIL_LINEAR_HAND_HPP
