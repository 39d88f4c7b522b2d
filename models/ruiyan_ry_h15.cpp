// RUIYAN RY_H15: the common coefficient set with the RY_H15 joint chain (models/shared/blended_thumb_chain.h),
// and a thumb-to-index / thumb-to-middle pinch assist that remembers a completed pinch. The
// first time a pinch comes close it is approached gently; once it has closed fully the latch
// holds, and later samples pull harder to keep the pads together.
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "models/catalogue.h"
#include "models/shared/blended_thumb_chain.h"
#include "models/shared/common_coefficients.h"

QUIL_PUBLISH_COEFFICIENTS(RUIYAN_RY_H15, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints.
const quil::SlotDeclaration quil::hands::RUIYAN_RY_H15_slots = quil::kTipsAtEightTenths;

namespace {

using namespace quil;

constexpr blended_thumb_chain::ChainVariant kChain{
    blended_thumb_chain::ThumbBaseBands::amplified,
    // The tip is simply half the base, slightly reduced: the tip's own weight is 0.
    blended_thumb_chain::ThumbTipBlend{0.0, 0.5, double(0.9f)},
    blended_thumb_chain::ThumbSpreadGains{0.3, 0.35},
    0.95,   // little finger gain
    -84.0,  // and floor
};

// The fist boost's bounds are positive, so it acts on every sample.
constexpr blended_thumb_chain::FistBounds kAlwaysBoost{75.0, 65.0, 75.0, 85.0};
constexpr blended_thumb_chain::FistGains kFistGains{1.15, 0.7};

constexpr ThresholdPair thumb_active_threshold{-30.0f, -70.0f};
constexpr ThresholdPair index_active_threshold{-30.0f, -75.0f};

// The pinch assist: index first, then middle, each with its latch in pinch_latches[0] and [1].
void pinch(Targets& out, bool* done) {
    if (!thumb_active(out, thumb_active_threshold)) return;

    const bool index_close = out[slot::index_proximal] <= double(index_active_threshold.at_or_below) ||
                             out[slot::thumb_proximal] + out[slot::index_proximal] <=
                                 sum_of_upper_edges(thumb_active_threshold, index_active_threshold);
    if (out[slot::index_proximal] >= double(index_active_threshold.at_or_above) && out[slot::thumb_rotation] >= -20 &&
        index_close) {
        if (done[0]) {
            out[slot::index_proximal] = pinch_toward(out[slot::index_proximal], -44, 0.5f, 10.0f);
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * 1.2, -43, 0.8f, 25.0f);
            done[0] = out[slot::index_proximal] <= double(-30.8f) && out[slot::thumb_distal] <= double(-30.1f);
        } else {
            out[slot::index_proximal] = pinch_toward(out[slot::index_proximal], -44, 0.15f);
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * 1.05, -43, 0.5f);
        }
        out[slot::thumb_proximal] = -34;
        out[slot::thumb_rotation] = 15;
        out[slot::thumb_abduction] = 18;
        out[slot::index_distal] = -51;
        // Reaching both targets (the pull never passes them) latches the pinch.
        done[0] = done[0] || (out[slot::index_proximal] <= -44 && out[slot::thumb_distal] <= -43);
    }

    if (out[slot::middle_proximal] < -36.9 && out[slot::little_proximal] > -40) {
        if (done[1]) {
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal], -44, 0.5f, 10.0f);
            out[slot::middle_proximal] = pinch_toward(out[slot::middle_proximal], -41, 0.8f, 15.0f);
            // -28.7 as the firmware's single-precision constant was recorded.
            done[1] = out[slot::middle_proximal] <= -28.69999885559082 && out[slot::thumb_distal] <= double(-30.8f);
        } else {
            out[slot::thumb_distal] = pinch_toward(out[slot::thumb_distal] * 1.1, -44, 0.4f);
            out[slot::middle_proximal] = pinch_toward(out[slot::middle_proximal], -41, 0.4f);
        }
        out[slot::thumb_proximal] = -46;
        out[slot::thumb_rotation] = 21;
        out[slot::thumb_abduction] = 28;
        out[slot::middle_distal] = -56;
        done[1] = done[1] || (out[slot::middle_proximal] <= -41 && out[slot::thumb_distal] <= -44);
    }
}

}  // namespace

quil::Targets quil::hands::RUIYAN_RY_H15(const Readings& in, const MemoryRef& memory, const Coefficients& tables) {
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

