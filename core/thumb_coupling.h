// Thumb couplings of the hands whose thumb rotation (out[3]) is driven from the thumb tip
// (out[2]), and whose second thumb joint (out[20]) drags the first two thumb values with it
// when it swings far.
#pragma once

#include "core/records.h"

namespace quil {

// Tip above `knee`: the rotation opens by (tip - knee) * open_gain, capped at `open_cap`.
// Tip below `knee`: it closes by (tip - knee) * close_gain, floored at `close_floor`. At the
// knee itself neither acts. The firmware forms (tip - knee) as tip + (-knee).
struct RotationFromTip {
    double knee;
    double open_gain;
    double open_cap;
    double close_gain;
    double close_floor;

    void apply(double& rotation, double tip) const {
        if (tip > knee) {
            rotation = rotation - (tip + -knee) * open_gain;
            if (rotation > open_cap) rotation = open_cap;
        }
        if (tip < knee) {
            rotation = rotation + (tip + -knee) * close_gain;
            if (rotation < close_floor) rotation = close_floor;
        }
    }
};

// out[20] past `swing_floor` is held there, and then out[1] and out[0] may bend no further than
// their own floors, so the thumb does not fold into the palm.
struct ThumbSwingStop {
    double swing_floor;
    double first_floor;   // out[1]
    double base_floor;    // out[0]

    void apply(Targets& out) const {
        if (out[20] < swing_floor) {
            out[20] = swing_floor;
            if (out[1] < first_floor) out[1] = first_floor;
            if (out[0] < base_floor) out[0] = base_floor;
        }
    }
};

}  // namespace quil
