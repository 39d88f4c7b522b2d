// The glove samples of the golden record: 20 blocks of 1024 samples for every hand, the same on
// every machine (the generator draws only from its own PRNG and exactly rounded arithmetic).
//
//   blocks  0-7   pinch sessions: smooth moves between pinches, tripods, fists and open hands,
//                 so latches set, hold and release
//   blocks  8-11  grids: readings on the 0.5 and 0.1 lattices, where the rows' tenths and the
//                 hands' band and pinch thresholds fall exactly
//   blocks 12-15  special readings: NaN, +-inf, +-0, huge and subnormal values, alone, several
//                 at once, and as a channel that drops out in the middle of a pinch
//   blocks 16-19  independent random samples over the whole range and beyond
#pragma once

#include <cstdint>
#include <vector>

#include "support/glove_sequences.h"

namespace quil::golden {

using test::Rng;
using test::Sample;

constexpr std::size_t kBlock = 1024;
constexpr std::size_t kBlocks = 20;
constexpr std::size_t kSamples = kBlock * kBlocks;

inline std::vector<Sample> samples_for_hand(std::size_t hand_index) {
    const std::uint64_t seed = 0x51F15EEDull + 7919 * hand_index;
    std::vector<Sample> out = test::pinch_session(seed, 8 * kBlock);
    Rng rng(seed);

    // Grids: a pinch-session pose with every reading snapped to the 0.5 lattice, then one
    // channel swept through its neighbourhood on the 0.1 lattice.
    const std::vector<Sample> poses = test::pinch_session(seed + 1, 4 * kBlock);
    for (std::size_t k = 0; k < 4 * kBlock; ++k) {
        Sample s = poses[k];
        for (double& x : s) x = static_cast<double>(static_cast<int>(x * 2.0)) / 2.0;
        const std::size_t channel = k % 12;
        s[channel] = static_cast<double>(static_cast<int>(s[channel] * 10.0) + static_cast<int>(rng.below(41)) - 20) / 10.0;
        out.push_back(s);
    }

    // Special readings, on top of pinch poses so that they meet the pinch rules.
    const std::vector<Sample> base = test::pinch_session(seed + 2, 4 * kBlock);
    const auto& special = test::special_readings();
    std::size_t dropped = 12, drop_left = 0;
    for (std::size_t k = 0; k < 4 * kBlock; ++k) {
        Sample s = base[k];
        const std::size_t how = rng.below(4);
        if (how == 0) {
            s[rng.below(12)] = special[rng.below(special.size())];
        } else if (how == 1) {
            for (std::size_t n = 1 + rng.below(4); n > 0; --n) s[rng.below(12)] = special[rng.below(special.size())];
        } else if (how == 2 && drop_left == 0) {
            dropped = rng.below(12);  // a channel drops out for a while
            drop_left = 5 + rng.below(40);
        }
        if (drop_left > 0) {
            s[dropped] = special[drop_left % 2];  // NaN of either sign
            --drop_left;
        }
        out.push_back(s);
    }

    const std::vector<Sample> wide = test::random_samples(seed + 3, 4 * kBlock);
    out.insert(out.end(), wide.begin(), wide.end());
    return out;
}

}  // namespace quil::golden
