// The last word on each finger's curl. The distal joint of a finger is not sensed on its own: it
// follows the proximal joint at a fixed ratio and never extends past straight. A finger bent
// past its lock threshold closes fully, both joints, so a fist does not stop a few degrees short
// of the hard stop.
#pragma once

#include "core/records.h"

namespace quil {

// out[m] = out[m + 1] * ratio for the distal slots 4, 8, 12 and 16, then each of them that came
// out positive is set to 0.
inline void follow_distal_joints(TargetArray& out, double ratio) {
    for (int m : {4, 8, 12, 16}) out[m] = out[m + 1] * ratio;
    for (int m : {4, 8, 12, 16})
        if (out[m] > 0) out[m] = 0;
}

// If out[proximal] is below `threshold`, the finger's two curl slots (proximal - 1, proximal)
// both go to the full bend, -100.
inline void lock_full_bend(TargetArray& out, int proximal, double threshold) {
    if (out[proximal] < threshold) {
        out[proximal - 1] = -100;
        out[proximal] = -100;
    }
}

}  // namespace quil
