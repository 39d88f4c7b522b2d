// A one-line progress display on standard error for long conversions: rows done, rows per
// second and, when the input's size is known, percent done and time left.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>

namespace quil::retarget {

class Progress {
  public:
    // `total_bytes` < 0 when the input's size is unknown (a pipe). A disabled display does nothing.
    Progress(bool enabled, std::int64_t total_bytes, std::FILE* out = stderr);
    ~Progress() { finish(); }

    // Cheap enough to call every few thousand rows; redraws a few times a second at most.
    void update(std::uint64_t rows, std::uint64_t bytes);
    // Clears the line so later messages start on a clean one.
    void finish();

  private:
    using Clock = std::chrono::steady_clock;
    bool enabled_;
    bool shown_ = false;
    std::int64_t total_;
    std::FILE* out_;
    Clock::time_point start_, last_;
};

}  // namespace quil::retarget
