// The safety stage between a hand's joint targets and its driver: per output, scale and offset,
// a non-finite guard, smoothing, jump rejection, a rate limit, a clip, and the stall behaviour
// when the glove stops sending. A function of the samples and their times alone, so that a
// session replayed offline gives exactly what the live loop sent.
#ifndef QUIL_CORE_SAFETY_STAGE_H
#define QUIL_CORE_SAFETY_STAGE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quil {

enum class Smoothing : int { none = 0, ema = 1, one_euro = 2 };

struct OutputWiring {
    std::string name;
    int slot = 0;
    double scale = 1.0, offset = 0.0, min = 0.0, max = 0.0, safe = 0.0;
    Smoothing smoothing = Smoothing::none;
    double alpha = 1.0, min_cutoff = 1.0, beta = 0.0, d_cutoff = 1.0;
    bool reject = false;
    double reject_above = 0.0;
    bool rate_limit = false;
    double max_rate = 0.0;
};

struct Wiring {
    bool hold = false, to_safe = false;
    double hold_after = 0.0, safe_after = 0.0;
    std::vector<OutputWiring> outputs;
};

// One output's memory.
struct OutputMemory {
    double last = 0.0;          // the last command emitted
    bool filtered = false;      // the filter has seen a sample
    double y_prev = 0.0;        // the filter's last output
    double x_prev_raw = 0.0;    // one-euro: the last raw command fed
    double edx_prev = 0.0;      // one-euro: the smoothed derivative
    double t_prev = 0.0;        // one-euro: the time of the last sample fed
};

struct StageCounters {
    std::uint64_t samples = 0, held = 0, rejected = 0, limited = 0, stale = 0;
};

class SafetyStage {
  public:
    explicit SafetyStage(Wiring wiring);

    const Wiring& wiring() const { return wiring_; }
    std::size_t size() const { return wiring_.outputs.size(); }

    // Back to the start: every output at its safe value, no sample seen.
    void reset();

    // One sample of 24 targets at time t; writes size() commands.
    void step(double t, const double* targets, double* commands);

    // The commands at time t without a sample; true when the input is stale at t.
    bool tick(double t, double* commands);

    const StageCounters& counters() const { return counters_; }

    // The memory, for saved states.
    bool started = false;     // a sample has been taken
    double t_last = 0.0;      // its time
    std::vector<OutputMemory> memory;

    // A fingerprint of the wiring, so a state goes back only under the profile it was saved with.
    std::uint64_t fingerprint() const;

  private:
    double stalled(const OutputWiring& w, double last, double t) const;

    Wiring wiring_;
    StageCounters counters_;
};

}  // namespace quil

#endif  // QUIL_CORE_SAFETY_STAGE_H
