// Wide-range linkages, as the PICO PXRHand and the ROBOTERA XHAND1 have them: their thumb and
// finger linkages travel much further than the glove's joints, so the thumb tip, the thumb's
// first joint, the index knuckle and the finger joints each pass through a three-piece gain
// curve and are floored at their end stops. A thumb tip bent past its knee straightens the two
// thumb base joints a little, or the tip would push the thumb into the palm.
#pragma once

#include "core/curves.h"
#include "core/finger_remap.h"
#include "core/records.h"
#include "core/slots.h"

namespace quil {

// The thumb tip (thumb_distal) and how it drags the thumb base joints (thumb_base,
// thumb_proximal).
struct ThumbTipLinkage {
    Curve3 curve;
    double floor;  // end stop of the tip
    double knee;   // a tip bent below it straightens the base joints
    double gain;   // base joint = base joint - tip * gain - offset
    double offset;
};

inline void bend_thumb_tip(Targets& out, const ThumbTipLinkage& t) {
    out[slot::thumb_distal] = t.curve(out[slot::thumb_distal]);
    if (out[slot::thumb_distal] < t.floor) out[slot::thumb_distal] = t.floor;
    if (out[slot::thumb_distal] < t.knee) {
        out[slot::thumb_proximal] = out[slot::thumb_proximal] - out[slot::thumb_distal] * t.gain - t.offset;
        out[slot::thumb_base] = out[slot::thumb_base] - out[slot::thumb_distal] * t.gain - t.offset;
    }
}

// The thumb's first joint (thumb_proximal), the index knuckle (index_distal) and the four
// fingers' proximal joints and the middle, ring and little distal joints, each through its
// curve and floored.
struct JointLinkages {
    Curve3 thumb_base;
    double thumb_base_floor;
    Curve3 index_knuckle;
    double index_knuckle_floor;
    FingerRemap fingers;
};

inline void remap_joint_linkages(Targets& out, const JointLinkages& l) {
    out[slot::thumb_proximal] = l.thumb_base(out[slot::thumb_proximal]);
    if (out[slot::thumb_proximal] < l.thumb_base_floor) out[slot::thumb_proximal] = l.thumb_base_floor;
    out[slot::index_distal] = l.index_knuckle(out[slot::index_distal]);
    if (out[slot::index_distal] < l.index_knuckle_floor) out[slot::index_distal] = l.index_knuckle_floor;
    l.fingers.apply(out, {slot::index_proximal, slot::middle_proximal, slot::ring_proximal, slot::little_proximal},
                    {slot::middle_distal, slot::ring_distal, slot::little_distal});
}

}  // namespace quil
