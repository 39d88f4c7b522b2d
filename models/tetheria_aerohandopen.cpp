// TetherIA AeroHandOpen: the RY_H15 joint chain (models/shared/blended_thumb_chain.h) with a plainer thumb, a
// stronger little finger, a fist that also rolls the thumb, and no full-bend lock for the little
// finger. The thumb is scaled down by the palm opening (the thumb rotation), and remembered
// unscaled so that a pinch can bring the real thumb back. Four pinches pull finger and thumb
// toward each other with a pull that eases near the target; index and middle pinches hold once
// they have closed fully (core/held_pinch.h).
#include <cmath>

#include "core/held_pinch.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "models/catalogue.h"
#include "models/shared/blended_thumb_chain.h"
#include "models/shared/common_coefficients.h"

QUIL_PUBLISH_COEFFICIENTS(TetherIA_AeroHandOpen, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints.
const quil::SlotDeclaration quil::hands::TetherIA_AeroHandOpen_slots = quil::kTipsAtEightTenths;

namespace {

using namespace quil;

// Differences from the RY_H15: the thumb base keeps its bend in every band, the thumb tip is a
// blend of 63% of its own bend with the base (scaled by the double 0.9), and the little finger
// is amplified by 1.1 down to -100 instead of reduced to 0.95 down to -84.
constexpr blended_thumb_chain::ChainVariant kChain{
    blended_thumb_chain::ThumbBaseBands::shallow_only,
    blended_thumb_chain::ThumbTipBlend{0.6302521008403361, 1.0, 0.9},
    blended_thumb_chain::ThumbSpreadGains{0.3, 0.35},
    1.1,     // little finger gain
    -100.0,  // and floor
};

// Only a real fist boosts the middle finger.
constexpr blended_thumb_chain::FistBounds kFist{-75.0, -65.0, -75.0, -85.0};
constexpr blended_thumb_chain::FistGains kFistGains{1.15, 0.7};

constexpr ThresholdPair thumb_active_threshold{-37.0f, -75.0f};
constexpr ThresholdPair index_active_threshold{-35.0f, -75.0f};

// Pulls v toward the (negative) limit L without passing it; unlike the RY_H15's pull it weakens
// as v nears the limit. A v at or beyond the limit, or NaN, gives the limit.
double pinch_ease(double v, int limit) {
    const double l = limit;
    double r = l;
    if (v > l) r = (1.0 + (1.0 - std::fabs(v / l)) * double(0.3f)) * v;
    return r > l ? r : l;
}

// The thumb is scaled down by the palm opening; the unscaled thumb is kept for the pinches.
void scale_thumb(Targets& out, const MemoryRef& memory) {
    *memory.thumb_references[0] = out[slot::thumb_distal];
    *memory.thumb_references[1] = out[slot::thumb_proximal];
    if (out[slot::thumb_abduction] <= 22) {
        out[slot::thumb_distal] = 0.3 * out[slot::thumb_distal];
        out[slot::thumb_proximal] = 0.3 * out[slot::thumb_proximal];
    } else {
        out[slot::thumb_distal] = out[slot::thumb_distal] * (out[slot::thumb_abduction] / 30.0);
        out[slot::thumb_proximal] = out[slot::thumb_proximal] * (out[slot::thumb_abduction] / 30.0);
    }
}

void restore_thumb(Targets& out, const MemoryRef& memory) {
    out[slot::thumb_distal] = *memory.thumb_references[0];
    out[slot::thumb_proximal] = *memory.thumb_references[1];
}

void pinch(Targets& out, const MemoryRef& memory) {
    HeldPinch index{memory.pinch_latches[0]};
    HeldPinch middle{memory.pinch_latches[1]};

    // The thumb counts as active when either its unscaled or its scaled base is bent enough.
    const double thumb_bent = thumb_active_threshold.at_or_below;
    const bool thumb_active = (*memory.thumb_references[1] <= thumb_bent || out[slot::thumb_proximal] <= thumb_bent) &&
                              out[slot::thumb_distal] >= double(thumb_active_threshold.at_or_above);
    const bool index_in_band = quil::index_in_band(out, index_active_threshold);
    const bool index_near_thumb = index_reaches(out, thumb_active_threshold, index_active_threshold) &&
                                  out[slot::index_proximal] <= double(index_active_threshold.at_or_below * 0.5f);
    const bool thumb_not_spread = out[slot::thumb_rotation] >= -20;

    if (index.runs(thumb_active && (index_in_band || index_near_thumb) && thumb_not_spread,
                   thumb_active || index_in_band)) {
        if (out[slot::index_proximal] < -35) restore_thumb(out, memory);
        out[slot::thumb_base] = 0;
        out[slot::thumb_proximal] = pinch_ease(out[slot::thumb_proximal] * 1.25, -54);
        out[slot::thumb_rotation] = 9;
        out[slot::thumb_abduction] = 21;
        out[slot::index_tip] = 0;
        out[slot::index_distal] = -59;
        out[slot::thumb_distal] = pinch_ease(out[slot::thumb_distal], -49);
        out[slot::index_proximal] = pinch_ease(out[slot::index_proximal] * 1.25, -66);
        index.settle(out[slot::index_proximal] <= -66 && out[slot::thumb_distal] <= -49,
                     out[slot::index_proximal] <= double(-46.2f) && out[slot::thumb_distal] <= double(-34.3f));
    }

    // Read after the index pinch; the thumb's activity stays as it was before it.
    const bool middle_in_band = out[slot::middle_proximal] < -59 && out[slot::middle_proximal] >= -75;
    const bool middle_trigger =
        thumb_active && out[slot::middle_proximal] < -47.2 && out[slot::little_proximal] > -40;
    const bool little_in_band = out[slot::little_proximal] < -50.25 && out[slot::little_proximal] > -80;

    if (middle.runs(middle_trigger, thumb_active || middle_in_band)) {
        if (out[slot::middle_proximal] < -35) restore_thumb(out, memory);
        out[slot::thumb_distal] = pinch_ease(out[slot::thumb_distal], -52);
        out[slot::middle_proximal] = pinch_ease(out[slot::middle_proximal] * double(1.15f), -59);
        out[slot::thumb_base] = 0;
        out[slot::thumb_proximal] = -61;
        out[slot::thumb_rotation] = 9;
        out[slot::thumb_abduction] = 25;
        out[slot::middle_tip] = 0;
        out[slot::middle_distal] = -59;
        // -36.4 as the firmware's single-precision constant was recorded.
        middle.settle(out[slot::middle_proximal] <= -59 && out[slot::thumb_distal] <= -52,
                      out[slot::middle_proximal] <= double(-41.3f) && out[slot::thumb_distal] <= -36.39999771118164);
    } else if (thumb_active && out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
               out[slot::ring_proximal] < -36.60000228881836 && out[slot::little_proximal] > -40) {
        // Ring pinch, only while its trigger holds (-36.6 as the firmware's single-precision
        // constant was recorded).
        if (out[slot::ring_proximal] < -35) restore_thumb(out, memory);
        out[slot::thumb_base] = 0;
        out[slot::thumb_proximal] = -58;
        out[slot::thumb_rotation] = 0;
        out[slot::thumb_abduction] = 30;
        out[slot::ring_tip] = 0;
        out[slot::ring_distal] = -83;
        out[slot::thumb_distal] = pinch_ease(out[slot::thumb_distal] * double(1.1f), -55);
        out[slot::ring_proximal] = pinch_ease(out[slot::ring_proximal] * double(1.2f), -61);
    }

    // Little pinch, after either of the above; its thumb pose wins.
    if (thumb_active && little_in_band && out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
        out[slot::ring_proximal] > -30) {
        if (out[slot::little_proximal] < -35) restore_thumb(out, memory);
        out[slot::thumb_base] = 0;
        out[slot::thumb_proximal] = -52;
        out[slot::thumb_rotation] = 2;
        out[slot::thumb_abduction] = 30;
        out[slot::little_distal] = -73;
        out[slot::little_tip] = 0;
        out[slot::thumb_distal] = pinch_ease(out[slot::thumb_distal] * double(1.1f), -75);
        out[slot::little_proximal] = pinch_ease(out[slot::little_proximal] * double(1.3f), -67);
    }
}

}  // namespace

quil::Targets quil::hands::TetherIA_AeroHandOpen(const Readings& in, const MemoryRef& memory, const Coefficients& tables) {
    Targets out;
    if (zero_short_emission(blended_thumb_chain::run_rows(in, tables, out), out)) return out;
    blended_thumb_chain::thumb_and_fingers(out, kChain);
    // The thumb roll is not driven, except on a fist.
    out[slot::thumb_base] = 0;
    if (blended_thumb_chain::fist_boost(out, kFist, kFistGains)) out[slot::thumb_base] = -50;
    if (out[slot::thumb_proximal] < -55) out[slot::thumb_proximal] = -55;
    scale_thumb(out, memory);
    blended_thumb_chain::distal_and_full_bend(out, /*lock_little=*/false);
    pinch(out, memory);
    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

