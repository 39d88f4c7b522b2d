// LINKERBOT LinkerHand O6: a six-actuator hand on the common coefficient set. The thumb rotation
// follows the thumb tip, finger joints are reshaped by piecewise gains, abductions close as the
// fingers bend, and a two-case pinch assist puts the thumb and the index or middle finger on
// fixed pinch targets.
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/thumb_coupling.h"
#include "models/catalogue.h"
#include "models/shared/common_coefficients.h"
#include "models/shared/common_spreads.h"

QUIL_PUBLISH_COEFFICIENTS(LINKERBOT_LinkerHand_O6, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)

// Finger tips at 0.8 of their distal joints and the middle spread set between the index and ring
// spreads.
const quil::SlotDeclaration quil::hands::LINKERBOT_LinkerHand_O6_slots = quil::kTipsAtEightTenths
    .plus(quil::middle_spread_between(0.24, 0.32));

namespace {

using namespace quil;

constexpr RotationFromTip kRotation{-10.0, 2.5, 30.0, 0.15, 20.0};
constexpr ThumbSwingStop kSwingStop{-45.0, -44.0, -49.0};

// Thumb gains.
constexpr Curve3 kThumbBase{-20.0, -60.0, scale(0.5), affine(0.4, -5.0), scale(1.0)};
constexpr Curve3 kThumbFirst{-20.0, -40.0, scale(0.6), scale(0.7), scale(0.75)};
constexpr Curve3 kThumbTip{-20.0, -50.0, scale(0.7), scale(0.8), scale(0.8)};
constexpr Curve3 kThumbSwing{-15.0, -30.0, scale(0.4), scale(0.35), scale(0.3)};
// Finger gains: light bends are amplified, mid-bends compressed, deep bends kept.
constexpr Curve3 kMiddleJoint{-30.0, -50.0, scale(1.15), scale(0.8), scale(1.0)};
constexpr Curve3 kIndexProximal{-10.0, -60.0, scale(1.0), affine(0.5, -10.0), scale(1.1)};
constexpr Curve3 kMiddleProximal{-15.0, -70.0, scale(1.15), scale(0.8), scale(1.0)};
constexpr Curve3 kRingProximal{-15.0, -70.0, scale(1.25), scale(0.9), scale(1.0)};
constexpr Curve3 kLittleMiddleJoint{-20.0, -60.0, scale(1.25), scale(0.8), scale(1.0)};

void shape(double& v, const Curve3& curve, double floor) {
    v = curve(v);
    if (v < floor) v = floor;
}

// Pinch assist: with the thumb bent toward the palm, a finger already near the thumb is put on
// its pinch target. The pinch rotation is set negative, so after the final mirror it comes out
// positive where an unpinched rotation comes out negative.
void pinch_assist(Targets& out) {
    if (!(out[slot::thumb_proximal] <= -30 && out[slot::thumb_distal] >= -70)) return;
    if (out[slot::index_proximal] <= -30 && out[slot::index_proximal] >= -70) {
        out[slot::thumb_distal] = -33;
        out[slot::thumb_abduction] = -13;
        out[slot::index_proximal] = -41;
    }
    if (out[slot::index_proximal] > -40 && out[slot::middle_proximal] <= -35 && out[slot::little_proximal] > -40) {
        out[slot::thumb_distal] = -33;
        out[slot::thumb_abduction] = -19;
        out[slot::middle_proximal] = -43;
    }
}

}  // namespace

quil::Targets quil::hands::LINKERBOT_LinkerHand_O6(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);

    kRotation.apply(out[slot::thumb_abduction], out[slot::thumb_distal]);
    couple_spreads(out, kCommonSpreads);

    shape(out[slot::thumb_base], kThumbBase, -90);
    out[slot::thumb_proximal] = kThumbFirst(out[slot::thumb_proximal]);
    if (out[slot::thumb_proximal] > 0) out[slot::thumb_proximal] = 0;
    if (out[slot::thumb_proximal] < -60) out[slot::thumb_proximal] = -60;
    shape(out[slot::thumb_distal], kThumbTip, -75);
    out[slot::thumb_rotation] = kThumbSwing(out[slot::thumb_rotation]);
    kSwingStop.apply(out);

    shape(out[slot::index_proximal], kMiddleJoint, kFullyClosed);
    shape(out[slot::index_distal], kIndexProximal, kFullyClosed);
    shape(out[slot::middle_distal], kMiddleProximal, kFullyClosed);
    shape(out[slot::middle_proximal], kMiddleJoint, kFullyClosed);
    shape(out[slot::ring_distal], kRingProximal, kFullyClosed);
    shape(out[slot::ring_proximal], kMiddleJoint, kFullyClosed);
    // The little finger's travel ends at -84; its bend closes its spread from -5 on.
    shape(out[slot::little_proximal], kLittleMiddleJoint, -84);
    close_spread(out[slot::little_spread], out[slot::little_proximal], 0.8, -5.0);

    follow_distal(out, 0.8);
    // The little finger locks earlier (-80) than the others (-90).
    lock_full_bends(out, -90, -80);

    pinch_assist(out);

    out[slot::terminator] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

