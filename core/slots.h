// Where each joint sits in a hand's 24 targets. Every hand uses the same places: the thumb in
// slots 0-3 and 20, then four slots per finger (tip, distal, proximal, spread) from the index to
// the little finger, two slots no hand drives, and the terminator. The names are the roles the
// library reports for the slots (models/slot_layout.cpp), so a rule reads as the joint it moves.
#pragma once

namespace quil::slot {

constexpr int thumb_base = 0;
constexpr int thumb_proximal = 1;
constexpr int thumb_distal = 2;
constexpr int thumb_abduction = 3;

constexpr int index_tip = 4;
constexpr int index_distal = 5;
constexpr int index_proximal = 6;
constexpr int index_spread = 7;

constexpr int middle_tip = 8;
constexpr int middle_distal = 9;
constexpr int middle_proximal = 10;
constexpr int middle_spread = 11;

constexpr int ring_tip = 12;
constexpr int ring_distal = 13;
constexpr int ring_proximal = 14;
constexpr int ring_spread = 15;

constexpr int little_tip = 16;
constexpr int little_distal = 17;
constexpr int little_proximal = 18;
constexpr int little_spread = 19;

constexpr int thumb_rotation = 20;

// Two rows without weights that no hand connects.
constexpr int unused_first = 21;
constexpr int unused_second = 22;

// The end marker -1.0, or on the hands that declare one, the recognised gesture.
constexpr int terminator = 23;

// Each finger's tip is the slot before its distal joint.
static_assert(index_distal == index_tip + 1 && middle_distal == middle_tip + 1 &&
                  ring_distal == ring_tip + 1 && little_distal == little_tip + 1,
              "a tip sits right before its distal joint");

}  // namespace quil::slot
