// Finger spreads on hands whose thumb rotation turns out of the little finger's way (the INSPIRE
// ROBOTS RH56DFX, the OYMotion ROH-A001 and the ROBOTERA XHAND1): the three
// measured spreads are capped, a wide little-finger spread turns the thumb toward the palm
// before the little spread is reshaped, each spread closes as its finger curls, and the middle
// finger's spread is taken from its neighbours.
#pragma once

#include "core/finger_coupling.h"
#include "core/records.h"
#include "core/slots.h"
#include "core/spread_coupling.h"

namespace quil {

struct ThumbTurningSpreads {
    SpreadCaps caps;
    double thumb_turn;         // thumb rotation gained per unit of little spread past 5
    LittleSpreadGain little;
    double index_close;        // closing of each spread per unit of its finger's curl
    double ring_close;
    double little_close;
    double middle_from_index;  // middle spread = index spread * this - ring spread * the next
    double middle_from_ring;
};

inline void couple_spreads_turning_thumb(Targets& out, const ThumbTurningSpreads& s) {
    cap_spreads(out, s.caps);
    rotate_thumb_with_little_spread(out, s.thumb_turn);
    reshape_little_spread(out[slot::little_spread], s.little);
    close_spread(out[slot::index_spread], out[slot::index_distal], s.index_close);
    close_spread(out[slot::ring_spread], out[slot::ring_distal], s.ring_close);
    close_spread(out[slot::little_spread], out[slot::little_distal], s.little_close);
    spread_middle_from_neighbours(out, s.middle_from_index, s.middle_from_ring);
}

}  // namespace quil
