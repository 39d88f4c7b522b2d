// What the library states about each slot of each hand: its role and kind from the layout and
// the hand's declaration, and the facts measured from the mapping over a fixed sweep of glove
// readings (models/slot_facts_measured.inc, written by the `facts` tool of the tests and checked
// against the library by them).
#pragma once

#include <cstddef>

#include "models/catalogue.h"
#include "models/slot_layout.h"

namespace quil {

// Where a follower's relation was seen not to hold, as bits.
enum : unsigned {
    kDepartsBendingFar = 1u,  // in the open-to-fist sweeps: full-bend locks, snaps, deep clamps
    kDepartsInPinches = 2u,   // in the pinch sweeps
    kDepartsElsewhere = 4u,   // only in other poses of the random sweep
};

enum : unsigned {
    kMeasuredConstant = 1u,      // one value over the whole sweep
    kMeasuredNegativeZero = 2u,  // comes out as -0.0 where it is zero (a mirrored slot)
};

struct MeasuredSlot {
    double min, max;    // over the sweep
    int sign;           // -1, 0, +1: how it moves as its finger's readings go from 0 to 60
    unsigned moved_by;  // bit i: reading x_i alone, swept from -20 to 120 with the rest at 0, moves it
    unsigned flags;     // kMeasured...
    unsigned departs;   // kDeparts... for a follower
};

struct MeasuredHand {
    const char* name;
    MeasuredSlot slots[24];
};

// The measured slots of `name`, or null for a hand the facts have not been measured for yet.
const MeasuredSlot* measured_slots(const char* name);

// The role of `slot` on `model` (slot 23 is the terminator or the gesture code).
const SlotRole& slot_role(const HandModel& model, int slot);

// The kind of `slot` on `model`: declared (terminator, gesture code, follower, the unused slots of
// the layout), else measured (fixed when it holds one value, else a joint).
SlotKind slot_kind(const HandModel& model, int slot, const MeasuredSlot* measured);

}  // namespace quil
