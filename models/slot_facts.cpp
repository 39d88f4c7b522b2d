#include "models/slot_facts.h"

#include <cstring>
#include <string_view>

namespace quil {

namespace {
// Generated: bash scripts/facts.sh regenerate.
const MeasuredHand kMeasured[] = {
#include "models/slot_facts_measured.inc"
};
}  // namespace

const MeasuredSlot* measured_slots(const char* name) {
    for (const MeasuredHand& h : kMeasured)
        if (std::strcmp(h.name, name) == 0) return h.slots;
    return nullptr;
}

const SlotRole& slot_role(const HandModel& model, int slot) {
    if (slot == slot::terminator && model.slots->gesture_code) return kGestureCodeRole;
    return kSlotRoles[static_cast<std::size_t>(slot)];
}

SlotKind slot_kind(const HandModel& model, int slot, const MeasuredSlot* measured) {
    if (slot == slot::terminator) return model.slots->gesture_code ? SlotKind::gesture_code : SlotKind::terminator;
    if (std::string_view(kSlotRoles[static_cast<std::size_t>(slot)].name) == "unused") return SlotKind::unused;
    if (model.slots->follower(slot)) return SlotKind::follower;
    if (measured && (measured[slot].flags & kMeasuredConstant)) return SlotKind::fixed;
    return SlotKind::joint;
}

}  // namespace quil
