// LINKERBOT LinkerHand L10: the thumb and finger coupling chain with this hand's own coefficients,
// a gain on the middle knuckle and the thumb swing, the distal slots following at 0.8, a
// full-bend lock on every finger, and a pinch assist that closes the thumb onto any one of the
// four fingers. Every pinch straightens the thumb's first joint (thumb_proximal = 0): on this hand the
// pads meet with that joint open.
//
// The firmware tests the reading bounds itself, so a NaN reading is not caught: it saturates
// every row sum to the integer floor and the rules then work on those values.
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "models/catalogue.h"
#include "models/shared/thumb_finger_chain.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
     -85.0,  -20.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p0 */ \
     -75.0,  -30.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p1 */ \
       5.0,  -45.5,  -45.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  /* p2 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p3 */ \
       0.0,   -5.0,    0.0,  -85.0,    0.0,    0.0,   -5.0,    0.0,   -5.0,   -3.0,    0.0,   -3.0,  /* p4 */ \
       0.0,   -2.0,   -2.0,  -80.0,    5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p5 */ \
       0.0,   -3.0,    0.0,    0.0,   35.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   -6.0,   -3.0,  /* p6 */ \
       0.0,    1.0,    0.0,    0.0,    0.0,    0.0,  -85.0,    0.0,   -5.0,   -5.0,    0.0,   -5.0,  /* p7 */ \
       0.0,    1.0,    0.0,    0.0,    5.0,    0.0,  -85.0,    0.0,   -2.0,   -2.0,    0.0,   -2.0,  /* p8 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p9 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -140.0,    0.0,    0.0,  /* p10 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -90.0,    5.0,    0.0,  /* p11 */ \
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   40.0,    0.0,    0.0,  -20.0,    0.0,  /* p12 */ \
       0.0,  -12.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -20.0,   30.0, -160.0,  /* p13 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,   15.0, -100.0,  /* p14 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   35.0,    0.0,  /* p15 */ \
       5.0,  -45.0,  -50.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, 0.0, 30.0, 0.0, 1.0, 2.0, 0.0, 1.0, 2.0, 0.0, 0.0, 2.0, 0.0, 0.0, 2.0, 0.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(LINKERBOT_LinkerHand_L10, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0

// Finger tips at 0.8 of their distal joints.
const quil::SlotDeclaration quil::hands::LINKERBOT_LinkerHand_L10_slots = quil::kTipsAtEightTenths;

namespace {
using namespace quil;
}  // namespace

quil::Targets quil::hands::LINKERBOT_LinkerHand_L10(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    constexpr ThresholdPair thumb_active_threshold{-40.0f, -70.0f};
    constexpr ThresholdPair index_active_threshold{-40.0f, -75.0f};

    // The rules below address every slot up to 22: a short emission sends all zeros.
    Targets out;
    const int k = run_linear_stage<kStandardRows>(in, Clamp::passes_nan, tables, out);
    if (zero_short_emission(k, out)) return out;

    couple_thumb(out, ThumbSwingGains{0.3, 0.35});
    couple_fingers(out);
    // The rotation target stays within the joint's travel.
    if (out[slot::thumb_abduction] < 0) out[slot::thumb_abduction] = 0;
    if (out[slot::thumb_abduction] > 30) out[slot::thumb_abduction] = 30;
    deepen_fist(out);
    ease_thumb_swing(out, double(index_active_threshold.at_or_above), 0.075);
    // A gain on the middle knuckle, with the thumb swing taken back to 0.7. The bounds lie above
    // every knuckle's travel, so the gain applies on every sample.
    if (out[slot::index_proximal] <= 75 && out[slot::middle_proximal] <= 65 && out[slot::ring_proximal] <= 75 &&
        out[slot::little_proximal] <= 85) {
        out[slot::middle_proximal] = out[slot::middle_proximal] * double(1.15f);
        out[slot::thumb_rotation] = out[slot::thumb_rotation] * double(0.7f);
    }
    follow_distal(out, 0.8);
    // The middle finger locks earlier and shallower than the others.
    lock_full_bend(out, slot::index_distal, slot::index_proximal, -90);
    lock_full_bend(out, slot::middle_distal, slot::middle_proximal, -74, -81);
    lock_full_bend(out, slot::ring_distal, slot::ring_proximal, -90);
    lock_full_bend(out, slot::little_distal, slot::little_proximal, -80);

    // Pinch assist. The index pinch and one of the middle or ring pinches may act together, and
    // the little-finger pinch after them; the last to act sets the thumb targets.
    if (thumb_active(out, thumb_active_threshold)) {
        if ((index_in_band(out, index_active_threshold) ||
             index_reaches(out, thumb_active_threshold, index_active_threshold)) &&
            out[slot::thumb_rotation] >= -25) {
            out[slot::thumb_proximal] = 0;
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -27, 0.5f);
            out[slot::thumb_rotation] = 27;
            out[slot::thumb_abduction] = 13;
            out[slot::index_proximal] = pinch_toward(out[slot::index_proximal], -44, 0.15f);
        }
        if (out[slot::middle_proximal] < -39.6 && out[slot::little_proximal] > -40) {
            out[slot::thumb_proximal] = 0;
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -40, 0.4f);
            out[slot::thumb_rotation] = 27;
            out[slot::thumb_abduction] = 18;
            out[slot::middle_proximal] = pinch_toward(out[slot::middle_proximal], -44, 0.2f);
        } else if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
                   out[slot::ring_proximal] < -30 && out[slot::little_proximal] > -40) {
            out[slot::thumb_proximal] = 0;
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -40, 0.2f);
            out[slot::thumb_rotation] = 34;
            out[slot::thumb_abduction] = 21;
            out[slot::ring_proximal] = pinch_toward(out[slot::ring_proximal] * double(1.2f), -44, 0.2f);
        }
        if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 && out[slot::ring_proximal] > -30 &&
            out[slot::little_proximal] < -35) {
            out[slot::thumb_proximal] = 0;
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.2f), -38, 0.2f);
            out[slot::thumb_rotation] = 42;
            out[slot::thumb_abduction] = 22;
            out[slot::little_proximal] = pinch_toward(out[slot::little_proximal] * 1.5, -55, 0.2f);
        }
    }

    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

