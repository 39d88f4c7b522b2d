// Couplings between the joints of one finger, as tendon-driven hands show them: a bending finger
// closes its spread, and the distal joint follows the proximal one at a fixed ratio.
#pragma once

#include "core/records.h"

namespace quil {

// A finger bent past `from` draws its spread joint in by gain * (flexion - from), never past
// straight (0). With `from` = 0 the shift is exact, so the pull is gain * flexion to the bit.
inline double close_spread(double spread, double flexion, double gain, double from = 0.0) {
    if (flexion < from) {
        spread = gain * (flexion - from) + spread;
        if (spread < 0) spread = 0.0;
    }
    return spread;
}

// The distal joints (slots 4, 8, 12, 16) follow the proximal ones that come right after them at
// `ratio`, never extending past straight.
inline void follow_distal_joints(TargetArray& out, double ratio) {
    out[4] = out[5] * ratio;
    out[8] = out[9] * ratio;
    out[12] = out[13] * ratio;
    out[16] = out[17] * ratio;
    for (int i : {4, 8, 12, 16})
        if (out[i] > 0) out[i] = 0.0;
}

}  // namespace quil
