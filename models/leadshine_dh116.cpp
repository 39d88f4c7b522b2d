// LeadShine DH116: derived from the AgiBot O12 mapping. Its thumb rotation gives back less as
// the thumb bends, and it has only two pinch poses, index and middle, which move just the thumb
// slots 2 and 3 and the bending finger: the rest of the thumb keeps following the glove.
#include "core/linear_stage.h"
#include "models/catalogue.h"
#include "models/shared/banded_finger_chain.h"
#include "models/shared/common_coefficients.h"

QUIL_PUBLISH_COEFFICIENTS(LeadShine_DH116, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::LeadShine_DH116_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

// The DH116's pinch window is wider than the O12's: a thumb at -30 on thumb_proximal already reaches.
void pinch_poses(Targets& out) {
    if (!(out[slot::thumb_proximal] <= -30 && out[slot::thumb_distal] >= -80)) return;
    if (out[slot::index_proximal] <= -30 && out[slot::index_proximal] >= -80) {
        out[slot::thumb_distal] = -40;
        out[slot::thumb_abduction] = 5;
        out[slot::index_proximal] = -50;
    }
    // An index pose leaves index_proximal at -50, which keeps the middle pinch out of the same sample.
    if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] <= -35 && out[slot::little_proximal] > -40) {
        out[slot::thumb_distal] = -39;
        out[slot::thumb_abduction] = -16;
        out[slot::middle_proximal] = -53;
    }
}

}  // namespace

quil::Targets quil::hands::LeadShine_DH116(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    const int k = run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);
    // A bent thumb lets its rotation go by only 0.15 of the bend.
    banded_finger_chain::run(out, 0.15);
    pinch_poses(out);
    out[k] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

