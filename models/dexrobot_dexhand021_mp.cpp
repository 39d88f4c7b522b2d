// DexRobot DexHand021 MP: a four-finger hand with a two-motor proximal joint per finger. Each
// finger joint follows a three-piece gain curve (the first part of a bend is doubled so a light
// grip already moves the finger), and when the thumb swings across the palm the hand snaps to one
// of eight fixed pinch poses chosen from which fingers are bent.
#include <array>

#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
     -85.0,  -20.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   -5.0,    0.0,   -5.0,  /* p0 */ \
     -85.0,  -20.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   -5.0,    0.0,   -5.0,  /* p1 */ \
      10.0,  -40.0,  -50.0,    5.0,    0.0,    0.0,    8.0,    0.0,    0.0,    2.0,    0.0,    2.0,  /* p2 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p3 */ \
       0.0,   -5.0,    0.0,  -85.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p4 */ \
       0.0,    0.0,    0.0,  -90.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p5 */ \
       0.0,   -3.0,    0.0,    0.0,   35.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   -6.0,   -3.0,  /* p6 */ \
       0.0,    1.0,    0.0,    0.0,    0.0,    0.0,  -85.0,    0.0,   -5.0,   -5.0,    0.0,   -5.0,  /* p7 */ \
       0.0,    1.0,    0.0,    0.0,    5.0,    0.0,  -85.0,    0.0,   -5.0,   -2.0,    0.0,   -2.0,  /* p8 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p9 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -140.0,    0.0,    0.0,  /* p10 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -100.0,    0.0,    0.0,  /* p11 */ \
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   40.0,    0.0,    0.0,    0.0,    0.0,  /* p12 */ \
       0.0,   -2.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -160.0,  /* p13 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -110.0,  /* p14 */ \
       0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   10.0,    0.0,    0.0,   35.0,    0.0,  /* p15 */ \
       2.5,  -52.5,  -50.0,   -3.0,    0.0,    0.0,    3.0,    0.0,    0.0,    8.0,    0.0,    8.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, -10.0, 30.0, 0.0, 2.0, 1.0, 0.0, 1.0, 1.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, -10.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(DexRobot_DexHand021_MP, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::DexRobot_DexHand021_MP_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

// Proximal joints (index_distal, middle_distal, ring_distal,
// little_distal): doubled at first, flat through mid-bend, steep again towards the fist.
constexpr Curve3 kProximal{-15.0, -60.0, scale(2.0), affine(0.3, -25.5), affine(1.5, 46.5)};
// Middle joints of the middle and little fingers (middle_proximal, little_proximal).
constexpr Curve3 kMiddleJoint{-25.0, -60.0, scale(2.0), affine(0.4, -40.0), affine(1.0, -4.0)};
// The index middle joint (index_proximal) has its own knees.
constexpr Curve3 kIndexMiddleJoint{-30.0, -70.0, scale(2.0), affine(0.3, -51.0), affine(1.0, -2.0)};
// The thumb swing (thumb_rotation).
constexpr Curve3 kThumbSwing{-20.0, -40.0, scale(2.0), affine(1.0, -20.0), scale(1.5)};

void shape(double& v, const Curve3& curve) {
    v = curve(v);
    if (v < kFullyClosed) v = kFullyClosed;
}

// A pinch pose: when every condition on the finger middle joints holds, the thumb and the
// pinching finger go to fixed targets.
struct Condition {
    int slot;
    bool below;    // out[slot] < bound, else out[slot] > bound
    double bound;
    bool holds(const Targets& out) const { return below ? out[slot] < bound : out[slot] > bound; }
};
struct Target {
    int slot;
    double value;
};
struct PinchPose {
    std::array<Condition, 5> conditions;
    int condition_count;
    std::array<Target, 7> targets;
    int target_count;
};

constexpr Condition lt(int slot, double bound) { return {slot, true, bound}; }
constexpr Condition gt(int slot, double bound) { return {slot, false, bound}; }

// Tried in order; a later pose that holds overwrites an earlier one. Each pose's targets fail
// every later test, so at most one takes effect.
constexpr PinchPose kPinchPoses[] = {
    // index
    {{lt(slot::index_proximal, -45), gt(slot::middle_proximal, -45), gt(slot::ring_proximal, -45),
      gt(slot::little_proximal, -45)},
     4,
     {{{slot::thumb_base, -30},
       {slot::thumb_proximal, -30},
       {slot::thumb_distal, -30},
       {slot::thumb_rotation, -45},
       {slot::index_distal, -38},
       {slot::index_proximal, -64}}},
     6},
    // index and middle (the ring finger is not looked at)
    {{lt(slot::index_proximal, -45), lt(slot::middle_proximal, -45), gt(slot::little_proximal, -45)},
     3,
     {{{slot::thumb_proximal, -30},
       {slot::thumb_distal, -30},
       {slot::thumb_rotation, -55},
       {slot::index_distal, -38},
       {slot::index_proximal, -64},
       {slot::middle_distal, -38},
       {slot::middle_proximal, -64}}},
     7},
    // middle
    {{gt(slot::index_proximal, -45), lt(slot::middle_proximal, -45), gt(slot::ring_proximal, -45),
      gt(slot::little_proximal, -45)},
     4,
     {{{slot::thumb_proximal, -29},
       {slot::thumb_distal, -38},
       {slot::thumb_rotation, -65},
       {slot::middle_distal, -38},
       {slot::middle_proximal, -68}}},
     5},
    // middle and ring
    {{gt(slot::index_proximal, -50), lt(slot::middle_proximal, -50), lt(slot::ring_proximal, -50),
      gt(slot::little_proximal, -50)},
     4,
     {{{slot::thumb_proximal, -30},
       {slot::thumb_distal, -40},
       {slot::thumb_rotation, -75},
       {slot::middle_distal, -38},
       {slot::middle_proximal, -64},
       {slot::ring_distal, -38},
       {slot::ring_proximal, -64}}},
     7},
    // ring
    {{gt(slot::index_proximal, -50), gt(slot::middle_proximal, -50), lt(slot::ring_proximal, -50),
      gt(slot::little_proximal, -50)},
     4,
     {{{slot::thumb_proximal, -25},
       {slot::thumb_distal, -42},
       {slot::thumb_rotation, -95},
       {slot::ring_distal, -40},
       {slot::ring_proximal, -64}}},
     5},
    // ring with the little finger bent along, short of a full ring bend
    {{gt(slot::index_proximal, -50), gt(slot::middle_proximal, -50), lt(slot::ring_proximal, -50),
      lt(slot::little_proximal, -50), gt(slot::ring_proximal, -80)},
     5,
     {{{slot::thumb_proximal, -25},
       {slot::thumb_distal, -42},
       {slot::thumb_rotation, -95},
       {slot::ring_distal, -40},
       {slot::ring_proximal, -64}}},
     5},
    // ring fully bent: ring and little finger close completely
    {{gt(slot::index_proximal, -50), gt(slot::middle_proximal, -50), lt(slot::ring_proximal, -80)},
     3,
     {{{slot::thumb_proximal, -23},
       {slot::thumb_distal, -33},
       {slot::thumb_rotation, -95},
       {slot::ring_distal, -100},
       {slot::ring_proximal, -100},
       {slot::little_distal, -100},
       {slot::little_proximal, -100}}},
     7},
    // little
    {{gt(slot::index_proximal, -50), gt(slot::middle_proximal, -50), gt(slot::ring_proximal, -50),
      lt(slot::little_proximal, -50)},
     4,
     {{{slot::thumb_proximal, -23},
       {slot::thumb_distal, -33},
       {slot::thumb_rotation, -120},
       {slot::little_distal, -38},
       {slot::little_proximal, -64}}},
     5},
};

// The thumb must have swung across the palm before any pinch pose is tried.
constexpr double kPinchSwing = -35.0;

void apply_pinch_poses(Targets& out) {
    if (!(out[slot::thumb_rotation] < kPinchSwing)) return;
    for (const PinchPose& pose : kPinchPoses) {
        bool all = true;
        for (int n = 0; n < pose.condition_count && all; ++n) all = pose.conditions[n].holds(out);
        if (!all) continue;
        for (int n = 0; n < pose.target_count; ++n) out[pose.targets[n].slot] = pose.targets[n].value;
    }
}

}  // namespace

quil::Targets quil::hands::DexRobot_DexHand021_MP(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);

    if (out[slot::thumb_base] < -78) out[slot::thumb_base] = -78;
    out[slot::thumb_rotation] = kThumbSwing(out[slot::thumb_rotation]);
    if (out[slot::thumb_rotation] < -120) out[slot::thumb_rotation] = -120;
    if (out[slot::index_spread] > 25) out[slot::index_spread] = 25;
    if (out[slot::ring_spread] > 15) out[slot::ring_spread] = 15;
    if (out[slot::little_spread] > 35) out[slot::little_spread] = 35;
    // The ring spread may not exceed the little finger's.
    if (out[slot::ring_spread] > out[slot::little_spread]) out[slot::ring_spread] = out[slot::little_spread];
    // Spreading the little finger rotates the thumb base with it.
    if (out[slot::little_spread] > 5) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] + 1.3 * (out[slot::little_spread] - 5);
        if (out[slot::thumb_abduction] > 35) out[slot::thumb_abduction] = 35;
    }
    reshape_little_spread(out[slot::little_spread], LittleSpreadGain{3, 14, 35});
    close_spread(out[slot::index_spread], out[slot::index_distal], 0.15);
    close_spread(out[slot::ring_spread], out[slot::ring_distal], 0.15);
    close_spread(out[slot::little_spread], out[slot::little_distal], 0.25);
    spread_middle_from_neighbours(out, 0.24, 0.32);

    shape(out[slot::index_distal], kProximal);
    shape(out[slot::index_proximal], kIndexMiddleJoint);
    shape(out[slot::middle_distal], kProximal);
    shape(out[slot::middle_proximal], kMiddleJoint);
    shape(out[slot::ring_distal], kProximal);
    // The ring middle joint picks its mid-bend piece by the middle finger's middle joint, not by
    // its own value: the hand was tuned with this cross-read and keeps it.
    if (out[slot::ring_proximal] > -25) {
        out[slot::ring_proximal] = 2.0 * out[slot::ring_proximal];
    } else if (out[slot::middle_proximal] > -60) {
        out[slot::ring_proximal] = 0.4 * out[slot::ring_proximal] - 40;
    } else {
        out[slot::ring_proximal] = out[slot::ring_proximal] - 4;
    }
    if (out[slot::ring_proximal] < kFullyClosed) out[slot::ring_proximal] = kFullyClosed;
    // While the little finger is not deeply bent its spread adds to its flexion.
    if (out[slot::little_proximal] > -50) {
        out[slot::little_distal] = out[slot::little_distal] + out[slot::little_spread];
        out[slot::little_proximal] = out[slot::little_proximal] + out[slot::little_spread];
        if (out[slot::little_distal] > 0) out[slot::little_distal] = 0;
        if (out[slot::little_proximal] > 0) out[slot::little_proximal] = 0;
    }
    shape(out[slot::little_distal], kProximal);
    shape(out[slot::little_proximal], kMiddleJoint);
    follow_distal(out, 0.8);
    lock_full_bends(out, -80, -80);

    apply_pinch_poses(out);

    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

