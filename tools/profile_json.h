// Wiring profiles read from their JSON files for the library's quil_profile.
#pragma once

#include <string>
#include <vector>

#include "quil_linear/hand.h"

namespace quil::retarget {

// A profile file, read and checked: `profile` points into the object, which must stay put.
struct ProfileFile {
    std::string path, hand, comment;
    std::vector<std::string> names;
    std::vector<quil_output> outputs;
    quil_profile profile{};
    ProfileFile() = default;
    ProfileFile(const ProfileFile&) = delete;
    ProfileFile& operator=(const ProfileFile&) = delete;
};

// Reads `path` into `out`. False with `error` naming the file and the field (or the byte where
// the JSON breaks) for any fault: not JSON, a missing or unknown field, a number that is not a
// finite number, an unknown slot, min > max, a profile for another hand than `hand` (when not
// NULL).
bool read_profile(const std::string& path, const quil_hand_info* hand, ProfileFile& out, std::string& error);

}  // namespace quil::retarget
