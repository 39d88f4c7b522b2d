// The mapping of every hand: twelve glove readings and the hand's memory in, 24 joint targets
// out. Hands without memory ignore `memory`; hands with memory read and update only the fields
// they keep (see MemoryRef).
#pragma once

#include "core/records.h"

namespace quil::hands {

#define QUIL_MODEL(hand, version, buffer, keeps_state) \
    TargetArray hand(const InputAngles& in, const MemoryRef& memory);
#include "api/model_list.h"
#undef QUIL_MODEL

}  // namespace quil::hands
