#include "progress.h"

#include <algorithm>
#include <cstring>

namespace quil::retarget {

namespace {

// 1234 -> "1234", 1234567 -> "1.23M"
void human_count(char* out, std::size_t n, double v) {
    if (v >= 1e9) std::snprintf(out, n, "%.2fG", v / 1e9);
    else if (v >= 1e6) std::snprintf(out, n, "%.2fM", v / 1e6);
    else if (v >= 1e4) std::snprintf(out, n, "%.1fk", v / 1e3);
    else std::snprintf(out, n, "%.0f", v);
}

}  // namespace

Progress::Progress(bool enabled, std::int64_t total_bytes, std::FILE* out)
    : enabled_(enabled), total_(total_bytes), out_(out), start_(Clock::now()), last_(start_) {}

void Progress::update(std::uint64_t rows, std::uint64_t bytes) {
    if (!enabled_) return;
    const Clock::time_point now = Clock::now();
    const double elapsed = std::chrono::duration<double>(now - start_).count();
    // Short runs finish before a display would help; then a few redraws a second are enough.
    if (elapsed < 0.5 || std::chrono::duration<double>(now - last_).count() < 0.2) return;
    last_ = now;

    char count[32], rate[32], line[160];
    human_count(count, sizeof count, static_cast<double>(rows));
    human_count(rate, sizeof rate, static_cast<double>(rows) / elapsed);
    if (total_ > 0) {
        const double done = std::min(1.0, static_cast<double>(bytes) / static_cast<double>(total_));
        const int width = 30;
        const int filled = static_cast<int>(done * width);
        char bar[width + 1];
        std::memset(bar, '#', static_cast<std::size_t>(filled));
        std::memset(bar + filled, '.', static_cast<std::size_t>(width - filled));
        bar[width] = '\0';
        const double left = done > 0 ? elapsed * (1.0 - done) / done : 0.0;
        const long secs = static_cast<long>(left + 0.5);
        std::snprintf(line, sizeof line, "[%s] %3.0f%%  %s rows  %s rows/s  %ld:%02ld left", bar,
                      done * 100.0, count, rate, secs / 60, secs % 60);
    } else {
        std::snprintf(line, sizeof line, "%s rows  %s rows/s", count, rate);
    }
    std::fprintf(out_, "\r\033[K%s", line);
    std::fflush(out_);
    shown_ = true;
}

void Progress::finish() {
    if (shown_) {
        std::fputs("\r\033[K", out_);
        std::fflush(out_);
        shown_ = false;
    }
}

}  // namespace quil::retarget
