// INSPIRE ROBOTS RH56F1_E4: the common linear pose, a thumb whose tip follows its first joint,
// finger couplings for a hand whose ring and little fingers share drives, and pinch assists for
// thumb-to-index and thumb-to-middle that latch: once a pinch has closed, the hand holds it
// until the fingers open clearly, so sensor jitter at the pinch depth does not make it flutter.
#include "core/common_coefficients.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "core/ruiyan_chain.h"
#include "models/catalogue.h"

QUIL_PUBLISH_COEFFICIENTS(INSPIRE_ROBOTS_RH56F1_E4, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints.
const quil::SlotDeclaration quil::hands::INSPIRE_ROBOTS_RH56F1_E4_slots = quil::kTipsAtEightTenths;

namespace {

using namespace quil;

// The RY_H15 chain with the base amplified, the tip following the base alone (the tip's own
// weight is 0), and the thumb spread and fist gains as single-precision constants.
constexpr ruiyan_chain::ChainVariant kChain{
    ruiyan_chain::ThumbBaseBands::amplified,
    ruiyan_chain::ThumbTipBlend{0.0, 1.0, double(0.9f)},
    ruiyan_chain::ThumbSpreadGains{double(0.3f), double(0.35f)},
    0.95,   // little finger gain
    -84.0,  // and floor
};

// The fist boost's bounds are positive, so it acts on every sample.
constexpr ruiyan_chain::FistBounds kAlwaysBoost{75.0, 65.0, 75.0, 85.0};
constexpr ruiyan_chain::FistGains kFistGains{double(1.15f), double(0.7f)};

constexpr ThresholdPair kIndexActive{-20.0f, -75.0f};
constexpr ThresholdPair kThumbActive{-28.0f, -70.0f};

// Past this index bend the thumb tip returns to the depth it had before the pinch took over.
constexpr double kIndexDeep = double(kIndexActive.at_or_below - 20.0f);

// A held pinch lets go once the index opens past this or the thumb tip past its release depth.
constexpr double kIndexRelease = -28.69999885559082;
constexpr double kThumbReleaseIndex = double(-19.6f);
constexpr double kThumbReleaseBoth = double(-20.3f);

constexpr int kIndex = 0;   // latch of the index pinch
constexpr int kMiddle = 1;  // latch of the middle pinch

void pinch(Targets& out, const MemoryRef& memory) {
    bool* latch = memory.pinch_latches;
    const double thumb_ref = *memory.thumb_references[0];

    const bool thumb_active = quil::thumb_active(out, kThumbActive);
    const bool index_in_band = quil::index_in_band(out, kIndexActive);
    const bool index_reach = index_reaches(out, kThumbActive, kIndexActive);
    const bool rotation_open = out[20] >= -20;

    bool index_engaged = false;
    bool middle_engaged = false;

    if ((thumb_active && (index_in_band || index_reach) && rotation_open) ||
        (latch[kIndex] && (thumb_active || index_in_band))) {
        index_engaged = true;
        out[1] = 0;
        if (out[6] < kIndexDeep) out[2] = thumb_ref;
        out[2] = pinch_toward(out[2] * double(1.1f), -28, 0.8f, 0.0f);
        out[20] = 15;
        out[3] = 22;
        out[5] = -44;
        out[6] = pinch_toward(out[6], -41, 0.15f, 0.0f);
        if (latch[kIndex])
            latch[kIndex] = out[6] <= kIndexRelease && out[2] <= kThumbReleaseIndex;
        else if (out[6] <= -41 && out[2] <= -28)
            latch[kIndex] = true;
    }

    // Uses the thumb state from before the index pinch moved the thumb.
    if (thumb_active && out[10] < -34.4 && out[18] > -40) {
        middle_engaged = true;
        if (out[10] < kIndexDeep) out[2] = thumb_ref;
        out[2] = pinch_toward(out[2] * double(1.1f), -29, 0.2f, 0.0f);
        out[10] = pinch_toward(out[10], -43, 0.2f, 0.0f);
        out[1] = 0;
        out[20] = 21;
        out[3] = 25;
        out[9] = -50;
        if (out[10] <= -43 && out[2] <= -29) latch[kMiddle] = true;
    }

    // Index and middle both against the thumb: a tripod grip.
    if (index_engaged && middle_engaged) {
        if (out[6] < kIndexDeep) out[2] = thumb_ref;
        if (latch[kIndex] && latch[kMiddle]) {
            out[6] = pinch_toward(out[6], -41, 0.5f, 10.0f);
            out[10] = pinch_toward(out[10], -40, 0.5f, 10.0f);
            out[2] = pinch_toward(out[2], -29, 0.8f, 15.0f);
            latch[kIndex] = out[6] <= kIndexRelease && out[2] <= kThumbReleaseBoth;
            latch[kMiddle] = out[10] <= -28 && out[2] <= kThumbReleaseBoth;
        } else {
            out[6] = pinch_toward(out[6] * double(1.1f), -41, 0.4f, 0.0f);
            out[10] = pinch_toward(out[10] * double(1.05f), -40, 0.4f, 0.0f);
            out[2] = pinch_toward(out[2], -29, 0.4f, 0.0f);
        }
        out[7] = 0;
        out[20] = 0;
        out[3] = 25;
        if (out[6] <= -41 && out[2] <= -29) latch[kIndex] = true;
        if (out[10] <= -40 && out[2] <= -29) latch[kMiddle] = true;
    }
}

}  // namespace

quil::Targets quil::hands::INSPIRE_ROBOTS_RH56F1_E4(const Readings& in, const MemoryRef& memory, const Coefficients& tables) {
    Targets out{};
    ruiyan_chain::run_rows(in, tables, out);
    // The RY_H15 joint chain: thumb rotation, thumb bands, finger gains, a bent middle finger
    // dragging ring, little and index along (they share drives on this hand), thumb relief.
    ruiyan_chain::thumb_and_fingers(out, kChain);
    ruiyan_chain::fist_boost(out, kAlwaysBoost, kFistGains);
    // While the thumb is not rotated far across the palm, remember where its tip was, then
    // damp the tip.
    if (out[3] <= 23) {
        *memory.thumb_references[0] = out[2];
        out[2] = double(0.1f) * out[2];
    }
    ruiyan_chain::distal_and_full_bend(out, /*lock_little=*/true);
    pinch(out, memory);
    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
