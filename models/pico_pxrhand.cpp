// PICO PXRHand: a linear pose with wide-range finger linkages and a fixed thumb rotation. Two
// pinch poses and a fist snap replace the linear result when the thumb is flexed, and the last
// slot reports which of them was recognised (a gesture code) to the host.
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/spread_coupling.h"
#include "models/catalogue.h"
#include "models/shared/wide_linkage.h"
#include "models/shared/wide_linkage_curves.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
     -75.0,  -40.0,   30.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   -5.0,    0.0,   -5.0,  /* p0 */ \
     -75.0,  -45.0,   20.0,    0.0,    0.0,    0.0,    5.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p1 */ \
      -5.0,  -65.0,  -50.0,    5.0,    0.0,    0.0,    8.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p2 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p3 */ \
       0.0,    5.0,    0.0,  -90.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p4 */ \
       0.0,   -2.0,   -2.0, -100.0,    0.0,    0.0,  -10.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p5 */ \
       0.0,   -3.0,    0.0,    0.0,   35.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   -6.0,   -3.0,  /* p6 */ \
       0.0,    1.0,   10.0,    0.0,    0.0,    0.0,  -90.0,    0.0,   -2.0,   -2.0,    0.0,   -2.0,  /* p7 */ \
       0.0,    1.0,    0.0,    0.0,    5.0,    0.0, -100.0,    0.0,   -2.0,   -2.0,    0.0,   -2.0,  /* p8 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p9 */ \
       0.0,    5.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -90.0,    0.0,    0.0,  /* p10 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -100.0,    0.0,    0.0,  /* p11 */ \
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   40.0,    0.0,    0.0,    0.0,    0.0,  /* p12 */ \
       0.0,    5.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -10.0,    0.0, -120.0,  /* p13 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -10.0,    0.0, -120.0,  /* p14 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   35.0,    0.0,  /* p15 */ \
       5.0,  -55.0,  -50.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, -10.0, 30.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, -20.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(PICO_PXRHand, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads; slot 23 carries the gesture code.
const quil::SlotDeclaration quil::hands::PICO_PXRHand_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32)).with_gesture_code();

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

// The thumb tip's linkage: small bends are amplified, deep bends shifted a little further; bent
// past -90 it straightens the two thumb base joints a little.
constexpr ThumbTipLinkage kThumbTip{
    Curve3{-30.0, -50.0, scale(1.5), affine(0.9, -18.0), affine(1.2, -4.0)},
    -110.0, -90.0, 0.2, 18.0};

constexpr JointLinkages kLinkages{
    // The thumb's first joint; a deep bend gives back a little.
    linkage::kThumbBase,
    -90.0,
    // The index abduction motor shares its travel with the index knuckle.
    linkage::kIndexShared,
    -100.0,
    FingerRemap{
        linkage::kProximal,
        linkage::kDistal,
        -100.0,
    },
};

// What the last slot tells the host about the pose.
constexpr double kNoGesture = -1.0;
constexpr double kIndexPinchGesture = 0.0;
constexpr double kFistGesture = 2.0;

}  // namespace

quil::Targets quil::hands::PICO_PXRHand(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    const int k = run_linear_stage<kRows>(in, Clamp::min_max, tables, out);

    bend_thumb_tip(out, kThumbTip);
    cap_spreads(out, SpreadCaps{25, 15, 35});
    reshape_little_spread(out[slot::little_spread], LittleSpreadGain{3, 14, 35});
    remap_joint_linkages(out, kLinkages);
    // Bending a finger closes its spread.
    close_spread(out[slot::index_spread], out[slot::index_distal], 0.3);
    close_spread(out[slot::ring_spread], out[slot::ring_distal], 0.15);
    close_spread(out[slot::little_spread], out[slot::little_distal], 0.3);
    spread_middle_from_neighbours(out, 0.24, 0.32);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5);
    double gesture = kNoGesture;
    // A finger bent nearly to its end stop goes all the way, both joints.
    lock_full_bend(out, slot::index_distal, slot::index_proximal, -82, -90);
    lock_full_bend(out, slot::middle_distal, slot::middle_proximal, -82, -90);
    lock_full_bend(out, slot::ring_distal, slot::ring_proximal, -82, -90);
    lock_full_bend(out, slot::little_distal, slot::little_proximal, -82, -90);

    if (out[slot::thumb_distal] < -15) {
        // Index pinch. With the middle and ring fingers curled out of the way the index may
        // start from a shallower bend.
        if (out[slot::index_proximal] > -85) {
            const bool others_curled = out[slot::middle_proximal] < -50 && out[slot::ring_proximal] < -50;
            if (others_curled ? out[slot::index_proximal] < -20 : out[slot::index_proximal] < -40) {
                out[slot::thumb_proximal] = -35;
                out[slot::thumb_base] = -35;
                out[slot::thumb_distal] = -33;
                out[slot::index_distal] = -40;
                out[slot::index_proximal] = -76;
                out[slot::thumb_rotation] = -26;
                gesture = kIndexPinchGesture;
            }
        }
        // Middle pinch; it reports no gesture of its own.
        if (out[slot::index_proximal] > -50 && out[slot::middle_proximal] < -50 && out[slot::ring_proximal] > -50 &&
            out[slot::little_proximal] > -50) {
            out[slot::thumb_proximal] = -35;
            out[slot::thumb_base] = -35;
            out[slot::thumb_distal] = -85;
            out[slot::middle_distal] = -40;
            out[slot::middle_proximal] = -76;
            out[slot::thumb_rotation] = -45;
        }
    }
    // A fist closes every finger fully; with the thumb folded over it, it is a gesture.
    if (out[slot::index_proximal] < -82 && out[slot::middle_proximal] < -82 && out[slot::ring_proximal] < -82 &&
        out[slot::little_proximal] < -70) {
        out[slot::index_distal] = out[slot::index_proximal] = out[slot::middle_proximal] = out[slot::ring_proximal] =
            out[slot::little_proximal] = out[slot::middle_distal] = out[slot::ring_distal] =
                out[slot::little_distal] = -90;
        if (out[slot::thumb_distal] < -40) gesture = kFistGesture;
    }
    // The thumb rotation is fixed on this hand.
    out[slot::thumb_abduction] = 40;
    // Distal joints follow the proximal ones at 0.8, never extending past straight.
    follow_distal(out, 0.8);

    out[k] = gesture;
    flip_thumb_and_index(out);
    return out;
}

