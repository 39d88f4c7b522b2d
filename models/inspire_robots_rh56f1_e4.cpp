// INSPIRE ROBOTS RH56F1_E4: the common linear pose, a thumb whose tip follows its first joint,
// finger couplings for a hand whose ring and little fingers share drives, and pinch assists for
// thumb-to-index and thumb-to-middle that latch: once a pinch has closed, the hand holds it
// until the fingers open clearly, so sensor jitter at the pinch depth does not make it flutter.
#include "core/common_coefficients.h"
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "models/hands.h"

double Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::weight[228] = QUIL_COMMON_WEIGHT;
double Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::w0[19] = QUIL_COMMON_W0;
bool Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::fingerPinchDone[4] = {};
double Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::thumb1_ref_val = 0.0;

namespace {

using namespace quil;

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

// A finger value in three bands: scaled above `high`, scaled above `low`, kept below.
double three_band(double v, double high, double gain_high, double low, double gain_low) {
    if (v > high) return v * gain_high;
    if (v > low) return v * gain_low;
    return v;
}

void pinch(TargetArray& out, const MemoryRef& memory) {
    bool* latch = memory.fingerPinchDone;
    const double thumb_ref = *memory.thumb1_ref_val;

    const bool thumb_active = out[1] <= double(kThumbActive.at_or_below) && out[2] >= double(kThumbActive.at_or_above);
    const bool index_in_band = kIndexActive.within(out[6]);
    const bool index_reach = out[1] + out[6] <= sum_of_upper_edges(kIndexActive, kThumbActive) &&
                             out[6] >= double(kIndexActive.at_or_above);
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

quil::TargetArray quil::hands::INSPIRE_ROBOTS_RH56F1_E4(const InputAngles& in, const MemoryRef& memory) {
    using Hand = Quil_linear::INSPIRE_ROBOTS_RH56F1_E4;
    TargetArray out{};
    run_linear_stage<kStandardRows>(in, Clamp::passes_nan, {Hand::weight, Hand::w0}, out);

    // The first thumb-rotation estimate from the thumb tip. The firmware still computes it,
    // though the rotation is recomputed from the thumb values further down.
    if (out[2] > -10) {
        out[3] = out[3] - (out[2] + 10.0) * 2.5;
        if (out[3] > 30) out[3] = 30;
    }
    if (out[2] < -10) {
        out[3] = out[3] + (out[2] + 10.0) * 0.15;
        if (out[3] < 20) out[3] = 20;
    }
    if (out[0] > -20) {
        out[0] = out[0] * 0.5;
    } else if (out[0] > -60) {
        out[0] = 0.4 * out[0] - 5.0;
    }
    if (out[0] < -90) out[0] = -90;
    if (out[1] > -20) {
        out[1] = out[1] * 1.2;
    } else if (out[1] > -60) {
        out[1] = 0.6 * out[1] - 20.0;
    } else {
        out[1] = out[1] + 4.0;
    }
    if (out[1] > 0) out[1] = 0;
    if (out[1] < -90) out[1] = -90;
    // The thumb tip follows the first thumb joint; the blend keeps the tip's own row at weight 0.
    const double tip_weight = 0.0;
    out[2] = (out[2] * tip_weight + (1.0 - tip_weight) * out[1]) * double(0.9f);
    if (out[2] < -75) out[2] = -75;
    out[20] = out[20] > -15 ? out[20] * double(0.3f) : out[20] * double(0.35f);
    if (out[20] < -45) {
        out[20] = -45;
        if (out[1] < -44) out[1] = -44;
        if (out[0] < -49) out[0] = -49;
    }
    out[3] = out[20] * -0.5 - 0.15 * out[2];
    // Index: abduction closes as the knuckle bends.
    if (out[7] > 30) out[7] = 30;
    if (out[5] < 0) {
        out[7] = out[7] + 0.15 * out[5];
        if (out[7] < 0) out[7] = 0;
    }
    out[6] = out[6] * 0.9;
    if (out[5] > -10) {
        // Small bends pass unchanged.
    } else if (out[5] > -60) {
        out[5] = 0.5 * out[5] - 10.0;
    } else {
        out[5] = out[5] * 1.1;
    }
    if (out[5] < -100) out[5] = -100;
    // The middle finger's abduction follows the index and ring abductions.
    out[11] = out[7] * 0.24 - 0.32 * out[15];
    out[10] = out[10] * 0.9;
    if (out[10] < -100) out[10] = -100;
    out[9] = three_band(out[9], -15.0, 1.25, -70.0, 0.9);
    if (out[9] < -100) out[9] = -100;
    // Ring: abduction closes as the finger bends.
    if (out[15] > 20) out[15] = 20;
    if (out[13] < 0) {
        out[15] = out[15] + 0.15 * out[13];
        if (out[15] < 0) out[15] = 0;
    }
    out[14] = out[14] * 0.9;
    if (out[14] < -100) out[14] = -100;
    out[13] = three_band(out[13], -15.0, 1.25, -70.0, 0.9);
    if (out[13] < -100) out[13] = -100;
    // Little finger: the small spreads are amplified, bending closes the spread.
    if (out[19] > 30) out[19] = 30;
    if (out[19] < 7) {
        out[19] = out[19] * 1.5;
    } else {
        out[19] = out[19] + 3.5;
        if (out[19] > 30) out[19] = 30;
    }
    if (out[17] < 0) {
        out[19] = out[19] + 0.25 * out[17];
        if (out[19] < 0) out[19] = 0;
    }
    out[18] = out[18] * 0.95;
    if (out[18] < -84) out[18] = -84;
    if (out[18] < -5) {
        out[19] = out[19] + 0.8 * (out[18] + 5.0);
        if (out[19] < 0) out[19] = 0;
    }
    if (out[3] < 0) out[3] = 0;
    if (out[3] > 30) out[3] = 30;

    // The ring and little fingers share drives with the middle finger: a bent middle finger
    // drags them deeper.
    if (out[10] <= -65 && (out[14] <= -25 || out[18] <= -15)) {
        const double ring = 2.0 * out[14];
        out[14] = ring < -81 ? -81.0 : ring;
        const double little = 3.0 * out[18];
        out[18] = little < -100 ? -100.0 : little;
    }
    if (out[10] <= -70 && out[6] <= -30) {
        const double index = 1.5 * out[6];
        out[6] = index < -81 ? -81.0 : index;
    }
    // A curled middle or ring finger leaves the thumb less room to rotate.
    if (out[6] > double(kIndexActive.at_or_above)) {
        double f = 1.0;
        if (out[10] < -70) f = f - 0.075;
        if (out[14] < -70) f = f - 0.075;
        out[20] = out[20] * f;
    }
    if (out[6] <= 75 && out[10] <= 65 && out[14] <= 75 && out[18] <= 85) {
        out[10] = double(1.15f) * out[10];
        out[20] = double(0.7f) * out[20];
    }
    // While the thumb is not rotated far across the palm, remember where its tip was, then
    // damp the tip.
    if (out[3] <= 23) {
        *memory.thumb1_ref_val = out[2];
        out[2] = double(0.1f) * out[2];
    }
    // Distal joints follow the proximal ones at 0.8, never extending past straight.
    out[4] = out[5] * 0.8;
    out[8] = out[9] * 0.8;
    out[12] = out[13] * 0.8;
    out[16] = out[17] * 0.8;
    for (int i : {4, 8, 12, 16})
        if (out[i] > 0) out[i] = 0;
    // A finger bent nearly to its end stop goes all the way, both joints.
    if (out[6] < -90) out[5] = out[6] = -100;
    if (out[10] < -74) out[9] = out[10] = -81;
    if (out[14] < -90) out[13] = out[14] = -100;
    if (out[18] < -80) out[17] = out[18] = -100;

    pinch(out, memory);

    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE_WITH_MEMORY(INSPIRE_ROBOTS_RH56F1_E4, (quil::MemoryRef{Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::fingerPinchDone, &Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::thumb1_ref_val, nullptr}))
