// LINKERBOT LinkerHand L20: a twenty-joint hand whose joints do not follow the glove linearly.
// Every thumb and finger value is reshaped by a three-piece gain curve, and because its finger
// pads only meet the thumb in a few well-tuned postures, a bent finger with the thumb turned in
// snaps to one of eight recorded pinch poses. All four fingers bent deep move as one, and a
// full fist locks every finger joint closed.
#include "core/finger_coupling.h"
#include "core/curves.h"
#include "core/linkage_curves.h"
#include "core/linear_stage.h"
#include "core/spread_coupling.h"
#include "models/catalogue.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
     -85.0,  -20.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p0 */ \
     -75.0,  -30.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p1 */ \
     -15.0,  -55.0,  -40.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  /* p2 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p3 */ \
       0.0,    0.0,    0.0,  -95.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p4 */ \
       0.0,    0.0,    0.0,  -90.0,    5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p5 */ \
       0.0,   -3.0,    0.0,    0.0,   35.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   -6.0,   -3.0,  /* p6 */ \
       0.0,    1.0,    0.0,    0.0,    0.0,    0.0,  -95.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p7 */ \
       0.0,    1.0,    0.0,    0.0,    5.0,    0.0,  -90.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p8 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p9 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -120.0,    0.0,    0.0,  /* p10 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -90.0,    5.0,    0.0,  /* p11 */ \
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   40.0,    0.0,    0.0,  -20.0,    0.0,  /* p12 */ \
       0.0,   -2.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -140.0,  /* p13 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -110.0,  /* p14 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   40.0,    0.0,  /* p15 */ \
       5.0,  -60.0,  -50.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, 0.0, 30.0, 0.0, 1.0, 2.0, 0.0, 1.0, 2.0, 0.0, 1.0, 2.0, 0.0, 1.0, 2.0, 0.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(LINKERBOT_LinkerHand_L20, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::LINKERBOT_LinkerHand_L20_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

// Finger joints: proximal (6, 10, 14, 18), middle (9, 13, 17) and the index's middle (5).
constexpr const Curve3& kProximal = linkage::kProximal;
constexpr const Curve3& kMiddle = linkage::kDistal;
constexpr const Curve3& kIndexMiddle = linkage::kIndexShared;
// Thumb: the two base joints (0, 1) and the rotation toward the palm (20).
constexpr const Curve3& kThumbBase = linkage::kThumbBase;
constexpr const Curve3& kThumbRotation = linkage::kThumbTip;

void bend_finger(double& v, const Curve3& curve) {
    v = curve(v);
    if (v < -100) v = -100;
}

// A pinch pose: which fingers must be bent (below -40) or open (above -40), tested in order,
// and the joint targets that make the pads meet.
struct Gate {
    int slot;
    bool below;
    double bound;
};
struct Target {
    int slot;
    double value;
};
struct PinchPose {
    Gate gates[6];
    int gate_count;
    Target targets[8];
    int target_count;
};

constexpr Gate bent(int slot, double bound = -40) { return Gate{slot, true, bound}; }
constexpr Gate open(int slot, double bound = -40) { return Gate{slot, false, bound}; }

bool holds(const Targets& out, const Gate& g) { return g.below ? out[g.slot] < g.bound : out[g.slot] > g.bound; }

// In precedence order: each pose leaves values that fail the gates of the later ones.
constexpr PinchPose kPinchPoses[] = {
    // index alone
    {{bent(6), open(10), open(14), open(18)}, 4,
     {{0, -48}, {1, -42}, {2, -27}, {20, -100}, {5, -35}, {6, -52}}, 6},
    // index and middle (the ring finger does not matter)
    {{bent(6), bent(10), open(18)}, 3,
     {{0, -48}, {1, -42}, {2, -27}, {20, -100}, {5, -35}, {6, -52}, {9, -35}, {10, -52}}, 8},
    // middle alone
    {{open(6), bent(10), open(14), open(18)}, 4,
     {{0, -48}, {1, -45}, {2, -37}, {20, -100}, {9, -35}, {10, -52}}, 6},
    // middle and ring
    {{open(6), bent(10), bent(14), open(18)}, 4,
     {{0, -48}, {1, -42}, {2, -37}, {20, -100}, {9, -35}, {10, -52}, {13, -35}, {14, -52}}, 8},
    // ring alone
    {{open(6), open(10), bent(14), open(18)}, 4,
     {{0, -48}, {1, -42}, {2, -47}, {20, -110}, {13, -35}, {14, -52}}, 6},
    // ring and little, half bent
    {{open(6), open(10), bent(14), bent(18), open(14, -80), open(18, -75)}, 6,
     {{0, -45}, {1, -42}, {2, -47}, {20, -120}, {13, -35}, {14, -52}, {17, -35}, {18, -52}}, 8},
    // ring and little, bent deep: they close fully
    {{open(6), open(10), bent(14, -80), bent(18, -75)}, 4,
     {{0, -75}, {1, -55}, {2, -47}, {20, -120}, {13, -100}, {14, -100}, {17, -100}, {18, -100}}, 8},
    // little alone
    {{open(6), open(10), open(14), bent(18)}, 4,
     {{0, -45}, {1, -40}, {2, -60}, {20, -120}, {17, -35}, {18, -52}}, 6},
};

bool matches(const Targets& out, const PinchPose& pose) {
    for (int n = 0; n < pose.gate_count; ++n)
        if (!holds(out, pose.gates[n])) return false;
    return true;
}

void apply_pinch_poses(Targets& out) {
    for (const PinchPose& pose : kPinchPoses)
        if (matches(out, pose))
            for (int n = 0; n < pose.target_count; ++n) out[pose.targets[n].slot] = pose.targets[n].value;
}

}  // namespace

quil::Targets quil::hands::LINKERBOT_LinkerHand_L20(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);

    cap_spreads(out, SpreadCaps{30, 15, 30});
    reshape_little_spread(out[19], LittleSpreadGain{1.5, 3.5, 30});
    // Bending the index, ring and little fingers closes their spread.
    close_spread(out[7], out[5], 0.15);
    close_spread(out[15], out[13], 0.15);
    close_spread(out[19], out[17], 0.25);
    spread_middle_from_neighbours(out, 0.24, 0.32);

    for (int i : {0, 1}) {
        out[i] = kThumbBase(out[i]);
        if (out[i] < -90) out[i] = -90;
    }
    out[20] = kThumbRotation(out[20]);
    if (out[20] < -120) out[20] = -120;

    bend_finger(out[5], kIndexMiddle);
    bend_finger(out[6], kProximal);
    bend_finger(out[9], kMiddle);
    bend_finger(out[10], kProximal);
    bend_finger(out[13], kMiddle);
    bend_finger(out[14], kProximal);
    // A spread little finger cannot bend as far: its spread eases both joints before they are
    // reshaped, and a deep proximal bend then closes the spread again.
    out[17] = out[17] + out[19];
    out[18] = out[18] + out[19];
    if (out[17] > 0) out[17] = 0;
    if (out[18] > 0) out[18] = 0;
    bend_finger(out[17], kMiddle);
    bend_finger(out[18], kProximal);
    close_spread(out[19], out[18], 0.8, -5);

    follow_distal(out, 0.8);

    // A finger bent nearly fully is driven fully closed; the little finger earlier.
    if (out[6] < -90) out[5] = out[6] = -100;
    if (out[10] < -90) out[9] = out[10] = -100;
    if (out[14] < -90) out[13] = out[14] = -100;
    if (out[18] < -80) out[17] = out[18] = -100;

    // Pinch poses need the thumb turned in toward the palm.
    if (out[20] < -25) apply_pinch_poses(out);

    // All four fingers bent: they move as one, following the index.
    if (out[6] < -50 && out[10] < -50 && out[14] < -50 && out[18] < -50) out[10] = out[14] = out[18] = out[6];
    // A fist: every finger joint closes fully (the little finger needs less bend).
    if (out[6] < -80 && out[10] < -80 && out[14] < -80 && out[18] < -70)
        for (int i : {6, 10, 14, 18, 5, 9, 13, 17}) out[i] = -100;

    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
