// INSPIRE ROBOTS RH56F1_E4: the common linear pose, a thumb whose tip follows its first joint,
// finger couplings for a hand whose ring and little fingers share drives, and pinch assists for
// thumb-to-index and thumb-to-middle that latch: once a pinch has closed, the hand holds it
// until the fingers open clearly, so sensor jitter at the pinch depth does not make it flutter.
#include "core/held_pinch.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "models/catalogue.h"
#include "models/shared/blended_thumb_chain.h"
#include "models/shared/common_coefficients.h"

QUIL_PUBLISH_COEFFICIENTS(INSPIRE_ROBOTS_RH56F1_E4, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints.
const quil::SlotDeclaration quil::hands::INSPIRE_ROBOTS_RH56F1_E4_slots = quil::kTipsAtEightTenths;

namespace {

using namespace quil;

// The RY_H15 chain with the base amplified, the tip following the base alone (the tip's own
// weight is 0), and the thumb spread and fist gains as single-precision constants.
constexpr blended_thumb_chain::ChainVariant kChain{
    blended_thumb_chain::ThumbBaseBands::amplified,
    blended_thumb_chain::ThumbTipBlend{0.0, 1.0, double(0.9f)},
    blended_thumb_chain::ThumbSpreadGains{double(0.3f), double(0.35f)},
    0.95,   // little finger gain
    -84.0,  // and floor
};

// The fist boost's bounds are positive, so it acts on every sample.
constexpr blended_thumb_chain::FistBounds kAlwaysBoost{75.0, 65.0, 75.0, 85.0};
constexpr blended_thumb_chain::FistGains kFistGains{double(1.15f), double(0.7f)};

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
    const bool rotation_open = out[slot::thumb_rotation] >= -20;

    bool index_engaged = false;
    bool middle_engaged = false;

    HeldPinch index{latch[kIndex]};
    if (index.runs(thumb_active && (index_in_band || index_reach) && rotation_open, thumb_active || index_in_band)) {
        index_engaged = true;
        out[slot::thumb_proximal] = 0;
        if (out[slot::index_proximal] < kIndexDeep) out[slot::thumb_distal] = thumb_ref;
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -28, 0.8f, 0.0f);
        out[slot::thumb_rotation] = 15;
        out[slot::thumb_abduction] = 22;
        out[slot::index_distal] = -44;
        out[slot::index_proximal] = pinch_toward(out[slot::index_proximal], -41, 0.15f, 0.0f);
        index.settle(out[slot::index_proximal] <= -41 && out[slot::thumb_distal] <= -28,
                     out[slot::index_proximal] <= kIndexRelease && out[slot::thumb_distal] <= kThumbReleaseIndex);
    }

    // Uses the thumb state from before the index pinch moved the thumb.
    if (thumb_active && out[slot::middle_proximal] < -34.4 && out[slot::little_proximal] > -40) {
        middle_engaged = true;
        if (out[slot::middle_proximal] < kIndexDeep) out[slot::thumb_distal] = thumb_ref;
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -29, 0.2f, 0.0f);
        out[slot::middle_proximal] = pinch_toward(out[slot::middle_proximal], -43, 0.2f, 0.0f);
        out[slot::thumb_proximal] = 0;
        out[slot::thumb_rotation] = 21;
        out[slot::thumb_abduction] = 25;
        out[slot::middle_distal] = -50;
        if (out[slot::middle_proximal] <= -43 && out[slot::thumb_distal] <= -29) latch[kMiddle] = true;
    }

    // Index and middle both against the thumb: a tripod grip.
    if (index_engaged && middle_engaged) {
        if (out[slot::index_proximal] < kIndexDeep) out[slot::thumb_distal] = thumb_ref;
        if (latch[kIndex] && latch[kMiddle]) {
            out[slot::index_proximal] = pinch_toward(out[slot::index_proximal], -41, 0.5f, 10.0f);
            out[slot::middle_proximal] = pinch_toward(out[slot::middle_proximal], -40, 0.5f, 10.0f);
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal], -29, 0.8f, 15.0f);
            latch[kIndex] =
                out[slot::index_proximal] <= kIndexRelease && out[slot::thumb_distal] <= kThumbReleaseBoth;
            latch[kMiddle] = out[slot::middle_proximal] <= -28 && out[slot::thumb_distal] <= kThumbReleaseBoth;
        } else {
            out[slot::index_proximal] = pinch_toward(out[slot::index_proximal] * double(1.1f), -41, 0.4f, 0.0f);
            out[slot::middle_proximal] = pinch_toward(out[slot::middle_proximal] * double(1.05f), -40, 0.4f, 0.0f);
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal], -29, 0.4f, 0.0f);
        }
        out[slot::index_spread] = 0;
        out[slot::thumb_rotation] = 0;
        out[slot::thumb_abduction] = 25;
        if (out[slot::index_proximal] <= -41 && out[slot::thumb_distal] <= -29) latch[kIndex] = true;
        if (out[slot::middle_proximal] <= -40 && out[slot::thumb_distal] <= -29) latch[kMiddle] = true;
    }
}

}  // namespace

quil::Targets quil::hands::INSPIRE_ROBOTS_RH56F1_E4(const Readings& in, const MemoryRef& memory, const Coefficients& tables) {
    Targets out{};
    blended_thumb_chain::run_rows(in, tables, out);
    // The RY_H15 joint chain: thumb rotation, thumb bands, finger gains, a bent middle finger
    // dragging ring, little and index along (they share drives on this hand), thumb relief.
    blended_thumb_chain::thumb_and_fingers(out, kChain);
    blended_thumb_chain::fist_boost(out, kAlwaysBoost, kFistGains);
    // While the thumb is not rotated far across the palm, remember where its tip was, then
    // damp the tip.
    if (out[slot::thumb_abduction] <= 23) {
        *memory.thumb_references[0] = out[slot::thumb_distal];
        out[slot::thumb_distal] = double(0.1f) * out[slot::thumb_distal];
    }
    blended_thumb_chain::distal_and_full_bend(out, /*lock_little=*/true);
    pinch(out, memory);
    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

