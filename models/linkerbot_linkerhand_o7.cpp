// LINKERBOT LinkerHand O7: the seven-actuator sibling of the O6 on the common coefficient set.
// Its firmware tests the reading bounds itself (a NaN reading passes into the rows) and clears
// the whole target array before writing it. The thumb tip follows the first thumb joint, and a
// four-case pinch assist, gated by two threshold pairs, floors the thumb tip and the pinching
// finger at fixed pinch depths.
#include "core/common_coefficients.h"
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "core/thumb_coupling.h"
#include "models/catalogue.h"

QUIL_PUBLISH_COEFFICIENTS(LINKERBOT_LinkerHand_O7, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// The finger tips keep the unshaped row, so they are joints of their own; the thumb tip follows the
// thumb's proximal joint at 0.9.
const quil::SlotDeclaration quil::hands::LINKERBOT_LinkerHand_O7_slots = quil::kNoFollowers
    .plus(quil::kThumbTipFollowsProximal);

namespace {

using namespace quil;

constexpr RotationFromTip kRotation{-10.0, 2.5, 30.0, 0.15, 20.0};
constexpr ThumbSwingStop kSwingStop{-45.0, -44.0, -49.0};

constexpr Curve3 kThumbBase{-20.0, -60.0, scale(0.5), affine(0.4, -5.0), scale(1.0)};
constexpr Curve3 kThumbFirst{-20.0, -60.0, scale(1.2), affine(0.6, -20.0), affine(1.0, 4.0)};
constexpr Curve3 kThumbSwing{-15.0, -30.0, scale(double(0.3f)), scale(double(0.35f)), scale(double(0.35f))};
constexpr Curve3 kIndexProximal{-10.0, -60.0, scale(1.0), affine(0.5, -10.0), scale(1.1)};
constexpr Curve3 kFingerProximal{-15.0, -70.0, scale(1.25), scale(0.9), scale(1.0)};

// The thumb tip is driven from the first thumb joint; the tip's own reading gets weight 0.
constexpr double kTipOwnWeight = 0.0;

void scale_and_floor(double& v, double gain, double floor) {
    v = v * gain;
    if (v < floor) v = floor;
}

// Pinch gates: [0] the slot must be at or below, [1] at or above.
constexpr ThresholdPair thumb_active_threshold{-40.0f, -75.0f};  // out[1] below, out[2] above
constexpr ThresholdPair index_active_threshold{-40.0f, -75.0f};  // the index band on out[6]

// In a pinch the thumb tip is scaled by a gain but floored at the pinch depth, and out[20] and
// out[3] go to the pinching finger's fixed targets. The finger is held no deeper than its own
// pinch depth.
void pinch_assist(Targets& out) {
    if (!thumb_active(out, thumb_active_threshold)) return;

    // Index: inside its band, or close enough that thumb and index together reach the pinch.
    const bool in_band = index_in_band(out, index_active_threshold);
    const bool reaching = index_reaches(out, thumb_active_threshold, index_active_threshold);
    if ((in_band || reaching) && out[20] >= -20) {
        out[2] = pinch_floor(out[2] * double(1.3f), -58);
        out[20] = -4;
        out[3] = 30;
        out[6] = pinch_floor(out[6], -40);
    }

    if (out[6] > -40 && out[10] < -35 && out[18] > -40) {
        out[2] = pinch_floor(out[2] * double(1.2f), -58);
        out[20] = -11;
        out[3] = 30;
        out[10] = pinch_floor(out[10], -40);
    } else if (out[6] > -40 && out[10] > -40 && out[14] < -30 && out[18] > -40) {
        out[2] = pinch_floor(out[2] * double(1.1f), -57);
        out[20] = -18;
        out[3] = 30;
        out[14] = pinch_floor(out[14] * double(1.2f), -41);
    }

    // The little finger pinch turns the thumb the other way (out[3] comes out positive).
    if (out[6] > -40 && out[10] > -40 && out[14] > -30 && out[18] < -35) {
        out[2] = pinch_floor(out[2] * double(1.2f), -57);
        out[20] = -27;
        out[3] = -46;
        out[18] = pinch_floor(out[18] * double(1.5f), -50);
    }
}

}  // namespace

quil::Targets quil::hands::LINKERBOT_LinkerHand_O7(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    out.fill(0.0);
    run_linear_stage<kStandardRows>(in, Clamp::passes_nan, tables, out);

    kRotation.apply(out[3], out[2]);
    // The rotation also follows the thumb tip and first joint directly.
    out[3] = out[3] * 0.3 - double(0.2f) * out[2] - double(0.3f) * out[1];
    if (out[3] < 0) out[3] = 0;
    if (out[3] > 30) out[3] = 30;
    out[0] = kThumbBase(out[0]);
    if (out[0] < -90) out[0] = -90;
    out[1] = kThumbFirst(out[1]);
    if (out[1] > 0) out[1] = 0;
    if (out[1] < -90) out[1] = -90;
    out[2] = (out[2] * kTipOwnWeight + out[1] * (1.0 - kTipOwnWeight)) * double(0.9f);
    if (out[2] < -75) out[2] = -75;
    out[20] = kThumbSwing(out[20]);
    kSwingStop.apply(out);

    if (out[7] > 30) out[7] = 30;
    close_spread(out[7], out[5], 0.15);
    scale_and_floor(out[6], 0.9, kFullyClosed);
    out[5] = kIndexProximal(out[5]);
    if (out[5] < kFullyClosed) out[5] = kFullyClosed;
    spread_middle_from_neighbours(out, 0.24, 0.32);
    scale_and_floor(out[10], 0.9, kFullyClosed);
    out[9] = kFingerProximal(out[9]);
    if (out[9] < kFullyClosed) out[9] = kFullyClosed;
    if (out[15] > 20) out[15] = 20;
    close_spread(out[15], out[13], 0.15);
    scale_and_floor(out[14], 0.9, kFullyClosed);
    out[13] = kFingerProximal(out[13]);
    if (out[13] < kFullyClosed) out[13] = kFullyClosed;
    if (out[19] > 30) out[19] = 30;
    if (out[19] < 7) {
        out[19] = out[19] * 1.5;
    } else {
        out[19] = out[19] + 3.5;
        if (out[19] > 30) out[19] = 30;
    }
    close_spread(out[19], out[17], 0.25);
    // The little finger's travel ends at -84; its bend closes its spread from -5 on.
    scale_and_floor(out[18], 0.95, -84);
    close_spread(out[19], out[18], 0.8, -5.0);
    // With the middle finger deep and ring and little fingers following, the ring and little
    // middle joints are driven further closed.
    if (out[10] <= -65 && out[14] <= -25 && out[18] <= -15) {
        const double ring = 2 * out[14];
        out[14] = ring < -81 ? -81.0 : ring;
        const double little = 3 * out[18];
        out[18] = little < -100 ? -100.0 : little;
    }
    lock_full_bend(out, 17, 18, -80);

    pinch_assist(out);

    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
