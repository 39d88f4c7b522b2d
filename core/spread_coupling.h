// Finger spread (abduction) couplings. The glove measures the spread of the index (out[7]), ring
// (out[15]) and little finger (out[19]); the middle finger's spread (out[11]) is derived from its
// neighbours, the little finger's is reshaped because the hands' little fingers spread less than
// a human one, and a bending finger closes its spread so a fist does not splay.
#pragma once

#include "core/records.h"

namespace quil {

// Upper limits of the three measured spreads. The ring finger never spreads past the little
// finger, or the two would cross.
struct SpreadCaps {
    double index;
    double ring;
    double little;
};

inline void cap_spreads(TargetArray& out, const SpreadCaps& caps) {
    if (out[7] > caps.index) out[7] = caps.index;
    if (out[15] > caps.ring) out[15] = caps.ring;
    if (out[19] > caps.little) out[19] = caps.little;
    if (out[15] > out[19]) out[15] = out[19];
}

// The little finger's spread: a narrow spread (below 7) is scaled up; a wider one is offset and
// capped.
struct LittleSpreadGain {
    double narrow_gain;
    double wide_offset;
    double cap;
};

inline void reshape_little_spread(double& spread, const LittleSpreadGain& g) {
    if (spread < 7) {
        spread = spread * g.narrow_gain;
    } else {
        spread = spread + g.wide_offset;
        if (spread > g.cap) spread = g.cap;
    }
}

// A wide little-finger spread (above 5) turns the thumb toward the palm, up to 35.
inline void rotate_thumb_with_little_spread(TargetArray& out, double gain) {
    if (out[19] > 5) {
        out[3] = out[3] + (out[19] - 5) * gain;
        if (out[3] > 35) out[3] = 35;
    }
}

// While `bend` is past `knee` (strictly below it), the spread closes by gain * (bend - knee),
// never below zero.
inline void close_spread_with_bend(double& spread, double bend, double knee, double gain) {
    if (bend < knee) {
        spread = spread + (bend - knee) * gain;
        if (spread < 0) spread = 0;
    }
}

// The middle finger has no spread sensor: it leans toward the index and away from the ring.
inline void derive_middle_spread(TargetArray& out) { out[11] = out[7] * 0.24 - 0.32 * out[15]; }

}  // namespace quil
