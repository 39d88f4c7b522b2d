// A pinch that holds. Once a pinch has closed fully, its latch keeps the pinch running on later
// samples while the thumb stays active or the finger stays in its pinch band, even when the
// full trigger no longer holds, so a pinch does not flicker open as the glove readings wobble.
// The pinch releases its own latch once, after its pull, the finger or the thumb has opened
// past the release bounds.
#pragma once

namespace quil {

struct HeldPinch {
    bool& latch;

    // The pinch runs on its full trigger, or while latched and still engaged.
    bool runs(bool trigger, bool engaged) const { return trigger || (latch && engaged); }

    // After the pull: an open latch closes when the pinch reached its limits; a closed latch
    // stays closed while finger and thumb are still beyond their release bounds.
    void settle(bool reached_limits, bool beyond_release) {
        latch = latch ? beyond_release : reached_limits;
    }
};

}  // namespace quil
