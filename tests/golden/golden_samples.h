// The glove samples of the golden record: 56 blocks of 1024 samples for every hand, the same on
// every machine (the generator draws only from its own PRNG and exactly rounded arithmetic).
//
//   blocks  0-9   pinch sessions: smooth moves between pinches, tripods, fists and open hands,
//                 so latches set, hold and release
//   blocks 10-26  sweeps: each reading in turn walks the 0.1 lattice from -22 to 122.9 while
//                 the others hold pinch poses on the 0.5 lattice, so every tenth a row can take
//                 and the hands' band edges and pinch thresholds are met exactly
//   blocks 27-39  held pinches: a pinch pose is closed and held, then one reading walks out and
//                 back in tenths, so latches meet their release bounds step by step
//   blocks 40-45  lattices: every reading on the 0.5 lattice, one on the 0.1 lattice
//   blocks 46-50  special readings: NaN, +-inf, +-0, huge and subnormal values, alone, several
//                 at once, and as a channel that drops out in the middle of a pinch
//   blocks 51-55  independent random samples over the whole range and beyond
#pragma once

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "support/glove_sequences.h"

namespace quil::golden {

using test::Rng;
using test::Sample;

constexpr std::size_t kBlock = 1024;
constexpr std::size_t kBlocks = 56;
constexpr std::size_t kSamples = kBlock * kBlocks;

// A reading snapped down to a lattice of 1/`per_unit` (pinch poses stay within +-130).
inline double snapped(double x, int per_unit) {
    return static_cast<double>(static_cast<int>(x * per_unit)) / per_unit;
}

inline std::vector<Sample> samples_for_hand(std::size_t hand_index) {
    const std::uint64_t seed = 0x51F15EEDull + 7919 * hand_index;
    std::vector<Sample> out = test::pinch_session(seed, 10 * kBlock);
    Rng rng(seed);

    const std::vector<Sample> poses = test::pinch_session(seed + 1, 64);
    constexpr int kSweep = 1450;  // -22.0 .. 122.9
    for (int channel = 0; channel < 12; ++channel)
        for (int k = 0; k < kSweep; ++k) {
            Sample s = poses[(channel * 5 + k / 290) % poses.size()];
            for (double& x : s) x = snapped(x, 2);
            s[channel] = static_cast<double>(k - 220) / 10.0;
            out.push_back(s);
        }
    while (out.size() < 27 * kBlock) out.push_back(out.back());

    const std::vector<Sample> held = test::held_pinch_sweeps(seed + 5, 13 * kBlock);
    out.insert(out.end(), held.begin(), held.end());

    const std::vector<Sample> lattice = test::pinch_session(seed + 2, 6 * kBlock);
    for (std::size_t k = 0; k < lattice.size(); ++k) {
        Sample s = lattice[k];
        for (double& x : s) x = snapped(x, 2);
        const std::size_t channel = rng.below(12);
        s[channel] = snapped(lattice[k][channel], 10);
        out.push_back(s);
    }

    // Special readings, on top of pinch poses so that they meet the pinch rules.
    const std::vector<Sample> base = test::pinch_session(seed + 3, 5 * kBlock);
    const auto& special = test::special_readings();
    std::size_t dropped = 12, drop_left = 0;
    for (std::size_t k = 0; k < base.size(); ++k) {
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

    const std::vector<Sample> wide = test::random_samples(seed + 4, 5 * kBlock);
    out.insert(out.end(), wide.begin(), wide.end());
    if (out.size() != kSamples) throw std::logic_error("the golden samples do not fill their blocks");
    return out;
}

}  // namespace quil::golden
