// LINKERBOT LinkerHand O6: a six-actuator hand on the common coefficient set. The thumb rotation
// follows the thumb tip, finger joints are reshaped by piecewise gains, abductions close as the
// fingers bend, and a two-case pinch assist puts the thumb and the index or middle finger on
// fixed pinch targets.
#include "core/common_coefficients.h"
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/linear_stage.h"
#include "core/thumb_coupling.h"
#include "models/catalogue.h"

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
    if (!(out[1] <= -30 && out[2] >= -70)) return;
    if (out[6] <= -30 && out[6] >= -70) {
        out[2] = -33;
        out[3] = -13;
        out[6] = -41;
    }
    if (out[6] > -40 && out[10] <= -35 && out[18] > -40) {
        out[2] = -33;
        out[3] = -19;
        out[10] = -43;
    }
}

}  // namespace

quil::Targets quil::hands::LINKERBOT_LinkerHand_O6(const Readings& in, const MemoryRef&, const Coefficients& tables) {
    Targets out;
    run_linear_stage<kStandardRows>(in, Clamp::min_max, tables, out);

    kRotation.apply(out[3], out[2]);
    if (out[7] > 30) out[7] = 30;
    if (out[15] > 20) out[15] = 20;
    if (out[19] > 30) out[19] = 30;
    if (out[19] < 7) {
        out[19] = out[19] * 1.5;
    } else {
        out[19] = out[19] + 3.5;
        if (out[19] > 30) out[19] = 30;
    }
    close_spread(out[7], out[5], 0.15);
    close_spread(out[15], out[13], 0.15);
    close_spread(out[19], out[17], 0.25);
    spread_middle_from_neighbours(out, 0.24, 0.32);

    shape(out[0], kThumbBase, -90);
    out[1] = kThumbFirst(out[1]);
    if (out[1] > 0) out[1] = 0;
    if (out[1] < -60) out[1] = -60;
    shape(out[2], kThumbTip, -75);
    out[20] = kThumbSwing(out[20]);
    kSwingStop.apply(out);

    shape(out[6], kMiddleJoint, kFullyClosed);
    shape(out[5], kIndexProximal, kFullyClosed);
    shape(out[9], kMiddleProximal, kFullyClosed);
    shape(out[10], kMiddleJoint, kFullyClosed);
    shape(out[13], kRingProximal, kFullyClosed);
    shape(out[14], kMiddleJoint, kFullyClosed);
    // The little finger's travel ends at -84; its bend closes its spread from -5 on.
    shape(out[18], kLittleMiddleJoint, -84);
    close_spread(out[19], out[18], 0.8, -5.0);

    follow_distal(out, 0.8);
    // The little finger locks earlier (-80) than the others (-90).
    lock_full_bends(out, -90, -80);

    pinch_assist(out);

    out[23] = -1.0;
    flip_thumb_and_index(out);
    return out;
}
