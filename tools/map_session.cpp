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

int run_map(const MapOptions& o, std::FILE* err) {
    const quil_hand_info& hand_info = *o.hand;
    // Every file a run writes is its own: one written over another would leave, say, the
    // targets replaced by the JSON record and the run reporting success.
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

    // A run that stops before its first row writes no output, but its --meta says that it
    // failed and why, so the record of an earlier run is never left beside it looking valid.
    // (Only after the checks above: until then --meta may name a file it must not touch.)
    SourceInfo no_info;
    SkippedRows no_skips;
    std::unique_ptr<Source> source;
    std::optional<TimeUnitChoice> time_unit;
    std::array<std::uint64_t, 12> nonfinite{};
    std::vector<std::string> profile_outputs;  // a profile's command names, once it is set
    auto write_meta = [&](int exit, const std::string& error, std::uint64_t rows_written, const std::vector<std::string>& columns,
                          bool time_written, const std::string& dropout) {
        RunRecord record;
        record.hand = &hand_info;
        record.input = is_stdout(o.input) ? "-" : o.input;
        record.output = is_stdout(o.output) ? "-" : o.output;
        record.from = o.from;
        record.to = o.to;
        record.info = source ? &source->info() : &no_info;
        record.rows_read = source ? source->rows_read() : 0;
        record.rows_written = rows_written;
        record.skipped = source ? &source->skipped() : &no_skips;
        record.dropout = dropout;
        record.time_written = time_written;
        record.columns = columns;
        record.state_in = o.state_in;
        record.state_out = o.state_out;
        record.plot = o.plot;
        record.exit_status = exit;
        record.error = error;
        record.output_written = rows_written > 0 || exit == kExitOk || exit == kExitSkipped;
        if (time_unit) record.time_unit = time_unit_name(time_unit->unit), record.time_unit_how = time_unit->note;
        record.nonfinite = nonfinite;
        record.profile = o.profile;
        record.outputs = profile_outputs;
        OutputFile meta_file;
        if (!meta_file.open(o.meta) || (meta_file.append(meta_json(record)), !meta_file.flush()))
            return say(err, meta_file.error()), false;
        return true;
    };
    const std::string default_dropout = quil_dropout_name(o.dropout.value_or(QUIL_DROPOUT_PASS));
    auto fail = [&](int exit, const std::string& message) {
        say(err, message);
        if (!o.meta.empty()) write_meta(exit, message, 0, {}, false, default_dropout);
        return exit;
    };

    InputFile in(o.input);
    for (const std::string* target : {&o.output, &o.plot, &o.meta, &o.state_out}) {
        if (in.is_same_file(*target)) return say(err, "refusing to write '" + *target + "': it is the input"), kExitUsage;
    }

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
        if (!read_profile(o.profile, &hand_info, profile, error)) return fail(kExitUsage, error);
        if (!o.plot.empty()) return fail(kExitUsage, "--plot draws the targets; it cannot be used with --profile");
        if (o.hold_after) profile.profile.hold_after = *o.hold_after;
        if (o.safe_after) profile.profile.safe_after = *o.safe_after;
        try {
            hand.set_profile(profile.profile);
        } catch (const quil_linear::Error& e) {
            return fail(kExitUsage, o.profile + ": " + e.what());
        }
        profile_outputs = hand.output_names();
    }
    if (!o.state_in.empty()) {
        std::string bytes, error;
        if (!read_whole(o.state_in, bytes, error)) return fail(kExitIo, error);
        const int rc = quil_hand_load_state(hand.get(), bytes.data(), bytes.size());
        if (rc != QUIL_OK) {
            std::string what = "cannot continue from the state in '" + o.state_in + "': " + quil_error_text(rc);
            if (const quil_hand_info* of = quil_state_hand(bytes.data(), bytes.size()))
                what += std::string(": it is a state of ") + of->name + ", this run is for " + hand_info.name;
            return fail(kExitState, what);
        }
    }
    if (o.dropout) hand.set_dropout(static_cast<quil_linear::Dropout>(*o.dropout));
    const std::size_t width = hand.output_count();

    if (!in.ok()) return fail(kExitIo, in.error());

    SourceOptions so;
    so.format = o.from;
    so.skip_bad = o.skip_bad;
    // Times as numbers for an npy output or a profile's safety stage, and where the time
    // column's unit matters: for the plot's axis and the record's unit.
    so.time_numbers = o.to == Format::npy || !o.profile.empty() ? TimeNumbers::strict
                      : o.plot.empty() && o.meta.empty() ? TimeNumbers::none : TimeNumbers::lenient;
    std::string error;
    source = open_source(in, so, error);
    if (!source) return fail(in.ok() ? kExitBadData : kExitIo, error);

    // An npy header states its row count: on an output that cannot be rewritten afterwards,
    // the count must be certain before the first row.
    if (o.to == Format::npy && !OutputFile::would_be_seekable(o.output) && !source->info().known_rows) {
        return fail(kExitUsage, "cannot write npy to " +
                                    (o.output.empty() || o.output == "-" ? std::string("a pipe") : "'" + o.output + "'") +
                                    ": its header states the row count, known beforehand only for an f64 or npy input "
                                    "read from a file; write to a regular file instead");
    }

    // The first rows are read before any output exists, so an input that is wrong from its
    // first line (decimal commas, a heading of the wrong width) leaves no output behind.
    Block block;
    Source::Status status = source->next(block);
    if (block.rows == 0 && (status == Source::Status::bad_data || status == Source::Status::io_error))
        return fail(status == Source::Status::bad_data ? kExitBadData : kExitIo, source->error());
    // A session without a single sample is a mistake (a wrong file, a recording that never
    // started), not a conversion.
    if (block.rows == 0 && status == Source::Status::end && source->skipped().places.empty())
        return fail(kExitBadData, no_rows_message(in.name(), o.from));
    const SourceInfo& info = source->info();
    if (!o.profile.empty() && !info.has_time)
        return fail(kExitUsage, "a profile's safety stage runs on the samples' times: " + in.name() +
                                    " has no time column (csv or npy with the time first)");
    if (info.has_time) {
        time_unit = choose_time_unit(o.time_unit, info.time_name, block.t.data(),
                                     so.time_numbers == TimeNumbers::none ? 0 : block.rows);
        // Without a plot or a record the unit is not used, so no guess is announced.
        if (!time_unit->note.empty()) time_unit->note += " (--time-unit s|ms|us to say otherwise)";
        if (!time_unit->note.empty() && !o.quiet && so.time_numbers != TimeNumbers::none) say(err, "note: " + time_unit->note);
    }

    const std::string radians = radians_note(block.x.data(), block.rows);
    if (!radians.empty() && !o.quiet) say(err, "note: " + radians);

    StateOut state_out;
    OutputFile out, svg_file;
    std::string plot_temp_check;
    if (!state_out.open(o.state_out, error)) return fail(kExitIo, error);
    if (!o.meta.empty()) {
        // Opened before the first row, so an unwritable record stops the run before any work;
        // rewritten with the outcome at the end.
        OutputFile probe;
        if (!probe.open(o.meta)) return say(err, probe.error()), kExitIo;
    }
    if (plot_kind_of(o.plot) == PlotKind::svg && !svg_file.open(o.plot)) return fail(kExitIo, svg_file.error());
    if (!out.open(o.output)) return fail(kExitIo, out.error());

    const std::vector<std::string> columns = o.profile.empty() ? column_names(hand_info, o.header_roles) : hand.output_names();
    std::unique_ptr<Sink> sink = make_sink(o.to, out, columns, info.known_rows);
    sink->width = width;

    std::unique_ptr<SessionPlot> plot = o.plot.empty() ? nullptr : std::make_unique<SessionPlot>();
    Progress progress(o.progress, in.size(), err);
    std::vector<double> targets(Block::kRows * width);
    std::vector<double> seconds;
    std::uint64_t written = 0;

    sink->begin(info);
    if (info.has_time && o.to == Format::f64 && !o.quiet)
        say(err, "note: f64 output holds the " + (o.profile.empty() ? std::string("24 targets") : "commands") + " only; the time column '" + info.time_name +
                     "' is not written (npy and csv outputs keep it)");
    for (;;) {
        if (block.rows) {
            double* direct = sink->direct(block.rows);
            double* t = direct ? direct : targets.data();
            if (o.profile.empty()) {
                hand.map(block.x.data(), block.rows, t);
            } else {
                // The stage runs on seconds, whatever unit the file's clock is in.
                seconds.resize(block.rows);
                for (std::size_t r = 0; r < block.rows; ++r) seconds[r] = to_seconds(block.t[r], time_unit->unit);
                hand.map_at(seconds.data(), block.x.data(), block.rows, t);
            }
            if (!o.meta.empty())
                for (std::size_t k = 0; k < block.rows * 12; ++k) nonfinite[k % 12] += !std::isfinite(block.x[k]);
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
    if (plot && !write_plot(*plot, o, hand_info, in.name(), info, time_unit, svg_file, err)) exit = kExitIo;
    if (report_skipped(source->skipped(), in.name(), info.places_are_lines, err) && exit == kExitOk) exit = kExitSkipped;
    if (!o.state_out.empty() && (exit == kExitOk || exit == kExitSkipped)) {
        if (!state_out.commit(hand.state(), error)) say(err, error), exit = kExitIo;
    }
    if (!o.meta.empty()) {
        // Column by column what the output holds: a consumer of an npy array reads it from here.
        std::vector<std::string> meta_columns =
            o.profile.empty() ? column_names(hand_info, o.to == Format::csv && o.header_roles) : columns;
        if (sink->time_written) meta_columns.insert(meta_columns.begin(), info.time_name);
        if (!write_meta(exit, failure.empty() ? sink_error : failure, written, meta_columns, sink->time_written,
                        quil_linear::dropout_name(hand.dropout())))
            exit = kExitIo;
    }
    return exit;
}

}  // namespace quil::retarget
