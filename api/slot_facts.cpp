// What each slot and reading means, as quil_linear/hand.h publishes it: the layout's roles and
// each hand's declared followers, with the facts measured from the mappings.
#include <array>
#include <cstring>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include "models/catalogue.h"
#include "models/slot_facts.h"
#include "quil_linear/hand.h"

namespace {

using quil::kHandCount;
using quil::kHandModels;

// The shortest decimal text that reads back as `v`.
std::string number(double v) {
    char buf[40];
    for (int precision = 1; precision <= 17; ++precision) {
        std::snprintf(buf, sizeof buf, "%.*g", precision, v);
        if (std::strtod(buf, nullptr) == v && (std::strchr(buf, 'e') == nullptr || precision == 17)) return buf;
    }
    std::snprintf(buf, sizeof buf, "%.17g", v);
    return buf;
}

std::string slot_term(double scale, int slot) {
    std::string s = "slot " + std::to_string(slot);
    return scale == 1.0 ? s : number(scale) + " * " + s;
}

// The relation as a formula over slots, in the order the value is computed.
std::string relation_text(const quil::SlotRelation& r) {
    if (!r.linear()) return r.rule_text;
    std::string t = slot_term(r.scale[0], r.source[0]);
    if (r.source[1] >= 0) {
        const double s = r.scale[1];
        t += (std::signbit(s) ? " - " : " + ") + slot_term(std::fabs(s), r.source[1]);
    }
    if (r.offset != 0.0) t += (r.offset < 0 ? " - " : " + ") + number(std::fabs(r.offset));
    if (r.lower != -std::numeric_limits<double>::infinity()) t = "max(" + t + ", " + number(r.lower) + ")";
    if (r.upper != std::numeric_limits<double>::infinity()) t = "min(" + t + ", " + number(r.upper) + ")";
    // A bounded formula is already one term; a sum needs brackets before its sign flips.
    const bool one_term = r.lower != -std::numeric_limits<double>::infinity() ||
                          r.upper != std::numeric_limits<double>::infinity();
    if (r.negated) t = one_term ? "-" + t : "-(" + t + ")";
    return t;
}

std::string departs_text(unsigned departs) {
    std::string t;
    auto add = [&](unsigned bit, const char* words) {
        if (!(departs & bit)) return;
        if (!t.empty()) t += ", ";
        t += words;
    };
    add(quil::kDepartsBendingFar, "when the hand bends far");
    add(quil::kDepartsInPinches, "in pinches");
    add(quil::kDepartsElsewhere, "in some other poses");
    return t;
}

struct Facts {
    std::array<std::array<quil_slot_info, 24>, kHandCount> slots{};
    std::array<std::array<std::string, 24>, kHandCount> relations;
    std::array<std::array<std::string, 24>, kHandCount> departs;
    std::array<quil_reading_info, 12> readings{};
    std::array<unsigned, kHandCount> uses{};  // per hand, the readings that move a slot
};

const Facts& facts() {
    static const Facts table = [] {
        Facts f;
        for (std::size_t h = 0; h < kHandCount; ++h) {
            const quil::HandModel& m = kHandModels[h];
            const quil::MeasuredSlot* measured = quil::measured_slots(m.name);
            for (int s = 0; s < 24; ++s) {
                quil_slot_info& i = f.slots[h][s];
                const quil::SlotRole& role = quil::slot_role(m, s);
                const quil::SlotKind kind = quil::slot_kind(m, s, measured);
                i.role = role.name;
                i.meaning = role.meaning;
                i.kind = static_cast<int>(kind);
                i.follows[0] = i.follows[1] = -1;
                if (const quil::SlotRelation* r = m.slots->follower(s)) {
                    i.follows[0] = r->source[0];
                    i.follows[1] = r->source[1];
                    f.relations[h][s] = relation_text(*r);
                    if (measured) f.departs[h][s] = departs_text(measured[s].departs);
                }
                i.relation = f.relations[h][s].c_str();
                i.departs = f.departs[h][s].c_str();
                i.value = std::numeric_limits<double>::quiet_NaN();
                if (measured) {
                    const quil::MeasuredSlot& ms = measured[s];
                    if (kind == quil::SlotKind::fixed || kind == quil::SlotKind::unused ||
                        kind == quil::SlotKind::terminator)
                        i.value = ms.min;
                    i.sign = ms.sign;
                    i.range_min = ms.min;
                    i.range_max = ms.max;
                    i.moved_by = ms.moved_by;
                    i.negative_zero = (ms.flags & quil::kMeasuredNegativeZero) ? 1 : 0;
                    f.uses[h] |= ms.moved_by;
                } else {
                    i.range_min = i.range_max = std::numeric_limits<double>::quiet_NaN();
                }
            }
        }
        for (std::size_t r = 0; r < 12; ++r) {
            const quil::ReadingRole& role = quil::kReadingRoles[r];
            quil_reading_info& i = f.readings[r];
            i.name = role.name;
            i.finger = role.finger;
            i.motion = role.motion;
            i.unit = "degrees";
            i.meaning = role.meaning;
            for (std::size_t h = 0; h < kHandCount; ++h) i.hands += (f.uses[h] >> r) & 1u;
        }
        return f;
    }();
    return table;
}

// The catalogue position of an entry of quil_hand_at/quil_hand_find.
std::size_t position_of(const quil_hand_info* hand) {
    const quil::HandModel* m = quil::find_hand_model(hand->name);
    return m ? static_cast<std::size_t>(m - kHandModels) : kHandCount;
}

}  // namespace

extern "C" {

QUIL_API const quil_slot_info* quil_hand_slot(const quil_hand_info* hand, size_t slot) {
    if (!hand || !hand->name || slot >= 24) return nullptr;
    const std::size_t h = position_of(hand);
    return h < kHandCount ? &facts().slots[h][slot] : nullptr;
}

QUIL_API const quil_reading_info* quil_reading(size_t index) {
    return index < 12 ? &facts().readings[index] : nullptr;
}

QUIL_API int quil_hand_uses_reading(const quil_hand_info* hand, size_t reading) {
    if (!hand || !hand->name || reading >= 12) return 0;
    const std::size_t h = position_of(hand);
    return h < kHandCount ? static_cast<int>((facts().uses[h] >> reading) & 1u) : 0;
}

QUIL_API const char* quil_slot_kind_name(int kind) {
    static const char* const names[] = {"joint", "follower", "fixed", "unused", "terminator", "gesture_code"};
    return kind >= 0 && kind < 6 ? names[kind] : "unknown";
}

}  // extern "C"
