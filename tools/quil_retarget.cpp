// quil-retarget: turns recorded glove sessions into robot joint targets with any hand of the
// library, from the command line.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "map_session.h"

#ifndef QUIL_RETARGET_VERSION
#define QUIL_RETARGET_VERSION "unknown"
#endif

namespace {

using namespace quil::retarget;

constexpr const char* kUsage = R"(Usage:
  quil-retarget list
  quil-retarget map --model NAME [INPUT] [-o OUTPUT] [options]
  quil-retarget --help | --version

Retargets recorded glove sessions: each sample of twelve glove readings x0..x11 becomes
the 24 joint targets of the chosen robot hand, one output row per input row, in order.

Commands:
  list                 every hand with its version, its result buffer kind (per-call or
                       persistent) and whether it keeps state between samples
  map                  reads samples from INPUT (a file, or standard input when INPUT is
                       missing or "-") and writes targets to OUTPUT (standard output when
                       missing or "-"), streaming in constant memory

Options of map:
  -m, --model NAME     the hand, as `list` names it; case does not matter
  -o, --output FILE    where the targets go
      --format FMT     csv (default) or f64
      --skip-bad       skip malformed rows instead of stopping; they are counted and the
                       first line numbers are listed on standard error
      --plot FILE.svg  also draw the session: input readings and output targets over time
  -q, --quiet          no progress display (it shows only when standard error is a terminal)
  -h, --help           this text

CSV input: fields separated by commas, semicolons or tabs (whichever the first line uses),
  12 per row (x0..x11) or 13 with a leading time column, which is copied to the output as it
  stands. An optional first line of column names is recognised by holding no number. Numbers
  use a decimal point; nan, inf and -inf are accepted (the library clamps readings).
  Blank lines and lines starting with '#' are ignored.
CSV output: comma separated, a heading line (time column name, out0..out23), then one row
  per sample; every value is written in the shortest form that reads back to the same
  double, so a round trip is exact. An input without rows gives the heading alone.
f64: raw little-endian doubles, 12 per sample in and 24 per sample out, no heading, no time
  (numpy: np.fromfile(path, dtype='<f8').reshape(-1, 24)).

Hands that keep state between samples (pinch latches, thumb references) see the samples in
order through one state, from the hand's start-up state, as a live host would.

Exit status:
  0  every row converted (with --skip-bad: every row that could be read)
  1  bad data: a malformed number, an empty field, a wrong number of fields, a line too long
     or a truncated f64 record; the message names the file, line and column (or the byte
     offset), and every row before it has been written
  2  bad command line, unknown hand, or an output that would overwrite the input
  3  the input cannot be opened or read, or the output or the plot cannot be written

Examples:
  quil-retarget map --model QUIL_linear_AA data/sample_session.csv -o out/aa.csv --plot out/aa.svg
  recorder | quil-retarget map -m robotera_xhand1 --format f64 > targets.f64
)";

int usage_error(const std::string& message) {
    std::fprintf(stderr, "quil-retarget: %s\nRun 'quil-retarget --help' for usage.\n", message.c_str());
    return kExitUsage;
}

int list_models() {
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
    return std::fflush(stdout) == 0 && !std::ferror(stdout) ? kExitOk : kExitIo;
}

// Takes the value of option `name` from "--name=value" or from the next argument.
bool option_value(int argc, char** argv, int& i, std::string_view arg, std::string_view name,
                  std::string& value, bool& missing) {
    if (arg == name) {
        if (i + 1 >= argc) {
            missing = true;
            return true;
        }
        value = argv[++i];
        return true;
    }
    if (arg.size() > name.size() && arg.substr(0, name.size()) == name && arg[name.size()] == '=' &&
        name.substr(0, 2) == "--") {
        value = std::string(arg.substr(name.size() + 1));
        return true;
    }
    return false;
}

int map_command(int argc, char** argv) {
    MapOptions options;
    std::string model, format = "csv";
    bool quiet = false, have_input = false;
    for (int i = 2; i < argc; ++i) {
        const std::string_view arg = argv[i];
        bool missing = false;
        if (arg == "-h" || arg == "--help") {
            std::fputs(kUsage, stdout);
            return kExitOk;
        } else if (option_value(argc, argv, i, arg, "--model", model, missing) ||
                   option_value(argc, argv, i, arg, "-m", model, missing) ||
                   option_value(argc, argv, i, arg, "--output", options.output, missing) ||
                   option_value(argc, argv, i, arg, "-o", options.output, missing) ||
                   option_value(argc, argv, i, arg, "--format", format, missing) ||
                   option_value(argc, argv, i, arg, "--plot", options.plot, missing)) {
            if (missing) return usage_error("option " + std::string(arg) + " needs a value");
        } else if (arg == "--skip-bad") {
            options.skip_bad = true;
        } else if (arg == "-q" || arg == "--quiet") {
            quiet = true;
        } else if (arg.size() > 1 && arg[0] == '-') {
            return usage_error("unknown option " + std::string(arg));
        } else if (have_input) {
            return usage_error("more than one input given ('" + options.input + "' and '" + std::string(arg) + "')");
        } else {
            options.input = std::string(arg);
            have_input = true;
        }
    }
    if (model.empty()) return usage_error("map needs --model NAME (see 'quil-retarget list')");
    options.model = quil_hand_find(model.c_str());
    if (!options.model) {
        std::string names;
        const quil_hand_info* close[3];
        const std::size_t n = quil_hand_suggest(model.c_str(), close, 3);
        for (std::size_t i = 0; i < n; ++i) names += (names.empty() ? "" : ", ") + std::string(close[i]->name);
        return usage_error("unknown model '" + model + "'; closest: " + names + " (all: 'quil-retarget list')");
    }
    if (format == "csv") options.format = Format::csv;
    else if (format == "f64") options.format = Format::f64;
    else return usage_error("unknown format '" + format + "' (csv or f64)");
    options.progress = !quiet && ::isatty(STDERR_FILENO);
    return run_map(options, stderr);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs(kUsage, stderr);
        return kExitUsage;
    }
    const std::string_view command = argv[1];
    if (command == "-h" || command == "--help" || command == "help") {
        std::fputs(kUsage, stdout);
        return kExitOk;
    }
    if (command == "--version") {
        std::printf("quil-retarget %s\n", QUIL_RETARGET_VERSION);
        return kExitOk;
    }
    if (command == "list") {
        if (argc > 2 && (std::strcmp(argv[2], "-h") == 0 || std::strcmp(argv[2], "--help") == 0)) {
            std::fputs(kUsage, stdout);
            return kExitOk;
        }
        if (argc > 2) return usage_error("list takes no arguments");
        return list_models();
    }
    if (command == "map") return map_command(argc, argv);
    return usage_error("unknown command '" + std::string(command) + "' (list or map)");
}
