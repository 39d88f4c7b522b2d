// BrainCo Revo2: a linear pose with the thumb and finger coupling chain, the middle finger locked
// at -81 once it passes -74, the thumb swing eased over a fist, and a pinch assist that closes the
// thumb onto the index, middle or ring finger when they are already nearly touching.
//
// The firmware tests the reading bounds itself, so a NaN reading is not caught: it saturates
// every row sum to the integer floor and the rules then work on those values.
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "models/catalogue.h"
#include "models/shared/thumb_finger_chain.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
     -85.0,  -20.0,   20.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p0 */ \
     -75.0,  -30.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p1 */ \
       5.0,  -65.5,  -45.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  /* p2 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p3 */ \
       0.0,   -5.0,    0.0,  -85.0,    0.0,    0.0,   -5.0,    0.0,   -5.0,   -3.0,    0.0,   -3.0,  /* p4 */ \
       0.0,   -2.0,    0.0,  -85.0,    5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p5 */ \
       0.0,   -3.0,    0.0,    0.0,   35.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   -6.0,   -3.0,  /* p6 */ \
       0.0,    1.0,    0.0,    0.0,    0.0,    0.0,  -85.0,    0.0,   -5.0,   -5.0,    0.0,   -5.0,  /* p7 */ \
       0.0,    1.0,    0.0,    0.0,    0.0,    0.0,  -85.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p8 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p9 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -140.0,    0.0,    0.0,  /* p10 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -90.0,    0.0,    0.0,  /* p11 */ \
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   40.0,    0.0,    0.0,  -20.0,    0.0,  /* p12 */ \
       0.0,  -12.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -20.0,   30.0, -160.0,  /* p13 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0, -110.0,  /* p14 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   35.0,    0.0,  /* p15 */ \
       5.0,  -45.0,  -50.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, 0.0, 30.0, 0.0, 1.0, 2.0, 0.0, 1.0, 2.0, 0.0, 0.0, 2.0, 0.0, 0.0, 2.0, 0.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(BrainCo_Revo2, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0

// The thumb abduction from the rotation and the tip: the rotation leaves the hand mirrored, so its
// factor -0.5 appears here as 0.5.
constexpr quil::SlotRelation kAbductionFromRotation = [] {
    quil::SlotRelation r;
    r.slot = quil::slot::thumb_abduction;
    r.source[0] = quil::slot::thumb_rotation;
    r.scale[0] = 0.5;
    r.source[1] = quil::slot::thumb_distal;
    r.scale[1] = -0.15;
    r.lower = 0.0;
    r.upper = 30.0;
    r.negated = true;
    return r;
}();
// The finger tips keep the unshaped row, so they are joints of their own; the thumb abduction
// is rebuilt from the rotation and the thumb tip, limited to [0, 30] and mirrored.
const quil::SlotDeclaration quil::hands::BrainCo_Revo2_slots = quil::kNoFollowers
    .plus(kAbductionFromRotation);

namespace {

using namespace quil;

}  // namespace

quil::Targets quil::hands::BrainCo_Revo2(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    constexpr ThresholdPair thumb_active_threshold{-25.0f, -70.0f};
    constexpr ThresholdPair index_active_threshold{-40.0f, -70.0f};

    Targets out;
    run_linear_stage<kStandardRows>(in, Clamp::passes_nan, tables, out);

    couple_thumb(out, ThumbSwingGains{double(0.3f), double(0.35f)});
    couple_fingers(out);
    // The rotation target stays within the joint's travel.
    if (out[slot::thumb_abduction] < 0) out[slot::thumb_abduction] = 0;
    if (out[slot::thumb_abduction] > 30) out[slot::thumb_abduction] = 30;
    deepen_fist(out);
    // A middle finger bent past -74 goes to its closed position, -81.
    lock_full_bend(out, slot::middle_distal, slot::middle_proximal, -74, -81);
    ease_thumb_swing(out, double(index_active_threshold.at_or_above), 0.05);
    // The first copies keep the row value, only never extending past straight.
    for (int i : {slot::index_tip, slot::middle_tip, slot::ring_tip, slot::little_tip})
        if (out[i] > 0) out[i] = 0;
    // A little finger bent past -80 closes fully.
    lock_full_bend(out, slot::little_distal, slot::little_proximal, -80);

    // Pinch assist. The index pinch and the middle pinch may both act; the middle one comes
    // second, so its thumb targets win. The ring pinch acts only without the middle one.
    if (thumb_active(out, thumb_active_threshold)) {
        if ((index_in_band(out, index_active_threshold) ||
             index_reaches(out, thumb_active_threshold, index_active_threshold)) &&
            out[slot::thumb_rotation] >= -25.0) {
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal], -32, 0.4f);
            out[slot::thumb_rotation] = 8;
            out[slot::thumb_abduction] = 21;
            out[slot::index_proximal] = pinch_toward(out[slot::index_proximal], -38, 0.15f);
        }
        if (out[slot::middle_proximal] < -38.7 && out[slot::little_proximal] > -40) {
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal], -27, 0.2f);
            out[slot::thumb_rotation] = 20;
            out[slot::thumb_abduction] = 28;
            out[slot::middle_proximal] = pinch_toward(out[slot::middle_proximal], -43, 0.2f);
        } else if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
                   out[slot::ring_proximal] < -30 && out[slot::little_proximal] > -40) {
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -28, 0.2f);
            out[slot::thumb_rotation] = 32;
            out[slot::thumb_abduction] = 30;
            out[slot::ring_proximal] = pinch_toward(out[slot::ring_proximal] * double(1.2f), -45, 0.2f);
        }
    }

    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

