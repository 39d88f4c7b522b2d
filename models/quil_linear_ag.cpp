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
    if (out[slot::thumb_distal] > -10) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] - 2.5 * (out[slot::thumb_distal] + 10.0);
        if (out[slot::thumb_abduction] > 30) out[slot::thumb_abduction] = 30;
        const double tip = 10.0 + out[slot::thumb_distal];
        out[slot::thumb_proximal] = out[slot::thumb_proximal] - (tip + tip);
    }
    if (out[slot::thumb_distal] < -10) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] + 0.35 * (out[slot::thumb_distal] + 10.0);
        if (out[slot::thumb_abduction] < 20) out[slot::thumb_abduction] = 20;
    }
    if (out[slot::thumb_base] < -60) out[slot::thumb_base] = -60;
    if (out[slot::thumb_proximal] > 0) out[slot::thumb_proximal] = 0;
    if (out[slot::thumb_proximal] < -60) out[slot::thumb_proximal] = -60;
    if (out[slot::thumb_distal] < -60) out[slot::thumb_distal] = -60;
    out[slot::thumb_rotation] = 0.6 * out[slot::thumb_distal] - 5.0;
    if (out[slot::index_spread] > 25) out[slot::index_spread] = 25;
    if (out[slot::ring_spread] > 15) out[slot::ring_spread] = 15;
    if (out[slot::little_spread] > 35) out[slot::little_spread] = 35;
    // Spreading the little finger opens the thumb, after the thumb's own clamps.
    if (out[slot::little_spread] > 5) {
        out[slot::thumb_abduction] = 1.5 * (out[slot::little_spread] - 5.0) + out[slot::thumb_abduction];
        if (out[slot::thumb_abduction] > 35) out[slot::thumb_abduction] = 35;
        out[slot::thumb_proximal] = 0.25 * (out[slot::little_spread] - 5.0) + out[slot::thumb_proximal];
        out[slot::thumb_distal] = 0.3 * (out[slot::little_spread] - 5.0) + out[slot::thumb_distal];
    }
    // The little finger's spread: small spreads tripled, larger ones raised by 14.
    reshape_little_spread(out[slot::little_spread], LittleSpreadGain{3, 14, 35});
    if (out[slot::little_proximal] > -20 && out[slot::ring_spread] > out[slot::little_spread])
        out[slot::ring_spread] = out[slot::little_spread];
    close_spread(out[slot::index_spread], out[slot::index_distal], 0.15);
    close_spread(out[slot::ring_spread], out[slot::ring_distal], 0.15);
    close_spread(out[slot::little_spread], out[slot::little_distal], 0.25);
    spread_middle_from_neighbours(out, 0.24, 0.32);
    // Deep bends amplified so a fist closes fully.
    rescale_below(out[slot::index_proximal], -40, 1.25, 10.0, -80);
    rescale_below(out[slot::middle_distal], -45, 1.4, 18.0, -100);
    rescale_below(out[slot::middle_proximal], -40, 1.4, 16.0, -80);
    // A bending neighbour pulls the ring finger along.
    pull_along(out[slot::ring_distal], out[slot::middle_distal], -7, 0.2);
    pull_along(out[slot::ring_proximal], out[slot::middle_proximal], -5, 0.2);
    rescale_below(out[slot::ring_distal], -60, 0.85, -9.0, -100);
    rescale_below(out[slot::ring_proximal], -60, 0.85, -9.0, -80);
    rescale_below(out[slot::little_distal], -40, 0.88, -4.8, -100);
    rescale_below(out[slot::little_proximal], -40, 0.88, -4.8, -80);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5);
    follow_distal(out, 0.8);
    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
