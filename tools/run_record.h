// JSON written by quil-retarget: the record of how a conversion was made (--meta) and the
// description of a hand (describe --json).
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "quil_linear/hand.h"
#include "session_source.h"

namespace quil::retarget {

struct RunRecord {
    const quil_hand_info* hand = nullptr;
    std::string input, output;  // "-" for the standard streams
    Format from = Format::csv, to = Format::csv;
    const SourceInfo* info = nullptr;
    std::uint64_t rows_read = 0, rows_written = 0;
    const SkippedRows* skipped = nullptr;
    std::string dropout;         // the policy's name, quil_dropout_name
    bool time_written = false;
    std::vector<std::string> columns;  // the output's columns, the time first when written
    std::string state_in, state_out, plot;
    std::string profile;               // the wiring profile's file, "" for none
    std::vector<std::string> outputs;  // with a profile, the names of its outputs (the commands)
    int exit_status = 0;
    std::string error;
    bool output_written = true;        // false when the run stopped before creating its output
    std::string time_unit, time_unit_how;  // the time column's unit; the note when it was guessed
    std::array<std::uint64_t, 12> nonfinite{};  // NaN or infinite readings per channel x0..x11
};

std::string meta_json(const RunRecord& record);

// describe --json: the hand's version, buffer kind, state, the readings it uses and its 24
// slots with role, kind, relation or value, sign, range and the readings that move them.
std::string describe_json(const quil_hand_info& hand);

// describe: the same as text.
std::string describe_text(const quil_hand_info& hand);

// The reading order and names, for --help.
std::string readings_text();

}  // namespace quil::retarget
