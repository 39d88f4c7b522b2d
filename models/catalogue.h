// The catalogue of hands: what the library knows of each hand, in catalogue order, expanded once
// from models/hand_list.h. The C exports, the hand handles, the tests and the benchmarks all
// take their hands from here.
#pragma once

#include <cstddef>
#include <string_view>

#include "core/records.h"
#include "models/slot_layout.h"

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
#include "models/hand_list.h"
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
