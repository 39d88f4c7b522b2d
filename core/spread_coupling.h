// Finger spread (abduction) against curl. The glove measures the spread of the index (out[slot::index_spread]),
// ring (out[slot::ring_spread]) and little finger (out[slot::little_spread]); the middle finger's spread
// (out[slot::middle_spread]) sits between its neighbours. The hands' little fingers spread less than a human one, so
// that spread is reshaped; the ring finger never spreads past the little finger, or the two would cross; and a
// curling finger cannot stay spread, so a fist does not splay.
#pragma once

#include "core/finger_coupling.h"
#include "core/records.h"
#include "core/slots.h"

namespace quil {


// Upper limits of the three measured spreads. The ring finger never spreads past the little
// finger, or the two would cross.
struct SpreadCaps {
    double index;
    double ring;
    double little;
};

inline void cap_spreads(TargetArray& out, const SpreadCaps& caps) {
    if (out[slot::index_spread] > caps.index) out[slot::index_spread] = caps.index;
    if (out[slot::ring_spread] > caps.ring) out[slot::ring_spread] = caps.ring;
    if (out[slot::little_spread] > caps.little) out[slot::little_spread] = caps.little;
    if (out[slot::ring_spread] > out[slot::little_spread]) out[slot::ring_spread] = out[slot::little_spread];
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
    if (out[slot::little_spread] > 5) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] + (out[slot::little_spread] - 5) * gain;
        if (out[slot::thumb_abduction] > 35) out[slot::thumb_abduction] = 35;
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
inline void couple_spreads(TargetArray& out, const SpreadCoupling& s) {
    if (out[slot::index_spread] > s.index_cap) out[slot::index_spread] = s.index_cap;
    if (out[slot::ring_spread] > s.ring_cap) out[slot::ring_spread] = s.ring_cap;
    if (out[slot::little_spread] > s.little_cap) out[slot::little_spread] = s.little_cap;
    if (out[slot::little_spread] < s.little_knee) {
        out[slot::little_spread] = out[slot::little_spread] * s.little_low_gain;
    } else {
        out[slot::little_spread] = out[slot::little_spread] + s.little_lift;
        if (out[slot::little_spread] > s.little_cap) out[slot::little_spread] = s.little_cap;
    }
    close_spread(out[slot::index_spread], out[slot::index_distal], s.index_pull);
    close_spread(out[slot::ring_spread], out[slot::ring_distal], s.ring_pull);
    close_spread(out[slot::little_spread], out[slot::little_distal], s.little_pull);
    spread_middle_from_neighbours(out, s.middle_from_index, s.middle_from_ring);
}

}  // namespace quil
