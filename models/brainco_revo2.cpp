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
#include "core/thumb_finger_chain.h"
#include "models/catalogue.h"

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
    r.slot = 3;
    r.source[0] = 20;
    r.scale[0] = 0.5;
    r.source[1] = 2;
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
    if (out[3] < 0) out[3] = 0;
    if (out[3] > 30) out[3] = 30;
    deepen_fist(out);
    // A middle finger bent past -74 goes to its closed position, -81.
    lock_full_bend(out, 9, 10, -74, -81);
    ease_thumb_swing(out, double(index_active_threshold.at_or_above), 0.05);
    // The first copies keep the row value, only never extending past straight.
    for (int i : {4, 8, 12, 16})
        if (out[i] > 0) out[i] = 0;
    // A little finger bent past -80 closes fully.
    lock_full_bend(out, 17, 18, -80);

    // Pinch assist. The index pinch and the middle pinch may both act; the middle one comes
    // second, so its thumb targets win. The ring pinch acts only without the middle one.
    if (thumb_active(out, thumb_active_threshold)) {
        if ((index_in_band(out, index_active_threshold) ||
             index_reaches(out, thumb_active_threshold, index_active_threshold)) &&
            out[20] >= -25.0) {
            out[2] = pinch_toward(out[2], -32, 0.4f);
            out[20] = 8;
            out[3] = 21;
            out[6] = pinch_toward(out[6], -38, 0.15f);
        }
        if (out[10] < -38.7 && out[18] > -40) {
            out[2] = pinch_toward(out[2], -27, 0.2f);
            out[20] = 20;
            out[3] = 28;
            out[10] = pinch_toward(out[10], -43, 0.2f);
        } else if (out[6] > -40 && out[10] > -40 && out[14] < -30 && out[18] > -40) {
            out[2] = pinch_toward(out[2] * double(1.1f), -28, 0.2f);
            out[20] = 32;
            out[3] = 30;
            out[14] = pinch_toward(out[14] * double(1.2f), -45, 0.2f);
        }
    }

    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
