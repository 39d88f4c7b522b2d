// PaXini DexH13 GEN2: the common pose, then every joint reshaped through a three-piece gain
// curve, and four thumb contact poses (thumb against one or two fingers) for which the hand gets
// fixed joint targets, since the curves alone do not bring the pads together.
//
// Finger joints: index (5, 6), middle (9, 10), ring (13, 14), little (17, 18); the first of each
// pair is the doubly written row, the slot before it the distal joint.
#include "core/common_coefficients.h"
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/linkage_curves.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"

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

constexpr int kProximalSlot[4] = {6, 10, 14, 18};

// Checked in this order, each against the joints as the poses before it left them. A pose that
// fires moves its bent finger to -55 (and the index-and-middle pose leaves the middle at -55),
// which rules out the later ones.
constexpr ContactPose kContactPoses[] = {
    // Thumb on the index pad.
    {{bent, extended, extended, extended}, {{0, -45}, {1, -60}, {2, -78}, {3, 5}, {5, -32}, {6, -55}, {-1, 0}}},
    // Thumb under the index and middle pads together; the ring finger may rest either way.
    {{bent, bent, either, extended},
     {{0, -45}, {1, -60}, {2, -78}, {3, 5}, {5, -32}, {6, -55}, {9, -32}, {10, -55}}},
    // Thumb on the middle pad, the middle spread opened to meet it.
    {{extended, bent, either, extended},
     {{0, -45}, {1, -60}, {2, -80}, {3, 20}, {9, -32}, {10, -55}, {11, 10}, {-1, 0}}},
    // Thumb on the ring pad.
    {{extended, extended, bent, extended}, {{0, -50}, {1, -65}, {2, -80}, {3, 20}, {13, -35}, {14, -55}, {-1, 0}}},
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

    if (out[7] > 30) out[7] = 30;
    if (out[15] > 20) out[15] = 20;
    if (out[19] > 30) out[19] = 30;
    // The little-finger spread is stretched near closed and given a head start once open.
    if (out[19] < 7) {
        out[19] = out[19] * 1.5;
    } else {
        out[19] = out[19] + 3.5;
        if (out[19] > 30) out[19] = 30;
    }
    close_spread(out[7], out[5], 0.15);
    close_spread(out[15], out[13], 0.15);
    close_spread(out[19], out[17], 0.25);
    // The middle finger has no spread sensor: it sits between the index and ring spreads.
    out[11] = out[7] * 0.24 - 0.32 * out[15];

    for (int i : {0, 1}) out[i] = at_least(kThumbBase(out[i]), -90);
    for (int i : {2, 20}) out[i] = at_least(kThumbTip(out[i]), -90);
    out[5] = at_least(kIndexDistal(out[5]), -100);
    out[6] = at_least(kProximal(out[6]), -100);
    out[9] = at_least(kDistal(out[9]), -100);
    out[10] = at_least(kProximal(out[10]), -100);
    out[13] = at_least(kDistal(out[13]), -100);
    out[14] = at_least(kProximal(out[14]), -100);
    // The little finger's spread lifts its two joints open.
    out[17] = out[17] + out[19];
    out[18] = out[18] + out[19];
    if (out[17] > 0) out[17] = 0;
    if (out[18] > 0) out[18] = 0;
    out[17] = at_least(kDistal(out[17]), -100);
    out[18] = at_least(kProximal(out[18]), -100);
    close_spread(out[19], out[18], 0.8, -5);
    follow_distal(out, 0.8);

    // A deeply bent finger snaps fully closed; the little finger, shorter, snaps earlier. The
    // distal joints keep the values they followed above.
    struct Snap {
        int first, proximal;
        double below;
    };
    for (const Snap& s : {Snap{5, 6, -90}, Snap{9, 10, -90}, Snap{13, 14, -90}, Snap{17, 18, -80}})
        if (out[s.proximal] < s.below) {
            out[s.first] = -100;
            out[s.proximal] = -100;
        }

    // Contact poses only with the thumb tip well across the palm.
    if (out[2] < -25) apply_contact_poses(out);

    // A closing hand: the other fingers follow the index, and a full fist closes every joint.
    if (out[6] < -50 && out[10] < -50 && out[14] < -50 && out[18] < -50) {
        out[10] = out[6];
        out[14] = out[6];
        out[18] = out[6];
    }
    if (out[6] < -80 && out[10] < -80 && out[14] < -80 && out[18] < -70)
        for (int i : {5, 6, 9, 10, 13, 14, 17, 18}) out[i] = -100;

    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
