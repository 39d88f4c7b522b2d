// RUIYAN RY_H2: the common pose with the thumb rotation coupled to thumb slot 2 in both
// directions, the proximal finger curls taken at 0.9 and the middle ones in bands, and four
// pinch poses that set only the thumb's slots 2 and 3 and the bending finger, leaving the rest
// to the glove.
#include "core/banded_finger_chain.h"
#include "core/common_coefficients.h"
#include "core/curves.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"

QUIL_PUBLISH_COEFFICIENTS(RUIYAN_RY_H2, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::RUIYAN_RY_H2_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

// Band gains by finger and slot (core/banded_finger_chain.h). Thumb slot 1 is lifted by 4
// rather than scaled when deep and may bend to -90; the proximal curls are only scaled, at 0.9
// (the little finger at 0.95).
constexpr banded_finger_chain::Bands kBands{
    {
        Curve3{-20, -60, scale(0.5), affine(0.4, -5), scale(1)},   // thumb 0
        Curve3{-20, -40, scale(1.2), scale(0.6), affine(1, 4)},    // thumb 1
        -90,                                                        // and its floor
        Curve3{-20, -50, scale(0.8), scale(0.8), scale(1)},        // thumb 2
        Curve3{-15, -30, scale(0.4), scale(0.35), scale(0.3)},     // thumb 20
    },
    {
        banded_finger_chain::uniform(0.9),                          // index 6
        Curve3{-10, -60, scale(1), affine(0.5, -10), scale(1.1)},  // index 5
        Curve3{-15, -70, scale(1.15), scale(0.8), scale(1)},       // middle 9
        banded_finger_chain::uniform(0.9),                          // middle 10
        Curve3{-15, -70, scale(1.25), scale(0.9), scale(1)},       // ring 13
        banded_finger_chain::uniform(0.9),                          // ring 14
        banded_finger_chain::uniform(0.95),                         // little 18
    },
};

void joint_chain(Targets& out) {
    // The rotation follows thumb slot 2 both ways; at exactly -10 the lower branch still
    // rescales it.
    if (out[2] > -10) {
        out[3] = out[3] - (out[2] + 10) * 2.3;
        if (out[3] > 25) out[3] = 25;
    }
    if (out[2] <= -10) {
        out[3] = out[3] + (out[2] + 10) * 0.15;
        out[3] = out[3] * 0.78;
        if (out[3] < 20) out[3] = 20;
    }
    // Spreads, banded thumb and fingers, distal joints and full-bend locks.
    banded_finger_chain::banded_joints(out, kBands);
}

// With the thumb reaching (slot 1 at or below -40, slot 2 not below -75), the bending finger
// picks the pose. An index pose leaves out[6] at -43, which shuts out the others; out[14] at
// exactly -30 is neither a ring nor a little pinch.
void pinch_poses(Targets& out) {
    if (!(out[1] <= -40 && out[2] >= -75)) return;
    if (out[6] <= -35 && out[6] >= -70) {
        out[2] = -26; out[3] = 20; out[6] = -43;
    }
    const bool middle = out[6] > -40 && out[10] <= -31 && out[18] > -40;
    if (middle) {
        out[2] = -23; out[3] = 25; out[10] = -45;
    }
    if (!middle && out[6] > -40 && out[10] > -40 && out[14] < -30 && out[18] > -40) {
        out[2] = -23; out[3] = 28; out[14] = -41;
    }
    if (out[6] > -40 && out[10] > -40 && out[14] > -30 && out[18] < -35) {
        out[2] = -18; out[3] = 30; out[18] = -55;
    }
}

}  // namespace

quil::Targets quil::hands::RUIYAN_RY_H2(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    const int k = run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);
    joint_chain(out);
    pinch_poses(out);
    out[k] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
