// The joint chain of the hands whose curls are scaled in bands (the AgiBot O12 and the LeadShine
// DH116, which was derived from it): the row limits of the linear stage, then the rules that
// turn the emitted rows into joint targets, up to the hand's own pinch poses.
//
// The thumb rotation is coupled to thumb slot 2: a straight thumb pulls the rotation in, a bent
// one lets it go by a hand-specific amount. Each curl is scaled in three bands, so that light
// bends show and deep bends do not saturate early. The spreads close with the curls and the
// distal joints follow at 0.8.
#pragma once

#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/spread_coupling.h"

namespace quil::banded_finger_chain {

constexpr SpreadCoupling kSpread{30, 20, 30, 7, 1.5, 3.5, 0.15, 0.15, 0.25, 0.24, 0.32};

// Band gains, named after the finger and the slot they shape. The thumb's joints are slots 0, 1
// and 2 with its rotation in 3 and its second rotation value in 20; each finger has its curls in
// the two slots before its spread (index 5 and 6, middle 9 and 10, ring 13 and 14, little 17
// and 18).
constexpr Curve3 kThumb0{-20, -60, scale(0.5), affine(0.4, -5), scale(1)};
constexpr Curve3 kThumb1{-20, -40, scale(0.6), scale(0.7), scale(0.75)};
constexpr Curve3 kThumb2{-20, -50, scale(0.7), scale(0.8), scale(0.8)};
constexpr Curve3 kThumb20{-15, -30, scale(0.4), scale(0.35), scale(0.3)};
constexpr Curve3 kIndex6{-30, -50, scale(1.15), scale(0.8), scale(1)};
constexpr Curve3 kIndex5{-10, -60, scale(1), affine(0.5, -10), scale(1.1)};
constexpr Curve3 kMiddle9{-15, -70, scale(1.15), scale(0.8), scale(1)};
constexpr Curve3 kMiddle10{-30, -50, scale(1.15), scale(0.8), scale(1)};
constexpr Curve3 kRing13{-15, -70, scale(1.25), scale(0.9), scale(1)};
constexpr Curve3 kRing14{-30, -50, scale(1.15), scale(0.8), scale(1)};
constexpr Curve3 kLittle18{-20, -60, scale(1.25), scale(0.8), scale(1)};

inline void floor_at(TargetArray& out, int slot, double limit) {
    if (out[slot] < limit) out[slot] = limit;
}

// Everything between the row loop and the pinch poses. `rotation_give` is how much of the bend
// of thumb slot 2 beyond -10 the rotation gives back.
inline void run(TargetArray& out, double rotation_give) {
    if (out[2] > -10) {
        out[3] = out[3] - (out[2] + 10) * 2.5;
        if (out[3] > 30) out[3] = 30;
    }
    if (out[2] < -10) {
        out[3] = out[3] + (out[2] + 10) * rotation_give;
        if (out[3] < 20) out[3] = 20;
    }
    couple_spreads(out, kSpread);

    out[0] = kThumb0(out[0]);
    floor_at(out, 0, -90);
    out[1] = kThumb1(out[1]);
    if (out[1] > 0) out[1] = 0;
    floor_at(out, 1, -60);
    out[2] = kThumb2(out[2]);
    floor_at(out, 2, -75);
    out[20] = kThumb20(out[20]);
    // A fully rotated thumb would collide with the palm unless its joints stay clear.
    if (out[20] < -45) {
        out[20] = -45;
        floor_at(out, 1, -44);
        floor_at(out, 0, -49);
    }

    out[6] = kIndex6(out[6]);
    floor_at(out, 6, -100);
    out[5] = kIndex5(out[5]);
    floor_at(out, 5, -100);
    out[9] = kMiddle9(out[9]);
    floor_at(out, 9, -100);
    out[10] = kMiddle10(out[10]);
    floor_at(out, 10, -100);
    out[13] = kRing13(out[13]);
    floor_at(out, 13, -100);
    out[14] = kRing14(out[14]);
    floor_at(out, 14, -100);
    out[18] = kLittle18(out[18]);
    floor_at(out, 18, -84);
    // The little finger's spread closes further as it curls deep.
    if (out[18] < -5) {
        out[19] = out[19] + 0.8 * (out[18] + 5);
        if (out[19] < 0) out[19] = 0;
    }

    follow_distal(out, 0.8);
    lock_full_bends(out, -90, -80);
}

}  // namespace quil::banded_finger_chain
