// LINKERBOT LinkerHand O7: the seven-actuator sibling of the O6 on the common coefficient set.
// Its firmware tests the reading bounds itself (a NaN reading passes into the rows) and clears
// the whole target array before writing it. The thumb tip follows the first thumb joint, and a
// four-case pinch assist, gated by two threshold pairs, floors the thumb tip and the pinching
// finger at fixed pinch depths.
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/pinch.h"
#include "core/pinch_gates.h"
#include "core/thumb_coupling.h"
#include "models/catalogue.h"
#include "models/shared/common_coefficients.h"

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
constexpr ThresholdPair thumb_active_threshold{-40.0f, -75.0f};  // thumb_proximal below, thumb_distal above
constexpr ThresholdPair index_active_threshold{-40.0f, -75.0f};  // the index band on index_proximal

// In a pinch the thumb tip is scaled by a gain but floored at the pinch depth, and thumb_rotation and
// thumb_abduction go to the pinching finger's fixed targets. The finger is held no deeper than its own
// pinch depth.
void pinch_assist(Targets& out) {
    if (!thumb_active(out, thumb_active_threshold)) return;

    // Index: inside its band, or close enough that thumb and index together reach the pinch.
    const bool in_band = index_in_band(out, index_active_threshold);
    const bool reaching = index_reaches(out, thumb_active_threshold, index_active_threshold);
    if ((in_band || reaching) && out[slot::thumb_rotation] >= -20) {
        out[slot::thumb_distal] = pinch_floor(out[slot::thumb_distal] * double(1.3f), -58);
        out[slot::thumb_rotation] = -4;
        out[slot::thumb_abduction] = 30;
        out[slot::index_proximal] = pinch_floor(out[slot::index_proximal], -40);
    }

    if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] < -35 && out[slot::little_proximal] > -40) {
        out[slot::thumb_distal] = pinch_floor(out[slot::thumb_distal] * double(1.2f), -58);
        out[slot::thumb_rotation] = -11;
        out[slot::thumb_abduction] = 30;
        out[slot::middle_proximal] = pinch_floor(out[slot::middle_proximal], -40);
    } else if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 &&
               out[slot::ring_proximal] < -30 && out[slot::little_proximal] > -40) {
        out[slot::thumb_distal] = pinch_floor(out[slot::thumb_distal] * double(1.1f), -57);
        out[slot::thumb_rotation] = -18;
        out[slot::thumb_abduction] = 30;
        out[slot::ring_proximal] = pinch_floor(out[slot::ring_proximal] * double(1.2f), -41);
    }

    // The little finger pinch turns the thumb the other way (thumb_abduction comes out positive).
    if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] > -40 && out[slot::ring_proximal] > -30 &&
        out[slot::little_proximal] < -35) {
        out[slot::thumb_distal] = pinch_floor(out[slot::thumb_distal] * double(1.2f), -57);
        out[slot::thumb_rotation] = -27;
        out[slot::thumb_abduction] = -46;
        out[slot::little_proximal] = pinch_floor(out[slot::little_proximal] * double(1.5f), -50);
    }
}

}  // namespace

quil::Targets quil::hands::LINKERBOT_LinkerHand_O7(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    out.fill(0.0);
    run_linear_stage<kStandardRows>(in, Clamp::passes_nan, tables, out);

    kRotation.apply(out[slot::thumb_abduction], out[slot::thumb_distal]);
    // The rotation also follows the thumb tip and first joint directly.
    out[slot::thumb_abduction] = out[slot::thumb_abduction] * 0.3 - double(0.2f) * out[slot::thumb_distal] -
                                 double(0.3f) * out[slot::thumb_proximal];
    if (out[slot::thumb_abduction] < 0) out[slot::thumb_abduction] = 0;
    if (out[slot::thumb_abduction] > 30) out[slot::thumb_abduction] = 30;
    out[slot::thumb_base] = kThumbBase(out[slot::thumb_base]);
    if (out[slot::thumb_base] < -90) out[slot::thumb_base] = -90;
    out[slot::thumb_proximal] = kThumbFirst(out[slot::thumb_proximal]);
    if (out[slot::thumb_proximal] > 0) out[slot::thumb_proximal] = 0;
    if (out[slot::thumb_proximal] < -90) out[slot::thumb_proximal] = -90;
    out[slot::thumb_distal] =
        (out[slot::thumb_distal] * kTipOwnWeight + out[slot::thumb_proximal] * (1.0 - kTipOwnWeight)) * double(0.9f);
    if (out[slot::thumb_distal] < -75) out[slot::thumb_distal] = -75;
    out[slot::thumb_rotation] = kThumbSwing(out[slot::thumb_rotation]);
    kSwingStop.apply(out);

    if (out[slot::index_spread] > 30) out[slot::index_spread] = 30;
    close_spread(out[slot::index_spread], out[slot::index_distal], 0.15);
    scale_and_floor(out[slot::index_proximal], 0.9, kFullyClosed);
    out[slot::index_distal] = kIndexProximal(out[slot::index_distal]);
    if (out[slot::index_distal] < kFullyClosed) out[slot::index_distal] = kFullyClosed;
    spread_middle_from_neighbours(out, 0.24, 0.32);
    scale_and_floor(out[slot::middle_proximal], 0.9, kFullyClosed);
    out[slot::middle_distal] = kFingerProximal(out[slot::middle_distal]);
    if (out[slot::middle_distal] < kFullyClosed) out[slot::middle_distal] = kFullyClosed;
    if (out[slot::ring_spread] > 20) out[slot::ring_spread] = 20;
    close_spread(out[slot::ring_spread], out[slot::ring_distal], 0.15);
    scale_and_floor(out[slot::ring_proximal], 0.9, kFullyClosed);
    out[slot::ring_distal] = kFingerProximal(out[slot::ring_distal]);
    if (out[slot::ring_distal] < kFullyClosed) out[slot::ring_distal] = kFullyClosed;
    if (out[slot::little_spread] > 30) out[slot::little_spread] = 30;
    reshape_little_spread(out[slot::little_spread], LittleSpreadGain{1.5, 3.5, 30});
    close_spread(out[slot::little_spread], out[slot::little_distal], 0.25);
    // The little finger's travel ends at -84; its bend closes its spread from -5 on.
    scale_and_floor(out[slot::little_proximal], 0.95, -84);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5.0);
    // With the middle finger deep and ring and little fingers following, the ring and little
    // middle joints are driven further closed.
    if (out[slot::middle_proximal] <= -65 && out[slot::ring_proximal] <= -25 && out[slot::little_proximal] <= -15) {
        const double ring = 2 * out[slot::ring_proximal];
        out[slot::ring_proximal] = ring < -81 ? -81.0 : ring;
        const double little = 3 * out[slot::little_proximal];
        out[slot::little_proximal] = little < -100 ? -100.0 : little;
    }
    lock_full_bend(out, slot::little_distal, slot::little_proximal, -80);

    pinch_assist(out);

    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

