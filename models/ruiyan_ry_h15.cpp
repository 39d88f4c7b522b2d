// RUIYAN RY_H15: the common coefficient set with the RY_H15 joint chain (core/ruiyan_chain.h),
// and a thumb-to-index / thumb-to-middle pinch assist that remembers a completed pinch. The
// first time a pinch comes close it is approached gently; once it has closed fully the latch
// holds, and later samples pull harder to keep the pads together.
#include "core/common_coefficients.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "core/ruiyan_chain.h"
#include "models/catalogue.h"

QUIL_PUBLISH_COEFFICIENTS(RUIYAN_RY_H15, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints.
const quil::SlotDeclaration quil::hands::RUIYAN_RY_H15_slots = quil::kTipsAtEightTenths;

namespace {

using namespace quil;

constexpr ruiyan_chain::ChainVariant kChain{
    ruiyan_chain::ThumbBaseBands::amplified,
    // The tip is simply half the base, slightly reduced: the tip's own weight is 0.
    ruiyan_chain::ThumbTipBlend{0.0, 0.5, double(0.9f)},
    ruiyan_chain::ThumbSpreadGains{0.3, 0.35},
    0.95,   // little finger gain
    -84.0,  // and floor
};

// The fist boost's bounds are positive, so it acts on every sample.
constexpr ruiyan_chain::FistBounds kAlwaysBoost{75.0, 65.0, 75.0, 85.0};
constexpr ruiyan_chain::FistGains kFistGains{1.15, 0.7};

constexpr ThresholdPair thumb_active_threshold{-30.0f, -70.0f};
constexpr ThresholdPair index_active_threshold{-30.0f, -75.0f};

// The pinch assist: index first, then middle, each with its latch in pinch_latches[0] and [1].
void pinch(Targets& out, bool* done) {
    if (!thumb_active(out, thumb_active_threshold)) return;

    const bool index_close = out[6] <= double(index_active_threshold.at_or_below) ||
                             out[1] + out[6] <= sum_of_upper_edges(thumb_active_threshold, index_active_threshold);
    if (out[6] >= double(index_active_threshold.at_or_above) && out[20] >= -20 && index_close) {
        if (done[0]) {
            out[6] = pinch_toward(out[6], -44, 0.5f, 10.0f);
            out[2] = pinch_toward(out[2] * 1.2, -43, 0.8f, 25.0f);
            done[0] = out[6] <= double(-30.8f) && out[2] <= double(-30.1f);
        } else {
            out[6] = pinch_toward(out[6], -44, 0.15f);
            out[2] = pinch_toward(out[2] * 1.05, -43, 0.5f);
        }
        out[1] = -34;
        out[20] = 15;
        out[3] = 18;
        out[5] = -51;
        // Reaching both targets (the pull never passes them) latches the pinch.
        done[0] = done[0] || (out[6] <= -44 && out[2] <= -43);
    }

    if (out[10] < -36.9 && out[18] > -40) {
        if (done[1]) {
            out[2] = pinch_toward(out[2], -44, 0.5f, 10.0f);
            out[10] = pinch_toward(out[10], -41, 0.8f, 15.0f);
            // -28.7 as the firmware's single-precision constant was recorded.
            done[1] = out[10] <= -28.69999885559082 && out[2] <= double(-30.8f);
        } else {
            out[2] = pinch_toward(out[2] * 1.1, -44, 0.4f);
            out[10] = pinch_toward(out[10], -41, 0.4f);
        }
        out[1] = -46;
        out[20] = 21;
        out[3] = 28;
        out[9] = -56;
        done[1] = done[1] || (out[10] <= -41 && out[2] <= -44);
    }
}

}  // namespace

quil::Targets quil::hands::RUIYAN_RY_H15(const Readings& in, const MemoryRef& memory, const Coefficients& tables) {
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
