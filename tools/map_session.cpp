#include "map_session.h"

#include <new>

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "core/records.h"
#include "progress.h"
#include "retarget_io.h"
#include "svg_plot.h"

namespace quil::retarget {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::uint64_t kProgressEvery = 4096;  // rows between progress and output checks
constexpr std::size_t kListedBadRows = 10;

// What --skip-bad leaves out, so it can be reported.
struct SkippedRows {
    std::uint64_t count = 0;
    std::vector<std::string> where;  // first few line numbers or byte offsets
    std::string first_message;

    void add(const std::string& place, const std::string& message) {
        if (count == 0) first_message = message;
        ++count;
        if (where.size() < kListedBadRows) where.push_back(place);
    }
    void report(std::FILE* err, const std::string& input, bool lines) const {
        if (count == 0) return;
        std::fprintf(err, "quil-retarget: skipped %llu bad %s of %s, at %s ",
                     static_cast<unsigned long long>(count), count == 1 ? "row" : "rows",
                     input.c_str(), lines ? (where.size() == 1 ? "line" : "lines") : "byte offset");
        for (std::size_t i = 0; i < where.size(); ++i)
            std::fprintf(err, "%s%s", i ? ", " : "", where[i].c_str());
        std::fprintf(err, "%s\nquil-retarget: the first was: %s\n", count > where.size() ? ", ..." : "",
                     first_message.c_str());
    }
};

// Feeds samples through one hand, in order, through one memory, as a live host would.
class Mapper {
  public:
    explicit Mapper(const quil_hand_info& model) : hand_(quil_hand_open(model.name)) {
        if (!hand_) throw std::bad_alloc();
    }
    Mapper(const Mapper&) = delete;
    Mapper& operator=(const Mapper&) = delete;
    ~Mapper() { quil_hand_close(hand_); }
    TargetArray operator()(const InputAngles& in) {
        TargetArray t;
        quil_hand_map(hand_, in.x.data(), t.data());
        return t;
    }

  private:
    quil_hand* hand_;
};

// The parts of the run that both formats share: the mapping, the output, the plot and the
// progress display.
struct Run {
    const MapOptions& options;
    std::FILE* err;
    InputFile in;
    OutputFile out;
    OutputFile svg;  // opened before the run, written after it
    Mapper mapper;
    std::unique_ptr<SessionPlot> plot;
    Progress progress;
    SkippedRows skipped;
    std::uint64_t rows = 0;

    Run(const MapOptions& o, std::FILE* e)
        : options(o), err(e), in(o.input), mapper(*o.model),
          plot(o.plot.empty() ? nullptr : new SessionPlot()),
          progress(o.progress, in.size(), e) {}

    // Every few thousand rows: redraw the progress and notice a failing output early.
    bool checkpoint(std::uint64_t bytes) {
        if (rows % kProgressEvery != 0) return true;
        progress.update(rows, bytes);
        return out.ok();
    }

    void fail(const std::string& message) const {
        std::fprintf(err, "quil-retarget: %s\n", message.c_str());
    }

    // Flushes the rows written so far, writes the plot, reports skipped rows; returns the exit
    // status, `status` unless the output or the plot could not be written.
    int finish(int status, const std::string& data_error, const SessionPlot::Labels& labels,
               bool lines) {
        progress.finish();
        out.flush();
        if (!data_error.empty()) fail(data_error);
        if (!out.ok()) {
            fail(out.error());
            status = kExitIo;
        }
        if (plot) {
            svg.append(plot->svg(labels));
            if (!svg.flush()) {
                fail(svg.error());
                status = kExitIo;
            }
        }
        skipped.report(err, in.name(), lines);
        return status;
    }

    SessionPlot::Labels labels(const std::string& time_name) const {
        SessionPlot::Labels l;
        l.title = std::string(options.model->name) + " " + options.model->version;
        l.source = in.name();
        l.time_name = time_name;
        return l;
    }
};

// ---------------------------------------------------------------------------------------------
// CSV

struct Field {
    std::size_t begin, end;  // within the line, after trimming blanks
};

class CsvFormat {
  public:
    explicit CsvFormat(Run& run) : run_(run), lines_(run.in) {}

    int convert();

  private:
    void detect(std::string_view first_line);
    std::size_t split(std::string_view line);
    bool looks_like_header(std::string_view line, std::size_t n) const;
    // Checks and reads one data row; on a fault fills `error` ("FILE:LINE:COL: ...").
    bool read_row(std::string_view line, std::size_t n, std::string& error);
    std::string place(std::size_t column) const;
    std::string field_name(std::size_t f) const;
    void write_header();
    void write_row(const TargetArray& target);

    Run& run_;
    LineReader lines_;
    char sep_ = 0;               // ',' ';' or '\t', from the first line
    std::size_t columns_ = 0;    // 12 or 13 once known
    bool header_written_ = false;
    std::string time_name_;      // the time column's heading
    std::array<std::string, 12> input_names_;
    std::array<Field, 14> fields_{};  // one past 13, to point at the first extra field
    InputAngles in_{};
    std::string_view time_;
};

void CsvFormat::detect(std::string_view line) {
    // A tab or a semicolon in the first line means that it separates the fields (a semicolon
    // file may use decimal commas, which are then reported, not misread); else commas do.
    sep_ = line.find('\t') != std::string_view::npos   ? '\t'
           : line.find(';') != std::string_view::npos ? ';'
                                                      : ',';
}

std::size_t CsvFormat::split(std::string_view line) {
    const char* base = line.data();
    const std::size_t len = line.size();
    auto blank = [&](char c) { return c == ' ' || (c == '\t' && sep_ != '\t'); };
    std::size_t n = 0, pos = 0;
    for (;;) {
        const void* hit = pos < len ? std::memchr(base + pos, sep_, len - pos) : nullptr;
        const std::size_t stop = hit ? static_cast<std::size_t>(static_cast<const char*>(hit) - base) : len;
        if (n < fields_.size()) {
            std::size_t b = pos, e = stop;
            while (b < e && blank(base[b])) ++b;
            while (e > b && blank(base[e - 1])) --e;
            fields_[n] = Field{b, e};
        }
        ++n;
        if (!hit) return n;
        pos = stop + 1;
    }
}

bool CsvFormat::looks_like_header(std::string_view line, std::size_t n) const {
    // A heading line names its columns: none of its fields reads as a number.
    double v;
    for (std::size_t f = 0; f < n && f < fields_.size(); ++f) {
        const Field& fd = fields_[f];
        if (parse_number(line.substr(fd.begin, fd.end - fd.begin), v)) return false;
    }
    return true;
}

std::string CsvFormat::place(std::size_t column) const {
    return run_.in.name() + ":" + std::to_string(lines_.line_number()) + ":" + std::to_string(column);
}

std::string CsvFormat::field_name(std::size_t f) const {
    const bool timed = columns_ == 13;
    std::string r = "field " + std::to_string(f + 1);
    if (timed && f == 0) return r + " (time)";
    return r + " (x" + std::to_string(f - (timed ? 1 : 0)) + ")";
}

bool CsvFormat::read_row(std::string_view line, std::size_t n, std::string& error) {
    if (n != columns_) {
        const std::string expected = std::to_string(columns_) +
                                     (columns_ == 13 ? " fields (time, x0..x11)" : " fields (x0..x11)");
        if (n < columns_)
            error = place(line.size() + 1) + ": short row: expected " + expected + ", found " + std::to_string(n);
        else
            error = place(fields_[columns_].begin + 1) + ": long row: expected " + expected + ", found " +
                    std::to_string(n);
        return false;
    }
    const std::size_t first_x = columns_ - 12;
    for (std::size_t f = 0; f < n; ++f) {
        const Field& fd = fields_[f];
        const std::string_view text = line.substr(fd.begin, fd.end - fd.begin);
        if (text.empty()) {
            error = place(fd.begin + 1) + ": " + field_name(f) + ": empty field";
            return false;
        }
        if (f < first_x) {
            time_ = text;  // copied to the output as it stands
            continue;
        }
        if (!parse_number(text, in_.x[f - first_x])) {
            error = place(fd.begin + 1) + ": " + field_name(f) + ": malformed number \"" + std::string(text) + "\"";
            if (sep_ == ';' && text.find(',') != std::string_view::npos)
                error += " (write decimals with a point: 1.5, not 1,5)";
            return false;
        }
    }
    return true;
}

void CsvFormat::write_header() {
    std::string h;
    if (columns_ == 13) h += time_name_ + ",";
    for (int i = 0; i < 24; ++i) h += "out" + std::to_string(i) + (i < 23 ? "," : "\n");
    run_.out.append(h);
    header_written_ = true;
}

void CsvFormat::write_row(const TargetArray& target) {
    char* p = run_.out.reserve(time_.size() + 24 * (kMaxNumberText + 1) + 1);
    if (columns_ == 13) {
        std::memcpy(p, time_.data(), time_.size());
        p += time_.size();
        *p++ = ',';
    }
    for (int i = 0; i < 24; ++i) {
        p = format_number(p, target[i]);
        *p++ = ',';
    }
    p[-1] = '\n';
    run_.out.commit(p);
}

int CsvFormat::convert() {
    bool first = true;
    std::string error;
    std::string_view line;
    for (;;) {
        const LineReader::Status status = lines_.next(line);
        if (status == LineReader::Status::end) break;
        if (status == LineReader::Status::read_error) {
            run_.fail(run_.in.error());
            return run_.finish(kExitIo, "", run_.labels(time_name_), true);
        }
        if (status == LineReader::Status::too_long) {
            error = place(1) + ": line longer than " + std::to_string(LineReader::kBlock) + " bytes";
            if (!run_.options.skip_bad) break;
            run_.skipped.add(std::to_string(lines_.line_number()), error);
            error.clear();
            continue;
        }
        if (first && lines_.line_number() == 1 && line.substr(0, 3) == "\xEF\xBB\xBF") line.remove_prefix(3);
        // Blank lines and '#' comments carry no sample.
        const std::size_t content = line.find_first_not_of(" \t");
        if (content == std::string_view::npos || line[content] == '#') continue;

        if (first) {
            first = false;
            detect(line);
            const std::size_t n = split(line);
            if (looks_like_header(line, n)) {
                if (n != 12 && n != 13) {
                    error = place(1) + ": the heading line has " + std::to_string(n) +
                            " fields; expected 12 (x0..x11) or 13 (a time column, then x0..x11)";
                    break;
                }
                columns_ = n;
                const std::size_t first_x = n - 12;
                if (n == 13) time_name_ = std::string(line.substr(fields_[0].begin, fields_[0].end - fields_[0].begin));
                for (std::size_t i = 0; i < 12; ++i) {
                    const Field& fd = fields_[first_x + i];
                    input_names_[i] = std::string(line.substr(fd.begin, fd.end - fd.begin));
                }
                continue;
            }
        }
        const std::size_t n = split(line);
        if (columns_ == 0 && (n == 12 || n == 13)) columns_ = n;  // no heading: the first row tells
        if (columns_ == 0) {
            error = place(line.size() + 1) + ": expected 12 fields (x0..x11) or 13 (time, x0..x11), found " +
                    std::to_string(n);
        } else if (read_row(line, n, error)) {
            if (!header_written_) {
                if (columns_ == 13 && time_name_.empty()) time_name_ = "time";
                write_header();
            }
            const TargetArray target = run_.mapper(in_);
            write_row(target);
            if (run_.plot) {
                double t = kNaN;
                if (columns_ == 13 && !parse_number(time_, t)) t = kNaN;
                run_.plot->add(t, in_.x.data(), target.data());
            }
            ++run_.rows;
            if (!run_.checkpoint(lines_.bytes_consumed())) break;
            continue;
        }
        if (!run_.options.skip_bad) break;
        run_.skipped.add(std::to_string(lines_.line_number()), error);
        error.clear();
    }
    if (!header_written_) write_header();  // an input without rows still gives a heading
    SessionPlot::Labels labels = run_.labels(columns_ == 13 ? time_name_ : "");
    for (int i = 0; i < 12; ++i) labels.input_names[i] = input_names_[i];
    return run_.finish(error.empty() ? kExitOk : kExitBadData, error, labels, true);
}

// ---------------------------------------------------------------------------------------------
// Raw little-endian doubles

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "f64 records are read as native doubles");

int convert_f64(Run& run) {
    constexpr std::size_t kIn = 12 * sizeof(double), kOut = 24 * sizeof(double);
    constexpr std::size_t kRecords = 8192;
    std::vector<char> buf(kIn * kRecords);
    std::size_t have = 0;  // bytes in buf, all of a partial record after the loop body
    std::uint64_t offset = 0;  // byte offset of buf[0] in the input
    bool eof = false;
    InputAngles in;
    while (!eof) {
        const std::ptrdiff_t got = run.in.read(buf.data() + have, buf.size() - have);
        if (got < 0) {
            run.fail(run.in.error());
            return run.finish(kExitIo, "", run.labels(""), false);
        }
        if (got == 0) eof = true;
        have += static_cast<std::size_t>(got);
        const std::size_t whole = have / kIn;
        bool stop = false;
        for (std::size_t r = 0; r < whole; ++r) {
            std::memcpy(in.x.data(), buf.data() + r * kIn, kIn);
            const TargetArray target = run.mapper(in);
            char* p = run.out.reserve(kOut);
            std::memcpy(p, target.data(), kOut);
            run.out.commit(p + kOut);
            if (run.plot) run.plot->add(kNaN, in.x.data(), target.data());
            ++run.rows;
            if (!run.checkpoint(offset + (r + 1) * kIn)) {
                stop = true;
                break;
            }
        }
        if (stop) break;
        const std::size_t used = whole * kIn;
        std::memmove(buf.data(), buf.data() + used, have - used);
        have -= used;
        offset += used;
    }
    std::string error;
    if (have > 0 && run.out.ok()) {
        error = run.in.name() + ": byte offset " + std::to_string(offset) + ": truncated record: " +
                std::to_string(have) + " of " + std::to_string(kIn) + " bytes (12 little-endian doubles per sample)";
        if (run.options.skip_bad) {
            run.skipped.add(std::to_string(offset), error);
            error.clear();
        }
    }
    return run.finish(error.empty() ? kExitOk : kExitBadData, error, run.labels(""), false);
}

}  // namespace

int run_map(const MapOptions& options, std::FILE* err) {
    Run run(options, err);
    if (!run.in.ok()) {
        run.fail(run.in.error());
        return kExitIo;
    }
    for (const std::string* target : {&options.output, &options.plot}) {
        if (run.in.is_same_file(*target)) {
            run.fail("refusing to write '" + *target + "': it is the input");
            return kExitUsage;
        }
    }
    // Opened only once the input is there, so a mistyped input leaves an old output alone.
    if (run.plot && !run.svg.open(options.plot)) {
        run.fail(run.svg.error());
        return kExitIo;
    }
    if (!run.out.open(options.output)) {
        run.fail(run.out.error());
        return kExitIo;
    }
    if (options.format == Format::f64) return convert_f64(run);
    CsvFormat csv(run);
    return csv.convert();
}

}  // namespace quil::retarget
