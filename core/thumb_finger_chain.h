// The coupling chain of the hands whose thumb rotation is recomputed from the thumb's swing and
// tip, whose fingers each have a spread joint closed by their own bend, and whose fist deepens
// once the outer fingers close. The hands run these steps in this order and differ only in the
// constants passed in; what comes after the chain (locks, easing, pinch assist) is each hand's own.
#pragma once

#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/records.h"

namespace quil {

namespace chain_detail {
constexpr Piece unchanged = scale(1.0);  // v * 1.0 is v to the bit, zeros and NaN included
}  // namespace chain_detail

// How much of its row the thumb swing (out[20]) keeps: `near_open` while it is above -15,
// `beyond` once it swings further.
struct ThumbSwingGains {
    double near_open;
    double beyond;
};

// Thumb values out[0..3] and out[20]: base and first joint reshaped past their knees, the tip
// stopped short of the palm, the swing scaled and stopped at -45 (holding the first joint and the
// base back with it), and the rotation out[3] recomputed from swing and tip.
inline void couple_thumb(Targets& out, ThumbSwingGains swing) {
    using chain_detail::unchanged;
    // The tip nudges the rotation first. The recomputation at the end overrides it; the firmware
    // has always run both.
    if (out[2] > -10) {
        out[3] = out[3] - (out[2] + 10) * 2.5;
        if (out[3] > 30) out[3] = 30;
    }
    if (out[2] < -10) {
        out[3] = out[3] + (out[2] + 10) * 0.15;
        if (out[3] < 20) out[3] = 20;
    }
    out[0] = Curve3{-20, -60, scale(0.5), affine(0.4, -5.0), unchanged}(out[0]);
    if (out[0] < -90) out[0] = -90;
    out[1] = Curve3{-20, -60, scale(1.2), affine(0.6, -20.0), affine(1.0, 4.0)}(out[1]);
    if (out[1] > 0) out[1] = 0;
    if (out[1] < -90) out[1] = -90;
    // The tip keeps its row value through all its bands; it only stops at -75.
    if (out[2] < -75) out[2] = -75;
    out[20] = out[20] * (out[20] > -15 ? swing.near_open : swing.beyond);
    if (out[20] < -45) {
        out[20] = -45;
        if (out[1] < -44) out[1] = -44;
        if (out[0] < -49) out[0] = -49;
    }
    out[3] = out[20] * (-0.5) - 0.15 * out[2];
}

// Finger slots out[5..19]: each spread joint capped and closed by its finger's bend, the
// knuckles scaled, the second slots of the doubly driven fingers reshaped past their knees, the
// middle spread taken from its neighbours, and the little finger's spread closed by its knuckle.
inline void couple_fingers(Targets& out) {
    using chain_detail::unchanged;
    const Curve3 second_slot{-15, -70, scale(1.25), scale(0.9), unchanged};

    // Index
    if (out[7] > 30) out[7] = 30;
    close_spread(out[7], out[5], 0.15);
    out[6] = out[6] * 0.9;
    out[5] = Curve3{-10, -60, unchanged, affine(0.5, -10.0), scale(1.1)}(out[5]);
    if (out[5] < -100) out[5] = -100;
    // Middle: no spread sensor, it follows the index and ring spreads.
    out[11] = out[7] * 0.24 - 0.32 * out[15];
    out[10] = out[10] * 0.9;
    if (out[10] < -100) out[10] = -100;
    out[9] = second_slot(out[9]);
    if (out[9] < -100) out[9] = -100;
    // Ring
    if (out[15] > 20) out[15] = 20;
    close_spread(out[15], out[13], 0.15);
    out[14] = out[14] * 0.9;
    if (out[14] < -100) out[14] = -100;
    out[13] = second_slot(out[13]);
    if (out[13] < -100) out[13] = -100;
    // Little
    if (out[19] > 30) out[19] = 30;
    if (out[19] < 7) {
        out[19] = out[19] * 1.5;
    } else {
        out[19] = out[19] + 3.5;
        if (out[19] > 30) out[19] = 30;
    }
    close_spread(out[19], out[17], 0.25);
    out[18] = out[18] * 0.95;
    if (out[18] < -84) out[18] = -84;
    close_spread(out[19], out[18], 0.8, -5);
}

// A closing fist: with the middle finger deep, the ring and little knuckles are doubled and
// tripled (floored at -81 and -100); with the middle deeper still, the index knuckle follows at
// 1.5 (floored at -81).
inline void deepen_fist(Targets& out) {
    if (out[10] <= -65 && out[14] <= -25 && out[18] <= -15) {
        out[14] = 2 * out[14] < -81 ? -81 : 2 * out[14];
        out[18] = 3 * out[18] < -100 ? -100 : 3 * out[18];
    }
    if (out[10] <= -70 && out[6] <= -30) out[6] = 1.5 * out[6] < -81 ? -81 : 1.5 * out[6];
}

// While the index is not fully bent (out[6] above `index_gate`), each of the middle and ring
// fingers bent past -70 takes `step` off the thumb swing, so the thumb tucks in less over a fist.
inline void ease_thumb_swing(Targets& out, double index_gate, double step) {
    if (out[6] > index_gate) {
        double f = 1.0;
        if (out[10] < -70) f = f - step;
        if (out[14] < -70) f = f - step;
        out[20] = out[20] * f;
    }
}

}  // namespace quil
