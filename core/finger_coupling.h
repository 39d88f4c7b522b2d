// Couplings between the joints of one finger and between neighbouring fingers: abduction that
// closes as the finger bends, the middle finger's spread following its neighbours, distal joints
// slaved to the proximal ones, deep bends rescaled past a knee, and a bending neighbour pulling
// a finger along.
#pragma once

#include <initializer_list>

#include "core/records.h"

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

// The middle finger has no abduction sensor of its own: its spread (out[11]) is taken from the
// index spread (out[7]) and the ring spread (out[15]).
inline void spread_middle_from_neighbours(Targets& out, double index_gain, double ring_gain) {
    out[11] = index_gain * out[7] - ring_gain * out[15];
}

// The first slot of each doubly driven finger (4, 8, 12, 16) follows its reshaped second slot at
// `gain`, never extending past straight.
inline void follow_distal(Targets& out, double gain) {
    out[4] = gain * out[5];
    out[8] = gain * out[9];
    out[12] = gain * out[13];
    out[16] = gain * out[17];
    for (int i : {4, 8, 12, 16})
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
