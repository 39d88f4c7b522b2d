// The joint chain of the RUIYAN RY_H15 hand, which the CHOHO hand, the TetherIA AeroHandOpen,
// the INSPIRE ROBOTS RH56F1_E4 and the AgiBot OmniHand O10 share with a few changes of their
// own: the rows with the RY_H15's limits, then a fixed sequence of thumb bands, finger gains,
// neighbour couplings and full-bend locks. A hand runs the pieces below in this order and adds
// its own rules between them:
//
//   run_rows               readings -> 23 limited row values (a NaN reading passes the clamp)
//   thumb_and_fingers      the five steps below, for hands that add nothing between them:
//     rotation_from_tip      first thumb-rotation estimate from the thumb tip
//     thumb_joints           thumb roll, base and tip bands, thumb spread
//     rotation_from_spread   the rotation recomputed from spread and tip
//     fingers                abductions, finger gains, little-finger spread
//     neighbour_drag         ring/little/index follow a bent middle finger, thumb relief
//   fist_boost             deeper middle flexion and weaker thumb spread on a (possibly
//                          every-call) fist test
//   distal_and_full_bend   distal joints at 0.8, full-bend locks
//
// What the hands change is gathered in ChainVariant (how the thumb base is banded, how the
// thumb tip is rebuilt from the base, the thumb spread's gains, the little finger's gain) and
// in the fist's bounds and gains.
#pragma once

#include <algorithm>

#include "core/linear_stage.h"

namespace quil::ruiyan_chain {

// Clamps the readings (the firmware's own two tests, so a NaN reaches every row), runs the
// common coefficient set and emits the limited rows. Returns the number of values emitted.
inline int run_rows(const Readings& in, const Coefficients& k, Targets& out) {
    return run_linear_stage<kStandardRows>(in, Clamp::passes_nan, k, out);
}

// How a hand bands its thumb base (out[1]) before limiting it to [-90, 0].
enum class ThumbBaseBands {
    amplified,     // above -20 x1.2; above -60 0.6 v - 20; deeper + 4
    plain_shallow, // above -20 unchanged; above -60 0.6 v - 20; deeper + 4
    shallow_only,  // left as it is in every band
};

// The thumb tip (out[2]) is rebuilt from itself and the thumb base:
//   out[2] = (out[2] * tip_weight + base_share * out[1] * (1 - tip_weight)) * scale.
struct ThumbTipBlend {
    double tip_weight;
    double base_share;
    double scale;
};

// The thumb spread (out[20]) keeps `near_open` of its row above -15 and `beyond` past it.
struct ThumbSpreadGains {
    double near_open;
    double beyond;
};

struct ChainVariant {
    ThumbBaseBands thumb_base;
    ThumbTipBlend thumb_tip;
    ThumbSpreadGains thumb_spread;
    double little_gain;   // out[18] *= little_gain ...
    double little_floor;  // ... and no lower than little_floor
};

// The thumb rotation opens as the tip straightens and closes a little as it bends.
inline void rotation_from_tip(Targets& out) {
    if (out[2] > -10) {
        out[3] = out[3] - (out[2] + 10.0) * 2.5;
        if (out[3] > 30) out[3] = 30;
    }
    if (out[2] < -10) {
        out[3] = out[3] + (out[2] + 10.0) * 0.15;
        if (out[3] < 20) out[3] = 20;
    }
}

// Thumb roll, base and tip in their bands, then the thumb spread, which holds the base and the
// roll back when it is fully spread.
inline void thumb_joints(Targets& out, const ChainVariant& v) {
    // Thumb roll: shallow bends are damped, deep ones kept.
    if (out[0] > -20) {
        out[0] = out[0] * 0.5;
    } else if (out[0] > -60) {
        out[0] = 0.4 * out[0] - 5.0;
    }
    if (out[0] < -90) out[0] = -90;

    if (out[1] > -20) {
        if (v.thumb_base == ThumbBaseBands::amplified) out[1] = out[1] * 1.2;
    } else if (v.thumb_base != ThumbBaseBands::shallow_only) {
        if (out[1] > -60) {
            out[1] = 0.6 * out[1] - 20.0;
        } else {
            out[1] = out[1] + 4.0;
        }
    }
    if (out[1] > 0) out[1] = 0;
    if (out[1] < -90) out[1] = -90;

    // The firmware splits the tip at -20 and -50 with the same (unit) factor in every band; the
    // tip is then rebuilt as a blend with the base.
    const ThumbTipBlend& b = v.thumb_tip;
    out[2] = (out[2] * b.tip_weight + b.base_share * out[1] * (1.0 - b.tip_weight)) * b.scale;
    if (out[2] < -75) out[2] = -75;

    // Thumb spread, with the thumb base and roll held back when it is fully spread.
    if (out[20] > -15) {
        out[20] = out[20] * v.thumb_spread.near_open;
    } else {
        out[20] = out[20] * v.thumb_spread.beyond;
    }
    if (out[20] < -45) {
        out[20] = -45;
        out[1] = std::max(out[1], -44.0);
        out[0] = std::max(out[0], -49.0);
    }
}

// The rotation is finally driven by the spread and the tip. This replaces what
// rotation_from_tip made of it; the firmware has always run both.
inline void rotation_from_spread(Targets& out) {
    out[3] = -0.5 * out[20] - 0.15 * out[2];
}

// Abductions capped and narrowed as their fingers bend, finger gains, the little finger's
// spread, and the rotation limited to [0, 30].
inline void fingers(Targets& out, const ChainVariant& v) {
    // Index: abduction capped and narrowed as the finger bends.
    if (out[7] > 30) out[7] = 30;
    if (out[5] < 0) {
        out[7] = out[7] + 0.15 * out[5];
        if (out[7] < 0) out[7] = 0;
    }
    out[6] = out[6] * 0.9;
    if (out[5] > -10) {
        // small bends pass unchanged
    } else if (out[5] > -60) {
        out[5] = 0.5 * out[5] - 10.0;
    } else {
        out[5] = out[5] * 1.1;
    }
    if (out[5] < -100) out[5] = -100;

    // The middle finger's abduction follows the index and ring abductions.
    out[11] = 0.24 * out[7] - 0.32 * out[15];
    out[10] = out[10] * 0.9;
    if (out[10] < -100) out[10] = -100;
    if (out[9] > -15) {
        out[9] = out[9] * 1.25;
    } else if (out[9] > -70) {
        out[9] = out[9] * 0.9;
    }
    if (out[9] < -100) out[9] = -100;

    // Ring.
    if (out[15] > 20) out[15] = 20;
    if (out[13] < 0) {
        out[15] = out[15] + 0.15 * out[13];
        if (out[15] < 0) out[15] = 0;
    }
    out[14] = out[14] * 0.9;
    if (out[14] < -100) out[14] = -100;
    if (out[13] > -15) {
        out[13] = out[13] * 1.25;
    } else if (out[13] > -70) {
        out[13] = out[13] * 0.9;
    }
    if (out[13] < -100) out[13] = -100;

    // Little: abduction boosted while small, narrowed by both little joints.
    if (out[19] > 30) out[19] = 30;
    if (out[19] < 7) {
        out[19] = out[19] * 1.5;
    } else {
        out[19] = out[19] + 3.5;
        if (out[19] > 30) out[19] = 30;
    }
    if (out[17] < 0) {
        out[19] = out[19] + 0.25 * out[17];
        if (out[19] < 0) out[19] = 0;
    }
    out[18] = out[18] * v.little_gain;
    if (out[18] < v.little_floor) out[18] = v.little_floor;
    if (out[18] < -5) {
        out[19] = out[19] + 0.8 * (out[18] + 5.0);
        if (out[19] < 0) out[19] = 0;
    }

    if (out[3] < 0) out[3] = 0;
    if (out[3] > 30) out[3] = 30;
}

inline void neighbour_drag(Targets& out) {
    // Ring and little are dragged along by a deeply bent middle finger, the index by middle
    // and index together.
    if (out[10] <= -65 && (out[14] <= -25 || out[18] <= -15)) {
        out[14] = 2.0 * out[14];
        if (out[14] < -81) out[14] = -81;
        out[18] = 3.0 * out[18];
        if (out[18] < -100) out[18] = -100;
    }
    if (out[10] <= -70 && out[6] <= -30) {
        out[6] = 1.5 * out[6];
        if (out[6] < -81) out[6] = -81;
    }
    // Bent middle and ring fingers leave the thumb less room to spread.
    if (out[6] > double(-75.0f)) {
        double f = 1.0;
        if (out[10] < -70) f = f - 0.075;
        if (out[14] < -70) f = f - 0.075;
        out[20] = out[20] * f;
    }
}

// The body of the chain for hands that add nothing inside it: everything from the thumb rotation
// to the thumb relief of a bent middle finger, in the firmware's order.
inline void thumb_and_fingers(Targets& out, const ChainVariant& v) {
    rotation_from_tip(out);
    thumb_joints(out, v);
    rotation_from_spread(out);
    fingers(out, v);
    neighbour_drag(out);
}

// The fist test: the proximal joints of all four fingers at or below (that is, bent at least
// as far as) these bounds. Positive bounds make it pass on every sample.
struct FistBounds {
    double index, middle, ring, little;  // out[6], out[10], out[14], out[18]
};

// What a fist does: the middle finger bends `middle` times further (about 15%) and the thumb
// spreads `spread` times as far (about 30% less).
struct FistGains {
    double middle;  // out[10]
    double spread;  // out[20]
};

// Returns whether the fist test passed.
inline bool fist_boost(Targets& out, const FistBounds& b, const FistGains& g) {
    if (out[6] <= b.index && out[10] <= b.middle && out[14] <= b.ring && out[18] <= b.little) {
        out[10] = out[10] * g.middle;
        out[20] = out[20] * g.spread;
        return true;
    }
    return false;
}

// Distal joints follow the proximal ones at 0.8, never past straight; a finger bent past its
// lock point is driven fully closed (the middle finger to its own -81). `lock_little` says
// whether the little finger has a lock too.
inline void distal_and_full_bend(Targets& out, bool lock_little) {
    for (int m : {4, 8, 12, 16}) out[m] = out[m + 1] * 0.8;
    for (int m : {4, 8, 12, 16})
        if (out[m] > 0) out[m] = 0;
    if (out[6] < -90) {
        out[5] = -100;
        out[6] = -100;
    }
    if (out[10] < -74) {
        out[9] = -81;
        out[10] = -81;
    }
    if (out[14] < -90) {
        out[13] = -100;
        out[14] = -100;
    }
    if (lock_little && out[18] < -80) {
        out[17] = -100;
        out[18] = -100;
    }
}

}  // namespace quil::ruiyan_chain
