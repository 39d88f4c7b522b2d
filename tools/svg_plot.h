// An SVG chart of a retargeted session: the glove readings in one panel, the hand's joint
// targets in the other, over time. Sessions of any length are drawn from a bounded summary:
// the samples are gathered into at most a thousand or so buckets holding each channel's
// first, last, lowest and highest value, so a short spike stays visible after decimation.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quil::retarget {

class SessionPlot {
  public:
    static constexpr int kInputs = 12;
    static constexpr int kOutputs = 24;
    static constexpr int kChannels = kInputs + kOutputs;

    explicit SessionPlot(std::size_t max_buckets = 1200);

    // One sample. `time` is the sample's time stamp, or NaN when it has none.
    void add(double time, const double* inputs, const double* outputs);

    struct Labels {
        std::string title;                      // e.g. "QUIL_linear_AA v1.1.5.1"
        std::string source;                     // the input's name
        std::string time_name;                  // the time column's name, "" when there is none
        std::array<std::string, kInputs> input_names;  // legend names of x0..x11
    };
    std::string svg(const Labels& labels) const;

    std::uint64_t samples() const { return samples_; }

  private:
    struct Bucket {
        double t_first, t_last;
        std::uint64_t i_first, i_last;
        std::uint32_t count;
        std::array<double, kChannels> first, last, lo, hi;  // lo/hi over finite values only
    };
    void merge_pairs();

    std::size_t max_buckets_;
    std::uint64_t per_bucket_ = 1;
    std::uint64_t samples_ = 0;
    bool all_times_finite_ = true;
    std::vector<Bucket> buckets_;
    std::array<double, kChannels> lo_, hi_;         // whole-session finite range per channel
    std::array<std::uint64_t, kChannels> nonfinite_{};
    std::array<double, kChannels> first_value_;     // for telling constant channels
    std::array<bool, kChannels> constant_;
};

}  // namespace quil::retarget
