// LeadShine DH116: derived from the AgiBot O12 mapping. Its thumb rotation gives back less as
// the thumb bends, and it has only two pinch poses, index and middle, which move just the thumb
// slots 2 and 3 and the bending finger: the rest of the thumb keeps following the glove.
#include "core/banded_finger_chain.h"
#include "core/common_coefficients.h"
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

QUIL_DEFINE_COEFFICIENTS(LeadShine_DH116, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Each finger: the distal joint is driven twice, its copy following it at 0.8; the proximal slot is
// the curl that the pinch rules and the full-bend locks test. Thumb slot 0 is only banded and held
// back by a full spread; the pinch poses leave it to the glove. Slots 21 and 22 are always 0.
const quil::SlotRoles quil::hands::LeadShine_DH116_slot_roles = {
    "thumb_aux", "thumb_proximal", "thumb_distal", "thumb_rotation",
    "index_distal_copy", "index_distal", "index_proximal", "index_spread",
    "middle_distal_copy", "middle_distal", "middle_proximal", "middle_spread",
    "ring_distal_copy", "ring_distal", "ring_proximal", "ring_spread",
    "little_distal_copy", "little_distal", "little_proximal", "little_spread",
    "thumb_spread", "unused", "unused", "terminator",
};

namespace {

using namespace quil;

// The DH116's pinch window is wider than the O12's: a thumb at -30 on slot 1 already reaches.
void pinch_poses(TargetArray& out) {
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

quil::TargetArray quil::hands::LeadShine_DH116(const InputAngles& in, const MemoryRef&, const Coefficients& tables) {
    TargetArray out;
    const int k = run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);
    // A bent thumb lets its rotation go by only 0.15 of the bend.
    banded_finger_chain::run(out, 0.15);
    pinch_poses(out);
    out[k] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(LeadShine_DH116)
QUIL_DEFINE_GET_DATA1(LeadShine_DH116)
