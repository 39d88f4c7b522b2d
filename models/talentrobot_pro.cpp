// TalentRobot Pro: the common coefficient set with abductions narrowed by the bending fingers,
// a thumb tip remapped onto the hand's own range, and four fixed pinch poses (thumb to index,
// middle, ring or little) that take over while the thumb base is half bent. Nothing is kept
// between samples.
#include "core/curves.h"
#include "core/linear_stage.h"
#include "core/spread_coupling.h"
#include "models/catalogue.h"
#include "models/shared/banded_finger_chain.h"
#include "models/shared/common_coefficients.h"

QUIL_PUBLISH_COEFFICIENTS(TalentRobot_Pro, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::TalentRobot_Pro_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

// The hand's thumb and four fingers at a pinch: the thumb pose (thumb_base, thumb_proximal,
// thumb_distal, thumb_rotation, thumb_abduction) and three slots of the pinching
// finger.
struct PinchPose {
    double roll, base, tip, spread, rotation;
    int finger_slot;  // first of the finger's three slots
    double finger[3];
};

void apply(Targets& out, const PinchPose& p) {
    out[slot::thumb_base] = p.roll;
    out[slot::thumb_proximal] = p.base;
    out[slot::thumb_distal] = p.tip;
    out[slot::thumb_rotation] = p.spread;
    out[slot::thumb_abduction] = p.rotation;
    for (int i = 0; i < 3; ++i) out[p.finger_slot + i] = p.finger[i];
}

// Proximal curls scaled (index, middle and ring at 0.9, little at 0.95), middle joints in bands.
constexpr banded_finger_chain::FingerBands kFingers{
    banded_finger_chain::uniform(0.9),                         // index_proximal
    Curve3{-10, -60, scale(1), affine(0.5, -10), scale(1.1)},  // index_distal
    Curve3{-15, -70, scale(1.25), scale(0.9), scale(1)},       // middle_distal
    banded_finger_chain::uniform(0.9),                         // middle_proximal
    Curve3{-15, -70, scale(1.25), scale(0.9), scale(1)},       // ring_distal
    banded_finger_chain::uniform(0.9),                         // ring_proximal
    banded_finger_chain::uniform(0.95),                        // little_proximal
};

constexpr PinchPose kIndexPinch{0, -26, 15, -45, -41, slot::index_tip, {-77, -38, -61}};
constexpr PinchPose kMiddlePinch{0, -53, 30, -44, -20, slot::middle_tip, {-38, -64, -74}};
constexpr PinchPose kRingPinch{0, -53, 30, -45, 7, slot::ring_tip, {-18, -41, -79}};
constexpr PinchPose kLittlePinch{0, -53, 30, -45, 22, slot::little_tip, {-38, -35, -56}};

// With the thumb base half bent, the finger that is bent (and the others straight) picks the
// pinch pose. A fired index pose leaves the index at -61, which shuts out the others; a ring
// pose leaves the ring at -79, which shuts out the little pose.
void pinch_poses(Targets& out) {
    if (!(out[slot::thumb_proximal] <= -45 && out[slot::thumb_proximal] >= -65)) return;
    if (out[slot::index_proximal] <= -40 && out[slot::index_proximal] >= -65) apply(out, kIndexPinch);
    if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] < -40 && out[slot::little_proximal] > -40) {
        apply(out, kMiddlePinch);
    } else if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
               out[slot::ring_proximal] < -30 && out[slot::little_proximal] > -40) {
        apply(out, kRingPinch);
    }
    // The little finger is recognised by its middle joint.
    if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 && out[slot::ring_proximal] > -30 &&
        out[slot::little_distal] < -30)
        apply(out, kLittlePinch);
}

}  // namespace

quil::Targets quil::hands::TalentRobot_Pro(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    const int k = run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);

    // The little finger's spread turns the thumb before the spread itself is limited.
    rotate_thumb_with_little_spread(out, 1.5);
    // Abductions: capped, the little one reshaped, then narrowed as their fingers bend; the
    // middle finger's abduction follows the index and ring abductions.
    couple_spreads(out, kCommonSpreads);

    // Thumb roll: shallow bends damped.
    if (out[slot::thumb_base] > -20) {
        out[slot::thumb_base] = out[slot::thumb_base] * 0.5;
    } else if (out[slot::thumb_base] > -60) {
        out[slot::thumb_base] = 0.4 * out[slot::thumb_base] - 5.0;
    }
    if (out[slot::thumb_base] < -90) out[slot::thumb_base] = -90;
    // Thumb base: shallow bends amplified, the middle band compressed.
    if (out[slot::thumb_proximal] > -20) {
        out[slot::thumb_proximal] = out[slot::thumb_proximal] * 1.2;
    } else if (out[slot::thumb_proximal] > -60) {
        out[slot::thumb_proximal] = 0.6 * out[slot::thumb_proximal] - 20.0;
    } else {
        out[slot::thumb_proximal] = out[slot::thumb_proximal] + 4.0;
    }
    if (out[slot::thumb_proximal] > 0) out[slot::thumb_proximal] = 0;
    if (out[slot::thumb_proximal] < -90) out[slot::thumb_proximal] = -90;
    // Thumb tip: the glove's [-60, 0] lands on the hand's [-40, 50]. Both upper bands carry the
    // same factor; the firmware keeps them apart.
    if (out[slot::thumb_distal] > -20) {
        out[slot::thumb_distal] = out[slot::thumb_distal] * 0.8;
    } else if (out[slot::thumb_distal] > -50) {
        out[slot::thumb_distal] = out[slot::thumb_distal] * 0.8;
    }
    out[slot::thumb_distal] = out[slot::thumb_distal] * 1.5 + 50.0;
    if (out[slot::thumb_distal] < -75) out[slot::thumb_distal] = -75;
    // The rotation follows the tip: strongly while the tip is open, gently as it bends.
    if (out[slot::thumb_distal] > -10) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] - (out[slot::thumb_distal] + 10.0) * 1.2;
        if (out[slot::thumb_abduction] > 30) out[slot::thumb_abduction] = 30;
    }
    if (out[slot::thumb_distal] < -10) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] + (out[slot::thumb_distal] + 10.0) * 0.35;
        if (out[slot::thumb_abduction] < 20) out[slot::thumb_abduction] = 20;
    }
    // Thumb spread, the deepest band scaled less; a full spread holds back base and roll.
    if (out[slot::thumb_rotation] > -15) {
        out[slot::thumb_rotation] = out[slot::thumb_rotation] * 0.6;
    } else if (out[slot::thumb_rotation] > -30) {
        out[slot::thumb_rotation] = out[slot::thumb_rotation] * 0.6;
    } else {
        out[slot::thumb_rotation] = out[slot::thumb_rotation] * 0.7;
    }
    if (out[slot::thumb_rotation] < -45) {
        out[slot::thumb_rotation] = -45;
        if (out[slot::thumb_proximal] < -44) out[slot::thumb_proximal] = -44;
        if (out[slot::thumb_base] < -49) out[slot::thumb_base] = -49;
    }

    // Finger gains: proximal joints slightly reduced, middle joints amplified while shallow;
    // distal joints follow at 0.8, never past straight; a finger bent past -90 (the little
    // finger past -80) is driven fully closed.
    banded_finger_chain::banded_fingers(out, kFingers);

    pinch_poses(out);
    out[k] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

