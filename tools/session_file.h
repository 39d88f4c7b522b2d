// A whole recorded session in memory, read by the same readers as quil-retarget's `map` (the
// Python package and the browser explorer use it, so every front-end accepts the same files
// with the same messages), and the unit of a session's time column.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "retarget_io.h"
#include "session_source.h"

namespace quil::retarget {

// Recorders write their clocks in seconds, milliseconds or microseconds.
enum class TimeUnit { s, ms, us };
const char* time_unit_name(TimeUnit u);               // "s", "ms", "us"
bool parse_time_unit(std::string_view text, TimeUnit& unit);  // the names above only
double to_seconds(double t, TimeUnit u);              // t / 1, t / 1000, t / 1000000

// The unit a time column is in, and how that was decided: given by the user, stated by the
// column's name (time_ms, "t [us]", Time(s)), read from the step between the first samples
// (a glove samples at 2 Hz to 2 kHz, so a median step under 0.5 is seconds, under 500
// milliseconds, else microseconds), or, with nothing to go by, seconds.
struct TimeUnitChoice {
    TimeUnit unit = TimeUnit::s;
    enum class From { given, name, steps, assumed } from = From::assumed;
    std::string note;  // a sentence for the user when the unit was guessed, else "" (each
                       // front-end adds how to say otherwise)
};
// `times` are the first samples' times as numbers (NaN where a time is not one).
TimeUnitChoice choose_time_unit(std::optional<TimeUnit> given, const std::string& time_name,
                                const double* times, std::size_t n);
// The unit a column name states, if any.
std::optional<TimeUnit> time_unit_of_name(std::string_view name);

struct SessionData {
    std::string path;                  // the input's name, as messages give it
    Format format = Format::csv;
    SourceInfo info;
    std::vector<double> readings;      // row-major, 12 per row
    std::vector<double> times;         // one per row as the file has them, when info.has_time
    std::string time_text;             // CSV times as written, back to back (for copying them out)
    std::vector<std::size_t> time_end; // where each row's time text ends
    std::optional<TimeUnitChoice> time_unit;  // when info.has_time
    std::vector<std::string> notes;    // what the reader decided for the user (units, ...)
    std::uint64_t rows() const { return readings.size() / 12; }
    // The times in seconds, by the unit chosen for the column (empty without one).
    std::vector<double> seconds() const;
};

// Reads all of `in` in format `format`; `unit` is what the time column is in, when known.
// On a fault returns false with `error` (the tool's own message: file:line:column, a byte
// offset or the header problem) and `io_error` telling an unreadable input from bad data; the
// rows before the fault are left in `session`. An input without a single row is a fault too.
bool read_session(InputFile& in, Format format, std::optional<TimeUnit> unit, SessionData& session,
                  std::string& error, bool& io_error);

// A note when the first samples look like angles in radians (every reading within ±2π, some
// beyond ±0.5, over ten samples or more): the hands take degrees. "" otherwise.
std::string radians_note(const double* readings, std::size_t rows);

// The message for an input that holds no rows at all.
std::string no_rows_message(const std::string& name, Format format);

}  // namespace quil::retarget
