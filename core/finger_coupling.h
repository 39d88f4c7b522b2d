// Couplings between the joints of one finger and between neighbouring fingers: abduction that
// closes as the finger bends, the middle finger's spread following its neighbours, distal joints
// slaved to the proximal ones, deep bends rescaled past a knee, and a bending neighbour pulling
// a finger along.
#pragma once

#include <initializer_list>

#include "core/records.h"
#include "core/slots.h"

namespace quil {

// A finger bent past `knee` (strictly) closes its abduction `spread` by gain * (bend - knee),
// never past zero. Most hands start closing at once (knee 0); the difference is formed as
// bend + (-knee), which leaves bend itself when the knee is 0.
inline void close_spread(double& spread, double bend, double gain, double knee = 0.0) {
    if (bend < knee) {
        spread = spread + gain * (bend + -knee);
        if (spread < 0) spread = 0;
    }
}

// The middle finger has no abduction sensor of its own: its spread (middle_spread) is taken from the
// index spread (index_spread) and the ring spread (ring_spread).
inline void spread_middle_from_neighbours(Targets& out, double index_gain, double ring_gain) {
    out[slot::middle_spread] = index_gain * out[slot::index_spread] - ring_gain * out[slot::ring_spread];
}

// The little finger's spread: a narrow spread (below 7) is scaled up; a wider one is offset and
// capped.
struct LittleSpreadGain {
    double narrow_gain;
    double wide_offset;
    double cap;
};

inline void reshape_little_spread(double& spread, const LittleSpreadGain& g) {
    if (spread < 7) {
        spread = spread * g.narrow_gain;
    } else {
        spread = spread + g.wide_offset;
        if (spread > g.cap) spread = g.cap;
    }
}

// The first slot of each doubly driven finger (4, 8, 12, 16) follows its reshaped second slot at
// `gain`, never extending past straight.
inline void follow_distal(Targets& out, double gain) {
    out[slot::index_tip] = gain * out[slot::index_distal];
    out[slot::middle_tip] = gain * out[slot::middle_distal];
    out[slot::ring_tip] = gain * out[slot::ring_distal];
    out[slot::little_tip] = gain * out[slot::little_distal];
    for (int i : {slot::index_tip, slot::middle_tip, slot::ring_tip, slot::little_tip})
        if (out[i] > 0) out[i] = 0;
}

// Past the knee (strictly below `knee`) the joint is rescaled to gain * v + offset, and the
// rescaled value is floored; above the knee it is left alone. Deep bends are amplified this way
// so a fist closes fully.
inline void rescale_below(double& v, double knee, double gain, double offset, double floor) {
    if (v < knee) {
        v = gain * v + offset;
        if (v < floor) v = floor;
    }
}

// While `source` is bent past `knee`, `joint` is pulled by gain * (source - knee), written as
// the firmware forms it: (source + (-knee)) * gain. A bending neighbour drags a finger along.
inline void pull_along(double& joint, double source, double knee, double gain) {
    if (source < knee) joint = joint + (source + -knee) * gain;
}

}  // namespace quil
