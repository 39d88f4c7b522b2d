// Wide-range linkages: on hands whose thumb and finger linkages travel much further than the
// glove's joints, the thumb tip, the thumb's first joint, the index knuckle and the finger joints
// each pass through a three-piece gain curve and are floored at their end stops. A thumb tip
// bent past its knee straightens the two thumb base joints a little, or the tip would push the
// thumb into the palm.
#pragma once

#include "core/curves.h"
#include "core/finger_remap.h"
#include "core/records.h"

namespace quil {

// The thumb tip (out[2]) and how it drags the thumb base joints (out[0], out[1]).
struct ThumbTipLinkage {
    Curve3 curve;
    double floor;     // end stop of the tip
    double knee;      // a tip bent below it straightens the base joints
    double gain;      // base joint = base joint - tip * gain - offset
    double offset;
};

inline void bend_thumb_tip(Targets& out, const ThumbTipLinkage& t) {
    out[2] = t.curve(out[2]);
    if (out[2] < t.floor) out[2] = t.floor;
    if (out[2] < t.knee) {
        out[1] = out[1] - out[2] * t.gain - t.offset;
        out[0] = out[0] - out[2] * t.gain - t.offset;
    }
}

// The thumb's first joint (out[1]), the index knuckle (out[5]) and the four fingers' proximal
// (6, 10, 14, 18) and distal (9, 13, 17) slots, each through its curve and floored.
struct JointLinkages {
    Curve3 thumb_base;
    double thumb_base_floor;
    Curve3 index_knuckle;
    double index_knuckle_floor;
    FingerRemap fingers;
};

inline void remap_joint_linkages(Targets& out, const JointLinkages& l) {
    out[1] = l.thumb_base(out[1]);
    if (out[1] < l.thumb_base_floor) out[1] = l.thumb_base_floor;
    out[5] = l.index_knuckle(out[5]);
    if (out[5] < l.index_knuckle_floor) out[5] = l.index_knuckle_floor;
    l.fingers.apply(out, {6, 10, 14, 18}, {9, 13, 17});
}

}  // namespace quil
