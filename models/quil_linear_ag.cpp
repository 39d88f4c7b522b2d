// QUIL linear AG: the latest in-house revision. The thumb tip steers the thumb rotation and the
// thumb's first joint; the little finger's spread drives the thumb rotation and is reshaped
// (tripled when small, raised by 14 beyond 7); spreads close as their fingers bend.
#include "core/finger_coupling.h"
#include "core/linear_stage.h"
#include "models/catalogue.h"
#include "models/quil_linear_ag_coefficients.h"

QUIL_PUBLISH_COEFFICIENTS(QUIL_linear_AG, QUIL_AG_WEIGHT, QUIL_AG_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::QUIL_linear_AG_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

constexpr RowRules kRows = RowRules{}
    .rows({0, 5, 8, 11, 14}, upper(0), lower(-80))
    .rows({2}, upper(10))
    .rows({16}, upper(0))
    .rows({3}, lower(5), upper(35))
    .rows({6, 12, 15}, lower(0))
    .rows({17}, upper(0))
    .twice({4, 7, 10, 13}, upper(0), lower(-100));

}  // namespace

quil::Targets quil::hands::QUIL_linear_AG(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kRows>(in, Clamp::min_max, tables, out);

    // An open thumb tip rotates the thumb in and lowers its first joint; a bent one rotates it
    // out, but not below 20.
    if (out[2] > -10) {
        out[3] = out[3] - 2.5 * (out[2] + 10.0);
        if (out[3] > 30) out[3] = 30;
        const double tip = 10.0 + out[2];
        out[1] = out[1] - (tip + tip);
    }
    if (out[2] < -10) {
        out[3] = out[3] + 0.35 * (out[2] + 10.0);
        if (out[3] < 20) out[3] = 20;
    }
    if (out[0] < -60) out[0] = -60;
    if (out[1] > 0) out[1] = 0;
    if (out[1] < -60) out[1] = -60;
    if (out[2] < -60) out[2] = -60;
    out[20] = 0.6 * out[2] - 5.0;
    if (out[7] > 25) out[7] = 25;
    if (out[15] > 15) out[15] = 15;
    if (out[19] > 35) out[19] = 35;
    // Spreading the little finger opens the thumb, after the thumb's own clamps.
    if (out[19] > 5) {
        out[3] = 1.5 * (out[19] - 5.0) + out[3];
        if (out[3] > 35) out[3] = 35;
        out[1] = 0.25 * (out[19] - 5.0) + out[1];
        out[2] = 0.3 * (out[19] - 5.0) + out[2];
    }
    // The little finger's spread: small spreads tripled, larger ones raised by 14.
    if (out[19] < 7) {
        out[19] = out[19] * 3.0;
    } else {
        out[19] = out[19] + 14.0;
        if (out[19] > 35) out[19] = 35;
    }
    if (out[18] > -20 && out[15] > out[19]) out[15] = out[19];
    close_spread(out[7], out[5], 0.15);
    close_spread(out[15], out[13], 0.15);
    close_spread(out[19], out[17], 0.25);
    spread_middle_from_neighbours(out, 0.24, 0.32);
    // Deep bends amplified so a fist closes fully.
    rescale_below(out[6], -40, 1.25, 10.0, -80);
    rescale_below(out[9], -45, 1.4, 18.0, -100);
    rescale_below(out[10], -40, 1.4, 16.0, -80);
    // A bending neighbour pulls the ring finger along.
    pull_along(out[13], out[9], -7, 0.2);
    pull_along(out[14], out[10], -5, 0.2);
    rescale_below(out[13], -60, 0.85, -9.0, -100);
    rescale_below(out[14], -60, 0.85, -9.0, -80);
    rescale_below(out[17], -40, 0.88, -4.8, -100);
    rescale_below(out[18], -40, 0.88, -4.8, -80);
    close_spread(out[19], out[18], 0.8, -5);
    follow_distal(out, 0.8);
    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
