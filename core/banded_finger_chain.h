// The joint chain of the hands whose curls are scaled in bands (the AgiBot O12, the LeadShine
// DH116, which was derived from it, and the RUIYAN RY_H2 with its own bands; the TalentRobot Pro
// shares the spreads and the finger bands): the rules that turn the emitted rows into joint
// targets, up to the hand's own pinch poses.
//
// The thumb rotation is coupled to thumb slot 2: a straight thumb pulls the rotation in, a bent
// one lets it go by a hand-specific amount (the RY_H2 runs a rotation rule of its own before
// the bands). Each curl is scaled in three bands, so that light
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

// One gain in every band: the curve of a joint that is scaled, not banded.
constexpr Curve3 uniform(double gain) { return Curve3{0, 0, scale(gain), scale(gain), scale(gain)}; }

// A hand's band gains, named after the finger and the slot they shape. The thumb's joints are
// slots 0, 1 and 2 with its rotation in 3 and its second rotation value in 20; each finger has
// its curls in the two slots before its spread (index 5 and 6, middle 9 and 10, ring 13 and 14,
// little 17 and 18).
struct ThumbBands {
    Curve3 thumb0, thumb1;
    double thumb1_floor;  // thumb slot 1 is kept within [thumb1_floor, 0]
    Curve3 thumb2, thumb20;
};

struct FingerBands {
    Curve3 index6, index5, middle9, middle10, ring13, ring14, little18;
};

struct Bands {
    ThumbBands thumb;
    FingerBands fingers;
};

// The AgiBot O12's bands, which the DH116 kept.
constexpr Bands kO12Bands{
    {
        Curve3{-20, -60, scale(0.5), affine(0.4, -5), scale(1)},
        Curve3{-20, -40, scale(0.6), scale(0.7), scale(0.75)},
        -60,
        Curve3{-20, -50, scale(0.7), scale(0.8), scale(0.8)},
        Curve3{-15, -30, scale(0.4), scale(0.35), scale(0.3)},
    },
    {
        Curve3{-30, -50, scale(1.15), scale(0.8), scale(1)},
        Curve3{-10, -60, scale(1), affine(0.5, -10), scale(1.1)},
        Curve3{-15, -70, scale(1.15), scale(0.8), scale(1)},
        Curve3{-30, -50, scale(1.15), scale(0.8), scale(1)},
        Curve3{-15, -70, scale(1.25), scale(0.9), scale(1)},
        Curve3{-30, -50, scale(1.15), scale(0.8), scale(1)},
        Curve3{-20, -60, scale(1.25), scale(0.8), scale(1)},
    },
};

inline void floor_at(Targets& out, int slot, double limit) {
    if (out[slot] < limit) out[slot] = limit;
}

// The O12's thumb rotation: coupled to thumb slot 2, a straight thumb pulls the rotation in, a
// bent one lets it go by `rotation_give` of its bend beyond -10.
inline void rotation_from_tip(Targets& out, double rotation_give) {
    if (out[2] > -10) {
        out[3] = out[3] - (out[2] + 10) * 2.5;
        if (out[3] > 30) out[3] = 30;
    }
    if (out[2] < -10) {
        out[3] = out[3] + (out[2] + 10) * rotation_give;
        if (out[3] < 20) out[3] = 20;
    }
}

// The thumb's joints in their bands; the thumb spread stops at -45.
inline void banded_thumb(Targets& out, const ThumbBands& b) {
    out[0] = b.thumb0(out[0]);
    floor_at(out, 0, -90);
    out[1] = b.thumb1(out[1]);
    if (out[1] > 0) out[1] = 0;
    floor_at(out, 1, b.thumb1_floor);
    out[2] = b.thumb2(out[2]);
    floor_at(out, 2, -75);
    out[20] = b.thumb20(out[20]);
    // A fully rotated thumb would collide with the palm unless its joints stay clear.
    if (out[20] < -45) {
        out[20] = -45;
        floor_at(out, 1, -44);
        floor_at(out, 0, -49);
    }
}

// The finger curls in their bands, the little finger's spread closed by its deep curl, distal
// joints at 0.8 and the full-bend locks.
inline void banded_fingers(Targets& out, const FingerBands& b) {
    out[6] = b.index6(out[6]);
    floor_at(out, 6, -100);
    out[5] = b.index5(out[5]);
    floor_at(out, 5, -100);
    out[9] = b.middle9(out[9]);
    floor_at(out, 9, -100);
    out[10] = b.middle10(out[10]);
    floor_at(out, 10, -100);
    out[13] = b.ring13(out[13]);
    floor_at(out, 13, -100);
    out[14] = b.ring14(out[14]);
    floor_at(out, 14, -100);
    out[18] = b.little18(out[18]);
    floor_at(out, 18, -84);
    // The little finger's spread closes further as it curls deep.
    if (out[18] < -5) {
        out[19] = out[19] + 0.8 * (out[18] + 5);
        if (out[19] < 0) out[19] = 0;
    }

    follow_distal(out, 0.8);
    lock_full_bends(out, -90, -80);
}

// Everything between the thumb rotation and the pinch poses: spreads, the banded thumb and
// finger joints, distal joints and full-bend locks.
inline void banded_joints(Targets& out, const Bands& b) {
    couple_spreads(out, kSpread);
    banded_thumb(out, b.thumb);
    banded_fingers(out, b.fingers);
}

// The O12's chain: its rotation rule, then its bands.
inline void run(Targets& out, double rotation_give) {
    rotation_from_tip(out, rotation_give);
    banded_joints(out, kO12Bands);
}

}  // namespace quil::banded_finger_chain
