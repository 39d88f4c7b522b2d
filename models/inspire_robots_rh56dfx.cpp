// INSPIRE ROBOTS RH56DFX: a six-actuator hand with linkage-coupled fingers. The thumb's tip joint
// is geared steeply and drags the thumb base along when it bends far; the proximal finger values
// are doubled for the hand's wider joint range, and deep bends are stretched so the fist closes.
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"
#include "models/shared/thumb_turning_spreads.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
    -160.0,   45.0,   30.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,   10.0,    0.0,  /* p0 */ \
     -95.0,  -10.0,   15.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   -5.0,    0.0,   -5.0,  /* p1 */ \
      10.0,  -50.0,  -70.0,  -15.0,    0.0,    0.0,    8.0,    0.0,    0.0,   15.0,    0.0,   15.0,  /* p2 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p3 */ \
       0.0,   -5.0,    0.0,  -95.0,    0.0,   -5.0,    0.0,    0.0,   -5.0,   -5.0,    0.0,   -5.0,  /* p4 */ \
       0.0,    0.0,    0.0,  -90.0,    0.0,    0.0,    0.0,    0.0,    0.0,   -2.0,    0.0,   -8.0,  /* p5 */ \
       0.0,   -3.0,    0.0,    0.0,   35.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   -6.0,   -3.0,  /* p6 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0, -115.0,    0.0,   15.0,   -5.0,    0.0,   -5.0,  /* p7 */ \
       0.0,   -5.0,    0.0,    0.0,    5.0,    0.0,  -85.0,    0.0,    0.0,   -2.0,    0.0,   -2.0,  /* p8 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p9 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -140.0,    0.0,    0.0,  /* p10 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -100.0,  -10.0,    0.0,  /* p11 */ \
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   40.0,    0.0,    0.0,  -20.0,    0.0,  /* p12 */ \
       0.0,  -12.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -20.0,    0.0, -160.0,  /* p13 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -15.0,    0.0, -110.0,  /* p14 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   35.0,    0.0,  /* p15 */ \
       2.5,  -52.5,    5.0,    0.0,    0.0,    4.0,    0.0,    0.0,    4.0,    2.5,    5.0,    5.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, -10.0, 30.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, -10.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(INSPIRE_ROBOTS_RH56DFX, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::INSPIRE_ROBOTS_RH56DFX_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

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

}  // namespace

quil::Targets quil::hands::INSPIRE_ROBOTS_RH56DFX(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kRows>(in, Clamp::min_max, tables, out);

    if (out[slot::thumb_proximal] < -60) out[slot::thumb_proximal] = -60;
    // The thumb tip barely moves in its first 20 and is geared steeply past that.
    if (out[slot::thumb_distal] > -20) {
        out[slot::thumb_distal] = 0.9 * out[slot::thumb_distal];
    } else {
        out[slot::thumb_distal] = out[slot::thumb_distal] * 3.9 + 60;
    }
    if (out[slot::thumb_distal] < -75) out[slot::thumb_distal] = -75;
    // A tip bent past -50 pulls the thumb base in with it.
    if (out[slot::thumb_distal] < -50) {
        out[slot::thumb_base] = out[slot::thumb_base] - (out[slot::thumb_distal] * 0.2 + 10);
        if (out[slot::thumb_base] > 0) out[slot::thumb_base] = 0;
    }

    couple_spreads_turning_thumb(out, kSpreads);

    out[slot::index_distal] = kIndexMiddle(out[slot::index_distal]);
    if (out[slot::index_distal] < -100) out[slot::index_distal] = -100;
    rescale_below(out[slot::index_proximal], -40, 1.2, 8, -100);
    rescale_below(out[slot::middle_proximal], -40, 1.2, 8, -100);
    // The ring finger is pulled along by the middle finger's bend.
    pull_along(out[slot::ring_distal], out[slot::middle_distal], -7, 0.2);
    pull_along(out[slot::ring_proximal], out[slot::middle_proximal], -5, 0.2);
    rescale_below(out[slot::ring_distal], -60, 0.85, -9, -100);
    rescale_below(out[slot::ring_proximal], -40, 1.2, 8, -100);
    rescale_below(out[slot::little_distal], -40, 0.88, -4.8, -100);
    rescale_below(out[slot::little_proximal], -40, 1.5, 20, -100);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5);
    follow_distal(out, 0.8);

    out[slot::terminator] = -1.0;
    // The thumb joints and the proximal finger joints have twice the glove's range.
    for (int i : {slot::thumb_base, slot::thumb_distal, slot::index_proximal, slot::middle_proximal,
                  slot::ring_proximal, slot::little_proximal})
        out[i] = out[i] + out[i];
    flip_thumb_and_index(out);
    return out;
}

