// The joint chain of the hands whose finger curls are scaled in bands: the AgiBot O12, the
// LeadShine DH116, which was derived from it, and the RUIYAN RY_H2 with bands of its own; the
// TalentRobot Pro shares the spreads and the finger bands. It turns the emitted rows into joint
// targets, up to each hand's own pinch poses.
//
// The thumb rotation (the slot thumb_abduction) is coupled to the thumb tip (thumb_distal): a
// straight thumb pulls the rotation in, a bent one lets it go by a hand-specific amount (the
// RY_H2 runs a rotation rule of its own before the bands). Each curl is scaled in three bands,
// so that light bends show and deep bends do not saturate early. The spreads close with the
// curls, the finger tips follow their distal joints at 0.8, and a finger bent past its lock
// depth closes fully.
#pragma once

#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/slots.h"
#include "core/spread_coupling.h"
#include "models/shared/common_spreads.h"

namespace quil::banded_finger_chain {

// One gain in every band: the curve of a joint that is scaled, not banded.
constexpr Curve3 uniform(double gain) { return Curve3{0, 0, scale(gain), scale(gain), scale(gain)}; }

// A hand's band gains, named after the joint they shape.
struct ThumbBands {
    Curve3 base, proximal;
    double proximal_floor;  // thumb_proximal is kept within [proximal_floor, 0]
    Curve3 distal, rotation;
};

struct FingerBands {
    Curve3 index_proximal, index_distal, middle_distal, middle_proximal, ring_distal, ring_proximal, little_proximal;
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

// The O12's thumb rotation (thumb_abduction), coupled to the thumb tip (thumb_distal): a straight
// tip pulls the rotation in, a bent one lets it go by `rotation_give` of its bend beyond -10.
inline void rotation_from_tip(Targets& out, double rotation_give) {
    if (out[slot::thumb_distal] > -10) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] - (out[slot::thumb_distal] + 10) * 2.5;
        if (out[slot::thumb_abduction] > 30) out[slot::thumb_abduction] = 30;
    }
    if (out[slot::thumb_distal] < -10) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] + (out[slot::thumb_distal] + 10) * rotation_give;
        if (out[slot::thumb_abduction] < 20) out[slot::thumb_abduction] = 20;
    }
}

// The thumb's joints in their bands; the thumb spread (thumb_rotation) stops at -45.
inline void banded_thumb(Targets& out, const ThumbBands& b) {
    out[slot::thumb_base] = b.base(out[slot::thumb_base]);
    floor_at(out, slot::thumb_base, -90);
    out[slot::thumb_proximal] = b.proximal(out[slot::thumb_proximal]);
    if (out[slot::thumb_proximal] > 0) out[slot::thumb_proximal] = 0;
    floor_at(out, slot::thumb_proximal, b.proximal_floor);
    out[slot::thumb_distal] = b.distal(out[slot::thumb_distal]);
    floor_at(out, slot::thumb_distal, -75);
    out[slot::thumb_rotation] = b.rotation(out[slot::thumb_rotation]);
    // A fully rotated thumb would collide with the palm unless its joints stay clear.
    if (out[slot::thumb_rotation] < -45) {
        out[slot::thumb_rotation] = -45;
        floor_at(out, slot::thumb_proximal, -44);
        floor_at(out, slot::thumb_base, -49);
    }
}

// The finger curls in their bands, the little finger's spread closed by its deep curl, distal
// joints at 0.8 and the full-bend locks.
inline void banded_fingers(Targets& out, const FingerBands& b) {
    out[slot::index_proximal] = b.index_proximal(out[slot::index_proximal]);
    floor_at(out, slot::index_proximal, -100);
    out[slot::index_distal] = b.index_distal(out[slot::index_distal]);
    floor_at(out, slot::index_distal, -100);
    out[slot::middle_distal] = b.middle_distal(out[slot::middle_distal]);
    floor_at(out, slot::middle_distal, -100);
    out[slot::middle_proximal] = b.middle_proximal(out[slot::middle_proximal]);
    floor_at(out, slot::middle_proximal, -100);
    out[slot::ring_distal] = b.ring_distal(out[slot::ring_distal]);
    floor_at(out, slot::ring_distal, -100);
    out[slot::ring_proximal] = b.ring_proximal(out[slot::ring_proximal]);
    floor_at(out, slot::ring_proximal, -100);
    out[slot::little_proximal] = b.little_proximal(out[slot::little_proximal]);
    floor_at(out, slot::little_proximal, -84);
    // The little finger's spread closes further as it curls deep.
    if (out[slot::little_proximal] < -5) {
        out[slot::little_spread] = out[slot::little_spread] + 0.8 * (out[slot::little_proximal] + 5);
        if (out[slot::little_spread] < 0) out[slot::little_spread] = 0;
    }

    follow_distal(out, 0.8);
    lock_full_bends(out, -90, -80);
}

// Everything between the thumb rotation and the pinch poses: spreads, the banded thumb and
// finger joints, distal joints and full-bend locks.
inline void banded_joints(Targets& out, const Bands& b) {
    couple_spreads(out, kCommonSpreads);
    banded_thumb(out, b.thumb);
    banded_fingers(out, b.fingers);
}

// The O12's chain: its rotation rule, then its bands.
inline void run(Targets& out, double rotation_give) {
    rotation_from_tip(out, rotation_give);
    banded_joints(out, kO12Bands);
}

}  // namespace quil::banded_finger_chain
