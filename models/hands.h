// The mapping of every hand: twelve glove readings, the hand's memory and its coefficient
// tables in, 24 joint targets out. Hands without memory ignore `memory`; hands with memory read
// and update only the fields they keep (see MemoryRef). Each hand's file also publishes its
// constant coefficient tables and what it declares of its output slots (models/slot_layout.h).
#pragma once

#include "core/records.h"
#include "models/slot_layout.h"

namespace quil::hands {

#define QUIL_MODEL(hand, version, buffer, keeps_state)                          \
    extern const Coefficients hand##_coefficients;                              \
    extern const SlotDeclaration hand##_slots;                                 \
    TargetArray hand(const InputAngles& in, const MemoryRef& memory,            \
                     const Coefficients& tables = hand##_coefficients);
#include "models/hand_list.h"
#undef QUIL_MODEL

}  // namespace quil::hands
