// The `live` command of quil-retarget: a bridge between a glove and a robot hand's driver, one
// sample in, one command vector out, with a watchdog for when the glove stops sending.
#pragma once

#include <cstdio>
#include <optional>
#include <string>

#include "quil_linear/hand.h"

namespace quil::retarget {

struct LiveOptions {
    const quil_hand_info* hand = nullptr;
    std::string in = "-", out = "-";  // "-" or udp://HOST:PORT
    std::string in_format = "csv";    // f32, f64 or csv
    std::string out_format = "csv";   // f32, f64, csv or json
    int in_columns = 0;               // binary standard input: 12 or 13 values per record (0: 12)
    std::string profile;              // a wiring profile file, "" for the 24 targets
    std::optional<int> dropout;
    std::optional<double> hold_after, safe_after;  // override the profile's
    std::string record;               // FILE.npy of every received sample, time first
    bool stats = false;               // once a second on standard error
    double tick = 0.005;              // the watchdog's period, seconds
};

// Runs until SIGINT, SIGTERM or the end of standard input; returns the exit status.
int run_live(const LiveOptions& options, std::FILE* err);

}  // namespace quil::retarget
