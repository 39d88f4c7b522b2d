// The coupling chain of the hands whose thumb rotation (the slot thumb_abduction) is recomputed
// from the thumb's swing (thumb_rotation) and tip, whose fingers each have a spread joint closed
// by their own bend, and whose fist deepens once the outer fingers close: the BrainCo Revo2 and
// the LinkerHand L10. The hands run these steps in this order and differ only in the constants
// passed in; what comes after the chain (locks, easing, pinch assist) is each hand's own.
#pragma once

#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/records.h"
#include "core/slots.h"

namespace quil {

namespace chain_detail {
constexpr Piece unchanged = scale(1.0);  // v * 1.0 is v to the bit, zeros and NaN included
}  // namespace chain_detail

// How much of its row the thumb swing (thumb_rotation) keeps: `near_open` while it is above -15,
// `beyond` once it swings further.
struct ThumbSwingGains {
    double near_open;
    double beyond;
};

// The thumb: base and first joint reshaped past their knees, the tip stopped short of the palm,
// the swing scaled and stopped at -45 (holding the first joint and the base back with it), and
// the rotation recomputed from swing and tip.
inline void couple_thumb(Targets& out, ThumbSwingGains swing) {
    using chain_detail::unchanged;
    out[slot::thumb_base] = Curve3{-20, -60, scale(0.5), affine(0.4, -5.0), unchanged}(out[slot::thumb_base]);
    if (out[slot::thumb_base] < -90) out[slot::thumb_base] = -90;
    out[slot::thumb_proximal] =
        Curve3{-20, -60, scale(1.2), affine(0.6, -20.0), affine(1.0, 4.0)}(out[slot::thumb_proximal]);
    if (out[slot::thumb_proximal] > 0) out[slot::thumb_proximal] = 0;
    if (out[slot::thumb_proximal] < -90) out[slot::thumb_proximal] = -90;
    // The tip keeps its row value through all its bands; it only stops at -75.
    if (out[slot::thumb_distal] < -75) out[slot::thumb_distal] = -75;
    out[slot::thumb_rotation] =
        out[slot::thumb_rotation] * (out[slot::thumb_rotation] > -15 ? swing.near_open : swing.beyond);
    if (out[slot::thumb_rotation] < -45) {
        out[slot::thumb_rotation] = -45;
        if (out[slot::thumb_proximal] < -44) out[slot::thumb_proximal] = -44;
        if (out[slot::thumb_base] < -49) out[slot::thumb_base] = -49;
    }
    out[slot::thumb_abduction] = out[slot::thumb_rotation] * (-0.5) - 0.15 * out[slot::thumb_distal];
}

// The fingers, index_distal to little_spread: each spread joint capped and closed by its finger's bend, the
// knuckles scaled, the second slots of the doubly driven fingers reshaped past their knees, the
// middle spread taken from its neighbours, and the little finger's spread closed by its knuckle.
inline void couple_fingers(Targets& out) {
    using chain_detail::unchanged;
    const Curve3 second_slot{-15, -70, scale(1.25), scale(0.9), unchanged};

    // Index
    if (out[slot::index_spread] > 30) out[slot::index_spread] = 30;
    close_spread(out[slot::index_spread], out[slot::index_distal], 0.15);
    out[slot::index_proximal] = out[slot::index_proximal] * 0.9;
    out[slot::index_distal] = Curve3{-10, -60, unchanged, affine(0.5, -10.0), scale(1.1)}(out[slot::index_distal]);
    if (out[slot::index_distal] < -100) out[slot::index_distal] = -100;
    // Middle: no spread sensor, it follows the index and ring spreads.
    out[slot::middle_spread] = out[slot::index_spread] * 0.24 - 0.32 * out[slot::ring_spread];
    out[slot::middle_proximal] = out[slot::middle_proximal] * 0.9;
    if (out[slot::middle_proximal] < -100) out[slot::middle_proximal] = -100;
    out[slot::middle_distal] = second_slot(out[slot::middle_distal]);
    if (out[slot::middle_distal] < -100) out[slot::middle_distal] = -100;
    // Ring
    if (out[slot::ring_spread] > 20) out[slot::ring_spread] = 20;
    close_spread(out[slot::ring_spread], out[slot::ring_distal], 0.15);
    out[slot::ring_proximal] = out[slot::ring_proximal] * 0.9;
    if (out[slot::ring_proximal] < -100) out[slot::ring_proximal] = -100;
    out[slot::ring_distal] = second_slot(out[slot::ring_distal]);
    if (out[slot::ring_distal] < -100) out[slot::ring_distal] = -100;
    // Little
    if (out[slot::little_spread] > 30) out[slot::little_spread] = 30;
    reshape_little_spread(out[slot::little_spread], LittleSpreadGain{1.5, 3.5, 30});
    close_spread(out[slot::little_spread], out[slot::little_distal], 0.25);
    out[slot::little_proximal] = out[slot::little_proximal] * 0.95;
    if (out[slot::little_proximal] < -84) out[slot::little_proximal] = -84;
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5);
}

// A closing fist: with the middle finger deep, the ring and little knuckles are doubled and
// tripled (floored at -81 and -100); with the middle deeper still, the index knuckle follows at
// 1.5 (floored at -81).
inline void deepen_fist(Targets& out) {
    if (out[slot::middle_proximal] <= -65 && out[slot::ring_proximal] <= -25 && out[slot::little_proximal] <= -15) {
        out[slot::ring_proximal] = 2 * out[slot::ring_proximal] < -81 ? -81 : 2 * out[slot::ring_proximal];
        out[slot::little_proximal] = 3 * out[slot::little_proximal] < -100 ? -100 : 3 * out[slot::little_proximal];
    }
    if (out[slot::middle_proximal] <= -70 && out[slot::index_proximal] <= -30)
        out[slot::index_proximal] = 1.5 * out[slot::index_proximal] < -81 ? -81 : 1.5 * out[slot::index_proximal];
}

// While the index is not fully bent (index_proximal above `index_gate`), each of the middle and ring
// fingers bent past -70 takes `step` off the thumb swing, so the thumb tucks in less over a fist.
inline void ease_thumb_swing(Targets& out, double index_gate, double step) {
    if (out[slot::index_proximal] > index_gate) {
        double f = 1.0;
        if (out[slot::middle_proximal] < -70) f = f - step;
        if (out[slot::ring_proximal] < -70) f = f - step;
        out[slot::thumb_rotation] = out[slot::thumb_rotation] * f;
    }
}

}  // namespace quil
