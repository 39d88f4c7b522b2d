// QUIL linear AA: the first in-house retargeting revision. A plain linear pose with per-joint
// limits, the thumb's first joint pulled along by the thumb rotation, and the distal joints of
// each finger slaved at 0.8 of the proximal ones.
#include "core/finger_coupling.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
    -210.0,  100.0,   20.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p0 */ \
      10.0,  -65.0,   15.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p1 */ \
       5.0, -105.0,   10.0,    0.0,    0.0,    6.0,    0.0,    0.0,    6.0,    6.0,   10.0,    8.0,  /* p2 */ \
       0.0,   15.0,   80.0,    0.0,    0.0,   -6.0,    0.0,    0.0,  -10.0,   -6.0,   -6.0,   -6.0,  /* p3 */ \
       0.0,  -15.0,   30.0, -100.0,    0.0,    5.0,   10.0,    0.0,  -10.0,  -10.0,    0.0,  -10.0,  /* p4 */ \
       0.0,  -12.0,  -30.0,   12.0,   10.0, -100.0,    0.0,    0.0,    0.0,  -10.0,    0.0,  -15.0,  /* p5 */ \
       0.0,   -3.0,    0.0,  -10.0,   25.0,  -12.0,    0.0,    4.0,    0.0,    0.0,   -6.0,   -3.0,  /* p6 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0, -115.0,    0.0,   15.0,  -10.0,    0.0,  -10.0,  /* p7 */ \
       0.0,   -5.0,    0.0,    0.0,    5.0,    0.0,  -20.0,    0.0,  -70.0,  -12.0,    0.0,  -12.0,  /* p8 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p9 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -140.0,    0.0,    0.0,  /* p10 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -100.0,  -10.0,    0.0,  /* p11 */ \
       0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   20.0,    0.0,  -12.0,   -4.0,    0.0,  /* p12 */ \
       0.0,  -12.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -15.0,    7.0, -155.0,  /* p13 */ \
       0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -10.0,    4.0, -105.0,  /* p14 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   40.0,  -60.0,  /* p15 */ \
       5.0,  -50.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p16 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}
#define HAND_W0 {0.0, 0.0, 0.0, -15.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, -10.0, 0.0, 0.0}
QUIL_PUBLISH_COEFFICIENTS(QUIL_linear_AA, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0


// Finger tips at 0.8 of their distal joints, the middle spread set between the index and ring
// spreads, and the thumb rotation rebuilt from the thumb tip as 0.5 * tip - 5 (then mirrored).
const quil::SlotDeclaration quil::hands::QUIL_linear_AA_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.18, 0.3))
    .plus(quil::rotation_follows_thumb_tip(0.5, -5.0));

namespace {

using namespace quil;

constexpr RowRules kRows = RowRules{}
    .rows({0, 1, 5, 8, 11, 14}, upper(0), lower(-80))
    .rows({3}, upper(35))
    .rows({6, 12, 15}, lower(0))
    .rows({17}, upper(0))
    .twice({4, 7, 10, 13}, upper(0), lower(-100));

}  // namespace

quil::Targets quil::hands::QUIL_linear_AA(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kRows>(in, Clamp::min_max, tables, out);

    // Thumb rotation drags the thumb's first joint along.
    if (out[slot::thumb_abduction] < 0)
        out[slot::thumb_proximal] = out[slot::thumb_proximal] + out[slot::thumb_abduction] * 1.8;
    if (out[slot::index_spread] > 25) out[slot::index_spread] = 25;
    if (out[slot::ring_spread] > 15) out[slot::ring_spread] = 15;
    if (out[slot::little_spread] > 35) out[slot::little_spread] = 35;
    // The middle finger's spread sits between the index and ring spreads.
    spread_middle_from_neighbours(out, 0.18, 0.3);
    close_spread(out[slot::little_spread], out[slot::little_distal], 0.25);
    // Deep bends of the proximal joints are amplified so a fist closes fully.
    rescale_below(out[slot::index_proximal], -40, 1.25, 10.0, -80);
    rescale_below(out[slot::middle_proximal], -20, 1.2, 4.0, -80);
    // A bending neighbour pulls the ring and little fingers along.
    pull_along(out[slot::ring_distal], out[slot::middle_distal], -7, 0.2);
    pull_along(out[slot::ring_proximal], out[slot::middle_proximal], -5, 0.2);
    rescale_below(out[slot::ring_distal], -40, 0.85, -6.0, -100);
    rescale_below(out[slot::ring_proximal], -40, 0.85, -6.0, -80);
    rescale_below(out[slot::little_distal], -40, 0.88, -4.8, -100);
    rescale_below(out[slot::little_proximal], -40, 0.88, -4.8, -80);
    if (out[slot::thumb_base] < -60) out[slot::thumb_base] = -60;
    if (out[slot::thumb_proximal] > 0) out[slot::thumb_proximal] = 0;
    if (out[slot::thumb_proximal] < -60) out[slot::thumb_proximal] = -60;
    if (out[slot::thumb_distal] < -65) out[slot::thumb_distal] = -65;
    // The second thumb value follows the tip, whatever its own row said.
    out[slot::thumb_rotation] = 0.5 * out[slot::thumb_distal] - 5.0;
    follow_distal(out, 0.8);
    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
