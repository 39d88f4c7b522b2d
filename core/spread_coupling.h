// Finger spread (abduction) against curl. The glove measures the spread of the index (out[7]),
// ring (out[15]) and little finger (out[19]); the middle finger's spread (out[11]) sits between
// its neighbours. The hands' little fingers spread less than a human one, so that spread is
// reshaped; the ring finger never spreads past the little finger, or the two would cross; and a
// curling finger cannot stay spread, so a fist does not splay.
#pragma once

#include "core/finger_coupling.h"
#include "core/records.h"

namespace quil {


// Upper limits of the three measured spreads. The ring finger never spreads past the little
// finger, or the two would cross.
struct SpreadCaps {
    double index;
    double ring;
    double little;
};

inline void cap_spreads(Targets& out, const SpreadCaps& caps) {
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
inline void rotate_thumb_with_little_spread(Targets& out, double gain) {
    if (out[19] > 5) {
        out[3] = out[3] + (out[19] - 5) * gain;
        if (out[3] > 35) out[3] = 35;
    }
}

// One hand's spread constants. Slots: 7 index spread, 11 middle spread, 15 ring spread,
// 19 little spread; 5, 13 and 17 the curls that close them.
struct SpreadCoupling {
    double index_cap;          // index spread at most this
    double ring_cap;           // ring spread at most this
    double little_cap;         // little spread at most this, before and after its boost
    double little_knee;        // below it the little spread is scaled, at or above it lifted
    double little_low_gain;
    double little_lift;
    double index_pull;         // closing of each spread per unit of its finger's curl
    double ring_pull;
    double little_pull;
    double middle_from_index;  // middle spread = index spread * this - ring spread * the next
    double middle_from_ring;
};

// Caps, the little-spread boost, closing with curl, then the middle spread from its neighbours.
inline void couple_spreads(Targets& out, const SpreadCoupling& s) {
    if (out[7] > s.index_cap) out[7] = s.index_cap;
    if (out[15] > s.ring_cap) out[15] = s.ring_cap;
    if (out[19] > s.little_cap) out[19] = s.little_cap;
    if (out[19] < s.little_knee) {
        out[19] = out[19] * s.little_low_gain;
    } else {
        out[19] = out[19] + s.little_lift;
        if (out[19] > s.little_cap) out[19] = s.little_cap;
    }
    close_spread(out[7], out[5], s.index_pull);
    close_spread(out[15], out[13], s.ring_pull);
    close_spread(out[19], out[17], s.little_pull);
    spread_middle_from_neighbours(out, s.middle_from_index, s.middle_from_ring);
}

}  // namespace quil
