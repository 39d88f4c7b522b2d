// RUIYAN RY_H2: the common pose with the thumb rotation coupled to thumb slot 2 in both
// directions, the proximal finger curls taken at 0.9 and the middle ones in bands, and four
// pinch poses that set only the thumb's slots 2 and 3 and the bending finger, leaving the rest
// to the glove.
#include "core/common_coefficients.h"
#include "core/curves.h"
#include "core/finger_coupling.h"
#include "core/full_bend_lock.h"
#include "core/hand_class.h"
#include "core/linear_stage.h"
#include "core/spread_coupling.h"
#include "models/hands.h"

double Quil_linear::RUIYAN_RY_H2::weight[228] = QUIL_COMMON_WEIGHT;
double Quil_linear::RUIYAN_RY_H2::w0[19] = QUIL_COMMON_W0;

namespace {

using namespace quil;

constexpr SpreadCoupling kSpread{30, 20, 30, 7, 1.5, 3.5, 0.15, 0.15, 0.25, 0.24, 0.32};

// Band gains by finger and slot. Thumb slot 1 is lifted by 4 rather than scaled when deep.
constexpr Curve3 kThumb0{-20, -60, scale(0.5), affine(0.4, -5), scale(1)};
constexpr Curve3 kThumb1{-20, -40, scale(1.2), scale(0.6), affine(1, 4)};
constexpr Curve3 kThumb2{-20, -50, scale(0.8), scale(0.8), scale(1)};
constexpr Curve3 kThumb20{-15, -30, scale(0.4), scale(0.35), scale(0.3)};
constexpr Curve3 kIndex5{-10, -60, scale(1), affine(0.5, -10), scale(1.1)};
constexpr Curve3 kMiddle9{-15, -70, scale(1.15), scale(0.8), scale(1)};
constexpr Curve3 kRing13{-15, -70, scale(1.25), scale(0.9), scale(1)};

void floor_at(TargetArray& out, int slot, double limit) {
    if (out[slot] < limit) out[slot] = limit;
}

void joint_chain(TargetArray& out) {
    // The rotation follows thumb slot 2 both ways; at exactly -10 the lower branch still
    // rescales it.
    if (out[2] > -10) {
        out[3] = out[3] - (out[2] + 10) * 2.3;
        if (out[3] > 25) out[3] = 25;
    }
    if (out[2] <= -10) {
        out[3] = out[3] + (out[2] + 10) * 0.15;
        out[3] = out[3] * 0.78;
        if (out[3] < 20) out[3] = 20;
    }
    couple_spreads(out, kSpread);

    out[0] = kThumb0(out[0]);
    floor_at(out, 0, -90);
    out[1] = kThumb1(out[1]);
    if (out[1] > 0) out[1] = 0;
    floor_at(out, 1, -90);
    out[2] = kThumb2(out[2]);
    floor_at(out, 2, -75);
    out[20] = kThumb20(out[20]);
    // A fully rotated thumb would collide with the palm unless its joints stay clear.
    if (out[20] < -45) {
        out[20] = -45;
        floor_at(out, 1, -44);
        floor_at(out, 0, -49);
    }

    out[6] = out[6] * 0.9;
    floor_at(out, 6, -100);
    out[5] = kIndex5(out[5]);
    floor_at(out, 5, -100);
    out[10] = out[10] * 0.9;
    out[9] = kMiddle9(out[9]);
    floor_at(out, 9, -100);
    floor_at(out, 10, -100);
    out[14] = out[14] * 0.9;
    out[13] = kRing13(out[13]);
    floor_at(out, 13, -100);
    floor_at(out, 14, -100);
    out[18] = out[18] * 0.95;
    floor_at(out, 18, -84);
    // The little finger's spread closes further as it curls deep.
    if (out[18] < -5) {
        out[19] = out[19] + 0.8 * (out[18] + 5);
        if (out[19] < 0) out[19] = 0;
    }

    follow_distal(out, 0.8);
    lock_full_bends(out, -90, -80);
}

// With the thumb reaching (slot 1 at or below -40, slot 2 not below -75), the bending finger
// picks the pose. An index pose leaves out[6] at -43, which shuts out the others; out[14] at
// exactly -30 is neither a ring nor a little pinch.
void pinch_poses(TargetArray& out) {
    if (!(out[1] <= -40 && out[2] >= -75)) return;
    if (out[6] <= -35 && out[6] >= -70) {
        out[2] = -26; out[3] = 20; out[6] = -43;
    }
    const bool middle = out[6] > -40 && out[10] <= -31 && out[18] > -40;
    if (middle) {
        out[2] = -23; out[3] = 25; out[10] = -45;
    }
    if (!middle && out[6] > -40 && out[10] > -40 && out[14] < -30 && out[18] > -40) {
        out[2] = -23; out[3] = 28; out[14] = -41;
    }
    if (out[6] > -40 && out[10] > -40 && out[14] > -30 && out[18] < -35) {
        out[2] = -18; out[3] = 30; out[18] = -55;
    }
}

}  // namespace

quil::TargetArray quil::hands::RUIYAN_RY_H2(const InputAngles& in, const MemoryRef&) {
    using Hand = Quil_linear::RUIYAN_RY_H2;
    TargetArray out;
    const int k = run_linear_stage<kStandardRows>(in, Clamp::min_max, {Hand::weight, Hand::w0}, out);
    joint_chain(out);
    pinch_poses(out);
    out[k] = -1.0;
    flip_thumb_and_index(out);
    return out;
}

QUIL_DEFINE_GET_DATA_VALUE(RUIYAN_RY_H2)
QUIL_DEFINE_GET_DATA1(RUIYAN_RY_H2)
