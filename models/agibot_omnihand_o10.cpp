// AgiBot OmniHand O10: its own coefficients, banded gains with finger-to-finger couplings, and
// pinch assists for the thumb against each finger. The index and middle pinches remember that
// they closed: once a pinch has reached its target, later samples pull harder toward it, and
// the pinch is released only when the pose opens clearly, so a held pinch does not flicker
// with glove noise.
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "models/catalogue.h"
#include "models/shared/blended_thumb_chain.h"

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
       5.0,  -40.0,  -30.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, 0.0, 30.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 0.0, 1.0, 1.0, 0.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(AgiBot_OmniHand_O10, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0

// Finger tips at 0.8 of their distal joints; the thumb tip follows the thumb's proximal joint at 0.9.
const quil::SlotDeclaration quil::hands::AgiBot_OmniHand_O10_slots = quil::kTipsAtEightTenths
    .plus(quil::kThumbTipFollowsProximal);

namespace {

using namespace quil;

constexpr ThresholdPair kIndexActive{-40.0f, -75.0f};
constexpr ThresholdPair kThumbActive{-40.0f, -70.0f};

// A held pinch is let go only when the finger (first bound) or the thumb tip (second bound) opens
// past these.
constexpr double kIndexRelease[2] = {-28.69999885559082, -35.70000076293945};
constexpr double kMiddleRelease[2] = {-30.799999237060547, -37.099998474121094};

void floor_at(Targets& out, int slot, double limit) {
    if (out[slot] < limit) out[slot] = limit;
}

// The RY_H15 joint chain with the base amplified, the tip following the base alone (the tip's
// own weight is 0), and the thumb spread and fist gains as single-precision constants.
constexpr blended_thumb_chain::ChainVariant kChain{
    blended_thumb_chain::ThumbBaseBands::amplified,
    blended_thumb_chain::ThumbTipBlend{0.0, 1.0, double(0.9f)},
    blended_thumb_chain::ThumbSpreadGains{double(0.3f), double(0.35f)},
    0.95,   // little finger gain
    -84.0,  // and floor
};

// The positive bounds let the fist boost act on nearly every pose, as the hand was tuned.
constexpr blended_thumb_chain::FistBounds kAlwaysBoost{75.0, 65.0, 75.0, 85.0};
constexpr blended_thumb_chain::FistGains kFistGains{double(1.15f), double(0.7f)};

// The RY_H15 joint chain with four changes of this hand's own: the rotation also leans on thumb
// slots 1 and 2, it is not recomputed from the thumb spread, the index's proximal joint stops at
// -100, and the middle finger locks at -90 like the index and ring.
void joint_chain(Targets& out) {
    blended_thumb_chain::rotation_from_tip(out);
    // The rotation also leans on the thumb's proximal joint and tip directly.
    out[slot::thumb_abduction] = out[slot::thumb_abduction] * 0.3 - double(0.2f) * out[slot::thumb_distal] -
                                 double(0.3f) * out[slot::thumb_proximal];
    if (out[slot::thumb_abduction] < 0) out[slot::thumb_abduction] = 0;
    if (out[slot::thumb_abduction] > 30) out[slot::thumb_abduction] = 30;
    // Thumb roll, base and tip bands; the thumb spread stops at -45 and then holds base and roll
    // back, since a fully rotated thumb would otherwise collide with the palm.
    blended_thumb_chain::thumb_joints(out, kChain);
    blended_thumb_chain::fingers(out, kChain);
    // The index's proximal joint also stops at -100 (nothing in the fingers' step reads it
    // after its gain).
    floor_at(out, slot::index_proximal, -100);
    // A deeply bent middle finger drags the ring and little fingers, and the index, along; with
    // the index not past its pinch window, each fully bent neighbour eases the thumb spread.
    blended_thumb_chain::neighbour_drag(out);
    blended_thumb_chain::fist_boost(out, kAlwaysBoost, kFistGains);
    follow_distal(out, 0.8);
    lock_full_bends(out, -90, -80);
}

// Index pinch: the index in its window, or thumb and index together far enough in.
void index_pinch(Targets& out, bool& held) {
    const bool in_window = index_in_band(out, kIndexActive);
    const bool reaching = index_reaches(out, kThumbActive, kIndexActive);
    if (!(out[slot::thumb_rotation] >= -20 && (in_window || reaching))) return;
    if (held) {
        out[slot::index_proximal] = pinch_toward(out[slot::index_proximal], -41, 0.5f, 10.0f);
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.2f), -51, 0.8f, 25.0f);
        held = out[slot::index_proximal] <= kIndexRelease[0] && out[slot::thumb_distal] <= kIndexRelease[1];
    } else {
        out[slot::index_proximal] = pinch_toward(out[slot::index_proximal], -41, 0.15f, 0.0f);
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * 1.25, -51, 0.7f, 0.0f);
    }
    out[slot::thumb_proximal] = 0;
    out[slot::thumb_rotation] = 15;
    out[slot::thumb_abduction] = 16;
    if (out[slot::index_proximal] <= -41 && out[slot::thumb_distal] <= -51) held = true;
}

// Middle pinch: the middle finger bent with the little finger still open. Returns whether it
// acted; the ring pinch is only tried when it did not.
bool middle_pinch(Targets& out, bool& held) {
    if (!(out[slot::middle_proximal] < -40 && out[slot::little_proximal] > -40)) return false;
    if (held) {
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal], -53, 0.5f, 10.0f);
        out[slot::middle_proximal] = pinch_toward(out[slot::middle_proximal], -44, 0.8f, 15.0f);
        held = out[slot::middle_proximal] <= kMiddleRelease[0] && out[slot::thumb_distal] <= kMiddleRelease[1];
    } else {
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -53, 0.4f, 0.0f);
        out[slot::middle_proximal] = pinch_toward(out[slot::middle_proximal], -44, 0.4f, 0.0f);
    }
    out[slot::thumb_proximal] = 0;
    out[slot::thumb_rotation] = 21;
    out[slot::thumb_abduction] = 19;
    if (out[slot::middle_proximal] <= -44 && out[slot::thumb_distal] <= -53) held = true;
    return true;
}

// The index and middle pinches run one after the other when both apply; the ring and little
// pinches are not latched.
void pinch_assist(Targets& out, bool* pinch_done) {
    if (!thumb_active(out, kThumbActive)) return;
    index_pinch(out, pinch_done[0]);
    const bool middle = middle_pinch(out, pinch_done[1]);
    if (!middle && out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
        out[slot::ring_proximal] < -30 && out[slot::little_proximal] > -40) {
        out[slot::thumb_proximal] = -36;
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -55, 0.2f, 0.0f);
        out[slot::thumb_rotation] = 26;
        out[slot::thumb_abduction] = 24;
        out[slot::ring_proximal] = pinch_toward(out[slot::ring_proximal] * double(1.2f), -50, 0.2f, 0.0f);
    }
    if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 && out[slot::ring_proximal] > -30 &&
        out[slot::little_proximal] < -35) {
        out[slot::thumb_proximal] = -36;
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.2f), -55, 0.2f, 0.0f);
        out[slot::thumb_rotation] = 34;
        out[slot::thumb_abduction] = 26;
        out[slot::little_proximal] = pinch_toward(out[slot::little_proximal] * 1.5, -66, 0.2f, 0.0f);
    }
}

}  // namespace

quil::Targets quil::hands::AgiBot_OmniHand_O10(const Readings& in, const MemoryRef& memory, const Coefficients& tables) {
    Targets out{};
    const int k = run_linear_stage<kStandardRows>(in, Clamp::passes_nan, tables, out);
    if (zero_short_emission(k, out)) return out;
    joint_chain(out);
    pinch_assist(out, memory.pinch_latches);
    // A little finger that bends with the middle and ring fingers closes further.
    if (out[slot::middle_proximal] <= -60 && out[slot::ring_proximal] <= -60 && out[slot::little_proximal] <= -15) {
        out[slot::little_proximal] = 3 * out[slot::little_proximal];
        floor_at(out, slot::little_proximal, -100);
    }
    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
