// Finger couplings that many hands share: deep bends compressed past a knee, a bending
// neighbour pulling a joint along, abduction coupled to flexion, and distal joints slaved to
// the proximal ones.
#pragma once

#include "core/records.h"

namespace quil {

// Past the knee (strictly below `knee`) the joint is rescaled to gain * v + offset, and the
// rescaled value is floored; above the knee it is left alone.
inline void rescale_below(double& v, double knee, double gain, double offset, double floor) {
    if (v < knee) {
        v = gain * v + offset;
        if (v < floor) v = floor;
    }
}

// While `source` is bent past `knee`, `joint` is pulled by gain * (source - knee), written as
// the firmware forms it: (source + shift) * gain with shift = -knee.
inline void pull_along(double& joint, double source, double knee, double gain) {
    if (source < knee) joint = joint + (source + -knee) * gain;
}

// A bent joint (`source` < 0) closes the abduction `spread` by gain * source, never past zero.
inline void close_spread(double& spread, double source, double gain) {
    if (source < 0) {
        spread = spread + source * gain;
        if (spread < 0) spread = 0;
    }
}

// A finger bent past `knee` closes the abduction `spread` by gain * (source - knee), never past
// zero.
inline void close_spread_past(double& spread, double source, double knee, double gain) {
    if (source < knee) {
        spread = spread + (source + -knee) * gain;
        if (spread < 0) spread = 0;
    }
}

// The first slot of each doubly driven finger (4, 8, 12, 16) follows its second slot at `gain`,
// never extending past straight.
inline void follow_distal(TargetArray& out, double gain) {
    out[4] = out[5] * gain;
    out[8] = out[9] * gain;
    out[12] = out[13] * gain;
    out[16] = out[17] * gain;
    for (int i : {4, 8, 12, 16})
        if (out[i] > 0) out[i] = 0;
}

}  // namespace quil
