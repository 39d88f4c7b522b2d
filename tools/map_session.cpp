#include "map_session.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <vector>

#include "progress.h"
#include "quil_linear/hand.hpp"
#include "profile_json.h"
#include "retarget_io.h"
#include "run_record.h"
#include "svg_plot.h"

extern char** environ;

namespace quil::retarget {

namespace {

std::string lower_extension(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    const std::size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string e = path.substr(dot);
    for (char& c : e) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return e;
}

// Writes a CSV field, in quotes when a reader would otherwise split or trim it.
void append_csv_field(std::string& out, std::string_view s) {
    const bool quote = s.find_first_of(",\"\r\n") != std::string_view::npos ||
                       (!s.empty() && (s.front() == ' ' || s.front() == '\t' || s.back() == ' ' || s.back() == '\t'));
    if (!quote) {
        out.append(s.data(), s.size());
        return;
    }
    out += '"';
    for (char c : s) {
        if (c == '"') out += '"';
        out += c;
    }
    out += '"';
}

// ---------------------------------------------------------------------------------------------
// Writers of the targets

class Sink {
  public:
    virtual ~Sink() = default;
    // Before the first row, or at the end of an input without rows.
    virtual void begin(const SourceInfo& info) = 0;
    virtual void write(const Block& b, const double* targets) = 0;
    // Where the targets of `rows` rows can be mapped straight into the output, or null; such
    // rows are then taken with wrote_direct(rows) instead of write().
    virtual double* direct(std::size_t) { return nullptr; }
    virtual void wrote_direct(std::size_t) {}
    // After the last row; "" or what went wrong.
    virtual std::string finish(std::uint64_t) { return ""; }
    bool time_written = false;
    std::size_t width = 24;  // values per row: the 24 targets, or a profile's commands
};

class CsvSink : public Sink {
  public:
    CsvSink(OutputFile& out, std::vector<std::string> names) : out_(out), names_(std::move(names)) {}
    void begin(const SourceInfo& info) override {
        info_ = info;
        time_written = info.has_time;
        std::string h;
        if (info.has_time) {
            append_csv_field(h, info.time_name);
            h += ',';
        }
        for (std::size_t i = 0; i < names_.size(); ++i) {
            append_csv_field(h, names_[i]);
            h += i + 1 < names_.size() ? ',' : '\n';
        }
        out_.append(h);
    }
    void write(const Block& b, const double* targets) override {
        for (std::size_t r = 0; r < b.rows; ++r) {
            std::string_view time;
            if (info_.has_time && info_.time_as_text) {
                time = b.time_of(r);
                if (std::memchr(time.data(), ',', time.size()) || std::memchr(time.data(), '"', time.size()) ||
                    time.front() == ' ' || time.back() == ' ') {
                    quoted_.clear();
                    append_csv_field(quoted_, time);
                    time = quoted_;
                }
            }
            char* p = out_.reserve(time.size() + (width + 1) * (kMaxNumberText + 1) + 1);
            if (info_.has_time) {
                if (info_.time_as_text) {
                    std::memcpy(p, time.data(), time.size());
                    p += time.size();
                } else {
                    p = format_number(p, b.t[r]);
                }
                *p++ = ',';
            }
            const double* t = targets + r * width;
            for (std::size_t i = 0; i < width; ++i) {
                p = format_number(p, t[i]);
                *p++ = ',';
            }
            p[-1] = '\n';
            out_.commit(p);
        }
    }

  private:
    OutputFile& out_;
    std::vector<std::string> names_;
    SourceInfo info_;
    std::string quoted_;
};

// Rows of 24 doubles go straight into the output's buffer when it is aligned for them, which
// it is whenever all before them were doubles too.
double* aligned_room(OutputFile& out, std::size_t rows) {
    char* p = out.reserve(rows * 24 * sizeof(double));
    return reinterpret_cast<std::uintptr_t>(p) % alignof(double) == 0 ? reinterpret_cast<double*>(p) : nullptr;
}

class F64Sink : public Sink {
  public:
    explicit F64Sink(OutputFile& out) : out_(out) {}
    void begin(const SourceInfo&) override {}
    void write(const Block& b, const double* targets) override {
        const std::size_t n = b.rows * width * sizeof(double);
        char* p = out_.reserve(n);
        std::memcpy(p, targets, n);
        out_.commit(p + n);
    }
    double* direct(std::size_t rows) override { return width == 24 ? aligned_room(out_, rows) : nullptr; }
    void wrote_direct(std::size_t rows) override {
        out_.commit(out_.reserve(rows * 24 * sizeof(double)) + rows * 24 * sizeof(double));
    }

  private:
    OutputFile& out_;
};

// A (N, 24) or, with the time first, (N, 25) '<f8' array. Its header is written first with the
// row count known beforehand, else with none and rewritten in place once the count is known.
class NpySink : public Sink {
  public:
    NpySink(OutputFile& out, std::optional<std::uint64_t> known_rows) : out_(out), known_(known_rows) {}
    void begin(const SourceInfo& info) override {
        time_written = info.has_time;
        columns_ = info.has_time ? width + 1 : width;
        out_.append(npy::header_for(known_ && !out_.seekable() ? *known_ : 0, columns_));
    }
    void write(const Block& b, const double* targets) override {
        const std::size_t n = b.rows * columns_ * sizeof(double);
        char* p = out_.reserve(n);
        if (columns_ == width) {
            std::memcpy(p, targets, n);
        } else {
            for (std::size_t r = 0; r < b.rows; ++r) {
                std::memcpy(p, &b.t[r], sizeof(double));
                std::memcpy(p + sizeof(double), targets + r * width, width * sizeof(double));
                p += columns_ * sizeof(double);
            }
            p -= n;
        }
        out_.commit(p + n);
    }
    double* direct(std::size_t rows) override { return columns_ == 24 && width == 24 ? aligned_room(out_, rows) : nullptr; }
    void wrote_direct(std::size_t rows) override {
        out_.commit(out_.reserve(rows * 24 * sizeof(double)) + rows * 24 * sizeof(double));
    }
    std::string finish(std::uint64_t rows) override {
        if (out_.seekable()) {
            const std::string h = npy::header_for(rows, columns_);
            if (!out_.patch(0, h.data(), h.size())) return out_.error();
            return "";
        }
        if (known_ && rows != *known_)
            return out_.name() + ": the npy header announces " + std::to_string(*known_) + " rows but " +
                   std::to_string(rows) + " were written: the array is incomplete";
        return "";
    }

  private:
    OutputFile& out_;
    std::optional<std::uint64_t> known_;
    std::size_t columns_ = 24;
};

// The CSV heading's names of the 24 slots: outN, or the slot roles, a repeated role (unused,
// say) followed by its slot number so that every column has its own name.
std::vector<std::string> column_names(const quil_hand_info& hand, bool roles) {
    std::vector<std::string> names(24);
    std::map<std::string, int> uses;
    if (roles)
        for (int i = 0; i < 24; ++i) ++uses[hand.slot_roles[i]];
    for (int i = 0; i < 24; ++i) {
        if (!roles) names[i] = "out" + std::to_string(i);
        else if (uses[hand.slot_roles[i]] > 1) names[i] = std::string(hand.slot_roles[i]) + "_" + std::to_string(i);
        else names[i] = hand.slot_roles[i];
    }
    return names;
}

// The state saved with --state-out goes to a temporary file beside its target when the run
// begins (so an unwritable place is known before any work) and is renamed over it at the end.
class StateOut {
  public:
    bool open(const std::string& path, std::string& error) {
        if (path.empty()) return true;
        path_ = path;
        temp_ = path + ".XXXXXX";
        const int fd = ::mkstemp(temp_.data());
        if (fd < 0) {
            error = "cannot write the state file '" + path + "': " + std::strerror(errno);
            temp_.clear();
            return false;
        }
        ::close(fd);
        return true;
    }
    bool commit(const std::vector<std::uint8_t>& state, std::string& error) {
        std::ofstream f(temp_, std::ios::binary | std::ios::trunc);
        f.write(reinterpret_cast<const char*>(state.data()), static_cast<std::streamsize>(state.size()));
        f.close();
        if (!f || ::rename(temp_.c_str(), path_.c_str()) != 0) {
            error = "cannot write the state file '" + path_ + "': " + std::strerror(errno);
            return false;
        }
        temp_.clear();
        return true;
    }
    ~StateOut() {
        if (!temp_.empty()) ::unlink(temp_.c_str());
    }

  private:
    std::string path_, temp_;
};

bool read_whole(const std::string& path, std::string& bytes, std::string& error) {
    InputFile f(path);
    if (!f.ok()) return error = f.error(), false;
    char buf[4096];
    for (;;) {
        const std::ptrdiff_t got = f.read(buf, sizeof buf);
        if (got < 0) return error = f.error(), false;
        if (got == 0) return true;
        bytes.append(buf, static_cast<std::size_t>(got));
        if (bytes.size() > (1u << 20)) return error = "'" + path + "' is far too large to be a saved state", false;
    }
}

// Runs rsvg-convert on the drawn SVG to make the PNG.
bool render_png(const std::string& converter, const std::string& svg, const std::string& png, std::string& error) {
    std::string temp = png + ".XXXXXX";
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) return error = "cannot write '" + png + "': " + std::strerror(errno), false;
    bool ok = true;
    for (std::size_t done = 0; ok && done < svg.size();) {
        const ssize_t n = ::write(fd, svg.data() + done, svg.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) ok = false, error = "cannot write '" + temp + "': " + std::strerror(errno);
        else done += static_cast<std::size_t>(n);
    }
    ::close(fd);
    if (ok) {
        std::vector<std::string> args = {converter, "--format", "png", "-o", png, temp};
        std::vector<char*> argv;
        for (std::string& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        pid_t pid;
        int status = 0;
        const int rc = ::posix_spawn(&pid, converter.c_str(), nullptr, nullptr, argv.data(), environ);
        if (rc != 0) {
            ok = false;
            error = "cannot run " + converter + ": " + std::strerror(rc);
        } else {
            while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
            }
            if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
                ok = false;
                error = "rsvg-convert could not write '" + png + "'";
            }
        }
    }
    ::unlink(temp.c_str());
    return ok;
}

void say(std::FILE* err, const std::string& message) { std::fprintf(err, "quil-retarget: %s\n", message.c_str()); }

}  // namespace

Format format_of_path(const std::string& path) {
    const std::string e = lower_extension(path);
    if (e == ".f64") return Format::f64;
    if (e == ".npy") return Format::npy;
    return Format::csv;
}

PlotKind plot_kind_of(const std::string& path) {
    const std::string e = lower_extension(path);
    return e == ".svg" ? PlotKind::svg : e == ".png" ? PlotKind::png : PlotKind::none;
}

std::string find_on_path(const std::string& program) {
    const char* env = std::getenv("PATH");
    const std::string path = env ? env : "/usr/bin:/bin";
    std::size_t start = 0;
    for (;;) {
        const std::size_t colon = path.find(':', start);
        std::string dir = path.substr(start, colon == std::string::npos ? std::string::npos : colon - start);
        if (dir.empty()) dir = ".";
        const std::string full = dir + "/" + program;
        struct stat st;
        if (::stat(full.c_str(), &st) == 0 && S_ISREG(st.st_mode) && ::access(full.c_str(), X_OK) == 0) return full;
        if (colon == std::string::npos) return "";
        start = colon + 1;
    }
}

int run_map(const MapOptions& o, std::FILE* err) {
    const quil_hand_info& hand_info = *o.hand;
    // The hand, from its start-up state or from a saved one; a state that does not fit stops
    // the run here, before anything is written.
    quil_linear::Hand hand(hand_info.name);
    if (o.profile.empty() && (o.hold_after || o.safe_after))
        return say(err, "--hold-after and --safe-after need a --profile"), kExitUsage;
    // A wiring profile: the hand's driver commands, after the safety stage, from the samples'
    // own times, so that a recorded live session gives back exactly what was sent.
    ProfileFile profile;
    if (!o.profile.empty()) {
        std::string error;
        if (!read_profile(o.profile, &hand_info, profile, error)) return say(err, error), kExitUsage;
        if (!o.plot.empty()) return say(err, "--plot draws the targets; it cannot be used with --profile"), kExitUsage;
        if (o.hold_after) profile.profile.hold_after = *o.hold_after;
        if (o.safe_after) profile.profile.safe_after = *o.safe_after;
        try {
            hand.set_profile(profile.profile);
        } catch (const quil_linear::Error& e) {
            return say(err, o.profile + ": " + e.what()), kExitUsage;
        }
    }
    if (!o.state_in.empty()) {
        std::string bytes, error;
        if (!read_whole(o.state_in, bytes, error)) return say(err, error), kExitIo;
        const int rc = quil_hand_load_state(hand.get(), bytes.data(), bytes.size());
        if (rc != QUIL_OK) {
            std::string what = "cannot continue from the state in '" + o.state_in + "': " + quil_error_text(rc);
            if (const quil_hand_info* of = quil_state_hand(bytes.data(), bytes.size()))
                what += std::string(": it is a state of ") + of->name + ", this run is for " + hand_info.name;
            return say(err, what), kExitState;
        }
    }
    if (o.dropout) hand.set_dropout(static_cast<quil_linear::Dropout>(*o.dropout));
    const std::size_t width = hand.output_count();

    InputFile in(o.input);
    if (!in.ok()) return say(err, in.error()), kExitIo;
    for (const std::string* target : {&o.output, &o.plot, &o.meta, &o.state_out}) {
        if (in.is_same_file(*target)) return say(err, "refusing to write '" + *target + "': it is the input"), kExitUsage;
    }

    SourceOptions so;
    so.format = o.from;
    so.skip_bad = o.skip_bad;
    so.time_numbers = o.to == Format::npy || !o.profile.empty() ? TimeNumbers::strict : o.plot.empty() ? TimeNumbers::none : TimeNumbers::lenient;
    std::string error;
    std::unique_ptr<Source> source = open_source(in, so, error);
    if (!source) return say(err, error), in.ok() ? kExitBadData : kExitIo;

    // An npy header states its row count: on an output that cannot be rewritten afterwards,
    // the count must be certain before the first row.
    if (o.to == Format::npy && !OutputFile::would_be_seekable(o.output) && !source->info().known_rows) {
        say(err, "cannot write npy to " + (o.output.empty() || o.output == "-" ? std::string("a pipe") : "'" + o.output + "'") +
                     ": its header states the row count, known beforehand only for an f64 or npy input read "
                     "from a file; write to a regular file instead");
        return kExitUsage;
    }

    // The first rows are read before any output exists, so an input that is wrong from its
    // first line (decimal commas, a heading of the wrong width) leaves no output behind.
    Block block;
    Source::Status status = source->next(block);
    if (block.rows == 0 && (status == Source::Status::bad_data || status == Source::Status::io_error)) {
        say(err, source->error());
        return status == Source::Status::bad_data ? kExitBadData : kExitIo;
    }
    const SourceInfo& info = source->info();
    if (!o.profile.empty() && !info.has_time) {
        say(err, "a profile's safety stage runs on the samples' times: " + in.name() +
                     " has no time column (csv or npy with the time first, in seconds)");
        return kExitUsage;
    }

    StateOut state_out;
    OutputFile out, svg_file, meta_file;
    std::string plot_temp_check;
    if (!state_out.open(o.state_out, error)) return say(err, error), kExitIo;
    if (!o.meta.empty() && !meta_file.open(o.meta)) return say(err, meta_file.error()), kExitIo;
    if (plot_kind_of(o.plot) == PlotKind::svg && !svg_file.open(o.plot)) return say(err, svg_file.error()), kExitIo;
    if (!out.open(o.output)) return say(err, out.error()), kExitIo;

    std::unique_ptr<Sink> sink;
    const std::vector<std::string> columns = o.profile.empty() ? column_names(hand_info, o.header_roles) : hand.output_names();
    if (o.to == Format::csv) sink = std::make_unique<CsvSink>(out, columns);
    else if (o.to == Format::f64) sink = std::make_unique<F64Sink>(out);
    else sink = std::make_unique<NpySink>(out, info.known_rows);
    sink->width = width;

    std::unique_ptr<SessionPlot> plot = o.plot.empty() ? nullptr : std::make_unique<SessionPlot>();
    Progress progress(o.progress, in.size(), err);
    std::vector<double> targets(Block::kRows * width);
    std::uint64_t written = 0;

    sink->begin(info);
    if (info.has_time && o.to == Format::f64 && !o.quiet)
        say(err, "note: f64 output holds the " + (o.profile.empty() ? std::string("24 targets") : "commands") + " only; the time column '" + info.time_name +
                     "' is not written (npy and csv outputs keep it)");
    for (;;) {
        if (block.rows) {
            double* direct = sink->direct(block.rows);
            double* t = direct ? direct : targets.data();
            if (o.profile.empty()) hand.map(block.x.data(), block.rows, t);
            else hand.map_at(block.t.data(), block.x.data(), block.rows, t);
            if (plot) {
                const bool timed = info.has_time;
                for (std::size_t r = 0; r < block.rows; ++r)
                    plot->add(timed ? block.t[r] : std::numeric_limits<double>::quiet_NaN(), &block.x[r * 12], &t[r * 24]);
            }
            if (direct) sink->wrote_direct(block.rows);
            else sink->write(block, t);
            written += block.rows;
            progress.update(written, source->bytes_consumed());
            if (!out.ok()) break;
        }
        if (status != Source::Status::more) break;
        status = source->next(block);
    }
    progress.finish();

    // What became of the run, in the order a reader wants it: the data's fault, then the files.
    int exit = kExitOk;
    std::string failure;
    if (status == Source::Status::bad_data) exit = kExitBadData, failure = source->error();
    if (status == Source::Status::io_error) exit = kExitIo, failure = source->error();
    if (!failure.empty()) say(err, failure);
    out.flush();
    const std::string sink_error = out.ok() ? sink->finish(written) : out.error();
    if (out.reader_gone()) {
        // Whoever reads the output has all they wanted; like other filters, stop quietly.
        if (exit == kExitOk) exit = kExitClosed;
    } else if (!sink_error.empty()) {
        say(err, sink_error);
        exit = kExitIo;
    }
    if (plot) {
        SessionPlot::Labels labels;
        labels.title = std::string(hand_info.name) + " " + hand_info.version;
        labels.source = in.name();
        labels.time_name = info.has_time ? info.time_name : "";
        labels.input_names = info.input_names;
        for (int i = 0; i < 24; ++i) labels.roles[i] = hand_info.slot_roles[i];
        const std::string svg = plot->svg(labels);
        if (plot_kind_of(o.plot) == PlotKind::svg) {
            svg_file.append(svg);
            if (!svg_file.flush()) say(err, svg_file.error()), exit = kExitIo;
        } else if (!render_png(o.rsvg_convert, svg, o.plot, error)) {
            say(err, error);
            exit = kExitIo;
        }
    }
    const SkippedRows& skipped = source->skipped();
    if (!skipped.places.empty()) {
        std::string where;
        for (std::size_t i = 0; i < skipped.places.size() && i < 10; ++i)
            where += (i ? ", " : "") + std::to_string(skipped.places[i]);
        if (skipped.places.size() > 10) where += ", ...";
        say(err, "skipped " + std::to_string(skipped.places.size()) + (skipped.places.size() == 1 ? " bad row" : " bad rows") +
                     " of " + in.name() + ", at " + (info.places_are_lines ? "line" : "byte offset") +
                     (skipped.places.size() > 1 && info.places_are_lines ? "s " : " ") + where);
        say(err, "the first was: " + skipped.messages.front());
        if (exit == kExitOk) exit = kExitSkipped;
    }
    if (!o.state_out.empty() && (exit == kExitOk || exit == kExitSkipped)) {
        if (!state_out.commit(hand.state(), error)) say(err, error), exit = kExitIo;
    }
    if (!o.meta.empty()) {
        RunRecord record;
        record.hand = &hand_info;
        record.input = o.input.empty() || o.input == "-" ? "-" : o.input;
        record.output = o.output.empty() || o.output == "-" ? "-" : o.output;
        record.from = o.from;
        record.to = o.to;
        record.info = &info;
        record.rows_read = source->rows_read();
        record.rows_written = written;
        record.skipped = &skipped;
        record.dropout = hand.dropout() == quil_linear::Dropout::hold ? "hold" : "pass";
        record.time_written = sink->time_written;
        // Column by column what the output holds: a consumer of an npy array reads it from here.
        record.columns = o.profile.empty() ? column_names(hand_info, o.to == Format::csv && o.header_roles) : columns;
        record.profile = o.profile;
        if (!o.profile.empty()) record.outputs = columns;
        if (sink->time_written) record.columns.insert(record.columns.begin(), info.time_name);
        record.state_in = o.state_in;
        record.state_out = o.state_out;
        record.plot = o.plot;
        record.exit_status = exit;
        record.error = failure.empty() ? sink_error : failure;
        meta_file.append(meta_json(record));
        if (!meta_file.flush()) say(err, meta_file.error()), exit = kExitIo;
    }
    return exit;
}

}  // namespace quil::retarget
