// TalentRobot Pro: the common coefficient set with abductions narrowed by the bending fingers,
// a thumb tip remapped onto the hand's own range, and four fixed pinch poses (thumb to index,
// middle, ring or little) that take over while the thumb base is half bent. Nothing is kept
// between samples.
#include "core/banded_finger_chain.h"
#include "core/common_coefficients.h"
#include "core/curves.h"
#include "core/linear_stage.h"
#include "core/spread_coupling.h"
#include "models/catalogue.h"

QUIL_PUBLISH_COEFFICIENTS(TalentRobot_Pro, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::TalentRobot_Pro_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

// The hand's thumb and four fingers at a pinch: the thumb pose (out[0], out[1], out[2],
// out[20], out[3]) and three slots of the pinching finger.
struct PinchPose {
    double roll, base, tip, spread, rotation;
    int finger_slot;  // first of the finger's three slots
    double finger[3];
};

void apply(Targets& out, const PinchPose& p) {
    out[0] = p.roll;
    out[1] = p.base;
    out[2] = p.tip;
    out[20] = p.spread;
    out[3] = p.rotation;
    for (int i = 0; i < 3; ++i) out[p.finger_slot + i] = p.finger[i];
}

// Proximal curls scaled (index, middle and ring at 0.9, little at 0.95), middle joints in bands.
constexpr banded_finger_chain::FingerBands kFingers{
    banded_finger_chain::uniform(0.9),                          // index 6
    Curve3{-10, -60, scale(1), affine(0.5, -10), scale(1.1)},  // index 5
    Curve3{-15, -70, scale(1.25), scale(0.9), scale(1)},       // middle 9
    banded_finger_chain::uniform(0.9),                          // middle 10
    Curve3{-15, -70, scale(1.25), scale(0.9), scale(1)},       // ring 13
    banded_finger_chain::uniform(0.9),                          // ring 14
    banded_finger_chain::uniform(0.95),                         // little 18
};

constexpr PinchPose kIndexPinch{0, -26, 15, -45, -41, 4, {-77, -38, -61}};
constexpr PinchPose kMiddlePinch{0, -53, 30, -44, -20, 8, {-38, -64, -74}};
constexpr PinchPose kRingPinch{0, -53, 30, -45, 7, 12, {-18, -41, -79}};
constexpr PinchPose kLittlePinch{0, -53, 30, -45, 22, 16, {-38, -35, -56}};

// With the thumb base half bent, the finger that is bent (and the others straight) picks the
// pinch pose. A fired index pose leaves the index at -61, which shuts out the others; a ring
// pose leaves the ring at -79, which shuts out the little pose.
void pinch_poses(Targets& out) {
    if (!(out[1] <= -45 && out[1] >= -65)) return;
    if (out[6] <= -40 && out[6] >= -65) apply(out, kIndexPinch);
    if (out[6] > -40 && out[10] < -40 && out[18] > -40) {
        apply(out, kMiddlePinch);
    } else if (out[6] > -40 && out[10] > -40 && out[14] < -30 && out[18] > -40) {
        apply(out, kRingPinch);
    }
    // The little finger is recognised by its middle joint.
    if (out[6] > -40 && out[10] > -40 && out[14] > -30 && out[17] < -30) apply(out, kLittlePinch);
}

}  // namespace

quil::Targets quil::hands::TalentRobot_Pro(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    const int k = run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);

    // The little finger's spread turns the thumb before the spread itself is limited.
    rotate_thumb_with_little_spread(out, 1.5);
    // Abductions: capped, the little one reshaped, then narrowed as their fingers bend; the
    // middle finger's abduction follows the index and ring abductions.
    couple_spreads(out, banded_finger_chain::kSpread);

    // Thumb roll: shallow bends damped.
    if (out[0] > -20) {
        out[0] = out[0] * 0.5;
    } else if (out[0] > -60) {
        out[0] = 0.4 * out[0] - 5.0;
    }
    if (out[0] < -90) out[0] = -90;
    // Thumb base: shallow bends amplified, the middle band compressed.
    if (out[1] > -20) {
        out[1] = out[1] * 1.2;
    } else if (out[1] > -60) {
        out[1] = 0.6 * out[1] - 20.0;
    } else {
        out[1] = out[1] + 4.0;
    }
    if (out[1] > 0) out[1] = 0;
    if (out[1] < -90) out[1] = -90;
    // Thumb tip: the glove's [-60, 0] lands on the hand's [-40, 50]. Both upper bands carry the
    // same factor; the firmware keeps them apart.
    if (out[2] > -20) {
        out[2] = out[2] * 0.8;
    } else if (out[2] > -50) {
        out[2] = out[2] * 0.8;
    }
    out[2] = out[2] * 1.5 + 50.0;
    if (out[2] < -75) out[2] = -75;
    // The rotation follows the tip: strongly while the tip is open, gently as it bends.
    if (out[2] > -10) {
        out[3] = out[3] - (out[2] + 10.0) * 1.2;
        if (out[3] > 30) out[3] = 30;
    }
    if (out[2] < -10) {
        out[3] = out[3] + (out[2] + 10.0) * 0.35;
        if (out[3] < 20) out[3] = 20;
    }
    // Thumb spread, the deepest band scaled less; a full spread holds back base and roll.
    if (out[20] > -15) {
        out[20] = out[20] * 0.6;
    } else if (out[20] > -30) {
        out[20] = out[20] * 0.6;
    } else {
        out[20] = out[20] * 0.7;
    }
    if (out[20] < -45) {
        out[20] = -45;
        if (out[1] < -44) out[1] = -44;
        if (out[0] < -49) out[0] = -49;
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
