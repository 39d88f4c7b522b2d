// The joint chain of the hands whose thumb tip is rebuilt as a blend of its own bend and the
// thumb base's, and whose bent middle finger drags its neighbours along: the RUIYAN RY_H15, and
// with a few changes of their own the CHOHO hand, the TetherIA AeroHandOpen, the INSPIRE ROBOTS
// RH56F1_E4 and the AgiBot OmniHand O10. A hand runs the pieces below in this order and adds its
// own rules between them:
//
//   run_rows               readings -> 23 limited row values (a NaN reading passes the clamp)
//   thumb_and_fingers      the five steps below, for hands that add nothing between them:
//     rotation_from_tip      a first estimate of the thumb rotation from the thumb tip
//     thumb_joints           thumb roll, base and tip bands, the tip blended with the base,
//                            the thumb spread
//     rotation_from_spread   the rotation recomputed from the spread and the tip
//     fingers                spreads capped and closed by their curls, finger gains, the
//                            little finger's spread
//     neighbour_drag         ring, little and index follow a bent middle finger; bent middle and
//                            ring fingers leave the thumb less room to spread
//   fist_boost             a fist bends the middle finger further and spreads the thumb less
//                          (on some hands the test passes on every sample)
//   distal_and_full_bend   finger tips at 0.8 of their distal joints, full-bend locks
//
// What the hands change is gathered in ChainVariant (how the thumb base is banded, how the
// thumb tip is blended with the base, the thumb spread's gains, the little finger's gain) and
// in the fist's bounds and gains. Slots go by the roles the library reports, so the thumb
// rotation below is the slot thumb_abduction and the thumb spread the slot thumb_rotation.
#pragma once

#include <algorithm>

#include "core/finger_coupling.h"
#include "core/linear_stage.h"
#include "core/slots.h"

namespace quil::blended_thumb_chain {

// Clamps the readings (the firmware's own two tests, so a NaN reaches every row), runs the
// common coefficient set and emits the limited rows. Returns the number of values emitted.
inline int run_rows(const Readings& in, const Coefficients& k, Targets& out) {
    return run_linear_stage<kStandardRows>(in, Clamp::passes_nan, k, out);
}

// How a hand bands its thumb base (thumb_proximal) before limiting it to [-90, 0].
enum class ThumbBaseBands {
    amplified,      // above -20 x1.2; above -60 0.6 v - 20; deeper + 4
    plain_shallow,  // above -20 unchanged; above -60 0.6 v - 20; deeper + 4
    shallow_only,   // left as it is in every band
};

// The thumb tip (thumb_distal) is rebuilt from itself and the thumb base (thumb_proximal):
//   tip = (tip * tip_weight + base_share * base * (1 - tip_weight)) * scale.
struct ThumbTipBlend {
    double tip_weight;
    double base_share;
    double scale;
};

// The thumb spread (thumb_rotation) keeps `near_open` of its row above -15 and `beyond` past it.
struct ThumbSpreadGains {
    double near_open;
    double beyond;
};

struct ChainVariant {
    ThumbBaseBands thumb_base;
    ThumbTipBlend thumb_tip;
    ThumbSpreadGains thumb_spread;
    double little_gain;   // little_proximal *= little_gain ...
    double little_floor;  // ... and no lower than little_floor
};

// The thumb rotation opens as the tip straightens and closes a little as it bends.
inline void rotation_from_tip(Targets& out) {
    if (out[slot::thumb_distal] > -10) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] - (out[slot::thumb_distal] + 10.0) * 2.5;
        if (out[slot::thumb_abduction] > 30) out[slot::thumb_abduction] = 30;
    }
    if (out[slot::thumb_distal] < -10) {
        out[slot::thumb_abduction] = out[slot::thumb_abduction] + (out[slot::thumb_distal] + 10.0) * 0.15;
        if (out[slot::thumb_abduction] < 20) out[slot::thumb_abduction] = 20;
    }
}

// Thumb roll, base and tip in their bands, then the thumb spread, which holds the base and the
// roll back when it is fully spread.
inline void thumb_joints(Targets& out, const ChainVariant& v) {
    // Thumb roll: shallow bends are damped, deep ones kept.
    if (out[slot::thumb_base] > -20) {
        out[slot::thumb_base] = out[slot::thumb_base] * 0.5;
    } else if (out[slot::thumb_base] > -60) {
        out[slot::thumb_base] = 0.4 * out[slot::thumb_base] - 5.0;
    }
    if (out[slot::thumb_base] < -90) out[slot::thumb_base] = -90;

    if (out[slot::thumb_proximal] > -20) {
        if (v.thumb_base == ThumbBaseBands::amplified) out[slot::thumb_proximal] = out[slot::thumb_proximal] * 1.2;
    } else if (v.thumb_base != ThumbBaseBands::shallow_only) {
        if (out[slot::thumb_proximal] > -60) {
            out[slot::thumb_proximal] = 0.6 * out[slot::thumb_proximal] - 20.0;
        } else {
            out[slot::thumb_proximal] = out[slot::thumb_proximal] + 4.0;
        }
    }
    if (out[slot::thumb_proximal] > 0) out[slot::thumb_proximal] = 0;
    if (out[slot::thumb_proximal] < -90) out[slot::thumb_proximal] = -90;

    // The firmware splits the tip at -20 and -50 with the same (unit) factor in every band; the
    // tip is then rebuilt as a blend with the base.
    const ThumbTipBlend& b = v.thumb_tip;
    out[slot::thumb_distal] =
        (out[slot::thumb_distal] * b.tip_weight + b.base_share * out[slot::thumb_proximal] * (1.0 - b.tip_weight)) *
        b.scale;
    if (out[slot::thumb_distal] < -75) out[slot::thumb_distal] = -75;

    // Thumb spread, with the thumb base and roll held back when it is fully spread.
    if (out[slot::thumb_rotation] > -15) {
        out[slot::thumb_rotation] = out[slot::thumb_rotation] * v.thumb_spread.near_open;
    } else {
        out[slot::thumb_rotation] = out[slot::thumb_rotation] * v.thumb_spread.beyond;
    }
    if (out[slot::thumb_rotation] < -45) {
        out[slot::thumb_rotation] = -45;
        out[slot::thumb_proximal] = std::max(out[slot::thumb_proximal], -44.0);
        out[slot::thumb_base] = std::max(out[slot::thumb_base], -49.0);
    }
}

// The rotation driven by the spread and the tip (instead of rotation_from_tip).
inline void rotation_from_spread(Targets& out) {
    out[slot::thumb_abduction] = -0.5 * out[slot::thumb_rotation] - 0.15 * out[slot::thumb_distal];
}

// Abductions capped and narrowed as their fingers bend, finger gains, the little finger's
// spread, and the rotation limited to [0, 30].
inline void fingers(Targets& out, const ChainVariant& v) {
    // Index: abduction capped and narrowed as the finger bends.
    if (out[slot::index_spread] > 30) out[slot::index_spread] = 30;
    if (out[slot::index_distal] < 0) {
        out[slot::index_spread] = out[slot::index_spread] + 0.15 * out[slot::index_distal];
        if (out[slot::index_spread] < 0) out[slot::index_spread] = 0;
    }
    out[slot::index_proximal] = out[slot::index_proximal] * 0.9;
    if (out[slot::index_distal] > -10) {
        // small bends pass unchanged
    } else if (out[slot::index_distal] > -60) {
        out[slot::index_distal] = 0.5 * out[slot::index_distal] - 10.0;
    } else {
        out[slot::index_distal] = out[slot::index_distal] * 1.1;
    }
    if (out[slot::index_distal] < -100) out[slot::index_distal] = -100;

    // The middle finger's abduction follows the index and ring abductions.
    out[slot::middle_spread] = 0.24 * out[slot::index_spread] - 0.32 * out[slot::ring_spread];
    out[slot::middle_proximal] = out[slot::middle_proximal] * 0.9;
    if (out[slot::middle_proximal] < -100) out[slot::middle_proximal] = -100;
    if (out[slot::middle_distal] > -15) {
        out[slot::middle_distal] = out[slot::middle_distal] * 1.25;
    } else if (out[slot::middle_distal] > -70) {
        out[slot::middle_distal] = out[slot::middle_distal] * 0.9;
    }
    if (out[slot::middle_distal] < -100) out[slot::middle_distal] = -100;

    // Ring.
    if (out[slot::ring_spread] > 20) out[slot::ring_spread] = 20;
    if (out[slot::ring_distal] < 0) {
        out[slot::ring_spread] = out[slot::ring_spread] + 0.15 * out[slot::ring_distal];
        if (out[slot::ring_spread] < 0) out[slot::ring_spread] = 0;
    }
    out[slot::ring_proximal] = out[slot::ring_proximal] * 0.9;
    if (out[slot::ring_proximal] < -100) out[slot::ring_proximal] = -100;
    if (out[slot::ring_distal] > -15) {
        out[slot::ring_distal] = out[slot::ring_distal] * 1.25;
    } else if (out[slot::ring_distal] > -70) {
        out[slot::ring_distal] = out[slot::ring_distal] * 0.9;
    }
    if (out[slot::ring_distal] < -100) out[slot::ring_distal] = -100;

    // Little: abduction boosted while small, narrowed by both little joints.
    if (out[slot::little_spread] > 30) out[slot::little_spread] = 30;
    reshape_little_spread(out[slot::little_spread], LittleSpreadGain{1.5, 3.5, 30});
    if (out[slot::little_distal] < 0) {
        out[slot::little_spread] = out[slot::little_spread] + 0.25 * out[slot::little_distal];
        if (out[slot::little_spread] < 0) out[slot::little_spread] = 0;
    }
    out[slot::little_proximal] = out[slot::little_proximal] * v.little_gain;
    if (out[slot::little_proximal] < v.little_floor) out[slot::little_proximal] = v.little_floor;
    if (out[slot::little_proximal] < -5) {
        out[slot::little_spread] = out[slot::little_spread] + 0.8 * (out[slot::little_proximal] + 5.0);
        if (out[slot::little_spread] < 0) out[slot::little_spread] = 0;
    }

    if (out[slot::thumb_abduction] < 0) out[slot::thumb_abduction] = 0;
    if (out[slot::thumb_abduction] > 30) out[slot::thumb_abduction] = 30;
}

inline void neighbour_drag(Targets& out) {
    // Ring and little are dragged along by a deeply bent middle finger, the index by middle
    // and index together.
    if (out[slot::middle_proximal] <= -65 && (out[slot::ring_proximal] <= -25 || out[slot::little_proximal] <= -15)) {
        out[slot::ring_proximal] = 2.0 * out[slot::ring_proximal];
        if (out[slot::ring_proximal] < -81) out[slot::ring_proximal] = -81;
        out[slot::little_proximal] = 3.0 * out[slot::little_proximal];
        if (out[slot::little_proximal] < -100) out[slot::little_proximal] = -100;
    }
    if (out[slot::middle_proximal] <= -70 && out[slot::index_proximal] <= -30) {
        out[slot::index_proximal] = 1.5 * out[slot::index_proximal];
        if (out[slot::index_proximal] < -81) out[slot::index_proximal] = -81;
    }
    // Bent middle and ring fingers leave the thumb less room to spread.
    if (out[slot::index_proximal] > double(-75.0f)) {
        double f = 1.0;
        if (out[slot::middle_proximal] < -70) f = f - 0.075;
        if (out[slot::ring_proximal] < -70) f = f - 0.075;
        out[slot::thumb_rotation] = out[slot::thumb_rotation] * f;
    }
}

// The body of the chain for hands that add nothing inside it: everything from the thumb rotation
// to the thumb relief of a bent middle finger, in the firmware's order.
inline void thumb_and_fingers(Targets& out, const ChainVariant& v) {
    thumb_joints(out, v);
    rotation_from_spread(out);
    fingers(out, v);
    neighbour_drag(out);
}

// The fist test: the proximal joints of all four fingers at or below (that is, bent at least
// as far as) these bounds. Positive bounds make it pass on every sample.
struct FistBounds {
    double index, middle, ring, little;  // index_proximal, middle_proximal,
                                         // ring_proximal, little_proximal
};

// What a fist does: the middle finger bends `middle` times further (about 15%) and the thumb
// spreads `spread` times as far (about 30% less).
struct FistGains {
    double middle;  // middle_proximal
    double spread;  // thumb_rotation
};

// Returns whether the fist test passed.
inline bool fist_boost(Targets& out, const FistBounds& b, const FistGains& g) {
    if (out[slot::index_proximal] <= b.index && out[slot::middle_proximal] <= b.middle &&
        out[slot::ring_proximal] <= b.ring && out[slot::little_proximal] <= b.little) {
        out[slot::middle_proximal] = out[slot::middle_proximal] * g.middle;
        out[slot::thumb_rotation] = out[slot::thumb_rotation] * g.spread;
        return true;
    }
    return false;
}

// Distal joints follow the proximal ones at 0.8, never past straight; a finger bent past its
// lock point is driven fully closed (the middle finger to its own -81). `lock_little` says
// whether the little finger has a lock too.
inline void distal_and_full_bend(Targets& out, bool lock_little) {
    for (int m : {slot::index_tip, slot::middle_tip, slot::ring_tip, slot::little_tip}) out[m] = out[m + 1] * 0.8;
    for (int m : {slot::index_tip, slot::middle_tip, slot::ring_tip, slot::little_tip})
        if (out[m] > 0) out[m] = 0;
    if (out[slot::index_proximal] < -90) {
        out[slot::index_distal] = -100;
        out[slot::index_proximal] = -100;
    }
    if (out[slot::middle_proximal] < -74) {
        out[slot::middle_distal] = -81;
        out[slot::middle_proximal] = -81;
    }
    if (out[slot::ring_proximal] < -90) {
        out[slot::ring_distal] = -100;
        out[slot::ring_proximal] = -100;
    }
    if (lock_little && out[slot::little_proximal] < -80) {
        out[slot::little_distal] = -100;
        out[slot::little_proximal] = -100;
    }
}

}  // namespace quil::blended_thumb_chain
