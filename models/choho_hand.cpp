// CHOHO Hand: the RY_H15 joint chain (models/shared/blended_thumb_chain.h) with a plainer thumb base and a thumb
// tip that keeps most of its own bend, and a four-finger pinch assist of its own. Index and
// middle pinches hold once they have closed fully (core/held_pinch.h); ring and little pinches
// act only while their trigger holds.
#include "core/held_pinch.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "models/catalogue.h"
#include "models/shared/blended_thumb_chain.h"
#include "models/shared/common_coefficients.h"

QUIL_PUBLISH_COEFFICIENTS(CHOHO_Hand, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints.
const quil::SlotDeclaration quil::hands::CHOHO_Hand_slots = quil::kTipsAtEightTenths;

namespace {

using namespace quil;

// Differences from the RY_H15: shallow thumb-base bends are not amplified, and the thumb tip
// is a blend of 63% of its own bend with the base (RY_H15: half the base alone).
constexpr blended_thumb_chain::ChainVariant kChain{
    blended_thumb_chain::ThumbBaseBands::plain_shallow,
    blended_thumb_chain::ThumbTipBlend{0.6302521008403361, 1.0, double(0.9f)},
    blended_thumb_chain::ThumbSpreadGains{0.3, 0.35},
    0.95,   // little finger gain
    -84.0,  // and floor
};

// As on the RY_H15, the fist boost acts on every sample.
constexpr blended_thumb_chain::FistBounds kAlwaysBoost{75.0, 65.0, 75.0, 85.0};
constexpr blended_thumb_chain::FistGains kFistGains{1.15, 0.7};

constexpr ThresholdPair thumb_active_threshold{-40.0f, -72.0f};
constexpr ThresholdPair index_active_threshold{-40.0f, -75.0f};

void pinch(Targets& out, bool* done) {
    HeldPinch index{done[0]};
    HeldPinch middle{done[1]};

    const bool thumb_active = quil::thumb_active(out, thumb_active_threshold);
    const bool index_in_band = quil::index_in_band(out, index_active_threshold);
    const bool index_near_thumb = index_reaches(out, thumb_active_threshold, index_active_threshold);
    const bool thumb_not_spread = out[slot::thumb_rotation] >= -20;

    if (index.runs(thumb_active && (index_in_band || index_near_thumb) && thumb_not_spread,
                   thumb_active || index_in_band)) {
        out[slot::thumb_proximal] = -34;
        out[slot::thumb_rotation] = 9;
        out[slot::thumb_abduction] = 12;
        out[slot::index_distal] = -51;
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.15f), -64, 0.8f);
        out[slot::index_proximal] = pinch_toward(out[slot::index_proximal], -50, 0.15f);
        index.settle(out[slot::index_proximal] <= -50 && out[slot::thumb_distal] <= -64,
                     out[slot::index_proximal] <= -35 && out[slot::thumb_distal] <= double(-44.8f));
    }

    // Read after the index pinch; the thumb's activity stays as it was before it.
    const bool middle_in_band = out[slot::middle_proximal] < -49 && out[slot::middle_proximal] >= -75;
    const bool middle_trigger =
        thumb_active && out[slot::middle_proximal] < -39.2 && out[slot::little_proximal] > -40;
    const bool little_in_band = out[slot::little_proximal] < -39 && out[slot::little_proximal] > -80;

    if (middle.runs(middle_trigger, thumb_active || middle_in_band)) {
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -68, 0.2f);
        out[slot::middle_proximal] = pinch_toward(out[slot::middle_proximal], -49, 0.2f);
        out[slot::thumb_proximal] = -46;
        out[slot::thumb_rotation] = 9;
        out[slot::thumb_abduction] = 17;
        out[slot::middle_distal] = -56;
        middle.settle(out[slot::middle_proximal] <= -49 && out[slot::thumb_distal] <= -68,
                      out[slot::middle_proximal] <= double(-34.3f) && out[slot::thumb_distal] <= double(-47.6f));
    } else if (thumb_active && out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
               out[slot::ring_proximal] < double(-39.2f) && out[slot::little_proximal] > -40) {
        // Ring pinch, only while its trigger holds.
        out[slot::thumb_proximal] = -36;
        out[slot::thumb_rotation] = 0;
        out[slot::thumb_abduction] = 16;
        out[slot::ring_distal] = 0;
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -68, 0.5f);
        out[slot::ring_proximal] = pinch_toward(out[slot::ring_proximal] * double(1.2f), -49, 0.2f);
    }

    // Little pinch, after either of the above; its thumb pose wins.
    if (thumb_active && little_in_band && out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
        out[slot::ring_proximal] > -30) {
        out[slot::thumb_proximal] = 0;
        out[slot::thumb_rotation] = 2;
        out[slot::thumb_abduction] = 24;
        out[slot::little_distal] = 0;
        out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * double(1.1f), -72, 0.8f);
        out[slot::little_proximal] = pinch_toward(out[slot::little_proximal] * double(1.2f), -52, 0.8f);
    }
}

}  // namespace

quil::Targets quil::hands::CHOHO_Hand(const Readings& in, const MemoryRef& memory, const Coefficients& tables) {
    Targets out;
    if (zero_short_emission(blended_thumb_chain::run_rows(in, tables, out), out)) return out;
    blended_thumb_chain::thumb_and_fingers(out, kChain);
    blended_thumb_chain::fist_boost(out, kAlwaysBoost, kFistGains);
    blended_thumb_chain::distal_and_full_bend(out, /*lock_little=*/true);
    pinch(out, memory.pinch_latches);
    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

