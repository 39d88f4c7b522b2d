// AgiBot OmniHand O12: the common pose with banded curl gains, and four fixed pinch poses. When
// the thumb is bent in far enough to meet a finger, the thumb and that finger jump to a
// calibrated pinch pose instead of following the glove, so the pads meet squarely.
#include "core/banded_finger_chain.h"
#include "core/common_coefficients.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "models/catalogue.h"

QUIL_PUBLISH_COEFFICIENTS(AgiBot_OmniHand_O12, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::AgiBot_OmniHand_O12_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

constexpr ThresholdPair kThumbActive{-40.0f, -70.0f};
constexpr ThresholdPair kIndexActive{-35.0f, -70.0f};

// A thumb at or beyond its first bound on slot 1, with slot 2 not past its second bound, is
// reaching for a finger; the bending finger decides which pinch pose is taken. A later pose
// overwrites an earlier one in the same sample.
void pinch_poses(Targets& out) {
    if (!thumb_active(out, kThumbActive)) return;
    if (kIndexActive.within(out[6])) {
        out[0] = 0; out[1] = -37; out[2] = -7; out[20] = -8; out[3] = -8;
        out[4] = 0; out[5] = -44; out[6] = -39;
    }
    // The index pose leaves out[6] at -39, so a middle pinch can still replace it.
    const bool middle = out[6] > -40 && out[10] <= -35 && out[18] > -40;
    if (middle) {
        out[0] = 0; out[1] = -36; out[2] = 0; out[20] = -15; out[3] = -11;
        out[8] = 0; out[9] = -50; out[10] = -37;
    }
    if (!middle && out[6] > -40 && out[10] > -40 && out[14] <= -40 && out[18] > -40) {
        out[0] = 0; out[1] = -36; out[2] = 0; out[20] = -28; out[3] = -10;
        out[12] = 0; out[13] = 0; out[14] = -40;
    }
    // The ring pose leaves out[14] at -40, which the little pinch accepts.
    if (out[6] > -40 && out[10] > -40 && out[14] > -60 && out[18] < -40) {
        out[0] = 0; out[1] = -34; out[2] = 0; out[20] = -31; out[3] = -25;
        out[16] = 0; out[17] = 0; out[18] = -40;
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
