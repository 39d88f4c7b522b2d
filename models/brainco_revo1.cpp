// BrainCo Revo1: its own pose coefficients, three-piece gain curves on the thumb and on the four
// fingers' proximal joints (index 6, middle 10, ring 14, little 18), one thumb-to-index contact
// pose and a fist that closes the fingers together to the hand's end stop of -74.
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"

// Rows p0..p18, columns x0..x11, in hundredths.
#define HAND_WEIGHT {                                                                     \
     -75.0,  -20.0,   20.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p0 */ \
     -75.0,  -30.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p1 */ \
       5.0,  -65.5,  -45.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  /* p2 */ \
       0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p3 */ \
       0.0,   -5.0,    0.0,  -85.0,    0.0,    0.0,   -5.0,    0.0,   -5.0,   -3.0,    0.0,   -3.0,  /* p4 */ \
       0.0,   -2.0,   -2.0,  -85.0,    5.0,    0.0,   -5.0,    0.0,    0.0,   -3.0,    0.0,    0.0,  /* p5 */ \
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
QUIL_PUBLISH_COEFFICIENTS(BrainCo_Revo1, HAND_WEIGHT, HAND_W0)
#undef HAND_WEIGHT
#undef HAND_W0

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::BrainCo_Revo1_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

constexpr RowRules kRows = RowRules{}
    .rows({0, 5, 8, 11, 14}, upper(0), lower(-90))
    .rows({2, 16}, upper(0))
    .rows({3}, lower(5), upper(35))
    .rows({6, 12, 15}, lower(0))
    .rows({17}, upper(0))
    .twice({4, 7, 10, 13}, upper(0), lower(-100));

// Thumb base (1): half gain near open, a fifth further in, and the deepest piece lifted by 42;
// the joint never goes past -27.
constexpr Curve3 kThumbBase{-20, -60, scale(0.5), affine(0.2, -6.0), affine(1.0, 42.0)};
// Proximal finger joints: continuous, -30 at -20 and -50 at -60.
constexpr Curve3 kProximal{-20, -60, scale(1.5), affine(0.5, -20.0), affine(1.0, 10.0)};

// The hand's mechanical end stop for the proximal finger joints.
constexpr double kFingerStop = -74;

inline double at_least(double v, double floor) { return v < floor ? floor : v; }

}  // namespace

quil::Targets quil::hands::BrainCo_Revo1(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kRows>(in, Clamp::min_max, tables, out);

    if (out[slot::index_spread] > 25) out[slot::index_spread] = 25;
    if (out[slot::ring_spread] > 15) out[slot::ring_spread] = 15;
    if (out[slot::little_spread] > 35) out[slot::little_spread] = 35;
    // The ring spread may not open wider than the little finger's.
    if (out[slot::ring_spread] > out[slot::little_spread]) out[slot::ring_spread] = out[slot::little_spread];
    // A wide little-finger spread turns the thumb rotation out with it.
    if (out[slot::little_spread] > 5) {
        out[slot::thumb_abduction] = 1.3 * (out[slot::little_spread] - 5.0) + out[slot::thumb_abduction];
        if (out[slot::thumb_abduction] > 35) out[slot::thumb_abduction] = 35;
    }
    reshape_little_spread(out[slot::little_spread], LittleSpreadGain{3, 14, 35});
    close_spread(out[slot::index_spread], out[slot::index_distal], 0.15);
    close_spread(out[slot::ring_spread], out[slot::ring_distal], 0.15);
    close_spread(out[slot::little_spread], out[slot::little_distal], 0.25);
    // The middle finger has no spread sensor: it sits between the index and ring spreads.
    out[slot::middle_spread] = out[slot::index_spread] * 0.24 - 0.32 * out[slot::ring_spread];

    out[slot::thumb_proximal] = kThumbBase(out[slot::thumb_proximal]);
    if (out[slot::thumb_proximal] < -27) out[slot::thumb_proximal] = -27;
    // The thumb tip is driven from the opposition row (thumb_rotation). Whether the tip is still near
    // open is judged on the tip's own row; below that the opposition row picks the piece.
    const double opposition = out[slot::thumb_rotation];
    if (out[slot::thumb_distal] > -20)
        out[slot::thumb_distal] = opposition * 2.5;
    else if (opposition > -50)
        out[slot::thumb_distal] = 1.5 * opposition - 20.0;
    else
        out[slot::thumb_distal] = opposition - 45.0;
    if (out[slot::thumb_distal] < -90) out[slot::thumb_distal] = -90;

    for (int i : {slot::index_proximal, slot::middle_proximal, slot::ring_proximal, slot::little_proximal})
        out[i] = at_least(kProximal(out[i]), kFingerStop);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5);
    follow_distal(out, 0.8);

    // Thumb on the index pad: a half-bent index meets a thumb well across the palm.
    if (out[slot::thumb_distal] < -40 && out[slot::index_proximal] < -30 && out[slot::index_proximal] > -60) {
        out[slot::thumb_base] = -30;
        out[slot::thumb_distal] = -90;
        out[slot::index_proximal] = -40;
    }
    // Fist: three fingers past -55 close together to the stop, and the index with them.
    if (out[slot::middle_proximal] < -55 && out[slot::ring_proximal] < -55 && out[slot::little_proximal] < -55)
        for (int i : {slot::middle_proximal, slot::ring_proximal, slot::little_proximal}) out[i] = kFingerStop;
    if (out[slot::index_proximal] < -55 && out[slot::middle_proximal] < -55 && out[slot::ring_proximal] < -55 &&
        out[slot::little_proximal] < -55)
        for (int i : {slot::index_proximal, slot::middle_proximal, slot::ring_proximal, slot::little_proximal})
            out[i] = kFingerStop;

    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
