// Full-bend lock: once a finger's proximal joint is bent past the hand's lock depth, both of the
// finger's flexion slots go to the fully closed -100, so a fist closes completely instead of
// stopping a few degrees short of the stop.
#pragma once

#include "core/records.h"

namespace quil {

constexpr double kFullyClosed = -100.0;

// One finger: `judge` is the slot whose depth decides (strictly below `depth`), `partner` the
// other flexion slot of the same finger. Both become -100.
inline void lock_full_bend(TargetArray& out, int partner, int judge, double depth) {
    if (out[judge] < depth) {
        out[partner] = kFullyClosed;
        out[judge] = kFullyClosed;
    }
}

}  // namespace quil
