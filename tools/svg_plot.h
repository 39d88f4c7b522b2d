// An SVG chart of a retargeted session: the glove readings in one panel, then the hand's joint
// targets in small panels, one per finger group (thumb, index, middle, ring, little, other, by
// the first word of each slot's role), each with few enough lines to tell apart. Sessions of
// any length are drawn from a bounded summary: the samples are gathered into at most a few
// hundred buckets holding each channel's first, last, lowest and highest value, so a short
// spike stays visible after decimation.
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
    static constexpr std::size_t kMaxLines = 6;  // per target panel

    explicit SessionPlot(std::size_t max_buckets = 800);

    // One sample. `time` is the sample's time stamp, or NaN when it has none.
    void add(double time, const double* inputs, const double* outputs);

    struct Labels {
        std::string title;                              // e.g. "RUIYAN_RY_H15 V 1.4.9.1_RYH15_1"
        std::string source;                             // the input's name
        std::string time_name;                          // "" when there is no time column
        std::string time_unit;                          // "s", "ms", "us", or "" when unknown
        std::array<std::string, kInputs> input_names;   // the input's names of x0..x11, or ""
        std::array<std::string, kOutputs> roles;        // the hand's slot roles
    };
    std::string svg(const Labels& labels) const;

    // The target panels: slots grouped by the first word of their role, groups of more than
    // kMaxLines moving slots split evenly; constant slots are listed with their group.
    struct Panel {
        std::string title;
        std::vector<int> drawn;     // slot numbers
        std::vector<int> constant;  // slot numbers
    };
    static std::vector<Panel> target_panels(const std::array<std::string, kOutputs>& roles,
                                            const std::array<bool, kOutputs>& constant);

    std::uint64_t samples() const { return samples_; }

  private:
    class Drawing;  // one svg() call: the page so far and the axis its charts share

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
