// AgiBot OmniHand O12: the common pose with banded curl gains, and four fixed pinch poses. When
// the thumb is bent in far enough to meet a finger, the thumb and that finger jump to a
// calibrated pinch pose instead of following the glove, so the pads meet squarely.
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "models/catalogue.h"
#include "models/shared/banded_finger_chain.h"
#include "models/shared/common_coefficients.h"

QUIL_PUBLISH_COEFFICIENTS(AgiBot_OmniHand_O12, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::AgiBot_OmniHand_O12_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

constexpr ThresholdPair kThumbActive{-40.0f, -70.0f};
constexpr ThresholdPair kIndexActive{-35.0f, -70.0f};

// A thumb at or beyond its first bound on thumb_proximal, with thumb_distal not past its second bound, is
// reaching for a finger; the bending finger decides which pinch pose is taken. A later pose
// overwrites an earlier one in the same sample.
void pinch_poses(Targets& out) {
    if (!thumb_active(out, kThumbActive)) return;
    if (kIndexActive.within(out[slot::index_proximal])) {
        out[slot::thumb_base] = 0;
        out[slot::thumb_proximal] = -37;
        out[slot::thumb_distal] = -7;
        out[slot::thumb_rotation] = -8;
        out[slot::thumb_abduction] = -8;
        out[slot::index_tip] = 0;
        out[slot::index_distal] = -44;
        out[slot::index_proximal] = -39;
    }
    // The index pose leaves index_proximal at -39, so a middle pinch can still replace it.
    const bool middle =
        out[slot::index_proximal] > -40 && out[slot::middle_proximal] <= -35 && out[slot::little_proximal] > -40;
    if (middle) {
        out[slot::thumb_base] = 0;
        out[slot::thumb_proximal] = -36;
        out[slot::thumb_distal] = 0;
        out[slot::thumb_rotation] = -15;
        out[slot::thumb_abduction] = -11;
        out[slot::middle_tip] = 0;
        out[slot::middle_distal] = -50;
        out[slot::middle_proximal] = -37;
    }
    if (!middle && out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
        out[slot::ring_proximal] <= -40 && out[slot::little_proximal] > -40) {
        out[slot::thumb_base] = 0;
        out[slot::thumb_proximal] = -36;
        out[slot::thumb_distal] = 0;
        out[slot::thumb_rotation] = -28;
        out[slot::thumb_abduction] = -10;
        out[slot::ring_tip] = 0;
        out[slot::ring_distal] = 0;
        out[slot::ring_proximal] = -40;
    }
    // The ring pose leaves ring_proximal at -40, which the little pinch accepts.
    if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 && out[slot::ring_proximal] > -60 &&
        out[slot::little_proximal] < -40) {
        out[slot::thumb_base] = 0;
        out[slot::thumb_proximal] = -34;
        out[slot::thumb_distal] = 0;
        out[slot::thumb_rotation] = -31;
        out[slot::thumb_abduction] = -25;
        out[slot::little_tip] = 0;
        out[slot::little_distal] = 0;
        out[slot::little_proximal] = -40;
    }
}

}  // namespace

quil::Targets quil::hands::AgiBot_OmniHand_O12(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    const int k = run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);
    // A bent thumb lets its rotation go by 0.35 of the bend.
    banded_finger_chain::run(out, 0.35);
    pinch_poses(out);
    out[k] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

