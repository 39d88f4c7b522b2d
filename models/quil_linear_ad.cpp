// QUIL linear AD: the second in-house revision. Row 1 runs free in the loop and the thumb
// rotation gets a floor of 5; the first finger joints become affine in the second ones
// (0.76 * v + 13) so a relaxed finger rests slightly open, and the second thumb value keeps its
// own row.
#include "core/finger_coupling.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
    -170.0,   45.0,   20.0,    0.0,    0.0,  -10.0,    0.0,    0.0,  -10.0,    0.0,    0.0,    0.0,  /* p0 */ \
     -50.0,  -80.0,   15.0,    0.0,    0.0,    8.0,    0.0,    0.0,    8.0,   10.0,   15.0,   10.0,  /* p1 */ \
       5.0, -105.0,   10.0,    0.0,    0.0,    8.0,    0.0,    0.0,   10.0,   13.0,   20.0,   10.0,  /* p2 */ \
       0.0,   20.0,   65.0,    0.0,    0.0,   -6.0,    0.0,    0.0,  -10.0,   -6.0,   -6.0,   -6.0,  /* p3 */ \
       0.0,  -15.0,   10.0, -100.0,    0.0,    5.0,    0.0,    0.0,  -15.0,  -10.0,    0.0,  -10.0,  /* p4 */ \
       0.0,  -12.0,    0.0,   12.0,   10.0, -100.0,    0.0,    0.0,    0.0,  -10.0,    0.0,  -15.0,  /* p5 */ \
       0.0,   -3.0,    0.0,  -10.0,   25.0,  -12.0,    0.0,    4.0,    0.0,    0.0,   -6.0,   -3.0,  /* p6 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0, -115.0,    0.0,   15.0,  -10.0,    0.0,  -10.0,  /* p7 */ \
       0.0,   -5.0,    0.0,    0.0,    5.0,    0.0,  -20.0,    0.0,  -70.0,  -12.0,    0.0,  -12.0,  /* p8 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p9 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -140.0,    0.0,    0.0,  /* p10 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -100.0,  -10.0,    0.0,  /* p11 */ \
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   20.0,    0.0,  -12.0,   -4.0,    0.0,  /* p12 */ \
       0.0,  -12.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -20.0,    7.0, -160.0,  /* p13 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,   -5.0,    0.0,    0.0,    0.0,  -15.0,    4.0, -110.0,  /* p14 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   40.0,  -60.0,  /* p15 */ \
       5.0, -105.0,   15.0,    0.0,    0.0,    8.0,    0.0,    0.0,   10.0,   13.0,   20.0,   10.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, -10.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(QUIL_linear_AD, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0

// The index and middle tips rest slightly open (0.76 * distal + 13, never past 0); the ring and
// little tips follow at 0.8; the middle spread is set between the index and ring spreads.
const quil::SlotDeclaration quil::hands::QUIL_linear_AD_slots = quil::kNoFollowers
    .plus(quil::tip_follows_distal(4, 0.76, 13.0))
    .plus(quil::tip_follows_distal(8, 0.76, 13.0))
    .plus(quil::tip_follows_distal(12))
    .plus(quil::tip_follows_distal(16))
    .plus(quil::middle_spread_between(0.18, 0.3));

namespace {

using namespace quil;

constexpr RowRules kRows = RowRules{}
    .rows({0, 5, 8, 11, 14}, upper(0), lower(-80))
    .rows({2}, upper(0))
    .rows({3}, lower(5), upper(35))
    .rows({6, 12, 15}, lower(0))
    .rows({17}, upper(0))
    .twice({4, 7, 10, 13}, upper(0), lower(-100));

}  // namespace

quil::Targets quil::hands::QUIL_linear_AD(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kRows>(in, Clamp::min_max, tables, out);

    if (out[7] > 25) out[7] = 25;
    if (out[15] > 15) out[15] = 15;
    if (out[19] > 35) out[19] = 35;
    // The middle finger's spread sits between the index and ring spreads.
    spread_middle_from_neighbours(out, 0.18, 0.3);
    close_spread(out[19], out[17], 0.25);
    // Deep bends of the proximal joints are amplified so a fist closes fully.
    rescale_below(out[6], -40, 1.2, 8.0, -80);
    rescale_below(out[10], -20, 1.2, 4.0, -80);
    // A bending neighbour pulls the ring and little fingers along.
    pull_along(out[13], out[9], -7, 0.15);
    pull_along(out[14], out[10], -5, 0.25);
    rescale_below(out[13], -40, 0.85, -6.0, -100);
    rescale_below(out[14], -40, 0.85, -6.0, -80);
    rescale_below(out[17], -40, 0.88, -4.8, -100);
    rescale_below(out[18], -40, 0.88, -4.8, -80);
    if (out[0] < -60) out[0] = -60;
    if (out[1] > 0) out[1] = 0;
    if (out[1] < -60) out[1] = -60;
    if (out[2] < -65) out[2] = -65;
    if (out[20] < -50) out[20] = -50;
    if (out[20] > 15) out[20] = 15;
    // Index and middle first joints rest slightly open; ring and little follow at 0.8.
    out[4] = out[5] * 0.76 + 13.0;
    out[8] = out[9] * 0.76 + 13.0;
    out[12] = out[13] * 0.8;
    out[16] = out[17] * 0.8;
    for (int i : {4, 8, 12, 16})
        if (out[i] > 0) out[i] = 0;
    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
