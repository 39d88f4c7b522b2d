// The session reader of quil-retarget for the page: a dropped file is read from memory by the
// tool's own code (tools/session_file.cpp), so the page accepts exactly the files the tool
// accepts, refuses the others with the tool's messages, and finds the same time unit.
//
// quil_session_read returns a session the page reads through the accessors below and frees
// with quil_session_free. Everything here runs on the page's one thread.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "session_file.h"

using namespace quil::retarget;

namespace {

struct PageSession {
    SessionData data;
    std::vector<double> seconds;
    std::string error;
    std::string text;  // the last string an accessor returned
};

}  // namespace

extern "C" {

// Reads `size` bytes of the file `name`. format: 0 csv, 1 f64, 2 npy, -1 by the name's
// extension. time_unit: 0 s, 1 ms, 2 us, -1 as the tool decides. Never null.
PageSession* quil_session_read(const char* name, const char* bytes, std::size_t size, int format, int time_unit) {
    auto* s = new PageSession;
    InputFile in(name, bytes, size);
    const Format f = format == 0 ? Format::csv : format == 1 ? Format::f64 : format == 2 ? Format::npy : format_of_path(name);
    std::optional<TimeUnit> unit;
    if (time_unit >= 0 && time_unit <= 2) unit = static_cast<TimeUnit>(time_unit);
    bool io_error = false;
    if (!read_session(in, f, unit, s->data, s->error, io_error) && s->error.empty()) s->error = "cannot read " + std::string(name);
    s->seconds = s->data.seconds();
    return s;
}

void quil_session_free(PageSession* s) { delete s; }

// "" when the whole file was read, else the tool's message (file:line:column, a byte offset).
const char* quil_session_error(PageSession* s) { return s->error.c_str(); }
double quil_session_rows(PageSession* s) { return static_cast<double>(s->data.rows()); }
const double* quil_session_readings(PageSession* s) { return s->data.readings.data(); }
// Times in seconds, or null without a time column.
const double* quil_session_seconds(PageSession* s) { return s->data.info.has_time ? s->seconds.data() : nullptr; }
// Times as the file has them (numbers), for an npy file's times written out.
const double* quil_session_times(PageSession* s) { return s->data.info.has_time ? s->data.times.data() : nullptr; }
// A CSV row's time exactly as written, or "" (npy and f64 hold numbers only).
const char* quil_session_time_text(PageSession* s, std::size_t row) {
    if (row >= s->data.time_end.size()) return "";
    const std::size_t b = row ? s->data.time_end[row - 1] : 0;
    s->text = s->data.time_text.substr(b, s->data.time_end[row] - b);
    return s->text.c_str();
}
const char* quil_session_time_name(PageSession* s) { return s->data.info.has_time ? s->data.info.time_name.c_str() : ""; }
// "s", "ms", "us", or "" without a time column.
const char* quil_session_time_unit(PageSession* s) {
    return s->data.time_unit ? time_unit_name(s->data.time_unit->unit) : "";
}
// The heading's name of reading i (0..11), or "".
const char* quil_session_input_name(PageSession* s, int i) {
    return i >= 0 && i < 12 ? s->data.info.input_names[static_cast<std::size_t>(i)].c_str() : "";
}
int quil_session_note_count(PageSession* s) { return static_cast<int>(s->data.notes.size()); }
const char* quil_session_note(PageSession* s, int i) {
    return i >= 0 && i < quil_session_note_count(s) ? s->data.notes[static_cast<std::size_t>(i)].c_str() : "";
}
const char* quil_session_format(PageSession* s) { return format_name(s->data.format); }

// A number as the tool reads one (decimal, exponent, nan, inf); 0 when `text` is not one.
int quil_session_parse_number(const char* text, double* value) { return parse_number(text, *value) ? 1 : 0; }

}  // extern "C"
