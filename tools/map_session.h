// The `map` command of quil-retarget: glove samples in, one row of joint targets out per sample,
// in order, streaming in constant memory.
#pragma once

#include <cstdio>
#include <string>

#include "quil_linear/hand.h"

namespace quil::retarget {

// Exit statuses, as documented by `quil-retarget --help`.
enum ExitStatus {
    kExitOk = 0,
    kExitBadData = 1,  // a malformed row or a truncated record (what came before it is written)
    kExitUsage = 2,    // bad command line, unknown model
    kExitIo = 3,       // an input that cannot be opened or read, an output that cannot be written
};

enum class Format { csv, f64 };

struct MapOptions {
    const quil_hand_info* model = nullptr;
    std::string input;   // "" or "-": standard input
    std::string output;  // "" or "-": standard output
    std::string plot;    // SVG file to write, "" for none
    Format format = Format::csv;
    bool skip_bad = false;
    bool progress = false;  // show the progress display on `err`
};

// Runs one conversion and returns its exit status; messages go to `err`.
int run_map(const MapOptions& options, std::FILE* err);

}  // namespace quil::retarget
