// LINKERBOT LinkerHand L20: a twenty-joint hand whose joints do not follow the glove linearly.
// Every thumb and finger value is reshaped by a three-piece gain curve, and because its finger
// pads only meet the thumb in a few well-tuned postures, a bent finger with the thumb turned in
// snaps to one of eight recorded pinch poses. All four fingers bent deep move as one, and a
// full fist locks every finger joint closed.
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/linear_stage.h"
#include "core/spread_coupling.h"
#include "models/catalogue.h"
#include "models/shared/wide_linkage_curves.h"

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
    {{bent(slot::index_proximal), open(slot::middle_proximal), open(slot::ring_proximal),
      open(slot::little_proximal)},
     4,
     {{slot::thumb_base, -48},
      {slot::thumb_proximal, -42},
      {slot::thumb_distal, -27},
      {slot::thumb_rotation, -100},
      {slot::index_distal, -35},
      {slot::index_proximal, -52}},
     6},
    // index and middle (the ring finger does not matter)
    {{bent(slot::index_proximal), bent(slot::middle_proximal), open(slot::little_proximal)},
     3,
     {{slot::thumb_base, -48},
      {slot::thumb_proximal, -42},
      {slot::thumb_distal, -27},
      {slot::thumb_rotation, -100},
      {slot::index_distal, -35},
      {slot::index_proximal, -52},
      {slot::middle_distal, -35},
      {slot::middle_proximal, -52}},
     8},
    // middle alone
    {{open(slot::index_proximal), bent(slot::middle_proximal), open(slot::ring_proximal),
      open(slot::little_proximal)},
     4,
     {{slot::thumb_base, -48},
      {slot::thumb_proximal, -45},
      {slot::thumb_distal, -37},
      {slot::thumb_rotation, -100},
      {slot::middle_distal, -35},
      {slot::middle_proximal, -52}},
     6},
    // middle and ring
    {{open(slot::index_proximal), bent(slot::middle_proximal), bent(slot::ring_proximal),
      open(slot::little_proximal)},
     4,
     {{slot::thumb_base, -48},
      {slot::thumb_proximal, -42},
      {slot::thumb_distal, -37},
      {slot::thumb_rotation, -100},
      {slot::middle_distal, -35},
      {slot::middle_proximal, -52},
      {slot::ring_distal, -35},
      {slot::ring_proximal, -52}},
     8},
    // ring alone
    {{open(slot::index_proximal), open(slot::middle_proximal), bent(slot::ring_proximal),
      open(slot::little_proximal)},
     4,
     {{slot::thumb_base, -48},
      {slot::thumb_proximal, -42},
      {slot::thumb_distal, -47},
      {slot::thumb_rotation, -110},
      {slot::ring_distal, -35},
      {slot::ring_proximal, -52}},
     6},
    // ring and little, half bent
    {{open(slot::index_proximal), open(slot::middle_proximal), bent(slot::ring_proximal), bent(slot::little_proximal),
      open(slot::ring_proximal, -80), open(slot::little_proximal, -75)},
     6,
     {{slot::thumb_base, -45},
      {slot::thumb_proximal, -42},
      {slot::thumb_distal, -47},
      {slot::thumb_rotation, -120},
      {slot::ring_distal, -35},
      {slot::ring_proximal, -52},
      {slot::little_distal, -35},
      {slot::little_proximal, -52}},
     8},
    // ring and little, bent deep: they close fully
    {{open(slot::index_proximal), open(slot::middle_proximal), bent(slot::ring_proximal, -80),
      bent(slot::little_proximal, -75)},
     4,
     {{slot::thumb_base, -75},
      {slot::thumb_proximal, -55},
      {slot::thumb_distal, -47},
      {slot::thumb_rotation, -120},
      {slot::ring_distal, -100},
      {slot::ring_proximal, -100},
      {slot::little_distal, -100},
      {slot::little_proximal, -100}},
     8},
    // little alone
    {{open(slot::index_proximal), open(slot::middle_proximal), open(slot::ring_proximal),
      bent(slot::little_proximal)},
     4,
     {{slot::thumb_base, -45},
      {slot::thumb_proximal, -40},
      {slot::thumb_distal, -60},
      {slot::thumb_rotation, -120},
      {slot::little_distal, -35},
      {slot::little_proximal, -52}},
     6},
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
    reshape_little_spread(out[slot::little_spread], LittleSpreadGain{1.5, 3.5, 30});
    // Bending the index, ring and little fingers closes their spread.
    close_spread(out[slot::index_spread], out[slot::index_distal], 0.15);
    close_spread(out[slot::ring_spread], out[slot::ring_distal], 0.15);
    close_spread(out[slot::little_spread], out[slot::little_distal], 0.25);
    spread_middle_from_neighbours(out, 0.24, 0.32);

    for (int i : {slot::thumb_base, slot::thumb_proximal}) {
        out[i] = kThumbBase(out[i]);
        if (out[i] < -90) out[i] = -90;
    }
    out[slot::thumb_rotation] = kThumbRotation(out[slot::thumb_rotation]);
    if (out[slot::thumb_rotation] < -120) out[slot::thumb_rotation] = -120;

    bend_finger(out[slot::index_distal], kIndexMiddle);
    bend_finger(out[slot::index_proximal], kProximal);
    bend_finger(out[slot::middle_distal], kMiddle);
    bend_finger(out[slot::middle_proximal], kProximal);
    bend_finger(out[slot::ring_distal], kMiddle);
    bend_finger(out[slot::ring_proximal], kProximal);
    // A spread little finger cannot bend as far: its spread eases both joints before they are
    // reshaped, and a deep proximal bend then closes the spread again.
    out[slot::little_distal] = out[slot::little_distal] + out[slot::little_spread];
    out[slot::little_proximal] = out[slot::little_proximal] + out[slot::little_spread];
    if (out[slot::little_distal] > 0) out[slot::little_distal] = 0;
    if (out[slot::little_proximal] > 0) out[slot::little_proximal] = 0;
    bend_finger(out[slot::little_distal], kMiddle);
    bend_finger(out[slot::little_proximal], kProximal);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5);

    follow_distal(out, 0.8);

    // A finger bent nearly fully is driven fully closed; the little finger earlier.
    if (out[slot::index_proximal] < -90) out[slot::index_distal] = out[slot::index_proximal] = -100;
    if (out[slot::middle_proximal] < -90) out[slot::middle_distal] = out[slot::middle_proximal] = -100;
    if (out[slot::ring_proximal] < -90) out[slot::ring_distal] = out[slot::ring_proximal] = -100;
    if (out[slot::little_proximal] < -80) out[slot::little_distal] = out[slot::little_proximal] = -100;

    // Pinch poses need the thumb turned in toward the palm.
    if (out[slot::thumb_rotation] < -25) apply_pinch_poses(out);

    // All four fingers bent: they move as one, following the index.
    if (out[slot::index_proximal] < -50 && out[slot::middle_proximal] < -50 && out[slot::ring_proximal] < -50 &&
        out[slot::little_proximal] < -50)
        out[slot::middle_proximal] = out[slot::ring_proximal] = out[slot::little_proximal] =
            out[slot::index_proximal];
    // A fist: every finger joint closes fully (the little finger needs less bend).
    if (out[slot::index_proximal] < -80 && out[slot::middle_proximal] < -80 && out[slot::ring_proximal] < -80 &&
        out[slot::little_proximal] < -70)
        for (int i : {slot::index_proximal, slot::middle_proximal, slot::ring_proximal, slot::little_proximal,
                      slot::index_distal, slot::middle_distal, slot::ring_distal, slot::little_distal})
            out[i] = -100;

    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

