// Finger bend couplings: a deep bend rescaled past a knee so the fist closes fully, a bending
// neighbour pulling a joint along, and the distal joints following the middle joints.
#pragma once

#include "core/records.h"

namespace quil {

// Past the knee (strictly below it) the joint becomes gain * v + offset, floored.
inline void rescale_past_knee(double& v, double knee, double gain, double offset, double floor) {
    if (v < knee) {
        v = v * gain + offset;
        if (v < floor) v = floor;
    }
}

// While `neighbour` is bent past `knee`, `joint` is pulled by gain * (neighbour - knee), unbounded.
inline void pull_with_neighbour(double& joint, double neighbour, double knee, double gain) {
    if (neighbour < knee) joint = joint + (neighbour - knee) * gain;
}

// The distal joint of each doubly driven finger (4, 8, 12, 16) follows the middle joint beside
// it (5, 9, 13, 17) at `ratio`, never extending past straight.
inline void distal_joints_follow(TargetArray& out, double ratio) {
    out[4] = out[5] * ratio;
    out[8] = out[9] * ratio;
    out[12] = out[13] * ratio;
    out[16] = out[17] * ratio;
    for (int i : {4, 8, 12, 16})
        if (out[i] > 0) out[i] = 0;
}

}  // namespace quil
