#include "session_file.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <memory>

namespace quil::retarget {

const char* time_unit_name(TimeUnit u) {
    switch (u) {
        case TimeUnit::s: return "s";
        case TimeUnit::ms: return "ms";
        case TimeUnit::us: return "us";
    }
    return "?";
}

bool parse_time_unit(std::string_view text, TimeUnit& unit) {
    if (text == "s") return unit = TimeUnit::s, true;
    if (text == "ms") return unit = TimeUnit::ms, true;
    if (text == "us") return unit = TimeUnit::us, true;
    return false;
}

double to_seconds(double t, TimeUnit u) { return u == TimeUnit::s ? t : u == TimeUnit::ms ? t / 1e3 : t / 1e6; }

std::optional<TimeUnit> time_unit_of_name(std::string_view name) {
    // Words of the name: runs of letters, split where a capital follows a small letter
    // (timeMs), and the micro sign counted as a letter.
    std::vector<std::string> words;
    std::string word;
    auto flush = [&] {
        if (!word.empty()) words.push_back(word);
        word.clear();
    };
    for (std::size_t i = 0; i < name.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(name[i]);
        if (c == 0xC2 && i + 1 < name.size() && static_cast<unsigned char>(name[i + 1]) == 0xB5) {  // µ
            word += 'u';
            ++i;
        } else if (std::isalpha(c)) {
            if (std::isupper(c) && !word.empty() && std::islower(static_cast<unsigned char>(word.back()))) flush();
            word += static_cast<char>(std::tolower(c));
        } else {
            flush();
        }
    }
    flush();
    // Only a name that is about time says a unit: "ms" alone, or "time_ms", never "x_s".
    const bool about_time = std::any_of(words.begin(), words.end(), [](const std::string& w) {
        return w == "t" || w == "time" || w == "timestamp" || w == "ts" || w == "stamp" || w == "elapsed" ||
               w == "clock";
    });
    for (const std::string& w : words) {
        if (w == "ms" || w == "msec" || w == "msecs" || w == "millis" || w == "milliseconds" || w == "millisecond")
            return TimeUnit::ms;
        if (w == "us" || w == "usec" || w == "usecs" || w == "micros" || w == "microseconds" || w == "microsecond")
            return TimeUnit::us;
        if (w == "sec" || w == "secs" || w == "seconds" || w == "second") return TimeUnit::s;
        if (w == "s" && about_time) return TimeUnit::s;
    }
    return std::nullopt;
}

TimeUnitChoice choose_time_unit(std::optional<TimeUnit> given, const std::string& time_name, const double* times,
                                std::size_t n) {
    TimeUnitChoice c;
    if (given) {
        c.unit = *given;
        c.from = TimeUnitChoice::From::given;
        return c;
    }
    if (const std::optional<TimeUnit> named = time_unit_of_name(time_name)) {
        c.unit = *named;
        c.from = TimeUnitChoice::From::name;
        return c;
    }
    std::vector<double> steps;
    for (std::size_t i = 1; i < n; ++i) {
        const double d = times[i] - times[i - 1];
        if (std::isfinite(d) && d > 0) steps.push_back(d);
    }
    const std::string about = "the time column '" + time_name + "' does not name its unit";
    if (steps.empty()) {
        c.note = about + "; read as seconds";
        return c;
    }
    std::nth_element(steps.begin(), steps.begin() + steps.size() / 2, steps.end());
    const double step = steps[steps.size() / 2];
    c.unit = step < 0.5 ? TimeUnit::s : step < 500 ? TimeUnit::ms : TimeUnit::us;
    c.from = TimeUnitChoice::From::steps;
    char text[40];
    std::snprintf(text, sizeof text, "%g", step);
    const char* unit_words = c.unit == TimeUnit::s ? "seconds" : c.unit == TimeUnit::ms ? "milliseconds" : "microseconds";
    c.note = about + "; its samples are " + text + " apart, so it is read as " + unit_words;
    return c;
}

std::vector<double> SessionData::seconds() const {
    std::vector<double> out(times);
    if (time_unit && time_unit->unit != TimeUnit::s)
        for (double& t : out) t = to_seconds(t, time_unit->unit);
    return out;
}

std::string radians_note(const double* x, std::size_t rows) {
    if (rows < 10) return "";
    double widest = 0;
    for (std::size_t k = 0; k < rows * 12; ++k) {
        if (!std::isfinite(x[k])) continue;
        const double a = std::fabs(x[k]);
        if (a > 6.2832) return "";
        widest = std::max(widest, a);
    }
    if (widest < 0.5) return "";
    return "every reading of the first " + std::to_string(rows) +
           " samples lies within 2 pi of zero: if the glove records radians, convert them to degrees, "
           "which the hands take";
}

std::string no_rows_message(const std::string& name, Format format) {
    return name + ": no samples: the input holds no " +
           (format == Format::csv ? "rows (only blank lines, comments or a heading, or nothing)"
                                  : format == Format::f64 ? "bytes" : "rows (its shape has N = 0)");
}

bool read_session(InputFile& in, Format format, std::optional<TimeUnit> unit, SessionData& s, std::string& error,
                  bool& io_error) {
    s = SessionData{};
    s.path = in.name();
    s.format = format;
    io_error = false;
    if (!in.ok()) return error = in.error(), io_error = true, false;
    SourceOptions so;
    so.format = format;
    so.time_numbers = TimeNumbers::strict;  // times are handed over as numbers
    std::unique_ptr<Source> source = open_source(in, so, error);
    if (!source) return io_error = !in.ok(), false;
    Block block;
    Source::Status status;
    do {
        status = source->next(block);
        s.readings.insert(s.readings.end(), block.x.begin(), block.x.begin() + block.rows * 12);
        s.times.insert(s.times.end(), block.t.begin(), block.t.begin() + block.rows);
        if (source->info().time_as_text && source->info().has_time) {
            for (std::size_t r = 0; r < block.rows; ++r) {
                s.time_text += block.time_of(r);
                s.time_end.push_back(s.time_text.size());
            }
        }
    } while (status == Source::Status::more);
    s.info = source->info();
    if (!s.info.has_time) s.times.clear();
    if (s.info.has_time) {
        const std::size_t first = std::min<std::size_t>(s.times.size(), Block::kRows);
        s.time_unit = choose_time_unit(unit, s.info.time_name, s.times.data(), first);
        if (!s.time_unit->note.empty()) s.notes.push_back(s.time_unit->note);
    }
    const std::string radians = radians_note(s.readings.data(), std::min<std::size_t>(s.rows(), Block::kRows));
    if (!radians.empty()) s.notes.push_back(radians);
    if (status == Source::Status::bad_data || status == Source::Status::io_error) {
        error = source->error();
        io_error = status == Source::Status::io_error;
        return false;
    }
    if (s.readings.empty()) return error = no_rows_message(in.name(), format), false;
    return true;
}

}  // namespace quil::retarget
