#include "map_session.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
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
#include "session_sink.h"
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

// Where a path leads: the file's identity when it exists, else its directory's real path and
// its name, so "out.csv", "./out.csv" and "dir/../out.csv" are one place. A device such as
// /dev/null may take several outputs: each gets a place of its own.
std::string place_of(const std::string& path) {
    struct stat st;
    if (::stat(path.c_str(), &st) == 0) {
        if (S_ISCHR(st.st_mode)) return "device " + std::to_string(reinterpret_cast<std::uintptr_t>(&path));
        return "#" + std::to_string(st.st_dev) + ":" + std::to_string(st.st_ino);
    }
    const std::size_t slash = path.find_last_of('/');
    const std::string dir = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    char real[PATH_MAX];
    if (!::realpath(dir.c_str(), real)) return path;
    return std::string(real) + "/" + name;
}

bool is_stdout(const std::string& path) { return path.empty() || path == "-"; }

void say(std::FILE* err, const std::string& message) { std::fprintf(err, "quil-retarget: %s\n", message.c_str()); }

// Tells where the rows a lenient read skipped were, and the first one's fault; true if any were.
bool report_skipped(const SkippedRows& skipped, const std::string& input, bool places_are_lines, std::FILE* err) {
    if (skipped.places.empty()) return false;
    std::string where;
    for (std::size_t i = 0; i < skipped.places.size() && i < 10; ++i)
        where += (i ? ", " : "") + std::to_string(skipped.places[i]);
    if (skipped.places.size() > 10) where += ", ...";
    say(err, "skipped " + std::to_string(skipped.places.size()) + (skipped.places.size() == 1 ? " bad row" : " bad rows") +
                 " of " + input + ", at " + (places_are_lines ? "line" : "byte offset") +
                 (skipped.places.size() > 1 && places_are_lines ? "s " : " ") + where);
    say(err, "the first was: " + skipped.messages.front());
    return true;
}

}  // namespace

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

// Draws the session into the SVG file opened before the run or, through the converter, a PNG;
// false, having said why, if it could not be written.
bool write_plot(const SessionPlot& plot, const MapOptions& o, const quil_hand_info& hand_info, const std::string& source,
                const SourceInfo& info, const std::optional<TimeUnitChoice>& time_unit, OutputFile& svg_file,
                std::FILE* err) {
    SessionPlot::Labels labels;
    labels.title = std::string(hand_info.name) + " " + hand_info.version;
    labels.source = source;
    labels.time_name = info.has_time ? info.time_name : "";
    // The axis names the unit, unless the column's own name already does (time_ms).
    if (time_unit && time_unit->from != TimeUnitChoice::From::name) labels.time_unit = time_unit_name(time_unit->unit);
    labels.input_names = info.input_names;
    for (int i = 0; i < 24; ++i) labels.roles[i] = hand_info.slot_roles[i];
    const std::string svg = plot.svg(labels);
    std::string error;
    if (plot_kind_of(o.plot) == PlotKind::svg) {
        svg_file.append(svg);
        if (!svg_file.flush()) return say(err, svg_file.error()), false;
    } else if (!render_png(o.rsvg_convert, svg, o.plot, error)) {
        return say(err, error), false;
    }
    return true;
}

namespace {

// Every file a run writes is its own: one written over another would leave, say, the targets
// replaced by the JSON record and the run reporting success. kExitOk when they are.
int check_written_files(const MapOptions& o, std::FILE* err) {
    struct Written {
        const char* what;
        const std::string& path;
    };
    const Written written_files[] = {{"the output", o.output}, {"--meta", o.meta}, {"--plot", o.plot}, {"--state-out", o.state_out}};
    for (std::size_t a = 0; a < std::size(written_files); ++a) {
        const Written& wa = written_files[a];
        if (wa.path.empty() && &wa.path != &o.output) continue;
        for (std::size_t b = a + 1; b < std::size(written_files); ++b) {
            const Written& wb = written_files[b];
            if (wb.path.empty()) continue;
            const bool same = is_stdout(wa.path) || is_stdout(wb.path) ? is_stdout(wa.path) && is_stdout(wb.path)
                                                                        : place_of(wa.path) == place_of(wb.path);
            if (same)
                return say(err, std::string("refusing to write ") + wa.what + " and " + wb.what + " both to '" +
                                    (is_stdout(wb.path) ? "-" : wb.path) + "': every file a run writes must be its own"),
                       kExitUsage;
        }
        // The saved state is read before anything is written, but nothing may overwrite it
        // except the state that carries on from it.
        if (!o.state_in.empty() && &wa.path != &o.state_out && !is_stdout(wa.path) &&
            place_of(wa.path) == place_of(o.state_in))
            return say(err, std::string("refusing to write ") + wa.what + " to '" + wa.path + "': it is the --state-in file"),
                   kExitUsage;
    }
    return kExitOk;
}

// One conversion, in the order it happens: open (the input, the hand and every output: all
// that can stop a run before its first row is written), convert (the rows, block by block) and
// report (what became of the run, on `err`, in the plot, the saved state and the record).
class MapRun {
  public:
    // Opens the input; nothing is read yet.
    MapRun(const MapOptions& o, std::FILE* err)
        : o_(o), err_(err), hand_info_(*o.hand),
          default_dropout_(quil_dropout_name(o.dropout.value_or(QUIL_DROPOUT_PASS))), in_(o.input),
          hand_(hand_info_.name) {}

    // Everything before the first row is written; the exit status of a run that cannot start.
    std::optional<int> open();
    void convert();
    int report();

  private:
    const SourceInfo& info() const { return source_->info(); }
    bool write_meta(int exit, const std::string& error, std::uint64_t rows_written, const std::vector<std::string>& columns,
                    bool time_written, const std::string& dropout);
    int fail(int exit, const std::string& message);

    const MapOptions& o_;
    std::FILE* err_;
    const quil_hand_info& hand_info_;
    SourceInfo no_info_;
    SkippedRows no_skips_;
    std::unique_ptr<Source> source_;
    std::optional<TimeUnitChoice> time_unit_;
    std::array<std::uint64_t, 12> nonfinite_{};
    std::vector<std::string> profile_outputs_;  // a profile's command names, once it is set
    const std::string default_dropout_;
    InputFile in_;
    quil_linear::Hand hand_;
    ProfileFile profile_;
    std::size_t width_ = 0;
    SourceOptions so_;
    Block block_;
    Source::Status status_ = Source::Status::end;
    StateOut state_out_;
    OutputFile out_, svg_file_;
    std::vector<std::string> columns_;
    std::unique_ptr<Sink> sink_;
    std::unique_ptr<SessionPlot> plot_;
    std::uint64_t written_ = 0;
};

bool MapRun::write_meta(int exit, const std::string& error, std::uint64_t rows_written,
                        const std::vector<std::string>& columns, bool time_written, const std::string& dropout) {
    RunRecord record;
    record.hand = &hand_info_;
    record.input = is_stdout(o_.input) ? "-" : o_.input;
    record.output = is_stdout(o_.output) ? "-" : o_.output;
    record.from = o_.from;
    record.to = o_.to;
    record.info = source_ ? &source_->info() : &no_info_;
    record.rows_read = source_ ? source_->rows_read() : 0;
    record.rows_written = rows_written;
    record.skipped = source_ ? &source_->skipped() : &no_skips_;
    record.dropout = dropout;
    record.time_written = time_written;
    record.columns = columns;
    record.state_in = o_.state_in;
    record.state_out = o_.state_out;
    record.plot = o_.plot;
    record.exit_status = exit;
    record.error = error;
    record.output_written = rows_written > 0 || exit == kExitOk || exit == kExitSkipped;
    if (time_unit_) record.time_unit = time_unit_name(time_unit_->unit), record.time_unit_how = time_unit_->note;
    record.nonfinite = nonfinite_;
    record.profile = o_.profile;
    record.outputs = profile_outputs_;
    OutputFile meta_file;
    if (!meta_file.open(o_.meta) || (meta_file.append(meta_json(record)), !meta_file.flush()))
        return say(err_, meta_file.error()), false;
    return true;
}

// A run that stops before its first row writes no output, but its --meta says that it failed
// and why, so the record of an earlier run is never left beside it looking valid. (Only once
// the written files are known to be distinct: until then --meta may name a file it must not
// touch.)
int MapRun::fail(int exit, const std::string& message) {
    say(err_, message);
    if (!o_.meta.empty()) write_meta(exit, message, 0, {}, false, default_dropout_);
    return exit;
}

std::optional<int> MapRun::open() {
    for (const std::string* target : {&o_.output, &o_.plot, &o_.meta, &o_.state_out}) {
        if (in_.is_same_file(*target)) return say(err_, "refusing to write '" + *target + "': it is the input"), kExitUsage;
    }

    // The hand, from its start-up state or from a saved one; a state that does not fit stops
    // the run here, before anything is written.
    if (o_.profile.empty() && (o_.hold_after || o_.safe_after))
        return say(err_, "--hold-after and --safe-after need a --profile"), kExitUsage;
    // A wiring profile: the hand's driver commands, after the safety stage, from the samples'
    // own times, so that a recorded live session gives back exactly what was sent.
    if (!o_.profile.empty()) {
        std::string error;
        if (!read_profile(o_.profile, &hand_info_, profile_, error)) return fail(kExitUsage, error);
        if (!o_.plot.empty()) return fail(kExitUsage, "--plot draws the targets; it cannot be used with --profile");
        if (o_.hold_after) profile_.profile.hold_after = *o_.hold_after;
        if (o_.safe_after) profile_.profile.safe_after = *o_.safe_after;
        try {
            hand_.set_profile(profile_.profile);
        } catch (const quil_linear::Error& e) {
            return fail(kExitUsage, o_.profile + ": " + e.what());
        }
        profile_outputs_ = hand_.output_names();
    }
    if (!o_.state_in.empty()) {
        std::string bytes, error;
        if (!read_whole(o_.state_in, bytes, error)) return fail(kExitIo, error);
        const int rc = quil_hand_load_state(hand_.get(), bytes.data(), bytes.size());
        if (rc != QUIL_OK) {
            std::string what = "cannot continue from the state in '" + o_.state_in + "': " + quil_error_text(rc);
            if (const quil_hand_info* of = quil_state_hand(bytes.data(), bytes.size()))
                what += std::string(": it is a state of ") + of->name + ", this run is for " + hand_info_.name;
            return fail(kExitState, what);
        }
    }
    if (o_.dropout) hand_.set_dropout(static_cast<quil_linear::Dropout>(*o_.dropout));
    width_ = hand_.output_count();

    if (!in_.ok()) return fail(kExitIo, in_.error());

    so_.format = o_.from;
    so_.skip_bad = o_.skip_bad;
    // Times as numbers for an npy output or a profile's safety stage, and where the time
    // column's unit matters: for the plot's axis and the record's unit.
    so_.time_numbers = o_.to == Format::npy || !o_.profile.empty() ? TimeNumbers::strict
                       : o_.plot.empty() && o_.meta.empty() ? TimeNumbers::none : TimeNumbers::lenient;
    std::string error;
    source_ = open_source(in_, so_, error);
    if (!source_) return fail(in_.ok() ? kExitBadData : kExitIo, error);

    // An npy header states its row count: on an output that cannot be rewritten afterwards,
    // the count must be certain before the first row.
    if (o_.to == Format::npy && !OutputFile::would_be_seekable(o_.output) && !info().known_rows) {
        return fail(kExitUsage, "cannot write npy to " +
                                    (o_.output.empty() || o_.output == "-" ? std::string("a pipe") : "'" + o_.output + "'") +
                                    ": its header states the row count, known beforehand only for an f64 or npy input "
                                    "read from a file; write to a regular file instead");
    }

    // The first rows are read before any output exists, so an input that is wrong from its
    // first line (decimal commas, a heading of the wrong width) leaves no output behind.
    status_ = source_->next(block_);
    if (block_.rows == 0 && (status_ == Source::Status::bad_data || status_ == Source::Status::io_error))
        return fail(status_ == Source::Status::bad_data ? kExitBadData : kExitIo, source_->error());
    // A session without a single sample is a mistake (a wrong file, a recording that never
    // started), not a conversion.
    if (block_.rows == 0 && status_ == Source::Status::end && source_->skipped().places.empty())
        return fail(kExitBadData, no_rows_message(in_.name(), o_.from));
    if (!o_.profile.empty() && !info().has_time)
        return fail(kExitUsage, "a profile's safety stage runs on the samples' times: " + in_.name() +
                                    " has no time column (csv or npy with the time first)");
    if (info().has_time) {
        time_unit_ = choose_time_unit(o_.time_unit, info().time_name, block_.t.data(),
                                      so_.time_numbers == TimeNumbers::none ? 0 : block_.rows);
        // Without a plot or a record the unit is not used, so no guess is announced.
        if (!time_unit_->note.empty()) time_unit_->note += " (--time-unit s|ms|us to say otherwise)";
        if (!time_unit_->note.empty() && !o_.quiet && so_.time_numbers != TimeNumbers::none)
            say(err_, "note: " + time_unit_->note);
    }

    const std::string radians = radians_note(block_.x.data(), block_.rows);
    if (!radians.empty() && !o_.quiet) say(err_, "note: " + radians);

    if (!state_out_.open(o_.state_out, error)) return fail(kExitIo, error);
    if (!o_.meta.empty()) {
        // Opened before the first row, so an unwritable record stops the run before any work;
        // rewritten with the outcome at the end.
        OutputFile probe;
        if (!probe.open(o_.meta)) return say(err_, probe.error()), kExitIo;
    }
    if (plot_kind_of(o_.plot) == PlotKind::svg && !svg_file_.open(o_.plot)) return fail(kExitIo, svg_file_.error());
    if (!out_.open(o_.output)) return fail(kExitIo, out_.error());

    columns_ = o_.profile.empty() ? column_names(hand_info_, o_.header_roles) : hand_.output_names();
    sink_ = make_sink(o_.to, out_, columns_, info().known_rows);
    sink_->width = width_;
    if (!o_.plot.empty()) plot_ = std::make_unique<SessionPlot>();
    return std::nullopt;
}

void MapRun::convert() {
    Progress progress(o_.progress, in_.size(), err_);
    std::vector<double> targets(Block::kRows * width_);
    std::vector<double> seconds;

    sink_->begin(info());
    if (info().has_time && o_.to == Format::f64 && !o_.quiet)
        say(err_, "note: f64 output holds the " + (o_.profile.empty() ? std::string("24 targets") : "commands") +
                      " only; the time column '" + info().time_name + "' is not written (npy and csv outputs keep it)");
    for (;;) {
        if (block_.rows) {
            double* direct = sink_->direct(block_.rows);
            double* t = direct ? direct : targets.data();
            if (o_.profile.empty()) {
                hand_.map(block_.rows, block_.x.data(), t);
            } else {
                // The stage runs on seconds, whatever unit the file's clock is in.
                seconds.resize(block_.rows);
                for (std::size_t r = 0; r < block_.rows; ++r) seconds[r] = to_seconds(block_.t[r], time_unit_->unit);
                hand_.map_at(block_.rows, seconds.data(), block_.x.data(), t);
            }
            if (!o_.meta.empty())
                for (std::size_t k = 0; k < block_.rows * 12; ++k) nonfinite_[k % 12] += !std::isfinite(block_.x[k]);
            if (plot_) {
                const bool timed = info().has_time;
                for (std::size_t r = 0; r < block_.rows; ++r)
                    plot_->add(timed ? block_.t[r] : std::numeric_limits<double>::quiet_NaN(), &block_.x[r * 12], &t[r * 24]);
            }
            if (direct) sink_->wrote_direct(block_.rows);
            else sink_->write(block_, t);
            written_ += block_.rows;
            progress.update(written_, source_->bytes_consumed());
            if (!out_.ok()) break;
        }
        if (status_ != Source::Status::more) break;
        status_ = source_->next(block_);
    }
    progress.finish();
}

int MapRun::report() {
    // What became of the run, in the order a reader wants it: the data's fault, then the files.
    int exit = kExitOk;
    std::string failure;
    if (status_ == Source::Status::bad_data) exit = kExitBadData, failure = source_->error();
    if (status_ == Source::Status::io_error) exit = kExitIo, failure = source_->error();
    if (!failure.empty()) say(err_, failure);
    out_.flush();
    const std::string sink_error = out_.ok() ? sink_->finish(written_) : out_.error();
    if (out_.reader_gone()) {
        // Whoever reads the output has all they wanted; like other filters, stop quietly.
        if (exit == kExitOk) exit = kExitClosed;
    } else if (!sink_error.empty()) {
        say(err_, sink_error);
        exit = kExitIo;
    }
    if (plot_ && !write_plot(*plot_, o_, hand_info_, in_.name(), info(), time_unit_, svg_file_, err_)) exit = kExitIo;
    if (report_skipped(source_->skipped(), in_.name(), info().places_are_lines, err_) && exit == kExitOk) exit = kExitSkipped;
    if (!o_.state_out.empty() && (exit == kExitOk || exit == kExitSkipped)) {
        std::string error;
        if (!state_out_.commit(hand_.state(), error)) say(err_, error), exit = kExitIo;
    }
    if (!o_.meta.empty()) {
        // Column by column what the output holds: a consumer of an npy array reads it from here.
        std::vector<std::string> meta_columns =
            o_.profile.empty() ? column_names(hand_info_, o_.to == Format::csv && o_.header_roles) : columns_;
        if (sink_->time_written) meta_columns.insert(meta_columns.begin(), info().time_name);
        if (!write_meta(exit, failure.empty() ? sink_error : failure, written_, meta_columns, sink_->time_written,
                        quil_linear::dropout_name(hand_.dropout())))
            exit = kExitIo;
    }
    return exit;
}

}  // namespace

int run_map(const MapOptions& o, std::FILE* err) {
    if (const int exit = check_written_files(o, err); exit != kExitOk) return exit;
    MapRun run(o, err);
    if (const std::optional<int> exit = run.open()) return *exit;
    run.convert();
    return run.report();
}

}  // namespace quil::retarget
