// The `map` command of quil-retarget: glove samples in, one row of joint targets out per sample,
// in order, streaming in constant memory.
#pragma once

#include <cstdio>
#include <optional>
#include <string>

#include "quil_linear/hand.h"
#include "session_file.h"
#include "session_source.h"

namespace quil::retarget {

// Exit statuses, as documented by `quil-retarget --help`.
enum ExitStatus {
    kExitOk = 0,
    kExitBadData = 1,   // a malformed row, record or NumPy header (the rows before it are written)
    kExitUsage = 2,     // bad command line, unknown hand, a request that cannot be carried out
    kExitIo = 3,        // an input that cannot be read, an output that cannot be written
    kExitState = 4,     // a --state-in file that is not a usable state of this hand
    kExitSkipped = 5,   // converted, but --skip-bad left rows out
    kExitClosed = 6,    // the output's reader went away before the end (`| head`); quiet
};

enum class PlotKind { none, svg, png };

struct MapOptions {
    const quil_hand_info* hand = nullptr;
    std::string input;   // "" or "-": standard input
    std::string output;  // "" or "-": standard output
    Format from = Format::csv, to = Format::csv;
    std::string plot;    // .svg or .png file, "" for none
    std::string meta;    // JSON record of the run, "" for none
    std::string state_in, state_out;
    std::optional<int> dropout;  // QUIL_DROPOUT_..., when given
    std::optional<TimeUnit> time_unit;  // what the time column is in, when given
    bool header_roles = false;   // CSV heading: slot roles instead of out0..out23
    bool skip_bad = false;
    bool progress = false;       // show the progress display on `err`
    bool quiet = false;          // no notes on `err`
    std::string rsvg_convert;    // the converter for PNG plots, found before the run
    std::string profile;         // a wiring profile: the driver's commands instead of the targets
    std::optional<double> hold_after, safe_after;  // override the profile's, as live does
};

// The plot kind a file name asks for; `none` for an extension the tool cannot draw.
PlotKind plot_kind_of(const std::string& path);

// The full path of `program` on PATH, or "".
std::string find_on_path(const std::string& program);

// Runs one conversion and returns its exit status; messages go to `err`.
int run_map(const MapOptions& options, std::FILE* err);

}  // namespace quil::retarget
