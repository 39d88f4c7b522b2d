// LeadShine DH116: derived from the AgiBot O12 mapping. Its thumb rotation gives back less as
// the thumb bends, and it has only two pinch poses, index and middle, which move just the thumb
// slots 2 and 3 and the bending finger: the rest of the thumb keeps following the glove.
#include "core/banded_finger_chain.h"
#include "core/common_coefficients.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"

QUIL_PUBLISH_COEFFICIENTS(LeadShine_DH116, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::LeadShine_DH116_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

// The DH116's pinch window is wider than the O12's: a thumb at -30 on slot 1 already reaches.
void pinch_poses(Targets& out) {
    if (!(out[1] <= -30 && out[2] >= -80)) return;
    if (out[6] <= -30 && out[6] >= -80) {
        out[2] = -40; out[3] = 5; out[6] = -50;
    }
    // An index pose leaves out[6] at -50, which keeps the middle pinch out of the same sample.
    if (out[6] > -40 && out[10] <= -35 && out[18] > -40) {
        out[2] = -39; out[3] = -16; out[10] = -53;
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
