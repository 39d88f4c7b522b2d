// ROBOTERA XHAND1: a linear pose with wide-range finger linkages. The thumb tip and the finger
// joints are remapped through three-piece gains to cover the linkages' travel, and once the
// thumb is deeply flexed the hand switches to fixed pinch and grasp poses chosen by which
// fingers are bent, because its thumb cannot find the finger pads on its own.
#include <cmath>

#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"
#include "models/shared/thumb_turning_spreads.h"
#include "models/shared/wide_linkage.h"
#include "models/shared/wide_linkage_curves.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
     -75.0,  -40.0,   30.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   -5.0,    0.0,   -5.0,  /* p0 */ \
     -75.0,  -45.0,   20.0,    0.0,    0.0,    0.0,    5.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p1 */ \
      -5.0,  -65.0,  -50.0,    5.0,    0.0,    0.0,    8.0,    0.0,    0.0,    5.0,    0.0,   15.0,  /* p2 */ \
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
       0.0,    5.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -100.0,  /* p13 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -10.0,    0.0, -100.0,  /* p14 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   35.0,    0.0,  /* p15 */ \
       5.0,  -45.0,  -50.0,   10.0,    0.0,    0.0,   -5.0,    0.0,    0.0,  -10.0,    0.0,  -10.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, -10.0, 30.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(ROBOTERA_XHAND1, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::ROBOTERA_XHAND1_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

constexpr RowRules kRows = RowRules{}
    .rows({0, 1, 5, 8, 11, 14}, upper(0), lower(-90))
    .rows({2, 16, 17}, upper(0))
    .rows({3}, lower(5), upper(35))
    .rows({6, 12, 15}, lower(0))
    .twice({4, 7, 10, 13}, upper(0), lower(-100));

// The thumb tip's linkage: small bends are amplified, the middle of the range is shifted deep;
// bent past -90 it straightens the two thumb base joints a little.
constexpr ThumbTipLinkage kThumbTip{
    Curve3{-30.0, -50.0, scale(2.2), affine(0.9, -39.0), affine(1.5, -9.0)},
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

// Spreading the little finger turns the thumb out of its way; bending a finger closes its spread.
constexpr ThumbTurningSpreads kSpreads{
    {25, 15, 35}, 1.3, {3, 14, 35}, 0.15, 0.15, 0.25, 0.24, 0.32};

// Curls a joint toward a (negative) grasp limit: the joint is scaled by the gain and by how far
// along to the limit it already is, so a strong gain pulls a nearly closed joint onto the limit,
// never past it. A joint already at or beyond the limit is set to it.
double curl_toward(double v, int limit, float gain) {
    const double l = limit;
    const double r = v > l ? std::fabs(v / l) * (double(gain) * v) : l;
    return r > l ? r : l;
}

}  // namespace

quil::Targets quil::hands::ROBOTERA_XHAND1(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    const int k = run_linear_stage<kRows>(in, Clamp::min_max, tables, out);

    bend_thumb_tip(out, kThumbTip);
    couple_spreads_turning_thumb(out, kSpreads);
    remap_joint_linkages(out, kLinkages);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5);
    // Distal joints follow the proximal ones at 0.8, never extending past straight.
    follow_distal(out, 0.8);
    // A finger bent nearly to its end stop goes all the way, both joints.
    lock_full_bends(out, -90, -90);

    // With the thumb deeply flexed, the bent fingers pick a fixed pinch or grasp pose. The tests
    // overlap on purpose and each sees what the earlier ones left: the last one to fire wins.
    if (out[slot::thumb_distal] < -42) {
        // Index pinch.
        if (out[slot::index_proximal] < -45 && out[slot::middle_proximal] > -50 && out[slot::ring_proximal] > -50 &&
            out[slot::little_proximal] > -50) {
            out[slot::thumb_proximal] = -35;
            out[slot::thumb_base] = -35;
            out[slot::thumb_distal] = curl_toward(out[slot::thumb_distal], -72, 1.0f);
            out[slot::thumb_rotation] = -19;
            out[slot::index_distal] = -40;
            out[slot::index_proximal] = curl_toward(out[slot::index_proximal], -76, 1.4f);
        }
        // Index and middle together against the thumb.
        if (out[slot::index_proximal] < -40 && out[slot::middle_proximal] < -50 && out[slot::little_proximal] > -50) {
            out[slot::thumb_proximal] = -35;
            out[slot::thumb_base] = -35;
            out[slot::thumb_distal] = curl_toward(out[slot::thumb_distal], -82, 1.4f);
            out[slot::index_distal] = -40;
            out[slot::index_proximal] = curl_toward(out[slot::index_proximal], -76, 1.4f);
            out[slot::middle_distal] = -40;
            out[slot::middle_proximal] = curl_toward(out[slot::middle_proximal], -76, 1.4f);
        }
        // Middle pinch.
        if (out[slot::index_proximal] > -50 && out[slot::middle_proximal] < -50 && out[slot::ring_proximal] > -50 &&
            out[slot::little_proximal] > -50) {
            out[slot::thumb_proximal] = -35;
            out[slot::thumb_base] = -35;
            out[slot::thumb_distal] = curl_toward(out[slot::thumb_distal], -85, 1.4f);
            out[slot::middle_distal] = -40;
            out[slot::middle_proximal] = curl_toward(out[slot::middle_proximal], -76, 1.5f);
        }
        // Middle and ring together.
        if (out[slot::index_proximal] > -50 && out[slot::middle_proximal] < -50 && out[slot::ring_proximal] < -50 &&
            out[slot::little_proximal] > -50) {
            out[slot::thumb_proximal] = -35;
            out[slot::thumb_base] = -35;
            out[slot::thumb_distal] = curl_toward(out[slot::thumb_distal], -95, 1.0f);
            out[slot::middle_distal] = -40;
            out[slot::middle_proximal] = curl_toward(out[slot::middle_proximal], -76, 1.0f);
            out[slot::ring_distal] = -40;
            out[slot::ring_proximal] = curl_toward(out[slot::ring_proximal], -76, 1.0f);
        }
        // Ring pinch.
        if (out[slot::index_proximal] > -50 && out[slot::middle_proximal] > -50 && out[slot::ring_proximal] < -50 &&
            out[slot::little_proximal] > -50) {
            out[slot::thumb_proximal] = -32;
            out[slot::thumb_base] = -33;
            out[slot::thumb_distal] = curl_toward(out[slot::thumb_distal], -100, 1.4f);
            out[slot::ring_distal] = -40;
            out[slot::ring_proximal] = curl_toward(out[slot::ring_proximal], -76, 1.4f);
        }
        // Ring and little half bent: the thumb reaches across to the ring finger.
        if (out[slot::index_proximal] > -50 && out[slot::middle_proximal] > -50 && out[slot::ring_proximal] < -50 &&
            out[slot::little_proximal] < -50 && out[slot::ring_proximal] > -70 && out[slot::little_proximal] > -70) {
            out[slot::thumb_proximal] = -32;
            out[slot::thumb_base] = -33;
            if (out[slot::thumb_distal] > -100) out[slot::thumb_distal] = -100;
            if (out[slot::thumb_distal] < -110) out[slot::thumb_distal] = -110;
            if (out[slot::ring_distal] < -40) out[slot::ring_distal] = -40;
            if (out[slot::ring_proximal] > -70) out[slot::ring_proximal] = -70;
            if (out[slot::ring_proximal] < -76) out[slot::ring_proximal] = -76;
        }
        // Ring and little fully bent: they close completely under the thumb.
        if (out[slot::index_proximal] > -50 && out[slot::middle_proximal] > -50 && out[slot::ring_proximal] < -70 &&
            out[slot::little_proximal] < -70) {
            out[slot::thumb_proximal] = -35;
            out[slot::thumb_base] = -35;
            if (out[slot::thumb_distal] > -100) out[slot::thumb_distal] = -100;
            if (out[slot::thumb_distal] < -110) out[slot::thumb_distal] = -110;
            out[slot::ring_distal] = out[slot::ring_proximal] = out[slot::little_distal] =
                out[slot::little_proximal] = -100;
        }
        // Little finger pinch.
        if (out[slot::index_proximal] > -50 && out[slot::middle_proximal] > -50 && out[slot::ring_proximal] > -50 &&
            out[slot::little_proximal] < -50) {
            out[slot::thumb_proximal] = -30;
            out[slot::thumb_base] = -30;
            out[slot::thumb_distal] = -110;
            out[slot::little_distal] = -40;
            out[slot::little_proximal] = -76;
        }
    }
    // A fist closes every finger fully, whatever the thumb does.
    if (out[slot::index_proximal] < -80 && out[slot::middle_proximal] < -80 && out[slot::ring_proximal] < -80 &&
        out[slot::little_proximal] < -60)
        out[slot::index_distal] = out[slot::index_proximal] = out[slot::middle_proximal] = out[slot::ring_proximal] =
            out[slot::little_proximal] = out[slot::middle_distal] = out[slot::ring_distal] =
                out[slot::little_distal] = -100;

    out[k] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

