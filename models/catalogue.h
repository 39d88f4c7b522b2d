// The catalogue of hands, expanded from the list in include/quil_linear/catalogue_list.h: each hand's mapping
// (one file per hand in models/) and the table of what the library knows of every hand, in
// catalogue order. The hand handles, the compatibility layer, the tests and the benchmarks all
// take their hands from here.
#pragma once

#include <cstddef>
#include <string_view>

#include "core/records.h"
#include "models/slot_layout.h"

// The mapping of every hand: twelve glove readings, the hand's memory and its coefficient
// tables in, 24 joint targets out. Hands without memory ignore `memory`; hands with memory read
// and update only the fields they keep (see MemoryRef). Each hand's file also publishes its
// constant coefficient tables and what it declares of its output slots (models/slot_layout.h).
namespace quil::hands {

#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) \
    extern const Coefficients hand##_coefficients;                              \
    extern const SlotDeclaration hand##_slots;                                  \
    Targets hand(const Readings& in, const MemoryRef& memory,                   \
                 const Coefficients& tables = hand##_coefficients);
#include "quil_linear/catalogue_list.h"
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

namespace quil {

enum class BufferKind { per_call, persistent };

using MapFn = Targets (*)(const Readings&, const MemoryRef&, const Coefficients&);

struct HandModel {
    const char* name;                // class name and export prefix
    const char* version;             // what <name>_GetVersion answers
    BufferKind buffer;               // how the C export hands out its result
    bool keeps_state;                // remembers pinch latches or thumb references
    MapFn map;                       // the mapping against a caller's memory and tables
    const Coefficients* published;   // the hand's constant coefficient tables
    const SlotDeclaration* slots;    // its followers and whether slot 23 is a gesture code
};

inline constexpr std::size_t kHandCount = 0
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) +1
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
    ;

// Every hand, in catalogue order.
extern const HandModel kHandModels[kHandCount];

// The hand named exactly `name`, else the one whose name matches ignoring case; null if none.
const HandModel* find_hand_model(std::string_view name);

// Writes up to `capacity` hands whose names are closest to `name` (ignoring case; a name that
// contains what was typed counts as closest), best first, and returns how many it wrote.
// Allocates nothing.
std::size_t closest_hand_models(std::string_view name, const HandModel** out, std::size_t capacity);

}  // namespace quil
