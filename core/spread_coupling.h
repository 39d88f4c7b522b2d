// Finger spread (abduction) against curl. The glove measures the spread of the index (index_spread),
// ring (ring_spread) and little finger (little_spread); the middle finger's spread
// (middle_spread) sits between its neighbours. The hands' little fingers spread less than a human one, so
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

inline void cap_spreads(Targets& out, const SpreadCaps& caps) {
    if (out[slot::index_spread] > caps.index) out[slot::index_spread] = caps.index;
    if (out[slot::ring_spread] > caps.ring) out[slot::ring_spread] = caps.ring;
    if (out[slot::little_spread] > caps.little) out[slot::little_spread] = caps.little;
    if (out[slot::ring_spread] > out[slot::little_spread]) out[slot::ring_spread] = out[slot::little_spread];
}

// A wide little-finger spread (above 5) turns the thumb toward the palm, up to 35.
inline void rotate_thumb_with_little_spread(Targets& out, double gain) {
    if (out[slot::little_spread] > 5) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] + (out[slot::little_spread] - 5) * gain;
        if (out[slot::thumb_abduction] > 35) out[slot::thumb_abduction] = 35;
    }
}

// One hand's spread constants: the caps of the index, ring and little spreads, the little
// spread's reshaping, how far each spread closes as its finger's distal joint curls, and the
// middle spread's share of its neighbours.
struct SpreadCoupling {
    double index_cap;          // index spread at most this
    double ring_cap;           // ring spread at most this
    double little_cap;         // little spread at most this, before and after its boost
    double little_low_gain;    // a narrow little spread (below 7) is scaled by this,
    double little_lift;        // a wider one lifted by this (reshape_little_spread)
    double index_pull;         // closing of each spread per unit of its finger's curl
    double ring_pull;
    double little_pull;
    double middle_from_index;  // middle spread = index spread * this - ring spread * the next
    double middle_from_ring;
};

// Caps, the little-spread boost, closing with curl, then the middle spread from its neighbours.
inline void couple_spreads(Targets& out, const SpreadCoupling& s) {
    if (out[slot::index_spread] > s.index_cap) out[slot::index_spread] = s.index_cap;
    if (out[slot::ring_spread] > s.ring_cap) out[slot::ring_spread] = s.ring_cap;
    if (out[slot::little_spread] > s.little_cap) out[slot::little_spread] = s.little_cap;
    reshape_little_spread(out[slot::little_spread], LittleSpreadGain{s.little_low_gain, s.little_lift, s.little_cap});
    close_spread(out[slot::index_spread], out[slot::index_distal], s.index_pull);
    close_spread(out[slot::ring_spread], out[slot::ring_distal], s.ring_pull);
    close_spread(out[slot::little_spread], out[slot::little_distal], s.little_pull);
    spread_middle_from_neighbours(out, s.middle_from_index, s.middle_from_ring);
}

}  // namespace quil
