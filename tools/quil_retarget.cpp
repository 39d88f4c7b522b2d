// quil-retarget: turns recorded glove sessions into robot joint targets with any hand of the
// library, from the command line.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "live.h"
#include "map_session.h"
#include "run_record.h"

#ifndef QUIL_RETARGET_VERSION
#define QUIL_RETARGET_VERSION "unknown"
#endif

namespace {

using namespace quil::retarget;

// The dropout policies by the library's names for them, in policy order ("pass", "hold"), so
// the tool offers exactly what the library takes.
std::vector<std::string> dropout_names() {
    std::vector<std::string> names;
    for (int policy = 0; const char* name = quil_dropout_name(policy); ++policy) names.emplace_back(name);
    return names;
}

// A policy named as dropout_names() lists it (CLI11 has already matched the name to one).
int dropout_policy(const std::string& name) { return quil_dropout_from_name(name.c_str()); }

constexpr const char* kExitStatuses = R"(Exit status:
  0  every row converted
  1  bad data: a malformed row or number, a truncated f64 record, a NumPy header problem or
     short NumPy data, an input without a single sample, text read as f64. The message names
     file:line:column, the byte offset or the header problem; the rows before it are written
     (nothing at all when the first row is at fault, and --meta then says the run failed)
  2  bad command line, unknown hand, an output over the input or over another file the run
     writes (output, --meta, --plot, --state-out, --state-in), a plot that is neither .svg
     nor .png, a .png plot without rsvg-convert, an npy output whose row count cannot be known
  3  an input that cannot be read; an output, plot, meta or state file that cannot be written
  4  the --state-in file is not a state this hand can carry on from (another hand's, damaged,
     truncated, or of an unknown format)
  5  converted, but --skip-bad left rows out (listed on standard error and in --meta)
  6  the output was closed before the end, as by '| head': the tool stops quietly, writes no
     --state-out, and says so in --meta only
)";

constexpr const char* kMapFooter = R"(
Formats: --from for the input, --to for the output, --format for both. When not given, each
side goes by its file's extension (.csv .tsv .txt: csv, .f64: f64, .npy: npy), else csv.
  csv  fields separated by commas, semicolons or tabs (whichever the first line uses; with
       none of them, by runs of spaces), 12 per row (x0..x11) or 13 with a time column first.
       The first line is a heading only when
       none of its fields is a number in any notation. Numbers use a decimal point: a file
       with decimal commas is refused at its first row. nan and inf are read. Quoted fields
       are unquoted; one separator at the end of every line is allowed. Blank lines and lines
       starting with '#' are skipped.
       Written: a heading ([time,]out0..out23, or the slot roles with --header roles; a role
       used by several slots gets its slot number, unused_20), then one row per sample, every
       value in the shortest text that reads back to the same double.
  f64  raw little-endian doubles: 12 per sample in, 24 per sample out; no heading, no time.
  npy  a NumPy array. Read: float64 or float32, either byte order, C or Fortran order, shape
       (N, 12), or (N, 13) with the time first; format versions 1.0 to 3.0. Written: '<f8',
       C order, (N, 24), or (N, 25) with the time first. Its header states N: written to a
       pipe, the input must be an f64 or npy file, whose row count is known beforehand.

Time column: carried csv->csv (as written), csv->npy (as a number), npy->csv and npy->npy.
  Its unit (--time-unit s|ms|us; else the one its name states, else the one the step between
  the first samples suggests, else seconds) labels the plot's time axis and is in --meta.
  f64 output cannot hold it (24 targets per sample): csv->f64 and npy->f64 leave it out and
  say so on standard error. f64 input has none.

Hands that keep state between samples (pinch latches, thumb references) see the samples in
order through one state, from the hand's start-up state or from --state-in; --state-out saves
the state after the last row, so a session recorded in several files converts as one:
  quil-retarget map -m RUIYAN_RY_H15 part1.csv -o t1.csv --state-out s1
  quil-retarget map -m RUIYAN_RY_H15 part2.csv -o t2.csv --state-in s1 --state-out s2
The state file also holds the dropout policy, which --dropout overrides.

)";

int usage_error(const std::string& message) {
    std::fprintf(stderr, "quil-retarget: %s\nRun 'quil-retarget --help' for usage.\n", message.c_str());
    return kExitUsage;
}

const quil_hand_info* find_hand(const std::string& name, std::string& error) {
    const quil_hand_info* hand = quil_hand_find(name.c_str());
    if (hand) return hand;
    const quil_hand_info* close[3];
    const std::size_t n = quil_hand_suggest(name.c_str(), close, 3);
    error = "unknown hand '" + name + "'; closest: ";
    for (std::size_t i = 0; i < n; ++i) error += (i ? ", " : "") + std::string(close[i]->name);
    error += " (all: 'quil-retarget list')";
    return nullptr;
}

int finish_stdout() { return std::fflush(stdout) == 0 && !std::ferror(stdout) ? kExitOk : kExitIo; }

int list_hands() {
    std::size_t name_w = 5, version_w = 7;
    for (std::size_t i = 0; i < quil_hand_count(); ++i) {
        name_w = std::max(name_w, std::strlen(quil_hand_at(i)->name));
        version_w = std::max(version_w, std::strlen(quil_hand_at(i)->version));
    }
    const int nw = static_cast<int>(name_w), vw = static_cast<int>(version_w);
    std::printf("%-*s  %-*s  %-10s  %s\n", nw, "MODEL", vw, "VERSION", "BUFFER", "STATE");
    for (std::size_t i = 0; i < quil_hand_count(); ++i) {
        const quil_hand_info& m = *quil_hand_at(i);
        std::printf("%-*s  %-*s  %-10s  %s\n", nw, m.name, vw, m.version,
                    m.persistent_buffer ? "persistent" : "per-call", m.keeps_state ? "keeps state" : "stateless");
    }
    return finish_stdout();
}

}  // namespace

int main(int argc, char** argv) {
    // A reader that goes away is noticed as a failed write, not as a signal (exit status 6).
    std::signal(SIGPIPE, SIG_IGN);
    CLI::App app("Retargets recorded glove sessions: each sample of twelve glove readings x0..x11 becomes\n"
                 "the 24 joint targets of the chosen robot hand, one output row per input row, in order.\n\n"
                 "  quil-retarget list\n"
                 "  quil-retarget describe HAND [--json]\n"
                 "  quil-retarget map --model NAME [INPUT] [-o OUTPUT] [options]   (map --help for more)\n"
                 "  quil-retarget live --model NAME --profile FILE.json --in udp://HOST:PORT --out udp://HOST:PORT\n",
                 "quil-retarget");
    app.set_version_flag("--version", "quil-retarget " QUIL_RETARGET_VERSION);
    app.footer(std::string("\n") + readings_text() + "\n" + kExitStatuses);

    CLI::App* list = app.add_subcommand("list", "every hand with its version, result buffer kind and state");

    CLI::App* describe = app.add_subcommand("describe", "one hand: version, buffer kind, state, the readings it uses, and its 24 slots: role, kind, sign, range, what moves them");
    std::string describe_name;
    bool describe_as_json = false;
    describe->add_option("HAND", describe_name, "the hand, as 'list' names it; case does not matter")
        ->required()
        ->type_name("");
    describe->add_flag("--json", describe_as_json, "as JSON");

    CLI::App* map = app.add_subcommand("map", "convert a session: readings in, joint targets out");
    map->footer(std::string(kMapFooter) + readings_text() + "\n" + kExitStatuses);
    std::string model, input, output, from, to, format, header = "out", dropout, plot, meta, state_in, state_out, time_unit;
    bool skip_bad = false, quiet = false;
    const auto formats = CLI::IsMember({"csv", "f64", "npy"}, CLI::ignore_case);
    map->add_option("-m,--model", model, "the hand, as 'list' names it; case does not matter")->required()->type_name("NAME");
    map->add_option("INPUT", input, "the session; standard input when missing or -")->type_name("FILE");
    map->add_option("-o,--output", output, "where the targets go; standard output when missing or -")->type_name("FILE");
    CLI::Option* format_opt = map->add_option("--format", format, "csv, f64 or npy for both sides")->transform(formats)->type_name("FMT");
    map->add_option("--from", from, "the input's format: csv, f64 or npy")->transform(formats)->type_name("FMT")->excludes(format_opt);
    map->add_option("--to", to, "the output's format: csv, f64 or npy")->transform(formats)->type_name("FMT")->excludes(format_opt);
    map->add_option("--header", header, "CSV heading of the targets: out (out0..out23) or roles")
        ->transform(CLI::IsMember({"out", "roles"}, CLI::ignore_case))->type_name("WHICH");
    map->add_option("--dropout", dropout,
                    "a NaN or infinite reading goes to the hand as it is (pass, the\n"
                    "exact mapping, the default) or holds the last finite one (hold)")
        ->transform(CLI::IsMember(dropout_names(), CLI::ignore_case))->type_name("POLICY");
    map->add_option("--time-unit", time_unit,
                    "what the input's time column is in: s, ms or us (default: the unit\n"
                    "its name states, as time_ms, else the one its steps suggest, with a note)")
        ->transform(CLI::IsMember({"s", "ms", "us"}))->type_name("UNIT");
    map->add_option("--state-in", state_in, "start from the hand state saved in FILE")->type_name("FILE");
    map->add_option("--state-out", state_out, "save the hand state after the last row to FILE")->type_name("FILE");
    map->add_option("--meta", meta, "write a JSON record of the run: hand, versions, slot roles,\n"
                                    "input, rows written and skipped, dropout, time column")
        ->type_name("FILE.json");
    map->add_option("--plot", plot, "draw the session: .svg, or .png through rsvg-convert")
        ->type_name("FILE");
    std::string profile;
    map->add_option("--profile", profile,
                    "a wiring profile (JSON): write the hand driver's commands, named in\n"
                    "the heading and in --meta, after the safety stage, from the input's\n"
                    "time column (seconds), which must be there")
        ->type_name("FILE.json");
    double map_hold_after = NAN, map_safe_after = NAN;
    map->add_option("--hold-after", map_hold_after, "with --profile: seconds without a sample before the input is stale\n"
                                                    "(overrides the profile's, as for live)")
        ->check(CLI::NonNegativeNumber)->type_name("S");
    map->add_option("--safe-after", map_safe_after, "with --profile: seconds without a sample before the commands ramp\n"
                                                    "to safe (overrides the profile's, as for live)")
        ->check(CLI::NonNegativeNumber)->type_name("S");
    map->add_flag("--skip-bad", skip_bad, "skip malformed rows instead of stopping (listed; exit status 5)");
    map->add_flag("-q,--quiet", quiet, "no progress display and no notes");

    CLI::App* live = app.add_subcommand("live", "a live bridge: glove samples in, the hand's commands out, with a watchdog");
    live->footer(R"(
Input: one sample per datagram (udp://HOST:PORT, bound) or per line or record (-, standard
input): 12 readings x0..x11, or 13 with the sample's time in seconds first. Without a time the
bridge stamps the sample with its receipt time (seconds since it started). f32 and f64 are
little-endian; binary standard input reads 12 values a record unless --in-columns 13.
Output: one command vector per sample, as soon as it is mapped; csv and json carry the time
first (json also "stale" and the commands by name). With a profile, a watchdog ticks every
--tick seconds; from hold_after without a sample it sends the held commands (stale), from
safe_after the commands ramping to safe. Before the first sample nothing is sent.
--record FILE.npy keeps every received sample with its time, (N, 13), and the profile as it
ran in FILE.npy.profile.json: 'map --profile FILE.npy.profile.json FILE.npy' gives the sent
commands bit for bit. SIGINT or SIGTERM stops the bridge with a summary and a complete record.
Exit status: 0 stopped cleanly, 1 bad samples were received (counted, named on standard error),
2 bad command line or profile, 3 a socket, the output or the record failed.
)");
    LiveOptions lo;
    std::string live_model, live_dropout;
    double hold_after = NAN, safe_after = NAN;
    live->add_option("-m,--model", live_model, "the hand, as 'list' names it")->required()->type_name("NAME");
    live->add_option("--in", lo.in, "- (standard input) or udp://HOST:PORT to listen on")->type_name("SOURCE");
    live->add_option("--out", lo.out, "- (standard output) or udp://HOST:PORT to send to")->type_name("SINK");
    live->add_option("--in-format", lo.in_format, "f32, f64 or csv")->transform(CLI::IsMember({"f32", "f64", "csv"}))->type_name("FMT");
    live->add_option("--out-format", lo.out_format, "f32, f64, csv or json")
        ->transform(CLI::IsMember({"f32", "f64", "csv", "json"}))->type_name("FMT");
    live->add_option("--in-columns", lo.in_columns, "12 or 13 values per sample (13: the time first)")
        ->check(CLI::IsMember({12, 13}))->type_name("N");
    live->add_option("--profile", lo.profile, "a wiring profile: the driver's commands instead of the 24 targets")->type_name("FILE.json");
    live->add_option("--dropout", live_dropout, "pass or hold, as for map")->transform(CLI::IsMember(dropout_names()))->type_name("POLICY");
    live->add_option("--hold-after", hold_after, "seconds without a sample before the input is stale (overrides the profile's)")
        ->check(CLI::NonNegativeNumber)->type_name("S");
    live->add_option("--safe-after", safe_after, "seconds without a sample before the commands ramp to safe (overrides the profile's)")
        ->check(CLI::NonNegativeNumber)->type_name("S");
    live->add_option("--record", lo.record, "record every received sample with its time")->type_name("FILE.npy");
    live->add_option("--tick", lo.tick, "the watchdog's period in seconds (default 0.005)")->check(CLI::Range(0.0001, 10.0))->type_name("S");
    live->add_flag("--stats", lo.stats, "once a second on standard error: samples, rate, latency, held, rejected, stale");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        return usage_error(e.what());
    }

    if (list->parsed()) return list_hands();
    if (describe->parsed()) {
        std::string error;
        const quil_hand_info* hand = find_hand(describe_name, error);
        if (!hand) return usage_error(error);
        std::fputs((describe_as_json ? describe_json(*hand) : describe_text(*hand)).c_str(), stdout);
        return finish_stdout();
    }
    if (live->parsed()) {
        std::string error;
        lo.hand = find_hand(live_model, error);
        if (!lo.hand) return usage_error(error);
        if (!live_dropout.empty()) lo.dropout = dropout_policy(live_dropout);
        if (!std::isnan(hold_after)) lo.hold_after = hold_after;
        if (!std::isnan(safe_after)) lo.safe_after = safe_after;
        return run_live(lo, stderr);
    }
    if (!map->parsed()) {
        std::fputs(app.help().c_str(), stderr);
        return kExitUsage;
    }

    MapOptions o;
    std::string error;
    o.hand = find_hand(model, error);
    if (!o.hand) return usage_error(error);
    o.input = input;
    o.output = output;
    auto format_of = [](const std::string& name) {
        return name == "f64" ? Format::f64 : name == "npy" ? Format::npy : Format::csv;
    };
    o.from = !format.empty() ? format_of(format) : !from.empty() ? format_of(from) : format_of_path(input);
    o.to = !format.empty() ? format_of(format) : !to.empty() ? format_of(to) : format_of_path(output);
    o.header_roles = header == "roles";
    if (!dropout.empty()) o.dropout = dropout_policy(dropout);
    o.state_in = state_in;
    o.state_out = state_out;
    if (!time_unit.empty()) {
        TimeUnit u;
        parse_time_unit(time_unit, u);
        o.time_unit = u;
    }
    o.meta = meta;
    o.plot = plot;
    o.skip_bad = skip_bad;
    o.quiet = quiet;
    o.profile = profile;
    if (!std::isnan(map_hold_after)) o.hold_after = map_hold_after;
    if (!std::isnan(map_safe_after)) o.safe_after = map_safe_after;
    o.progress = !quiet && ::isatty(STDERR_FILENO);
    if (!plot.empty()) {
        const PlotKind kind = plot_kind_of(plot);
        if (kind == PlotKind::none) return usage_error("cannot draw '" + plot + "': a plot is .svg, or .png through rsvg-convert");
        if (kind == PlotKind::png) {
            o.rsvg_convert = find_on_path("rsvg-convert");
            if (o.rsvg_convert.empty())
                return usage_error("cannot draw '" + plot + "': a .png plot needs rsvg-convert (Debian: librsvg2-bin), "
                                   "which is not installed; ask for .svg instead");
        }
    }
    if (o.header_roles && o.to != Format::csv) return usage_error("--header roles is for CSV output only");
    return run_map(o, stderr);
}
