// LINKERBOT LinkerHand L10: the thumb and finger coupling chain with this hand's own coefficients,
// a gain on the middle knuckle and the thumb swing, the distal slots following at 0.8, a
// full-bend lock on every finger, and a pinch assist that closes the thumb onto any one of the
// four fingers. Every pinch straightens the thumb's first joint (out[1] = 0): on this hand the
// pads meet with that joint open.
//
// The firmware tests the reading bounds itself, so a NaN reading is not caught: it saturates
// every row sum to the integer floor and the rules then work on those values.
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "core/thumb_finger_chain.h"
#include "models/catalogue.h"

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

// Every row written, the four doubly driven ones twice: out[0..22].
constexpr int kFullEmission = 23;

}  // namespace

quil::Targets quil::hands::LINKERBOT_LinkerHand_L10(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    constexpr ThresholdPair thumb_active_threshold{-40.0f, -70.0f};
    constexpr ThresholdPair index_active_threshold{-40.0f, -75.0f};

    // The hand is driven from a working copy that becomes the whole result, or all zeros if
    // the rows did not fill the targets (the rules below address every slot up to 22).
    Targets out;
    const int k = run_linear_stage<kStandardRows>(in, Clamp::passes_nan, tables, out);
    if (k < kFullEmission) {
        Targets zeros;
        zeros.fill(0.0);
        return zeros;
    }

    couple_thumb(out, ThumbSwingGains{0.3, 0.35});
    couple_fingers(out);
    // The rotation target stays within the joint's travel.
    if (out[3] < 0) out[3] = 0;
    if (out[3] > 30) out[3] = 30;
    deepen_fist(out);
    ease_thumb_swing(out, double(index_active_threshold.at_or_above), 0.075);
    // A gain on the middle knuckle, with the thumb swing taken back to 0.7. The bounds lie above
    // every knuckle's travel, so the gain applies on every sample.
    if (out[6] <= 75 && out[10] <= 65 && out[14] <= 75 && out[18] <= 85) {
        out[10] = out[10] * double(1.15f);
        out[20] = out[20] * double(0.7f);
    }
    follow_distal(out, 0.8);
    // The middle finger locks earlier and shallower than the others.
    lock_full_bend(out, 5, 6, -90);
    lock_full_bend(out, 9, 10, -74, -81);
    lock_full_bend(out, 13, 14, -90);
    lock_full_bend(out, 17, 18, -80);

    // Pinch assist. The index pinch and one of the middle or ring pinches may act together, and
    // the little-finger pinch after them; the last to act sets the thumb targets.
    if (thumb_active(out, thumb_active_threshold)) {
        if ((index_in_band(out, index_active_threshold) ||
             index_reaches(out, thumb_active_threshold, index_active_threshold)) &&
            out[20] >= -25) {
            out[1] = 0;
            out[2] = pinch_toward(out[2] * double(1.1f), -27, 0.5f);
            out[20] = 27;
            out[3] = 13;
            out[6] = pinch_toward(out[6], -44, 0.15f);
        }
        if (out[10] < -39.6 && out[18] > -40) {
            out[1] = 0;
            out[2] = pinch_toward(out[2] * double(1.1f), -40, 0.4f);
            out[20] = 27;
            out[3] = 18;
            out[10] = pinch_toward(out[10], -44, 0.2f);
        } else if (out[6] > -40 && out[10] > -40 && out[14] < -30 && out[18] > -40) {
            out[1] = 0;
            out[2] = pinch_toward(out[2] * double(1.1f), -40, 0.2f);
            out[20] = 34;
            out[3] = 21;
            out[14] = pinch_toward(out[14] * double(1.2f), -44, 0.2f);
        }
        if (out[6] > -40 && out[10] > -40 && out[14] > -30 && out[18] < -35) {
            out[1] = 0;
            out[2] = pinch_toward(out[2] * double(1.2f), -38, 0.2f);
            out[20] = 42;
            out[3] = 22;
            out[18] = pinch_toward(out[18] * 1.5, -55, 0.2f);
        }
    }

    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
