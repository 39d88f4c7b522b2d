// RUIYAN RY_H2: the common pose with the thumb rotation coupled to the thumb tip in both
// directions, the proximal finger curls taken at 0.9 and the middle ones in bands, and four
// pinch poses that set only the thumb's slots 2 and 3 and the bending finger, leaving the rest
// to the glove.
#include "core/curves.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"
#include "models/shared/banded_finger_chain.h"
#include "models/shared/common_coefficients.h"

QUIL_PUBLISH_COEFFICIENTS(RUIYAN_RY_H2, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::RUIYAN_RY_H2_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

// Band gains by joint (models/shared/banded_finger_chain.h). The thumb's proximal joint is lifted by 4
// rather than scaled when deep and may bend to -90; the proximal curls are only scaled, at 0.9
// (the little finger at 0.95).
constexpr banded_finger_chain::Bands kBands{
    {
        Curve3{-20, -60, scale(0.5), affine(0.4, -5), scale(1)},  // thumb_base
        Curve3{-20, -40, scale(1.2), scale(0.6), affine(1, 4)},   // thumb_proximal
        -90,                                                      // and its floor
        Curve3{-20, -50, scale(0.8), scale(0.8), scale(1)},       // thumb_distal
        Curve3{-15, -30, scale(0.4), scale(0.35), scale(0.3)},    // thumb_rotation
    },
    {
        banded_finger_chain::uniform(0.9),                         // index_proximal
        Curve3{-10, -60, scale(1), affine(0.5, -10), scale(1.1)},  // index_distal
        Curve3{-15, -70, scale(1.15), scale(0.8), scale(1)},       // middle_distal
        banded_finger_chain::uniform(0.9),                         // middle_proximal
        Curve3{-15, -70, scale(1.25), scale(0.9), scale(1)},       // ring_distal
        banded_finger_chain::uniform(0.9),                         // ring_proximal
        banded_finger_chain::uniform(0.95),                        // little_proximal
    },
};

void joint_chain(Targets& out) {
    // The rotation follows the thumb tip both ways; at exactly -10 the lower branch still
    // rescales it.
    if (out[slot::thumb_distal] > -10) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] - (out[slot::thumb_distal] + 10) * 2.3;
        if (out[slot::thumb_abduction] > 25) out[slot::thumb_abduction] = 25;
    }
    if (out[slot::thumb_distal] <= -10) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] + (out[slot::thumb_distal] + 10) * 0.15;
        out[slot::thumb_abduction] = out[slot::thumb_abduction] * 0.78;
        if (out[slot::thumb_abduction] < 20) out[slot::thumb_abduction] = 20;
    }
    // Spreads, banded thumb and fingers, distal joints and full-bend locks.
    banded_finger_chain::banded_joints(out, kBands);
}

// With the thumb reaching (thumb_proximal at or below -40, thumb_distal not below -75), the bending finger
// picks the pose. An index pose leaves index_proximal at -43, which shuts out the others;
// ring_proximal at exactly -30 is neither a ring nor a little pinch.
void pinch_poses(Targets& out) {
    if (!(out[slot::thumb_proximal] <= -40 && out[slot::thumb_distal] >= -75)) return;
    if (out[slot::index_proximal] <= -35 && out[slot::index_proximal] >= -70) {
        out[slot::thumb_distal] = -26;
        out[slot::thumb_abduction] = 20;
        out[slot::index_proximal] = -43;
    }
    const bool middle =
        out[slot::index_proximal] > -40 && out[slot::middle_proximal] <= -31 && out[slot::little_proximal] > -40;
    if (middle) {
        out[slot::thumb_distal] = -23;
        out[slot::thumb_abduction] = 25;
        out[slot::middle_proximal] = -45;
    }
    if (!middle && out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
        out[slot::ring_proximal] < -30 && out[slot::little_proximal] > -40) {
        out[slot::thumb_distal] = -23;
        out[slot::thumb_abduction] = 28;
        out[slot::ring_proximal] = -41;
    }
    if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 && out[slot::ring_proximal] > -30 &&
        out[slot::little_proximal] < -35) {
        out[slot::thumb_distal] = -18;
        out[slot::thumb_abduction] = 30;
        out[slot::little_proximal] = -55;
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

