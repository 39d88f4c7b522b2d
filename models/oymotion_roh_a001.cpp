// OYMotion ROH_A001: a six-actuator hand whose thumb joints are coupled to each other and to the
// index finger. A lightly bent thumb base takes its value from the index finger's middle joint,
// the thumb rotation is derived from the thumb tip alone, and the finger joints are stretched
// past a knee so the fist closes.
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"
#include "models/shared/thumb_turning_spreads.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
    -150.0,   45.0,   30.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -10.0,    0.0,   10.0,    0.0,  /* p0 */ \
     -95.0,  -10.0,   15.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   -5.0,    0.0,   -5.0,  /* p1 */ \
      10.0,  -35.0,  -50.0,   -5.0,    0.0,    0.0,    8.0,    0.0,    0.0,   15.0,    0.0,   15.0,  /* p2 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p3 */ \
       0.0,   -5.0,    0.0,  -95.0,    0.0,   -5.0,    0.0,    0.0,   -5.0,   -5.0,    0.0,   -5.0,  /* p4 */ \
       0.0,   -5.0,   -5.0,  -85.0,    0.0,    0.0,    0.0,    0.0,  -15.0,   -2.0,    0.0,  -12.0,  /* p5 */ \
       0.0,   -3.0,    0.0,    0.0,   35.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   -6.0,   -3.0,  /* p6 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0, -115.0,    0.0,   15.0,   -5.0,    0.0,   -5.0,  /* p7 */ \
       0.0,   -5.0,    0.0,    0.0,    5.0,    0.0,  -70.0,    0.0,  -15.0,   -2.0,    0.0,   -2.0,  /* p8 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p9 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -140.0,    0.0,    0.0,  /* p10 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -100.0,  -10.0,    0.0,  /* p11 */ \
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   40.0,    0.0,    0.0,  -20.0,    0.0,  /* p12 */ \
       0.0,  -12.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -20.0,   30.0, -160.0,  /* p13 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -15.0,   28.0, -110.0,  /* p14 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   35.0,    0.0,  /* p15 */ \
       2.5,  -52.5,    5.0,    0.0,    0.0,    4.0,    0.0,    0.0,    4.0,    2.5,    5.0,    5.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, -10.0, 30.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, -10.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(OYMotion_ROH_A001, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0


namespace {

using namespace quil;

constexpr RowRules kRows = RowRules{}
    .rows({0, 5, 8, 11, 14}, upper(0), lower(-80))
    .rows({2, 16, 17}, upper(0))
    .rows({3}, lower(5), upper(35))
    .rows({6, 12, 15}, lower(0))
    .twice({4, 7, 10, 13}, upper(0), lower(-100));

// The index's middle joint: a light bend is doubled, a medium one eased, a deep one kept.
constexpr Curve3 kIndexMiddle{-20, -50, scale(2.0), affine(0.3, -34.0), affine(1.0, 1.0)};

// Spreading the little finger turns the thumb out of its way; bending a finger closes its spread.
constexpr ThumbTurningSpreads kSpreads{
    {25, 15, 35}, 1.3, {3, 14, 35}, 0.15, 0.15, 0.25, 0.24, 0.32};

// While the thumb base is nearly straight it follows the index's middle joint, doubled or eased;
// bent deeper it is only offset.
double thumb_base(double base, double index_middle) {
    if (base > -10) return index_middle + index_middle;
    if (base > -40) return 0.25 * index_middle - 17.5;
    return 12.5 + base;
}

// The thumb rotation follows the thumb tip in four bands; the glove's own rotation reading is
// not used.
double thumb_rotation(double tip) {
    if (tip > -2) return tip * 0.5;
    if (tip > -12) return tip * 3 + 5;
    if (tip > -15) return tip - 16;
    return 0.2 * tip - 28;
}

}  // namespace

namespace {
// The thumb rotation as drawn from the thumb tip, mirrored at the end like the slot itself.
double rotation_from_tip_bands(const double* t) { return -thumb_rotation(t[slot::thumb_distal]); }
}  // namespace

constexpr quil::SlotRelation kRotationFromTipBands =
    quil::follows_by_rule(quil::slot::thumb_rotation, quil::slot::thumb_distal, rotation_from_tip_bands,
                          "-(0.5 * slot 2) if slot 2 > -2; -(3 * slot 2 + 5) if > -12; -(slot 2 - 16) if > -15; "
                          "else -(0.2 * slot 2 - 28)");
// Finger tips at 0.8 of their distal joints, the middle spread set between the index and ring
// spreads, and the thumb rotation drawn from the thumb tip in four bands.
const quil::SlotDeclaration quil::hands::OYMotion_ROH_A001_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32))
    .plus(kRotationFromTipBands);

quil::Targets quil::hands::OYMotion_ROH_A001(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kRows>(in, Clamp::min_max, tables, out);

    if (out[slot::thumb_base] < -60) out[slot::thumb_base] = -60;
    out[slot::thumb_proximal] = thumb_base(out[slot::thumb_proximal], out[slot::index_distal]);
    if (out[slot::thumb_proximal] > 0) out[slot::thumb_proximal] = 0;
    if (out[slot::thumb_proximal] < -60) out[slot::thumb_proximal] = -60;
    out[slot::thumb_rotation] = thumb_rotation(out[slot::thumb_distal]);
    if (out[slot::thumb_distal] < -70) out[slot::thumb_distal] = -70;

    couple_spreads_turning_thumb(out, kSpreads);

    out[slot::index_distal] = kIndexMiddle(out[slot::index_distal]);
    if (out[slot::index_distal] < -100) out[slot::index_distal] = -100;
    // The proximal joints of the index and middle fingers reach only -80.
    rescale_below(out[slot::index_proximal], -40, 1.25, 10, -80);
    rescale_below(out[slot::middle_proximal], -20, 1.2, 4, -80);
    // The ring finger is pulled along by the middle finger's bend.
    pull_along(out[slot::ring_distal], out[slot::middle_distal], -7, 0.2);
    pull_along(out[slot::ring_proximal], out[slot::middle_proximal], -5, 0.2);
    rescale_below(out[slot::ring_distal], -60, 0.85, -9, -100);
    rescale_below(out[slot::ring_proximal], -60, 0.85, -9, -80);
    rescale_below(out[slot::little_distal], -40, 0.88, -4.8, -100);
    rescale_below(out[slot::little_proximal], -40, 0.88, -4.8, -80);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5);
    follow_distal(out, 0.8);

    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

