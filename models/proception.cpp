// Proception: built on the in-house AG linkage calibration, with gain curves per joint, five
// fixed pinch poses (thumb to one finger, or to index and middle together), finger
// equalising when the whole hand curls, and a fist snap.
#include <utility>

#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"
#include "models/shared/common_spreads.h"
#include "models/quil_linear_ag_coefficients.h"
#include "models/shared/wide_linkage_curves.h"

QUIL_PUBLISH_COEFFICIENTS(Proception, QUIL_AG_WEIGHT, QUIL_AG_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::Proception_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

constexpr RowRules kRows = RowRules{}
    .rows({0, 5, 8, 11, 14}, upper(0), lower(-80))
    .rows({2}, upper(10))
    .rows({16, 17}, upper(0))
    .rows({3}, lower(5), upper(35))
    .rows({6, 12, 15}, lower(0))
    .twice({4, 7, 10, 13}, upper(0), lower(-100));

// Gain curves: the first part of a bend is amplified, deep bends are compressed.
constexpr const Curve3& kThumbBase = linkage::kThumbBase;
constexpr const Curve3& kThumbTip = linkage::kThumbTip;
constexpr Curve3 kThumbSecond{-20, -50, scale(1.0), affine(1.0, -20.0), affine(1.0, -45.0)};
constexpr const Curve3& kIndexDistal = linkage::kIndexShared;
constexpr const Curve3& kProximal = linkage::kProximal;
constexpr const Curve3& kDistal = linkage::kDistal;
constexpr Curve3 kLittle{-20, -60, scale(2.0), affine(0.8, -24.0), affine(1.0, -12.0)};

void floor_at(double& v, double floor) {
    if (v < floor) v = floor;
}

struct PinchPose {
    // Finger gates: +1 the finger must be above -40 (open), -1 below -40 (bent), 0 not tested.
    // The fifth pose tests the ring finger against -60 instead.
    int index, middle, ring, little;
    double ring_gate;
    int count;  // how many of `targets` the pose writes, in order
    std::pair<int, double> targets[10];
};

bool gate(double v, int side, double at) { return side == 0 || (side > 0 ? v > at : v < at); }

}  // namespace

quil::Targets quil::hands::Proception(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kRows>(in, Clamp::min_max, tables, out);

    couple_spreads(out, kCommonSpreads);

    out[slot::thumb_base] = kThumbBase(out[slot::thumb_base]);
    floor_at(out[slot::thumb_base], -90);
    out[slot::thumb_proximal] = kThumbBase(out[slot::thumb_proximal]);
    if (out[slot::thumb_proximal] > 0) out[slot::thumb_proximal] = 0;
    floor_at(out[slot::thumb_proximal], -90);
    out[slot::thumb_distal] = kThumbTip(out[slot::thumb_distal]);
    floor_at(out[slot::thumb_distal], -90);
    out[slot::thumb_rotation] = kThumbSecond(out[slot::thumb_rotation]);
    // A far-swung thumb is held back so it does not strike the palm.
    if (out[slot::thumb_rotation] < -45) {
        out[slot::thumb_rotation] = -45;
        if (out[slot::thumb_proximal] < -44) out[slot::thumb_proximal] = -44;
        if (out[slot::thumb_base] < -49) out[slot::thumb_base] = -49;
    }
    out[slot::index_distal] = kIndexDistal(out[slot::index_distal]);
    floor_at(out[slot::index_distal], -100);
    for (int joint :
         {slot::index_proximal, slot::middle_distal, slot::middle_proximal, slot::ring_distal, slot::ring_proximal}) {
        const bool proximal =
            joint == slot::index_proximal || joint == slot::middle_proximal || joint == slot::ring_proximal;
        out[joint] = proximal ? kProximal(out[joint]) : kDistal(out[joint]);
        floor_at(out[joint], -100);
    }
    out[slot::little_proximal] = kLittle(out[slot::little_proximal]);
    floor_at(out[slot::little_proximal], -84);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5);
    follow_distal(out, 0.8);
    // A finger curled past -90 (little finger past -80) snaps fully closed.
    lock_full_bends(out, -90, -80);

    // Fixed pinch poses, only with the thumb tip bent toward the fingers.
    if (out[slot::thumb_distal] < -25) {
        static const PinchPose kPoses[] = {
            {-1,
             +1,
             +1,
             +1,
             -40,
             7,
             {{slot::thumb_base, -42},
              {slot::thumb_proximal, -35},
              {slot::thumb_distal, -7},
              {slot::thumb_rotation, -52},
              {slot::index_tip, -35},
              {slot::index_distal, -52},
              {slot::index_proximal, -54}}},
            {-1,
             -1,
             0,
             +1,
             -40,
             10,
             {{slot::thumb_base, -41},
              {slot::thumb_proximal, -40},
              {slot::thumb_distal, -5},
              {slot::thumb_rotation, -65},
              {slot::index_tip, -41},
              {slot::index_distal, -52},
              {slot::index_proximal, -57},
              {slot::middle_tip, -39},
              {slot::middle_distal, -52},
              {slot::middle_proximal, -67}}},
            {+1,
             -1,
             0,
             +1,
             -40,
             7,
             {{slot::thumb_base, -41},
              {slot::thumb_proximal, -40},
              {slot::thumb_distal, -5},
              {slot::thumb_rotation, -73},
              {slot::middle_tip, -39},
              {slot::middle_distal, -52},
              {slot::middle_proximal, -67}}},
            {+1,
             +1,
             -1,
             +1,
             -40,
             7,
             {{slot::thumb_base, -41},
              {slot::thumb_proximal, -40},
              {slot::thumb_distal, -5},
              {slot::thumb_rotation, -95},
              {slot::ring_tip, -39},
              {slot::ring_distal, -52},
              {slot::ring_proximal, -67}}},
            {+1,
             +1,
             +1,
             -1,
             -60,
             7,
             {{slot::thumb_base, -41},
              {slot::thumb_proximal, -40},
              {slot::thumb_distal, -5},
              {slot::thumb_rotation, -120},
              {slot::little_tip, -39},
              {slot::little_distal, -52},
              {slot::little_proximal, -67}}},
        };
        for (const PinchPose& pose : kPoses) {
            if (gate(out[slot::index_proximal], pose.index, -40) &&
                gate(out[slot::middle_proximal], pose.middle, -40) &&
                gate(out[slot::ring_proximal], pose.ring, pose.ring_gate) &&
                gate(out[slot::little_proximal], pose.little, -40)) {
                for (int t = 0; t < pose.count; ++t) out[pose.targets[t].first] = pose.targets[t].second;
            }
        }
    }
    // The whole hand curling: the other fingers follow the index.
    if (out[slot::index_proximal] < -50 && out[slot::middle_proximal] < -50 && out[slot::ring_proximal] < -50 &&
        out[slot::little_proximal] < -50) {
        out[slot::middle_proximal] = out[slot::index_proximal];
        out[slot::ring_proximal] = out[slot::index_proximal];
        out[slot::little_proximal] = out[slot::index_proximal];
    }
    if (out[slot::index_proximal] < -80 && out[slot::middle_proximal] < -80 && out[slot::ring_proximal] < -80 &&
        out[slot::little_proximal] < -70) {
        for (int joint : {slot::index_proximal, slot::middle_proximal, slot::ring_proximal, slot::little_proximal,
                          slot::index_distal, slot::middle_distal, slot::ring_distal, slot::little_distal})
            out[joint] = -100;
    }
    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

