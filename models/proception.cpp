// Proception: built on the in-house AG linkage calibration, with gain curves per joint, five
// fixed pinch poses (thumb to one finger, or to index and middle together), finger
// equalising when the whole hand curls, and a fist snap.
#include <utility>

#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linkage_curves.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"
#include "models/quil_linear_ag_coefficients.h"

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

    if (out[7] > 30) out[7] = 30;
    if (out[15] > 20) out[15] = 20;
    if (out[19] > 30) out[19] = 30;
    if (out[19] < 7) {
        out[19] = out[19] * 1.5;
    } else {
        out[19] = out[19] + 3.5;
        if (out[19] > 30) out[19] = 30;
    }
    close_spread(out[7], out[5], 0.15);
    close_spread(out[15], out[13], 0.15);
    close_spread(out[19], out[17], 0.25);
    spread_middle_from_neighbours(out, 0.24, 0.32);

    out[0] = kThumbBase(out[0]);
    floor_at(out[0], -90);
    out[1] = kThumbBase(out[1]);
    if (out[1] > 0) out[1] = 0;
    floor_at(out[1], -90);
    out[2] = kThumbTip(out[2]);
    floor_at(out[2], -90);
    out[20] = kThumbSecond(out[20]);
    // A far-swung thumb is held back so it does not strike the palm.
    if (out[20] < -45) {
        out[20] = -45;
        if (out[1] < -44) out[1] = -44;
        if (out[0] < -49) out[0] = -49;
    }
    out[5] = kIndexDistal(out[5]);
    floor_at(out[5], -100);
    for (int slot : {6, 9, 10, 13, 14}) {
        const bool proximal = slot == 6 || slot == 10 || slot == 14;
        out[slot] = proximal ? kProximal(out[slot]) : kDistal(out[slot]);
        floor_at(out[slot], -100);
    }
    out[18] = kLittle(out[18]);
    floor_at(out[18], -84);
    close_spread(out[19], out[18], 0.8, -5);
    follow_distal(out, 0.8);
    // A finger curled past -90 (little finger past -80) snaps fully closed.
    lock_full_bends(out, -90, -80);

    // Fixed pinch poses, only with the thumb tip bent toward the fingers.
    if (out[2] < -25) {
        static const PinchPose kPoses[] = {
            {-1, +1, +1, +1, -40, 7, {{0, -42}, {1, -35}, {2, -7}, {20, -52}, {4, -35}, {5, -52}, {6, -54}}},
            {-1, -1, 0, +1, -40, 10, {{0, -41}, {1, -40}, {2, -5}, {20, -65}, {4, -41}, {5, -52}, {6, -57},
                                  {8, -39}, {9, -52}, {10, -67}}},
            {+1, -1, 0, +1, -40, 7, {{0, -41}, {1, -40}, {2, -5}, {20, -73}, {8, -39}, {9, -52}, {10, -67}}},
            {+1, +1, -1, +1, -40, 7, {{0, -41}, {1, -40}, {2, -5}, {20, -95}, {12, -39}, {13, -52}, {14, -67}}},
            {+1, +1, +1, -1, -60, 7, {{0, -41}, {1, -40}, {2, -5}, {20, -120}, {16, -39}, {17, -52}, {18, -67}}},
        };
        for (const PinchPose& pose : kPoses) {
            if (gate(out[6], pose.index, -40) && gate(out[10], pose.middle, -40) &&
                gate(out[14], pose.ring, pose.ring_gate) && gate(out[18], pose.little, -40)) {
                for (int t = 0; t < pose.count; ++t) out[pose.targets[t].first] = pose.targets[t].second;
            }
        }
    }
    // The whole hand curling: the other fingers follow the index.
    if (out[6] < -50 && out[10] < -50 && out[14] < -50 && out[18] < -50) {
        out[10] = out[6];
        out[14] = out[6];
        out[18] = out[6];
    }
    if (out[6] < -80 && out[10] < -80 && out[14] < -80 && out[18] < -70) {
        for (int slot : {6, 10, 14, 18, 5, 9, 13, 17}) out[slot] = -100;
    }
    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
