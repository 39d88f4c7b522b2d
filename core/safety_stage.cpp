// The safety stage of core/safety_stage.h. Every formula keeps its operand order as the
// stage's documentation (quil_linear/profile.h) writes it: the commands must be reproducible
// bit for bit by anyone recomputing them from a recorded session.
#include "core/safety_stage.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace quil {

namespace {

constexpr double kPi = 3.14159265358979323846;

// The one-euro filter's smoothing factor for cutoff fc at sampling period te.
double euro_alpha(double fc, double te) { return 1.0 / (1.0 + (1.0 / (2 * kPi * fc)) / te); }

}  // namespace

SafetyStage::SafetyStage(Wiring wiring) : wiring_(std::move(wiring)) { reset(); }

void SafetyStage::reset() {
    started = false;
    t_last = 0.0;
    memory.assign(wiring_.outputs.size(), OutputMemory{});
    for (std::size_t i = 0; i < memory.size(); ++i) memory[i].last = wiring_.outputs[i].safe;
    counters_ = StageCounters{};
}

// The last command moved toward safe by max_rate * (t - t0 - safe_after), never past it.
double SafetyStage::stalled(const OutputWiring& w, double last, double t) const {
    if (!w.rate_limit) return w.safe;
    const double step = w.max_rate * (t - t_last - wiring_.safe_after);
    if (!(step > 0.0)) return last;
    if (last < w.safe) return std::min(last + step, w.safe);
    if (last > w.safe) return std::max(last - step, w.safe);
    return last;
}

void SafetyStage::step(double t, const double* targets, double* commands) {
    ++counters_.samples;
    const std::size_t n = wiring_.outputs.size();
    // A time that does not move forward cannot drive a filter or a rate: hold every output.
    if (!std::isfinite(t) || (started && !(t > t_last))) {
        for (std::size_t i = 0; i < n; ++i) commands[i] = memory[i].last;
        ++counters_.held;
        return;
    }
    const bool stall = started && wiring_.to_safe && t >= t_last + wiring_.safe_after;
    const double dt = started ? t - t_last : 0.0;
    bool held = false, rejected = false, limited = false;
    for (std::size_t i = 0; i < n; ++i) {
        const OutputWiring& w = wiring_.outputs[i];
        OutputMemory& m = memory[i];
        const double c = stall ? stalled(w, m.last, t) : m.last;
        const double x = w.scale * targets[w.slot] + w.offset;
        double y = x;
        double edx = 0.0;
        if (std::isfinite(x) && m.filtered) {
            if (w.smoothing == Smoothing::ema) {
                y = w.alpha * x + (1 - w.alpha) * m.y_prev;
            } else if (w.smoothing == Smoothing::one_euro) {
                const double freq = 1.0 / (t - m.t_prev);
                const double te = 1.0 / freq;
                const double dx = (x - m.x_prev_raw) * freq;
                const double a_d = euro_alpha(w.d_cutoff, te);
                edx = a_d * dx + (1 - a_d) * m.edx_prev;
                const double fc = w.min_cutoff + w.beta * std::fabs(edx);
                const double a = euro_alpha(fc, te);
                y = a * x + (1 - a) * m.y_prev;
            }
        }
        if (!std::isfinite(y) || !std::isfinite(edx)) {
            // Not fed to the filter; the output stays where it was.
            m.last = commands[i] = c;
            held = true;
            continue;
        }
        const bool jump = w.reject && m.filtered && std::fabs(y - m.y_prev) > w.reject_above;
        m.filtered = true;
        m.y_prev = y;
        m.x_prev_raw = x;
        m.edx_prev = edx;
        m.t_prev = t;
        if (jump) {
            m.last = commands[i] = c;
            rejected = true;
            continue;
        }
        double out = y;
        if (w.rate_limit) {
            out = std::min(std::max(y, c - w.max_rate * dt), c + w.max_rate * dt);
            if (out != y) limited = true;
        }
        out = std::min(std::max(out, w.min), w.max);
        m.last = commands[i] = out;
    }
    started = true;
    t_last = t;
    counters_.held += held;
    counters_.rejected += rejected;
    counters_.limited += limited;
}

bool SafetyStage::tick(double t, double* commands) {
    const bool stall = started && wiring_.to_safe && t >= t_last + wiring_.safe_after;
    const bool stale = !started || stall || (wiring_.hold && t >= t_last + wiring_.hold_after);
    for (std::size_t i = 0; i < memory.size(); ++i)
        commands[i] = stall ? stalled(wiring_.outputs[i], memory[i].last, t) : memory[i].last;
    if (stale) ++counters_.stale;
    return stale;
}

std::uint64_t SafetyStage::fingerprint() const {
    std::uint64_t h = 1469598103934665603ull;
    auto bytes = [&h](const void* p, std::size_t n) {
        const auto* b = static_cast<const unsigned char*>(p);
        for (std::size_t i = 0; i < n; ++i) h = (h ^ b[i]) * 1099511628211ull;
    };
    auto num = [&bytes](double d) { bytes(&d, sizeof d); };
    auto flag = [&bytes](bool f) {
        const unsigned char c = f ? 1 : 0;
        bytes(&c, 1);
    };
    flag(wiring_.hold);
    flag(wiring_.to_safe);
    num(wiring_.hold_after);
    num(wiring_.safe_after);
    for (const OutputWiring& w : wiring_.outputs) {
        bytes(w.name.data(), w.name.size() + 1);
        const int kind = static_cast<int>(w.smoothing);
        bytes(&w.slot, sizeof w.slot);
        bytes(&kind, sizeof kind);
        for (double d : {w.scale, w.offset, w.min, w.max, w.safe, w.alpha, w.min_cutoff, w.beta, w.d_cutoff,
                         w.reject_above, w.max_rate})
            num(d);
        flag(w.reject);
        flag(w.rate_limit);
    }
    return h;
}

}  // namespace quil
