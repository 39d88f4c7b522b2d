// CHOHO Hand: the RY_H15 joint chain (core/ruiyan_chain.h) with a plainer thumb base and a thumb
// tip that keeps most of its own bend, and a four-finger pinch assist of its own. Index and
// middle pinches hold once they have closed fully (core/held_pinch.h); ring and little pinches
// act only while their trigger holds.
#include "core/common_coefficients.h"
#include "core/held_pinch.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "core/ruiyan_chain.h"
#include "models/catalogue.h"

QUIL_PUBLISH_COEFFICIENTS(CHOHO_Hand, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints.
const quil::SlotDeclaration quil::hands::CHOHO_Hand_slots = quil::kTipsAtEightTenths;

namespace {

using namespace quil;

// Differences from the RY_H15: shallow thumb-base bends are not amplified, and the thumb tip
// is a blend of 63% of its own bend with the base (RY_H15: half the base alone).
constexpr ruiyan_chain::ChainVariant kChain{
    ruiyan_chain::ThumbBaseBands::plain_shallow,
    ruiyan_chain::ThumbTipBlend{0.6302521008403361, 1.0, double(0.9f)},
    ruiyan_chain::ThumbSpreadGains{0.3, 0.35},
    0.95,   // little finger gain
    -84.0,  // and floor
};

// As on the RY_H15, the fist boost acts on every sample.
constexpr ruiyan_chain::FistBounds kAlwaysBoost{75.0, 65.0, 75.0, 85.0};
constexpr ruiyan_chain::FistGains kFistGains{1.15, 0.7};

constexpr ThresholdPair thumb_active_threshold{-40.0f, -72.0f};
constexpr ThresholdPair index_active_threshold{-40.0f, -75.0f};

void pinch(Targets& out, bool* done) {
    HeldPinch index{done[0]};
    HeldPinch middle{done[1]};

    const bool thumb_active = quil::thumb_active(out, thumb_active_threshold);
    const bool index_in_band = quil::index_in_band(out, index_active_threshold);
    const bool index_near_thumb = index_reaches(out, thumb_active_threshold, index_active_threshold);
    const bool thumb_not_spread = out[20] >= -20;

    if (index.runs(thumb_active && (index_in_band || index_near_thumb) && thumb_not_spread,
                   thumb_active || index_in_band)) {
        out[1] = -34;
        out[20] = 9;
        out[3] = 12;
        out[5] = -51;
        out[2] = pinch_toward(out[2] * double(1.15f), -64, 0.8f);
        out[6] = pinch_toward(out[6], -50, 0.15f);
        index.settle(out[6] <= -50 && out[2] <= -64, out[6] <= -35 && out[2] <= double(-44.8f));
    }

    // Read after the index pinch; the thumb's activity stays as it was before it.
    const bool middle_in_band = out[10] < -49 && out[10] >= -75;
    const bool middle_trigger = thumb_active && out[10] < -39.2 && out[18] > -40;
    const bool little_in_band = out[18] < -39 && out[18] > -80;

    if (middle.runs(middle_trigger, thumb_active || middle_in_band)) {
        out[2] = pinch_toward(out[2] * double(1.1f), -68, 0.2f);
        out[10] = pinch_toward(out[10], -49, 0.2f);
        out[1] = -46;
        out[20] = 9;
        out[3] = 17;
        out[9] = -56;
        middle.settle(out[10] <= -49 && out[2] <= -68, out[10] <= double(-34.3f) && out[2] <= double(-47.6f));
    } else if (thumb_active && out[6] > -40 && out[10] > -40 && out[14] < double(-39.2f) && out[18] > -40) {
        // Ring pinch, only while its trigger holds.
        out[1] = -36;
        out[20] = 0;
        out[3] = 16;
        out[13] = 0;
        out[2] = pinch_toward(out[2] * double(1.1f), -68, 0.5f);
        out[14] = pinch_toward(out[14] * double(1.2f), -49, 0.2f);
    }

    // Little pinch, after either of the above; its thumb pose wins.
    if (thumb_active && little_in_band && out[6] > -40 && out[10] > -40 && out[14] > -30) {
        out[1] = 0;
        out[20] = 2;
        out[3] = 24;
        out[17] = 0;
        out[2] = pinch_toward(out[2] * double(1.1f), -72, 0.8f);
        out[18] = pinch_toward(out[18] * double(1.2f), -52, 0.8f);
    }
}

}  // namespace

quil::Targets quil::hands::CHOHO_Hand(const Readings& in, const MemoryRef& memory, const Coefficients& tables) {
    Targets out;
    if (ruiyan_chain::run_rows(in, tables, out) <= 22) {
        // A short emission would leave the hand half-set; the rows always emit 23 values.
        out.fill(0.0);
        return out;
    }
    ruiyan_chain::thumb_and_fingers(out, kChain);
    ruiyan_chain::fist_boost(out, kAlwaysBoost, kFistGains);
    ruiyan_chain::distal_and_full_bend(out, /*lock_little=*/true);
    pinch(out, memory.pinch_latches);
    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
