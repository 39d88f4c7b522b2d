// PaXini DexH13 GEN2: the common pose, then every joint reshaped through a three-piece gain
// curve, and four thumb contact poses (thumb against one or two fingers) for which the hand gets
// fixed joint targets, since the curves alone do not bring the pads together.
//
// Finger joints: index (5, 6), middle (9, 10), ring (13, 14), little (17, 18); the first of each
// pair is the doubly written row, the slot before it the distal joint.
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"
#include "models/shared/common_coefficients.h"
#include "models/shared/common_spreads.h"
#include "models/shared/wide_linkage_curves.h"

QUIL_PUBLISH_COEFFICIENTS(PaXini_DexH13_GEN2, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::PaXini_DexH13_GEN2_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

// Thumb base joints (0, 1). The jump at -20 (about -30 just above, -32 at it) is how the hand
// has always been tuned.
constexpr const Curve3& kThumbBase = linkage::kThumbBase;
// Thumb tip and thumb opposition (2, 20).
constexpr const Curve3& kThumbTip = linkage::kThumbTip;
// Index distal-driving joint (5).
constexpr const Curve3& kIndexDistal = linkage::kIndexShared;
// Proximal finger joints (6, 10, 14, 18).
constexpr const Curve3& kProximal = linkage::kProximal;
// Distal-driving joints of middle, ring and little (9, 13, 17).
constexpr const Curve3& kDistal = linkage::kDistal;

inline double at_least(double v, double floor) { return v < floor ? floor : v; }

// A finger as a contact pose wants it, judged on its proximal joint against -40.
enum Finger : unsigned char { bent, extended, either };

bool finger_is(double proximal, Finger want) {
    switch (want) {
        case bent: return proximal < -40;
        case extended: return proximal > -40;
        default: return true;
    }
}

struct SlotTarget {
    int slot;  // -1 ends the list
    double value;
};

struct ContactPose {
    Finger finger[4];  // index, middle, ring, little
    SlotTarget target[8];
};

constexpr int kProximalSlot[4] = {slot::index_proximal, slot::middle_proximal, slot::ring_proximal,
                                  slot::little_proximal};

// Checked in this order, each against the joints as the poses before it left them. A pose that
// fires moves its bent finger to -55 (and the index-and-middle pose leaves the middle at -55),
// which rules out the later ones.
constexpr ContactPose kContactPoses[] = {
    // Thumb on the index pad.
    {{bent, extended, extended, extended},
     {{slot::thumb_base, -45},
      {slot::thumb_proximal, -60},
      {slot::thumb_distal, -78},
      {slot::thumb_abduction, 5},
      {slot::index_distal, -32},
      {slot::index_proximal, -55},
      {-1, 0}}},
    // Thumb under the index and middle pads together; the ring finger may rest either way.
    {{bent, bent, either, extended},
     {{slot::thumb_base, -45},
      {slot::thumb_proximal, -60},
      {slot::thumb_distal, -78},
      {slot::thumb_abduction, 5},
      {slot::index_distal, -32},
      {slot::index_proximal, -55},
      {slot::middle_distal, -32},
      {slot::middle_proximal, -55}}},
    // Thumb on the middle pad, the middle spread opened to meet it.
    {{extended, bent, either, extended},
     {{slot::thumb_base, -45},
      {slot::thumb_proximal, -60},
      {slot::thumb_distal, -80},
      {slot::thumb_abduction, 20},
      {slot::middle_distal, -32},
      {slot::middle_proximal, -55},
      {slot::middle_spread, 10},
      {-1, 0}}},
    // Thumb on the ring pad.
    {{extended, extended, bent, extended},
     {{slot::thumb_base, -50},
      {slot::thumb_proximal, -65},
      {slot::thumb_distal, -80},
      {slot::thumb_abduction, 20},
      {slot::ring_distal, -35},
      {slot::ring_proximal, -55},
      {-1, 0}}},
};

void apply_contact_poses(Targets& out) {
    for (const ContactPose& pose : kContactPoses) {
        bool match = true;
        for (int f = 0; f < 4; ++f) match = match && finger_is(out[kProximalSlot[f]], pose.finger[f]);
        if (!match) continue;
        for (const SlotTarget& t : pose.target) {
            if (t.slot < 0) break;
            out[t.slot] = t.value;
        }
    }
}

}  // namespace

quil::Targets quil::hands::PaXini_DexH13_GEN2(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);

    couple_spreads(out, kCommonSpreads);

    for (int i : {slot::thumb_base, slot::thumb_proximal}) out[i] = at_least(kThumbBase(out[i]), -90);
    for (int i : {slot::thumb_distal, slot::thumb_rotation}) out[i] = at_least(kThumbTip(out[i]), -90);
    out[slot::index_distal] = at_least(kIndexDistal(out[slot::index_distal]), -100);
    out[slot::index_proximal] = at_least(kProximal(out[slot::index_proximal]), -100);
    out[slot::middle_distal] = at_least(kDistal(out[slot::middle_distal]), -100);
    out[slot::middle_proximal] = at_least(kProximal(out[slot::middle_proximal]), -100);
    out[slot::ring_distal] = at_least(kDistal(out[slot::ring_distal]), -100);
    out[slot::ring_proximal] = at_least(kProximal(out[slot::ring_proximal]), -100);
    // The little finger's spread lifts its two joints open.
    out[slot::little_distal] = out[slot::little_distal] + out[slot::little_spread];
    out[slot::little_proximal] = out[slot::little_proximal] + out[slot::little_spread];
    if (out[slot::little_distal] > 0) out[slot::little_distal] = 0;
    if (out[slot::little_proximal] > 0) out[slot::little_proximal] = 0;
    out[slot::little_distal] = at_least(kDistal(out[slot::little_distal]), -100);
    out[slot::little_proximal] = at_least(kProximal(out[slot::little_proximal]), -100);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5);
    follow_distal(out, 0.8);

    // A deeply bent finger snaps fully closed; the little finger, shorter, snaps earlier. The
    // distal joints keep the values they followed above.
    struct Snap {
        int first, proximal;
        double below;
    };
    for (const Snap& s :
         {Snap{slot::index_distal, slot::index_proximal, -90}, Snap{slot::middle_distal, slot::middle_proximal, -90},
          Snap{slot::ring_distal, slot::ring_proximal, -90}, Snap{slot::little_distal, slot::little_proximal, -80}})
        if (out[s.proximal] < s.below) {
            out[s.first] = -100;
            out[s.proximal] = -100;
        }

    // Contact poses only with the thumb tip well across the palm.
    if (out[slot::thumb_distal] < -25) apply_contact_poses(out);

    // A closing hand: the other fingers follow the index, and a full fist closes every joint.
    if (out[slot::index_proximal] < -50 && out[slot::middle_proximal] < -50 && out[slot::ring_proximal] < -50 &&
        out[slot::little_proximal] < -50) {
        out[slot::middle_proximal] = out[slot::index_proximal];
        out[slot::ring_proximal] = out[slot::index_proximal];
        out[slot::little_proximal] = out[slot::index_proximal];
    }
    if (out[slot::index_proximal] < -80 && out[slot::middle_proximal] < -80 && out[slot::ring_proximal] < -80 &&
        out[slot::little_proximal] < -70)
        for (int i : {slot::index_distal, slot::index_proximal, slot::middle_distal, slot::middle_proximal,
                      slot::ring_distal, slot::ring_proximal, slot::little_distal, slot::little_proximal})
            out[i] = -100;

    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

