// PICO PXRHand: a linear pose with wide-range finger linkages and a fixed thumb rotation. Two
// pinch poses and a fist snap replace the linear result when the thumb is flexed, and the last
// slot reports which of them was recognised (a gesture code) to the host.
#include "core/curves.h"
#include "core/finger_remap.h"
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "models/hands.h"

double Quil_linear::PICO_PXRHand::weight[228] = {
     -75.0,  -40.0,   30.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   -5.0,    0.0,   -5.0,  // p0
     -75.0,  -45.0,   20.0,    0.0,    0.0,    0.0,    5.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p1
      -5.0,  -65.0,  -50.0,    5.0,    0.0,    0.0,    8.0,    0.0,    0.0,    5.0,    0.0,    5.0,  // p2
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p3
       0.0,    5.0,    0.0,  -90.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p4
       0.0,   -2.0,   -2.0, -100.0,    0.0,    0.0,  -10.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p5
       0.0,   -3.0,    0.0,    0.0,   35.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   -6.0,   -3.0,  // p6
       0.0,    1.0,   10.0,    0.0,    0.0,    0.0,  -90.0,    0.0,   -2.0,   -2.0,    0.0,   -2.0,  // p7
       0.0,    1.0,    0.0,    0.0,    5.0,    0.0, -100.0,    0.0,   -2.0,   -2.0,    0.0,   -2.0,  // p8
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p9
       0.0,    5.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -90.0,    0.0,    0.0,  // p10
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -100.0,    0.0,    0.0,  // p11
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   40.0,    0.0,    0.0,    0.0,    0.0,  // p12
       0.0,    5.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -10.0,    0.0, -120.0,  // p13
       0.0,   -5.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -10.0,    0.0, -120.0,  // p14
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   35.0,    0.0,  // p15
       5.0,  -55.0,  -50.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  // p16
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p17
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  // p18
};
double Quil_linear::PICO_PXRHand::w0[19] = {0.0, 0.0, -10.0, 30.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, -20.0, 0.0, 0.0};

namespace {

using namespace quil;

// Row 17 is left unclamped on this hand.
constexpr RowRules kRows = RowRules{}
    .rows({0, 1, 5, 8, 11, 14}, upper(0), lower(-90))
    .rows({2}, upper(0))
    .rows({16}, upper(0), upper(0), lower(-60))
    .rows({3}, lower(5), upper(35))
    .rows({6, 12, 15}, lower(0))
    .twice({4, 7, 10, 13}, upper(0), lower(-100));

// The thumb tip's linkage: small bends are amplified, deep bends shifted a little further.
constexpr Curve3 kThumbTip{-30.0, -50.0, scale(1.5), affine(0.9, -18.0), affine(1.2, -4.0)};
// The thumb's first joint; a deep bend gives back a little.
constexpr Curve3 kThumbBase{-20.0, -60.0, scale(1.5), affine(0.6, -20.0), affine(1.0, 4.0)};
// The index abduction motor shares its travel with the index knuckle.
constexpr Curve3 kIndexKnuckle{-10.0, -60.0, scale(1.5), affine(0.5, -10.0), affine(2.0, 80.0)};

constexpr FingerRemap kFingers{
    Curve3{-30.0, -50.0, scale(2.0), affine(0.6, -42.0), affine(1.5, 3.0)},
    Curve3{-15.0, -70.0, scale(2.0), affine(0.5, -22.5), affine(1.5, 47.5)},
    -100.0,
};

// What the last slot tells the host about the pose.
constexpr double kNoGesture = -1.0;
constexpr double kIndexPinchGesture = 0.0;
constexpr double kFistGesture = 2.0;

}  // namespace

quil::TargetArray quil::hands::PICO_PXRHand(const InputAngles& in, const MemoryRef&) {
    using Hand = Quil_linear::PICO_PXRHand;
    TargetArray out;
    const int k = run_linear_stage<kRows>(in, Clamp::min_max, {Hand::weight, Hand::w0}, out);

    out[2] = kThumbTip(out[2]);
    if (out[2] < -110) out[2] = -110;
    // A deeply bent thumb tip straightens the two thumb base joints a little.
    if (out[2] < -90) {
        out[1] = out[1] - out[2] * 0.2 - 18.0;
        out[0] = out[0] - out[2] * 0.2 - 18.0;
    }
    if (out[7] > 25) out[7] = 25;
    if (out[15] > 15) out[15] = 15;
    if (out[19] > 35) out[19] = 35;
    // The ring abduction never spreads further than the little finger's.
    if (out[15] > out[19]) out[15] = out[19];
    if (out[19] < 7) {
        out[19] = out[19] * 3.0;
    } else {
        out[19] = out[19] + 14.0;
        if (out[19] > 35) out[19] = 35;
    }
    out[1] = kThumbBase(out[1]);
    if (out[1] < -90) out[1] = -90;
    out[5] = kIndexKnuckle(out[5]);
    if (out[5] < -100) out[5] = -100;
    kFingers.apply(out, {6, 10, 14, 18}, {9, 13, 17});
    // Bending a finger closes its spread.
    if (out[5] < 0) {
        out[7] = 0.3 * out[5] + out[7];
        if (out[7] < 0) out[7] = 0;
    }
    if (out[13] < 0) {
        out[15] = 0.15 * out[13] + out[15];
        if (out[15] < 0) out[15] = 0;
    }
    if (out[17] < 0) {
        out[19] = 0.3 * out[17] + out[19];
        if (out[19] < 0) out[19] = 0;
    }
    // The middle finger's abduction follows the index and ring abductions.
    out[11] = out[7] * 0.24 - 0.32 * out[15];
    if (out[18] < -5) {
        out[19] = 0.8 * (out[18] + 5.0) + out[19];
        if (out[19] < 0) out[19] = 0;
    }
    double gesture = kNoGesture;
    // A finger bent nearly to its end stop goes all the way, both joints.
    if (out[6] < -82) out[5] = out[6] = -90;
    if (out[10] < -82) out[9] = out[10] = -90;
    if (out[14] < -82) out[13] = out[14] = -90;
    if (out[18] < -82) out[17] = out[18] = -90;

    if (out[2] < -15) {
        // Index pinch. With the middle and ring fingers curled out of the way the index may
        // start from a shallower bend.
        if (out[6] > -85) {
            const bool others_curled = out[10] < -50 && out[14] < -50;
            if (others_curled ? out[6] < -20 : out[6] < -40) {
                out[1] = -35;
                out[0] = -35;
                out[2] = -33;
                out[5] = -40;
                out[6] = -76;
                out[20] = -26;
                gesture = kIndexPinchGesture;
            }
        }
        // Middle pinch; it reports no gesture of its own.
        if (out[6] > -50 && out[10] < -50 && out[14] > -50 && out[18] > -50) {
            out[1] = -35;
            out[0] = -35;
            out[2] = -85;
            out[9] = -40;
            out[10] = -76;
            out[20] = -45;
        }
    }
    // A fist closes every finger fully; with the thumb folded over it, it is a gesture.
    if (out[6] < -82 && out[10] < -82 && out[14] < -82 && out[18] < -70) {
        out[5] = out[6] = out[10] = out[14] = out[18] = out[9] = out[13] = out[17] = -90;
        if (out[2] < -40) gesture = kFistGesture;
    }
    // The thumb rotation is fixed on this hand.
    out[3] = 40;
    // Distal joints follow the proximal ones at 0.8, never extending past straight.
    out[4] = out[5] * 0.8;
    out[8] = out[9] * 0.8;
    out[12] = out[13] * 0.8;
    out[16] = out[17] * 0.8;
    for (int i : {4, 8, 12, 16})
        if (out[i] > 0) out[i] = 0;

    out[k] = gesture;
    flip_thumb_and_index(out);
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(PICO_PXRHand)
QUIL_DEFINE_GET_DATA1(PICO_PXRHand)
