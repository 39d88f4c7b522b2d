// TetherIA AeroHandOpen: the RY_H15 joint chain (core/ruiyan_chain.h) with a plainer thumb, a
// stronger little finger, a fist that also rolls the thumb, and no full-bend lock for the little
// finger. The thumb is scaled down by the palm opening (the thumb rotation), and remembered
// unscaled so that a pinch can bring the real thumb back. Four pinches pull finger and thumb
// toward each other with a pull that eases near the target; index and middle pinches hold once
// they have closed fully (core/held_pinch.h).
#include <cmath>

#include "core/common_coefficients.h"
#include "core/held_pinch.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "core/ruiyan_chain.h"
#include "models/catalogue.h"

QUIL_PUBLISH_COEFFICIENTS(TetherIA_AeroHandOpen, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints.
const quil::SlotDeclaration quil::hands::TetherIA_AeroHandOpen_slots = quil::kTipsAtEightTenths;

namespace {

using namespace quil;

// Differences from the RY_H15: the thumb base keeps its bend in every band, the thumb tip is a
// blend of 63% of its own bend with the base (scaled by the double 0.9), and the little finger
// is amplified by 1.1 down to -100 instead of reduced to 0.95 down to -84.
constexpr ruiyan_chain::ChainVariant kChain{
    ruiyan_chain::ThumbBaseBands::shallow_only,
    ruiyan_chain::ThumbTipBlend{0.6302521008403361, 1.0, 0.9},
    ruiyan_chain::ThumbSpreadGains{0.3, 0.35},
    1.1,     // little finger gain
    -100.0,  // and floor
};

// Only a real fist boosts the middle finger.
constexpr ruiyan_chain::FistBounds kFist{-75.0, -65.0, -75.0, -85.0};
constexpr ruiyan_chain::FistGains kFistGains{1.15, 0.7};

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
    *memory.thumb_references[0] = out[2];
    *memory.thumb_references[1] = out[1];
    if (out[3] <= 22) {
        out[2] = 0.3 * out[2];
        out[1] = 0.3 * out[1];
    } else {
        out[2] = out[2] * (out[3] / 30.0);
        out[1] = out[1] * (out[3] / 30.0);
    }
}

void restore_thumb(Targets& out, const MemoryRef& memory) {
    out[2] = *memory.thumb_references[0];
    out[1] = *memory.thumb_references[1];
}

void pinch(Targets& out, const MemoryRef& memory) {
    HeldPinch index{memory.pinch_latches[0]};
    HeldPinch middle{memory.pinch_latches[1]};

    // The thumb counts as active when either its unscaled or its scaled base is bent enough.
    const double thumb_bent = thumb_active_threshold.at_or_below;
    const bool thumb_active = (*memory.thumb_references[1] <= thumb_bent || out[1] <= thumb_bent) &&
                              out[2] >= double(thumb_active_threshold.at_or_above);
    const bool index_in_band = quil::index_in_band(out, index_active_threshold);
    const bool index_near_thumb = index_reaches(out, thumb_active_threshold, index_active_threshold) &&
                                  out[6] <= double(index_active_threshold.at_or_below * 0.5f);
    const bool thumb_not_spread = out[20] >= -20;

    if (index.runs(thumb_active && (index_in_band || index_near_thumb) && thumb_not_spread,
                   thumb_active || index_in_band)) {
        if (out[6] < -35) restore_thumb(out, memory);
        out[0] = 0;
        out[1] = pinch_ease(out[1] * 1.25, -54);
        out[20] = 9;
        out[3] = 21;
        out[4] = 0;
        out[5] = -59;
        out[2] = pinch_ease(out[2], -49);
        out[6] = pinch_ease(out[6] * 1.25, -66);
        index.settle(out[6] <= -66 && out[2] <= -49, out[6] <= double(-46.2f) && out[2] <= double(-34.3f));
    }

    // Read after the index pinch; the thumb's activity stays as it was before it.
    const bool middle_in_band = out[10] < -59 && out[10] >= -75;
    const bool middle_trigger = thumb_active && out[10] < -47.2 && out[18] > -40;
    const bool little_in_band = out[18] < -50.25 && out[18] > -80;

    if (middle.runs(middle_trigger, thumb_active || middle_in_band)) {
        if (out[10] < -35) restore_thumb(out, memory);
        out[2] = pinch_ease(out[2], -52);
        out[10] = pinch_ease(out[10] * double(1.15f), -59);
        out[0] = 0;
        out[1] = -61;
        out[20] = 9;
        out[3] = 25;
        out[8] = 0;
        out[9] = -59;
        // -36.4 as the firmware's single-precision constant was recorded.
        middle.settle(out[10] <= -59 && out[2] <= -52, out[10] <= double(-41.3f) && out[2] <= -36.39999771118164);
    } else if (thumb_active && out[6] > -40 && out[10] > -40 && out[14] < -36.60000228881836 && out[18] > -40) {
        // Ring pinch, only while its trigger holds (-36.6 as the firmware's single-precision
        // constant was recorded).
        if (out[14] < -35) restore_thumb(out, memory);
        out[0] = 0;
        out[1] = -58;
        out[20] = 0;
        out[3] = 30;
        out[12] = 0;
        out[13] = -83;
        out[2] = pinch_ease(out[2] * double(1.1f), -55);
        out[14] = pinch_ease(out[14] * double(1.2f), -61);
    }

    // Little pinch, after either of the above; its thumb pose wins.
    if (thumb_active && little_in_band && out[6] > -40 && out[10] > -40 && out[14] > -30) {
        if (out[18] < -35) restore_thumb(out, memory);
        out[0] = 0;
        out[1] = -52;
        out[20] = 2;
        out[3] = 30;
        out[17] = -73;
        out[16] = 0;
        out[2] = pinch_ease(out[2] * double(1.1f), -75);
        out[18] = pinch_ease(out[18] * double(1.3f), -67);
    }
}

}  // namespace

quil::Targets quil::hands::TetherIA_AeroHandOpen(const Readings& in, const MemoryRef& memory, const Coefficients& tables) {
    Targets out;
    if (ruiyan_chain::run_rows(in, tables, out) <= 22) {
        // A short emission would leave the hand half-set; the rows always emit 23 values.
        out.fill(0.0);
        return out;
    }
    ruiyan_chain::thumb_and_fingers(out, kChain);
    // The thumb roll is not driven, except on a fist.
    out[0] = 0;
    if (ruiyan_chain::fist_boost(out, kFist, kFistGains)) out[0] = -50;
    if (out[1] < -55) out[1] = -55;
    scale_thumb(out, memory);
    ruiyan_chain::distal_and_full_bend(out, /*lock_little=*/false);
    pinch(out, memory);
    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
