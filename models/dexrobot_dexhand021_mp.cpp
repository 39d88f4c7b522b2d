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

// Proximal joints (out[5], out[9], out[13], out[17]): doubled at first, flat through mid-bend,
// steep again towards the fist.
constexpr Curve3 kProximal{-15.0, -60.0, scale(2.0), affine(0.3, -25.5), affine(1.5, 46.5)};
// Middle joints of the middle and little fingers (out[10], out[18]).
constexpr Curve3 kMiddleJoint{-25.0, -60.0, scale(2.0), affine(0.4, -40.0), affine(1.0, -4.0)};
// The index middle joint (out[6]) has its own knees.
constexpr Curve3 kIndexMiddleJoint{-30.0, -70.0, scale(2.0), affine(0.3, -51.0), affine(1.0, -2.0)};
// The thumb swing (out[20]).
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
    {{lt(6, -45), gt(10, -45), gt(14, -45), gt(18, -45)}, 4,
     {{{0, -30}, {1, -30}, {2, -30}, {20, -45}, {5, -38}, {6, -64}}}, 6},
    // index and middle (the ring finger is not looked at)
    {{lt(6, -45), lt(10, -45), gt(18, -45)}, 3,
     {{{1, -30}, {2, -30}, {20, -55}, {5, -38}, {6, -64}, {9, -38}, {10, -64}}}, 7},
    // middle
    {{gt(6, -45), lt(10, -45), gt(14, -45), gt(18, -45)}, 4,
     {{{1, -29}, {2, -38}, {20, -65}, {9, -38}, {10, -68}}}, 5},
    // middle and ring
    {{gt(6, -50), lt(10, -50), lt(14, -50), gt(18, -50)}, 4,
     {{{1, -30}, {2, -40}, {20, -75}, {9, -38}, {10, -64}, {13, -38}, {14, -64}}}, 7},
    // ring
    {{gt(6, -50), gt(10, -50), lt(14, -50), gt(18, -50)}, 4,
     {{{1, -25}, {2, -42}, {20, -95}, {13, -40}, {14, -64}}}, 5},
    // ring with the little finger bent along, short of a full ring bend
    {{gt(6, -50), gt(10, -50), lt(14, -50), lt(18, -50), gt(14, -80)}, 5,
     {{{1, -25}, {2, -42}, {20, -95}, {13, -40}, {14, -64}}}, 5},
    // ring fully bent: ring and little finger close completely
    {{gt(6, -50), gt(10, -50), lt(14, -80)}, 3,
     {{{1, -23}, {2, -33}, {20, -95}, {13, -100}, {14, -100}, {17, -100}, {18, -100}}}, 7},
    // little
    {{gt(6, -50), gt(10, -50), gt(14, -50), lt(18, -50)}, 4,
     {{{1, -23}, {2, -33}, {20, -120}, {17, -38}, {18, -64}}}, 5},
};

// The thumb must have swung across the palm before any pinch pose is tried.
constexpr double kPinchSwing = -35.0;

void apply_pinch_poses(Targets& out) {
    if (!(out[20] < kPinchSwing)) return;
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

    if (out[0] < -78) out[0] = -78;
    out[20] = kThumbSwing(out[20]);
    if (out[20] < -120) out[20] = -120;
    if (out[7] > 25) out[7] = 25;
    if (out[15] > 15) out[15] = 15;
    if (out[19] > 35) out[19] = 35;
    // The ring spread may not exceed the little finger's.
    if (out[15] > out[19]) out[15] = out[19];
    // Spreading the little finger rotates the thumb base with it.
    if (out[19] > 5) {
        out[3] = out[3] + 1.3 * (out[19] - 5);
        if (out[3] > 35) out[3] = 35;
    }
    if (out[19] < 7) {
        out[19] = out[19] * 3;
    } else {
        out[19] = out[19] + 14;
        if (out[19] > 35) out[19] = 35;
    }
    close_spread(out[7], out[5], 0.15);
    close_spread(out[15], out[13], 0.15);
    close_spread(out[19], out[17], 0.25);
    spread_middle_from_neighbours(out, 0.24, 0.32);

    shape(out[5], kProximal);
    shape(out[6], kIndexMiddleJoint);
    shape(out[9], kProximal);
    shape(out[10], kMiddleJoint);
    shape(out[13], kProximal);
    // The ring middle joint picks its mid-bend piece by the middle finger's middle joint, not by
    // its own value: the hand was tuned with this cross-read and keeps it.
    if (out[14] > -25) {
        out[14] = 2.0 * out[14];
    } else if (out[10] > -60) {
        out[14] = 0.4 * out[14] - 40;
    } else {
        out[14] = out[14] - 4;
    }
    if (out[14] < kFullyClosed) out[14] = kFullyClosed;
    // While the little finger is not deeply bent its spread adds to its flexion.
    if (out[18] > -50) {
        out[17] = out[17] + out[19];
        out[18] = out[18] + out[19];
        if (out[17] > 0) out[17] = 0;
        if (out[18] > 0) out[18] = 0;
    }
    shape(out[17], kProximal);
    shape(out[18], kMiddleJoint);
    follow_distal(out, 0.8);
    for (int finger : {4, 8, 12, 16}) lock_full_bend(out, finger + 1, finger + 2, -80);

    apply_pinch_poses(out);

    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
