// AgiBot OmniHand O10: its own coefficients, banded gains with finger-to-finger couplings, and
// pinch assists for the thumb against each finger. The index and middle pinches remember that
// they closed: once a pinch has reached its target, later samples pull harder toward it, and
// the pinch is released only when the pose opens clearly, so a held pinch does not flicker
// with glove noise.
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/spread_coupling.h"
#include "models/hands.h"

double Quil_linear::AgiBot_OmniHand_O10::weight[228] = {
     -85.0,  -20.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  // p0
     -75.0,  -30.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  // p1
     -15.0,  -55.0,  -40.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  // p2
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p3
       0.0,    0.0,    0.0,  -95.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p4
       0.0,    0.0,    0.0,  -90.0,    5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p5
       0.0,   -3.0,    0.0,    0.0,   35.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   -6.0,   -3.0,  // p6
       0.0,    1.0,    0.0,    0.0,    0.0,    0.0,  -95.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p7
       0.0,    1.0,    0.0,    0.0,    5.0,    0.0,  -90.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p8
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p9
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -120.0,    0.0,    0.0,  // p10
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -90.0,    5.0,    0.0,  // p11
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   40.0,    0.0,    0.0,  -20.0,    0.0,  // p12
       0.0,   -2.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -140.0,  // p13
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -110.0,  // p14
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   40.0,    0.0,  // p15
       5.0,  -40.0,  -30.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  // p16
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p17
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p18
};
double Quil_linear::AgiBot_OmniHand_O10::w0[19] = {0.0, 0.0, 0.0, 30.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 0.0, 0.0, 0.0};

namespace {

using namespace quil;

constexpr ThresholdPair kIndexActive{-40.0f, -75.0f};
constexpr ThresholdPair kThumbActive{-40.0f, -70.0f};

// A held pinch is let go only when the finger (first bound) or thumb slot 2 (second bound) opens
// past these.
constexpr double kIndexRelease[2] = {-28.69999885559082, -35.70000076293945};
constexpr double kMiddleRelease[2] = {-30.799999237060547, -37.099998474121094};

void floor_at(TargetArray& out, int slot, double limit) {
    if (out[slot] < limit) out[slot] = limit;
}

// The middle (9) and ring (13) curls share one band shape: light bends are amplified, mid bends compressed.
double second_curl_bands(double v) {
    if (v > -15) return v * 1.25;
    if (v > -70) return v * 0.9;
    return v;
}

void joint_chain(TargetArray& out) {
    if (out[2] > -10) {
        out[3] = out[3] - (out[2] + 10) * 2.5;
        if (out[3] > 30) out[3] = 30;
    }
    if (out[2] < -10) {
        out[3] = out[3] + (out[2] + 10) * 0.15;
        if (out[3] < 20) out[3] = 20;
    }
    // The rotation also leans on thumb slots 1 and 2 directly.
    out[3] = out[3] * 0.3 - double(0.2f) * out[2] - double(0.3f) * out[1];
    if (out[3] < 0) out[3] = 0;
    if (out[3] > 30) out[3] = 30;

    if (out[0] > -20) {
        out[0] = out[0] * 0.5;
    } else if (out[0] > -60) {
        out[0] = 0.4 * out[0] - 5;
    }
    floor_at(out, 0, -90);
    if (out[1] > -20) {
        out[1] = out[1] * 1.2;
    } else if (out[1] > -60) {
        out[1] = 0.6 * out[1] - 20;
    } else {
        out[1] = out[1] + 4;
    }
    if (out[1] > 0) out[1] = 0;
    floor_at(out, 1, -90);
    // Thumb slot 2 is taken from slot 1 alone: the blend weight of its own row is 0.
    constexpr double blend = 0.0;
    out[2] = (out[2] * blend + (1 - blend) * out[1]) * double(0.9f);
    floor_at(out, 2, -75);
    out[20] = out[20] > -15 ? out[20] * double(0.3f) : out[20] * double(0.35f);
    // A fully rotated thumb would collide with the palm unless its joints stay clear.
    if (out[20] < -45) {
        out[20] = -45;
        floor_at(out, 1, -44);
        floor_at(out, 0, -49);
    }

    if (out[7] > 30) out[7] = 30;
    close_spread(out[7], out[5], 0.15);
    out[6] = out[6] * 0.9;
    floor_at(out, 6, -100);
    if (out[5] > -10) {
    } else if (out[5] > -60) {
        out[5] = 0.5 * out[5] - 10;
    } else {
        out[5] = out[5] * 1.1;
    }
    floor_at(out, 5, -100);
    out[11] = out[7] * 0.24 - 0.32 * out[15];

    out[10] = out[10] * 0.9;
    floor_at(out, 10, -100);
    out[9] = second_curl_bands(out[9]);
    floor_at(out, 9, -100);
    if (out[15] > 20) out[15] = 20;
    close_spread(out[15], out[13], 0.15);
    out[14] = out[14] * 0.9;
    floor_at(out, 14, -100);
    out[13] = second_curl_bands(out[13]);
    floor_at(out, 13, -100);

    if (out[19] > 30) out[19] = 30;
    if (out[19] < 7) {
        out[19] = out[19] * 1.5;
    } else {
        out[19] = out[19] + 3.5;
        if (out[19] > 30) out[19] = 30;
    }
    close_spread(out[19], out[17], 0.25);
    out[18] = out[18] * 0.95;
    floor_at(out, 18, -84);
    if (out[18] < -5) {
        out[19] = out[19] + 0.8 * (out[18] + 5);
        if (out[19] < 0) out[19] = 0;
    }
    if (out[3] < 0) out[3] = 0;
    if (out[3] > 30) out[3] = 30;

    // A deeply bent middle finger drags the ring and little fingers, and the index, along.
    if (out[10] <= -65 && (out[14] <= -25 || out[18] <= -15)) {
        out[14] = 2 * out[14];
        floor_at(out, 14, -81);
        out[18] = 3 * out[18];
        floor_at(out, 18, -100);
    }
    if (out[10] <= -70 && out[6] <= -30) {
        out[6] = 1.5 * out[6];
        floor_at(out, 6, -81);
    }
    // With the index not past its pinch window, each fully bent neighbour eases the thumb's
    // second rotation value.
    if (out[6] > kIndexActive.at_or_above) {
        double f = 1.0;
        if (out[10] < -70) f = f - 0.075;
        if (out[14] < -70) f = f - 0.075;
        out[20] = out[20] * f;
    }
    // The positive bounds let this act on nearly every pose, as the hand was tuned.
    if (out[6] <= 75 && out[10] <= 65 && out[14] <= 75 && out[18] <= 85) {
        out[10] = double(1.15f) * out[10];
        out[20] = double(0.7f) * out[20];
    }

    follow_distal(out, 0.8);
    lock_full_bends(out, -90, -80);
}

// Index pinch: the index in its window, or thumb and index together far enough in.
void index_pinch(TargetArray& out, bool& held) {
    const bool in_window = kIndexActive.within(out[6]);
    const bool reaching = out[1] + out[6] <= sum_of_upper_edges(kThumbActive, kIndexActive) &&
                          out[6] >= kIndexActive.at_or_above;
    if (!(out[20] >= -20 && (in_window || reaching))) return;
    if (held) {
        out[6] = pinch_toward(out[6], -41, 0.5f, 10.0f);
        out[2] = pinch_toward(out[2] * double(1.2f), -51, 0.8f, 25.0f);
        held = out[6] <= kIndexRelease[0] && out[2] <= kIndexRelease[1];
    } else {
        out[6] = pinch_toward(out[6], -41, 0.15f, 0.0f);
        out[2] = pinch_toward(out[2] * 1.25, -51, 0.7f, 0.0f);
    }
    out[1] = 0; out[20] = 15; out[3] = 16;
    if (out[6] <= -41 && out[2] <= -51) held = true;
}

// Middle pinch: the middle finger bent with the little finger still open. Returns whether it
// acted; the ring pinch is only tried when it did not.
bool middle_pinch(TargetArray& out, bool& held) {
    if (!(out[10] < -40 && out[18] > -40)) return false;
    if (held) {
        out[2] = pinch_toward(out[2], -53, 0.5f, 10.0f);
        out[10] = pinch_toward(out[10], -44, 0.8f, 15.0f);
        held = out[10] <= kMiddleRelease[0] && out[2] <= kMiddleRelease[1];
    } else {
        out[2] = pinch_toward(out[2] * double(1.1f), -53, 0.4f, 0.0f);
        out[10] = pinch_toward(out[10], -44, 0.4f, 0.0f);
    }
    out[1] = 0; out[20] = 21; out[3] = 19;
    if (out[10] <= -44 && out[2] <= -53) held = true;
    return true;
}

// The index and middle pinches run one after the other when both apply; the ring and little
// pinches are not latched.
void pinch_assist(TargetArray& out, bool* pinch_done) {
    if (!(out[1] <= kThumbActive.at_or_below && out[2] >= kThumbActive.at_or_above)) return;
    index_pinch(out, pinch_done[0]);
    const bool middle = middle_pinch(out, pinch_done[1]);
    if (!middle && out[6] > -40 && out[10] > -40 && out[14] < -30 && out[18] > -40) {
        out[1] = -36;
        out[2] = pinch_toward(out[2] * double(1.1f), -55, 0.2f, 0.0f);
        out[20] = 26; out[3] = 24;
        out[14] = pinch_toward(out[14] * double(1.2f), -50, 0.2f, 0.0f);
    }
    if (out[6] > -40 && out[10] > -40 && out[14] > -30 && out[18] < -35) {
        out[1] = -36;
        out[2] = pinch_toward(out[2] * double(1.2f), -55, 0.2f, 0.0f);
        out[20] = 34; out[3] = 26;
        out[18] = pinch_toward(out[18] * 1.5, -66, 0.2f, 0.0f);
    }
}

}  // namespace

quil::TargetArray quil::hands::AgiBot_OmniHand_O10(const InputAngles& in, const MemoryRef& memory) {
    using Hand = Quil_linear::AgiBot_OmniHand_O10;
    TargetArray out{};
    const int k = run_linear_stage<kStandardRows>(in, Clamp::passes_nan, {Hand::weight, Hand::w0}, out);
    if (k <= 22) return TargetArray{};
    joint_chain(out);
    pinch_assist(out, memory.fingerPinchDone);
    // A little finger that bends with the middle and ring fingers closes further.
    if (out[10] <= -60 && out[14] <= -60 && out[18] <= -15) {
        out[18] = 3 * out[18];
        floor_at(out, 18, -100);
    }
    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

// The pinch latches of the exported mapping live in the mapping itself, shared by every caller
// for the life of the process.
quil::TargetArray Quil_linear::AgiBot_OmniHand_O10::GetDataValue(QUIL_TWELVE_PARAMS) {
    static bool fingerPinchDone[4] = {};
    return quil::hands::AgiBot_OmniHand_O10(quil::make_inputs(QUIL_TWELVE_ARGS),
                                            quil::MemoryRef{fingerPinchDone, nullptr, nullptr});
}
QUIL_DEFINE_GET_DATA1(AgiBot_OmniHand_O10)
