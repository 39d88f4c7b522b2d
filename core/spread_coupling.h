// Finger spread (abduction) against curl. A curling finger cannot stay spread: the index, ring
// and little spreads close as their own finger bends, the little spread is boosted at small
// angles so it reads at all, and the middle finger, which has no spread sensor of its own, sits
// between the index and ring spreads.
#pragma once

#include "core/finger_coupling.h"
#include "core/records.h"

namespace quil {

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
