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

    if (out[7] > 25) out[7] = 25;
    if (out[15] > 15) out[15] = 15;
    if (out[19] > 35) out[19] = 35;
    // The ring spread may not open wider than the little finger's.
    if (out[15] > out[19]) out[15] = out[19];
    // A wide little-finger spread turns the thumb rotation out with it.
    if (out[19] > 5) {
        out[3] = 1.3 * (out[19] - 5.0) + out[3];
        if (out[3] > 35) out[3] = 35;
    }
    if (out[19] < 7) {
        out[19] = out[19] * 3.0;
    } else {
        out[19] = out[19] + 14.0;
        if (out[19] > 35) out[19] = 35;
    }
    close_spread(out[7], out[5], 0.15);
    close_spread(out[15], out[13], 0.15);
    close_spread(out[19], out[17], 0.25);
    // The middle finger has no spread sensor: it sits between the index and ring spreads.
    out[11] = out[7] * 0.24 - 0.32 * out[15];

    out[1] = kThumbBase(out[1]);
    if (out[1] < -27) out[1] = -27;
    // The thumb tip is driven from the opposition row (slot 20). Whether the tip is still near
    // open is judged on the tip's own row; below that the opposition row picks the piece.
    const double opposition = out[20];
    if (out[2] > -20)
        out[2] = opposition * 2.5;
    else if (opposition > -50)
        out[2] = 1.5 * opposition - 20.0;
    else
        out[2] = opposition - 45.0;
    if (out[2] < -90) out[2] = -90;

    for (int i : {6, 10, 14, 18}) out[i] = at_least(kProximal(out[i]), kFingerStop);
    close_spread(out[19], out[18], 0.8, -5);
    follow_distal(out, 0.8);

    // Thumb on the index pad: a half-bent index meets a thumb well across the palm.
    if (out[2] < -40 && out[6] < -30 && out[6] > -60) {
        out[0] = -30;
        out[2] = -90;
        out[6] = -40;
    }
    // Fist: three fingers past -55 close together to the stop, and the index with them.
    if (out[10] < -55 && out[14] < -55 && out[18] < -55)
        for (int i : {10, 14, 18}) out[i] = kFingerStop;
    if (out[6] < -55 && out[10] < -55 && out[14] < -55 && out[18] < -55)
        for (int i : {6, 10, 14, 18}) out[i] = kFingerStop;

    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
