// Thumb couplings of the hands whose thumb rotation (thumb_abduction) is driven from the thumb tip
// (thumb_distal), and whose second thumb joint (thumb_rotation) drags the first two thumb
// values with it when it swings far.
#pragma once

#include "core/records.h"
#include "core/slots.h"

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

// thumb_rotation past `swing_floor` is held there, and then thumb_proximal and
// thumb_base may bend no further than their own floors, so the thumb does not fold into the palm.
struct ThumbSwingStop {
    double swing_floor;
    double first_floor;  // thumb_proximal
    double base_floor;   // thumb_base

    void apply(Targets& out) const {
        if (out[slot::thumb_rotation] < swing_floor) {
            out[slot::thumb_rotation] = swing_floor;
            if (out[slot::thumb_proximal] < first_floor) out[slot::thumb_proximal] = first_floor;
            if (out[slot::thumb_base] < base_floor) out[slot::thumb_base] = base_floor;
        }
    }
};

}  // namespace quil
