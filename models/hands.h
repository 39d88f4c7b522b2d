// The mapping of every hand: twelve glove readings, the hand's memory and its coefficient
// tables in, 24 joint targets out. Hands without memory ignore `memory`; hands with memory read
// and update only the fields they keep (see MemoryRef). Each hand's file also publishes its
// constant coefficient tables and what it declares of its output slots (models/slot_layout.h).
#pragma once

#include "core/records.h"
#include "models/slot_layout.h"

namespace quil::hands {

#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) \
    extern const Coefficients hand##_coefficients;                              \
    extern const SlotDeclaration hand##_slots;                                  \
    Targets hand(const Readings& in, const MemoryRef& memory,            \
                     const Coefficients& tables = hand##_coefficients);
#include "models/hand_list.h"
#undef QUIL_MODEL

}  // namespace quil::hands

// Publishes a hand's coefficient tables, written once from the initialiser lists WEIGHT
// (19 x 12) and W0 (19), as quil::hands::<Hand>_coefficients: constants, so a hand handle
// answers as the hand was published whatever a host does to the compatibility class's tables.
#define QUIL_PUBLISH_COEFFICIENTS(Hand, WEIGHT, W0)                                      \
    namespace {                                                                          \
    constexpr double kPublishedWeight[228] = WEIGHT;                                     \
    constexpr double kPublishedW0[19] = W0;                                              \
    }                                                                                    \
    const quil::Coefficients quil::hands::Hand##_coefficients{kPublishedWeight, kPublishedW0};
