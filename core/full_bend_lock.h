// Full-bend lock: once a finger's proximal joint is bent past the hand's lock depth, both of the
// finger's flexion slots go to the fully closed -100, so a fist closes completely instead of
// stopping a few degrees short of the stop.
#pragma once

#include "core/records.h"
#include "core/slots.h"

namespace quil {

constexpr double kFullyClosed = -100.0;

// One finger: `judge` is the slot whose depth decides (strictly below `depth`), `partner` the
// other flexion slot of the same finger. Both go to `locked`: -100, or the end stop of a finger
// whose linkage stops short of it.
inline void lock_full_bend(Targets& out, int partner, int judge, double depth,
                           double locked = kFullyClosed) {
    if (out[judge] < depth) {
        out[partner] = locked;
        out[judge] = locked;
    }
}

// The whole hand, finger by finger: index, middle and ring lock past `finger_depth`, the little
// finger, which reaches its stop earlier, past `little_depth`.
inline void lock_full_bends(Targets& out, double finger_depth, double little_depth) {
    lock_full_bend(out, slot::index_distal, slot::index_proximal, finger_depth);
    lock_full_bend(out, slot::middle_distal, slot::middle_proximal, finger_depth);
    lock_full_bend(out, slot::ring_distal, slot::ring_proximal, finger_depth);
    lock_full_bend(out, slot::little_distal, slot::little_proximal, little_depth);
}

}  // namespace quil
