#include "session_source.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <limits>

namespace quil::retarget {

const char* format_name(Format f) {
    switch (f) {
        case Format::csv: return "csv";
        case Format::f64: return "f64";
        case Format::npy: return "npy";
    }
    return "?";
}

Format format_of_path(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    const std::size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return Format::csv;
    std::string e = path.substr(dot);
    for (char& c : e) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return e == ".f64" ? Format::f64 : e == ".npy" ? Format::npy : Format::csv;
}

bool names_time(std::string_view name) {
    std::string word;
    char prev = 0;
    for (char ch : name) {
        const unsigned char c = static_cast<unsigned char>(ch);
        // The first word: up to a non-letter, or a capital after a small letter (timeMs).
        if (!std::isalpha(c) || (std::isupper(c) && !word.empty() && std::islower(static_cast<unsigned char>(prev)))) {
            if (!word.empty()) break;
            if (!std::isalpha(c)) continue;
        }
        word += static_cast<char>(std::tolower(c));
        prev = ch;
    }
    for (const char* w : {"t", "time", "times", "timestamp", "timestamps", "ts", "stamp", "elapsed", "clock", "sec",
                          "secs", "seconds", "ms", "msec", "millis", "milliseconds", "us", "usec", "micros"})
        if (word == w) return true;
    return false;
}

bool looks_numeric(std::string_view s) {
    if (!s.empty() && (s[0] == '+' || s[0] == '-')) s.remove_prefix(1);
    if (s.empty()) return false;
    auto digit = [](char c) { return c >= '0' && c <= '9'; };
    // 12, 1.5, 1,5, .5, ,5, 1e3, 0x1F, 12%, 1 000: whatever starts like a number is one.
    if (digit(s[0])) return true;
    if ((s[0] == '.' || s[0] == ',') && s.size() > 1 && digit(s[1])) return true;
    std::string lower(s.substr(0, std::min<std::size_t>(s.size(), 9)));
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s.size() <= 8 && (lower == "nan" || lower == "inf" || lower == "infinity" ||
                             (lower.size() > 4 && lower.compare(0, 4, "nan(") == 0 && lower.back() == ')'));
}

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// ---------------------------------------------------------------------------------------------
// CSV

class CsvSource : public Source {
  public:
    CsvSource(InputFile& in, const SourceOptions& o) : in_(in), options_(o), lines_(in) {
        info_.time_as_text = true;
        info_.places_are_lines = true;
    }
    Status next(Block& b) override;
    std::uint64_t bytes_consumed() const override { return lines_.bytes_consumed(); }

  private:
    struct Field {
        const char* p;
        std::size_t len;
        std::size_t col;  // 1-based column of the field's first character
        std::string_view text() const { return std::string_view(p, len); }
    };
    static constexpr std::size_t kMaxFields = 16;

    void detect_separator(std::string_view line);
    bool split(std::string_view line, std::string& error);
    // The first line with content: a heading, or the first row (then it fixes the columns).
    bool first_line(std::string_view line, bool& is_heading, std::string& error);
    bool fix_columns(std::string& error, bool& fatal);
    // A row into `b`; false with `error` for a bad one, `fatal` when no row of the file can be
    // good (decimal commas).
    bool read_row(Block& b, std::string_view line, std::string& error, bool& fatal);
    enum class Line { none, row, bad };  // blank, comment or heading; a row; a bad row
    Line take_line(Block& b, std::string_view line, std::string& error, bool& fatal);
    std::string place(std::size_t col) const {
        return in_.name() + ":" + std::to_string(lines_.line_number()) + ":" + std::to_string(col);
    }
    std::string field_name(std::size_t f) const {
        const bool timed = columns_ == 13;
        const std::string r = "field " + std::to_string(f + 1);
        if (timed && f == 0) return r + " (time)";
        return r + " (x" + std::to_string(f - (timed ? 1 : 0)) + ")";
    }
    std::string expected_fields() const {
        return std::to_string(columns_) + (columns_ == 13 ? " fields (time, x0..x11)" : " fields (x0..x11)");
    }

    InputFile& in_;
    SourceOptions options_;
    LineReader lines_;
    char sep_ = 0;
    std::size_t columns_ = 0;       // 12 or 13 once known
    std::size_t heading_fields_ = 0;
    bool trailing_ = false;         // every line ends with one separator
    std::uint64_t first_row_line_ = 0;
    bool seen_content_ = false;
    std::size_t col_shift_ = 0;     // bytes of a byte-order mark taken off line 1
    std::array<Field, kMaxFields> f_{};
    std::size_t n_ = 0;             // fields on the line (may exceed kMaxFields)
    bool last_empty_ = false;
    std::string scratch_;           // unquoted contents of quoted fields
};

void CsvSource::detect_separator(std::string_view line) {
    // A tab or a semicolon outside quotes means it separates the fields (a semicolon file may
    // use decimal commas, which are then reported, not misread); else commas do.
    bool tab = false, semi = false, quoted = false;
    for (char c : line) {
        if (c == '"') quoted = !quoted;
        else if (!quoted && c == '\t') tab = true;
        else if (!quoted && c == ';') semi = true;
    }
    sep_ = tab ? '\t' : semi ? ';' : ',';
    // No separator at all but blanks between fields: columns lined up with spaces, as NumPy's
    // savetxt writes them. Runs of blanks then separate the fields.
    if (!tab && !semi && line.find(',') == std::string_view::npos) {
        const std::size_t b = line.find_first_not_of(' ');
        const std::size_t e = line.find_last_not_of(' ');
        if (b != std::string_view::npos && line.substr(b, e - b + 1).find(' ') != std::string_view::npos) sep_ = ' ';
    }
}

bool CsvSource::split(std::string_view line, std::string& error) {
    const char* base = line.data();
    const std::size_t len = line.size();
    auto blank = [&](char c) { return c == ' ' || (c == '\t' && sep_ != '\t'); };
    n_ = 0;
    auto store = [&](const char* p, std::size_t n, std::size_t col) {
        if (n_ < kMaxFields) f_[n_] = Field{p, n, col + col_shift_};
        last_empty_ = n == 0;
        ++n_;
    };
    if (sep_ == ' ') {  // runs of blanks; a field in quotes loses them
        std::size_t pos = 0;
        for (;;) {
            while (pos < len && (base[pos] == ' ' || base[pos] == '\t')) ++pos;
            if (pos == len) {
                if (n_ == 0) store(base, 0, 1);  // a line of blanks holds one empty field
                return true;
            }
            std::size_t e = pos;
            while (e < len && base[e] != ' ' && base[e] != '\t') ++e;
            if (e - pos >= 2 && base[pos] == '"' && base[e - 1] == '"') store(base + pos + 1, e - pos - 2, pos + 1);
            else store(base + pos, e - pos, pos + 1);
            pos = e;
        }
    }
    if (!std::memchr(base, '"', len)) {  // the usual line: no quotes
        std::size_t pos = 0;
        for (;;) {
            const void* hit = pos < len ? std::memchr(base + pos, sep_, len - pos) : nullptr;
            const std::size_t stop = hit ? static_cast<std::size_t>(static_cast<const char*>(hit) - base) : len;
            std::size_t b = pos, e = stop;
            while (b < e && blank(base[b])) ++b;
            while (e > b && blank(base[e - 1])) --e;
            store(base + b, e - b, b + 1);
            if (!hit) return true;
            pos = stop + 1;
        }
    }
    // Quoted fields: "12", "a ""name""", "2024-05-01 10:00:00,5". Their contents are copied
    // to scratch_, reserved up front so the views into it stay valid.
    scratch_.clear();
    scratch_.reserve(len);
    std::size_t pos = 0;
    for (;;) {
        while (pos < len && blank(base[pos])) ++pos;
        if (pos < len && base[pos] == '"') {
            const std::size_t open = pos;
            const std::size_t from = scratch_.size();
            ++pos;
            for (;;) {
                const std::size_t q = line.find('"', pos);
                if (q == std::string_view::npos) {
                    error = place(open + 1 + col_shift_) + ": a quoted field is not closed on its line";
                    return false;
                }
                scratch_.append(base + pos, q - pos);
                if (q + 1 < len && base[q + 1] == '"') {
                    scratch_ += '"';
                    pos = q + 2;
                } else {
                    pos = q + 1;
                    break;
                }
            }
            while (pos < len && blank(base[pos])) ++pos;
            if (pos < len && base[pos] != sep_) {
                error = place(pos + 1 + col_shift_) + ": text after the closing quote of a field";
                return false;
            }
            store(scratch_.data() + from, scratch_.size() - from, open + 1);
        } else {
            const std::size_t found = line.find(sep_, pos);
            const std::size_t stop = found == std::string_view::npos ? len : found;
            std::size_t e = stop;
            while (e > pos && blank(base[e - 1])) --e;
            store(base + pos, e - pos, pos + 1);
            pos = stop;
        }
        if (pos >= len) return true;
        ++pos;  // past the separator; a separator at the very end leaves one empty field
    }
}

bool CsvSource::first_line(std::string_view line, bool& is_heading, std::string& error) {
    detect_separator(line);
    if (!split(line, error)) return false;
    // A heading names its columns: no field reads as a number in any notation.
    bool numeric = false, named = false;
    for (std::size_t i = 0; i < std::min(n_, kMaxFields); ++i) {
        numeric = numeric || looks_numeric(f_[i].text());
        named = named || f_[i].len > 0;
    }
    is_heading = named && !numeric;
    if (!is_heading) return true;
    std::size_t n = n_;
    if (n > 1 && last_empty_ && (n - 1 == 12 || n - 1 == 13)) --n;  // a separator ending the line
    if (n != 12 && n != 13) {
        error = place(1) + ": the heading line has " + std::to_string(n_) +
                " fields; expected 12 (x0..x11) or 13 (a time column, then x0..x11)";
        return false;
    }
    // Twelve fields led by a time: the recording lacks a reading (or the time column is
    // unexpected), and reading the times as x0 would drive a finger with the clock.
    if (n == 12 && names_time(f_[0].text())) {
        error = place(f_[0].col) + ": the heading names field 1 \"" + std::string(f_[0].text()) +
                "\" as a time, but has 12 fields: a time column takes 13 (the time, then x0..x11); "
                "rename it if it is a glove reading";
        return false;
    }
    heading_fields_ = n;
    const std::size_t first_x = n - 12;
    info_.has_time = n == 13;
    if (n == 13) info_.time_name = std::string(f_[0].text());
    for (std::size_t i = 0; i < 12; ++i) info_.input_names[i] = std::string(f_[first_x + i].text());
    return true;
}

// The first row fixes the number of columns and whether lines end with a separator.
bool CsvSource::fix_columns(std::string& error, bool& fatal) {
    std::size_t n = n_;
    if (heading_fields_) {
        trailing_ = n == heading_fields_ + 1 && last_empty_;
    } else {
        trailing_ = n > 1 && last_empty_ && (n - 1 == 12 || n - 1 == 13);
    }
    if (trailing_) --n;
    if (heading_fields_ && n != heading_fields_) {
        error = place(1) + ": the first row has " + std::to_string(n_) + " fields, the heading line " +
                std::to_string(heading_fields_);
        return false;
    }
    if (n != 12 && n != 13) {
        error = place(1) + ": expected 12 fields (x0..x11) or 13 (time, x0..x11), found " + std::to_string(n_);
        if (sep_ == ',' && n > 13) {
            error += " (numbers with decimal commas need another separator: semicolons or tabs)";
            fatal = true;
        }
        return false;
    }
    columns_ = n;
    info_.has_time = n == 13;
    if (info_.has_time && !heading_fields_) info_.time_name = "time";
    first_row_line_ = lines_.line_number();
    return true;
}

bool CsvSource::read_row(Block& b, std::string_view line, std::string& error, bool& fatal) {
    std::size_t n = n_;
    if (trailing_) {
        if (n < 2 || !last_empty_) {
            error = place(line.size() + 1 + col_shift_) + ": the line does not end with a separator, as line " +
                    std::to_string(first_row_line_) + " does; every line must end the same way";
            return false;
        }
        --n;
    }
    if (n != columns_) {
        if (n < columns_) {
            error = place(line.size() + 1 + col_shift_) + ": short row: expected " + expected_fields() +
                    ", found " + std::to_string(n);
        } else {
            error = place(f_[columns_].col) + ": long row: expected " + expected_fields() + ", found " +
                    std::to_string(n);
            if (!trailing_ && n == columns_ + 1 && last_empty_)
                error += " (a separator ends this line but not line " + std::to_string(first_row_line_) + ")";
        }
        return false;
    }
    const std::size_t first_x = columns_ - 12;
    double* x = b.x.data() + b.rows * 12;
    for (std::size_t i = first_x; i < columns_; ++i) {
        const Field& fd = f_[i];
        if (fd.len == 0) {
            error = place(fd.col) + ": " + field_name(i) + ": empty field";
            return false;
        }
        if (!parse_number(fd.text(), x[i - first_x])) {
            error = place(fd.col) + ": " + field_name(i) + ": malformed number \"" + std::string(fd.text()) + "\"";
            if (fd.text().find(',') != std::string_view::npos && looks_numeric(fd.text())) {
                error += " (decimal commas: write numbers with a decimal point, 1.5 not 1,5)";
                fatal = true;
            }
            return false;
        }
    }
    if (columns_ == 13) {
        const Field& fd = f_[0];
        const std::string_view t = fd.text();
        if (t.empty()) {
            error = place(fd.col) + ": " + field_name(0) + ": empty field";
            return false;
        }
        // A time stamp holds a digit; a word there is a heading taken for a row, or a mistake.
        if (std::none_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; }) && !looks_numeric(t)) {
            error = place(fd.col) + ": " + field_name(0) + ": \"" + std::string(t) + "\" is not a time (it holds no digit)";
            if (!heading_fields_ && lines_.line_number() == first_row_line_)
                error += "; a heading line must hold names only, no numbers";
            return false;
        }
        double tv = kNaN;
        if (options_.time_numbers != TimeNumbers::none && !parse_number(t, tv)) {
            if (options_.time_numbers == TimeNumbers::strict) {
                error = place(fd.col) + ": " + field_name(0) + ": \"" + std::string(t) +
                        "\" is not a number, and the output holds times as numbers";
                if (t.find(',') != std::string_view::npos && looks_numeric(t)) {
                    error += " (decimal commas: write numbers with a decimal point, 1.5 not 1,5)";
                    fatal = true;
                }
                return false;
            }
            tv = kNaN;
        }
        b.t[b.rows] = tv;
        b.time_text.append(t.data(), t.size());
        b.time_end.push_back(static_cast<std::uint32_t>(b.time_text.size()));
    }
    ++b.rows;
    return true;
}

CsvSource::Line CsvSource::take_line(Block& b, std::string_view line, std::string& error, bool& fatal) {
    if (lines_.line_number() == 1 && line.substr(0, 3) == "\xEF\xBB\xBF") {
        line.remove_prefix(3);
        col_shift_ = 3;
    }
    if (lines_.line_number() == 1 && line.substr(0, 6) == "\x93NUMPY") {
        error = place(1) + ": this is a NumPy file, not CSV (read it with --from npy)";
        return fatal = true, Line::bad;
    }
    // Blank lines and '#' comments carry no sample.
    const std::size_t content = line.find_first_not_of(" \t");
    if (content == std::string_view::npos || line[content] == '#') return Line::none;
    if (!seen_content_) {
        seen_content_ = true;
        bool heading = false;
        if (!first_line(line, heading, error)) return fatal = true, Line::bad;
        if (heading) return Line::none;
    } else if (!split(line, error)) {
        return Line::bad;
    }
    if (columns_ == 0 && !fix_columns(error, fatal)) return Line::bad;
    return read_row(b, line, error, fatal) ? Line::row : Line::bad;
}

Source::Status CsvSource::next(Block& b) {
    b.clear();
    std::string error;
    std::string_view line;
    while (b.rows < Block::kRows && b.time_text.size() < (1u << 30)) {
        const LineReader::Status status = lines_.next(line);
        if (status == LineReader::Status::end) return Status::end;
        if (status == LineReader::Status::read_error) {
            error_ = in_.error();
            return Status::io_error;
        }
        col_shift_ = 0;
        bool fatal = false;
        Line got = Line::bad;
        if (status == LineReader::Status::too_long)
            error = place(1) + ": line longer than " + std::to_string(LineReader::kBlock) + " bytes";
        else
            got = take_line(b, line, error, fatal);
        if (got == Line::none) continue;
        ++rows_read_;
        if (got == Line::row) continue;
        // Decimal commas and the like are the file's notation: skipping rows would half-read it.
        if (!options_.skip_bad || fatal) {
            error_ = error;
            return Status::bad_data;
        }
        skipped_.add(lines_.line_number(), error);
        error.clear();
    }
    return Status::more;
}

// ---------------------------------------------------------------------------------------------
// Raw little-endian doubles

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "f64 records are read as native doubles");

class F64Source : public Source {
  public:
    F64Source(InputFile& in, const SourceOptions& o) : in_(in), options_(o) {
        info_.places_are_lines = false;
        if (in.seekable()) info_.known_rows = static_cast<std::uint64_t>(in.size()) / kRecord;
    }
    Status next(Block& b) override {
        b.clear();
        if (done_) return Status::end;
        const std::size_t want = Block::kRows * kRecord;
        // Bytes go straight into the doubles: a record is 12 native doubles.
        const std::ptrdiff_t got = in_.read_full(reinterpret_cast<char*>(b.x.data()), want);
        if (got < 0) {
            error_ = in_.error();
            return Status::io_error;
        }
        const std::size_t have = static_cast<std::size_t>(got);
        if (offset_ == 0 && have > 0 && !plausible(b, have)) {
            done_ = true;
            b.rows = 0;
            return Status::bad_data;
        }
        b.rows = have / kRecord;
        rows_read_ += b.rows;
        const std::uint64_t at = offset_ + b.rows * kRecord;
        offset_ += have;
        if (have == want) return Status::more;
        done_ = true;
        if (have % kRecord == 0) return Status::end;
        const std::string error = in_.name() + ": byte offset " + std::to_string(at) + ": truncated record: " +
                                  std::to_string(have % kRecord) + " of " + std::to_string(kRecord) +
                                  " bytes (12 little-endian doubles per sample)";
        ++rows_read_;
        if (options_.skip_bad) {
            skipped_.add(at, error);
            return Status::end;
        }
        error_ = error;
        return Status::bad_data;
    }
    std::uint64_t bytes_consumed() const override { return offset_; }

  private:
    static constexpr std::size_t kRecord = 12 * sizeof(double);
    // Raw doubles are taken as they come, so a text file given as f64 would become rows of
    // nonsense. A first record of nothing but text bytes is text; in a file that is not a
    // whole number of records, a first record of absurd magnitudes is not glove readings.
    bool plausible(const Block& b, std::size_t have) {
        const std::size_t n = std::min(have, kRecord);
        const unsigned char* p = reinterpret_cast<const unsigned char*>(b.x.data());
        const bool text = std::all_of(p, p + n, [](unsigned char c) { return (c >= 0x20 && c < 0x7F) || c == '\t' || c == '\n' || c == '\r'; });
        if (text) {
            std::string start(reinterpret_cast<const char*>(p), std::min<std::size_t>(n, 24));
            for (char& c : start)
                if (c == '\n' || c == '\r' || c == '\t') c = ' ';
            error_ = in_.name() + ": byte offset 0: this is text (\"" + start +
                     "...\"), not raw little-endian doubles; read it with --from csv";
            return false;
        }
        if (in_.seekable() && in_.size() % kRecord != 0 && have >= kRecord) {
            char number[kMaxNumberText];
            for (std::size_t i = 0; i < 12; ++i) {
                const double v = std::fabs(b.x[i]);
                if (std::isfinite(v) && v != 0 && (v < 1e-30 || v > 1e30)) {
                    error_ = in_.name() + ": byte offset 0: not raw doubles of glove readings: " + std::to_string(in_.size()) +
                             " bytes is not a whole number of 96-byte records (12 little-endian doubles per sample), "
                             "and the first record holds x" + std::to_string(i) + " = " +
                             std::string(number, format_number(number, b.x[i]));
                    return false;
                }
            }
        }
        return true;
    }
    InputFile& in_;
    SourceOptions options_;
    std::uint64_t offset_ = 0;
    bool done_ = false;
};

// ---------------------------------------------------------------------------------------------
// NumPy .npy

class NpySource : public Source {
  public:
    NpySource(InputFile& in, const npy::Header& h) : in_(in), h_(h) {
        info_.places_are_lines = false;
        info_.has_time = h.columns == 13;
        if (info_.has_time) info_.time_name = "time";
        if (in.seekable()) info_.known_rows = h.rows;
        raw_.resize(Block::kRows * h.columns * h.item_size);
    }

    Status next(Block& b) override {
        b.clear();
        if (done_ == h_.rows) return finish();
        const std::size_t n = static_cast<std::size_t>(std::min<std::uint64_t>(Block::kRows, h_.rows - done_));
        const std::size_t cols = static_cast<std::size_t>(h_.columns), item = h_.item_size;
        const std::size_t row_bytes = cols * item;
        std::size_t rows = n;
        if (!h_.fortran_order) {
            // Plain little-endian doubles without a time column are already the readings.
            const bool direct = item == 8 && !h_.big_endian && cols == 12;
            char* into = direct ? reinterpret_cast<char*>(b.x.data()) : raw_.data();
            const std::ptrdiff_t got = in_.read_full(into, n * row_bytes);
            if (got < 0) {
                error_ = in_.error();
                return Status::io_error;
            }
            if (static_cast<std::size_t>(got) < n * row_bytes) {
                rows = static_cast<std::size_t>(got) / row_bytes;
                error_ = short_data(h_.data_offset + done_ * row_bytes + static_cast<std::uint64_t>(got));
            }
            if (!direct) convert_rows(b, rows, [&](std::size_t r, std::size_t c) { return raw_.data() + (r * cols + c) * item; });
        } else {
            // Column-major: each column's part of these rows is one run of bytes.
            if (!in_.seekable() && whole_.empty()) {
                const Status loaded = load_whole();
                if (loaded != Status::more) return loaded;
            }
            for (std::size_t c = 0; c < cols; ++c) {
                const std::uint64_t at = (c * h_.rows + done_) * item;
                char* into = raw_.data() + c * n * item;
                if (in_.seekable()) {
                    if (!in_.read_at(into, n * item, h_.data_offset + at)) {
                        error_ = in_.error();
                        return Status::io_error;
                    }
                } else {
                    std::memcpy(into, whole_.data() + at, n * item);
                }
            }
            convert_rows(b, n, [&](std::size_t r, std::size_t c) { return raw_.data() + (c * n + r) * item; });
        }
        b.rows = rows;
        done_ += rows;
        rows_read_ += rows;
        if (!error_.empty()) return Status::bad_data;
        return done_ == h_.rows ? finish() : Status::more;
    }
    std::uint64_t bytes_consumed() const override { return h_.data_offset + done_ * h_.columns * h_.item_size; }
    // A file shorter than its header says: its whole rows are what will be read.
    void whole_rows_in_file(std::uint64_t size) {
        const std::uint64_t data = size - std::min<std::uint64_t>(size, h_.data_offset);
        info_.known_rows = std::min<std::uint64_t>(h_.rows, data / (h_.columns * h_.item_size));
    }

  private:
    template <class At>
    void convert_rows(Block& b, std::size_t rows, At at) {
        const std::size_t cols = static_cast<std::size_t>(h_.columns);
        const std::size_t first_x = cols - 12;
        for (std::size_t r = 0; r < rows; ++r) {
            if (first_x) b.t[r] = load(at(r, 0));
            for (std::size_t c = first_x; c < cols; ++c) b.x[r * 12 + c - first_x] = load(at(r, c));
        }
    }
    double load(const char* p) const {
        if (h_.item_size == 8) {
            std::uint64_t u;
            std::memcpy(&u, p, 8);
            if (h_.big_endian) u = __builtin_bswap64(u);
            double d;
            std::memcpy(&d, &u, 8);
            return d;
        }
        std::uint32_t u;
        std::memcpy(&u, p, 4);
        if (h_.big_endian) u = __builtin_bswap32(u);
        float f;
        std::memcpy(&f, &u, 4);
        return static_cast<double>(f);
    }
    std::string short_data(std::uint64_t end) const {
        return in_.name() + ": byte offset " + std::to_string(end) + ": short data: the file ends inside row " +
               std::to_string(end >= h_.data_offset ? (end - h_.data_offset) / (h_.columns * h_.item_size) : 0) +
               " of the " + std::to_string(h_.rows) + " its header's shape " + h_.shape + " announces";
    }
    // A column-major array from a pipe cannot be read a row at a time: it is held whole.
    Status load_whole() {
        const std::uint64_t bytes = h_.data_bytes();
        if (bytes > (std::uint64_t(8) << 30)) {
            error_ = in_.name() + ": a Fortran-order array of " + std::to_string(bytes) +
                     " bytes from a pipe is too large to hold; give the file's path instead";
            return Status::io_error;
        }
        // The buffer grows with the data that arrives, not with what the header claims: a
        // damaged header must not make the tool take gigabytes for nothing.
        whole_.clear();
        std::uint64_t got = 0;
        while (got < bytes) {
            const std::uint64_t chunk = std::min<std::uint64_t>(bytes - got, std::max<std::uint64_t>(got, 1 << 20));
            whole_.resize(static_cast<std::size_t>(got + chunk));
            const std::ptrdiff_t n = in_.read_full(whole_.data() + got, static_cast<std::size_t>(chunk));
            if (n < 0) {
                error_ = in_.error();
                return Status::io_error;
            }
            got += static_cast<std::uint64_t>(n);
            if (static_cast<std::uint64_t>(n) < chunk) break;  // the input ended
        }
        if (got < bytes) {
            // Column-major data cut short holds no whole row.
            error_ = in_.name() + ": byte offset " + std::to_string(h_.data_offset + static_cast<std::uint64_t>(got)) +
                     ": short data: the header's shape " + h_.shape + " needs " + std::to_string(bytes) +
                     " bytes of data, the input ends after " + std::to_string(got);
            return Status::bad_data;
        }
        return Status::more;
    }
    // After the last row: nothing may follow the data the header announces.
    Status finish() {
        if (finished_) return Status::end;
        finished_ = true;
        if (in_.seekable()) return Status::end;  // checked against the file's size when opened
        char extra;
        const std::ptrdiff_t got = in_.read(&extra, 1);
        if (got < 0) {
            error_ = in_.error();
            return Status::io_error;
        }
        if (got == 0) return Status::end;
        error_ = in_.name() + ": byte offset " + std::to_string(h_.data_offset + h_.data_bytes()) +
                 ": more data than the header's shape " + h_.shape + " announces";
        return Status::bad_data;
    }

    InputFile& in_;
    npy::Header h_;
    std::vector<char> raw_, whole_;
    std::uint64_t done_ = 0;
    bool finished_ = false;
};

std::unique_ptr<Source> open_npy(InputFile& in, std::string& error) {
    npy::Header h;
    const std::string where = in.name() + ": npy header: ";
    unsigned char prelude[npy::kPrelude + 4];
    std::ptrdiff_t got = in.read_full(reinterpret_cast<char*>(prelude), npy::kPrelude);
    if (got < 0) return error = in.error(), nullptr;
    std::string e = npy::parse_prelude(prelude, static_cast<std::size_t>(got), h);
    if (!e.empty()) return error = where + e, nullptr;
    const std::size_t field = npy::length_field_size(h.major);
    got = in.read_full(reinterpret_cast<char*>(prelude + npy::kPrelude), field);
    if (got < 0) return error = in.error(), nullptr;
    if (static_cast<std::size_t>(got) < field) return error = where + "the file ends inside the header", nullptr;
    const std::uint32_t len = npy::header_length(prelude + npy::kPrelude, h.major);
    if (len > (1u << 24)) return error = where + "a header length of " + std::to_string(len) + " bytes is not believable", nullptr;
    std::string text(len, '\0');
    got = in.read_full(text.data(), len);
    if (got < 0) return error = in.error(), nullptr;
    if (static_cast<std::size_t>(got) < len)
        return error = where + "the file ends inside the header (" + std::to_string(len) + " bytes announced, " +
                       std::to_string(got) + " there)", nullptr;
    e = npy::parse_dict(text, h);
    if (!e.empty()) return error = where + e, nullptr;
    if (h.columns != 12 && h.columns != 13)
        return error = where + "shape " + h.shape + ": expected (N, 12) readings x0..x11, or (N, 13) with the time first",
               nullptr;
    h.data_offset = npy::kPrelude + field + len;
    if (in.seekable()) {
        const std::uint64_t data = static_cast<std::uint64_t>(in.size()) - std::min<std::uint64_t>(in.size(), h.data_offset);
        const std::uint64_t row = h.columns * h.item_size;
        // Data cut short: a C-order array gives its whole rows and then the fault, as from a
        // pipe; a Fortran-order one holds no whole row.
        if (data < h.data_bytes() && h.fortran_order)
            return error = in.name() + ": byte offset " + std::to_string(in.size()) + ": short data: the header's shape " +
                           h.shape + " needs " + std::to_string(h.data_bytes()) + " bytes of data, the file holds " +
                           std::to_string(data) + " (" + std::to_string(data / row) + " whole rows)", nullptr;
        if (data > h.data_bytes())
            return error = in.name() + ": byte offset " + std::to_string(h.data_offset + h.data_bytes()) + ": " +
                           std::to_string(data - h.data_bytes()) + " bytes follow the data that the header's shape " +
                           h.shape + " announces", nullptr;
    }
    auto source = std::make_unique<NpySource>(in, h);
    if (in.seekable()) source->whole_rows_in_file(static_cast<std::uint64_t>(in.size()));
    return source;
}

}  // namespace

std::unique_ptr<Source> open_source(InputFile& in, const SourceOptions& options, std::string& error) {
    switch (options.format) {
        case Format::csv: return std::make_unique<CsvSource>(in, options);
        case Format::f64: return std::make_unique<F64Source>(in, options);
        case Format::npy: return open_npy(in, error);
    }
    return nullptr;
}

}  // namespace quil::retarget
