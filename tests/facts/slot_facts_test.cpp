// The slot facts the library ships are what the hands do: measured again here over the same
// sweep, every follower keeps its relation on moderate motions, and every role moves with the
// finger it names.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "facts/sweep.h"

namespace {

using namespace quil;
using namespace quil::facts;

bool same_bits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

TEST(SlotFacts, ShippedFactsAreWhatTheHandsDoNow) {
    for (const HandModel& m : kHandModels) {
        SCOPED_TRACE(m.name);
        const MeasuredSlot* shipped = measured_slots(m.name);
        ASSERT_NE(shipped, nullptr) << "no facts shipped: run bash scripts/facts.sh regenerate";
        const auto now = measure(m);
        for (int s = 0; s < 24; ++s) {
            SCOPED_TRACE("slot " + std::to_string(s) + " " + slot_role(m, s).name);
            EXPECT_TRUE(same_bits(shipped[s].min, now[s].min)) << shipped[s].min << " now " << now[s].min;
            EXPECT_TRUE(same_bits(shipped[s].max, now[s].max)) << shipped[s].max << " now " << now[s].max;
            EXPECT_EQ(shipped[s].sign, now[s].sign);
            EXPECT_EQ(shipped[s].moved_by, now[s].moved_by);
            EXPECT_EQ(shipped[s].flags, now[s].flags);
            EXPECT_EQ(shipped[s].departs, now[s].departs);
        }
    }
}

// A follower computes its value from the final values of its sources; on moderate motions of one
// finger at a time, where no pinch, lock or snap acts, that holds bit for bit.
TEST(SlotFacts, FollowersKeepTheirRelationOnModerateMotions) {
    const std::vector<facts::Readings> plain = plain_sweep();
    for (const HandModel& m : kHandModels) {
        SCOPED_TRACE(m.name);
        const auto t = run(m.name, plain);
        for (std::size_t f = 0; f < m.slots->count; ++f) {
            const SlotRelation& r = m.slots->followers[f];
            for (std::size_t k = 0; k < t.size(); ++k)
                ASSERT_EQ(r.apply(t[k].data()), t[k][r.slot]) << "slot " << r.slot << " at sample " << k;
        }
    }
}

// Slots that a role's own readings do not move, with what moves them instead. Anything else that
// its own finger leaves alone is a wrongly named slot.
struct Elsewhere {
    const char* hand;
    int slot;
    const char* moved_by_what;
};
const Elsewhere kMovedElsewhere[] = {
    // The thumb abduction rests at 30 and opens with the little finger's spread.
    {"BrainCo_Revo1", 3, "spread"},
    {"DexRobot_DexHand021_MP", 3, "spread"},
    {"INSPIRE_ROBOTS_RH56DFX", 3, "spread"},
    {"OYMotion_ROH_A001", 3, "spread"},
    {"ROBOTERA_XHAND1", 3, "spread"},
    // The thumb abduction keeps its rest value except in the thumb-to-finger contact poses.
    {"PaXini_DexH13_GEN2", 3, "contact poses"},
    // The thumb base stays at 0 except in a full fist.
    {"TetherIA_AeroHandOpen", 0, "full fist"},
};

const Elsewhere* moved_elsewhere(const char* hand, int slot) {
    for (const Elsewhere& e : kMovedElsewhere)
        if (std::strcmp(e.hand, hand) == 0 && e.slot == slot) return &e;
    return nullptr;
}

double span_under(const HandModel& m, int slot, const std::vector<int>& channels) {
    std::vector<facts::Readings> motion;
    for (int v = 0; v <= 80; ++v) motion.push_back(with(channels, 0.5 * v));
    double lo = INFINITY, hi = -INFINITY;
    for (const auto& row : run(m.name, motion)) {
        lo = std::fmin(lo, row[slot]);
        hi = std::fmax(hi, row[slot]);
    }
    return hi - lo;
}

// Each joint or follower moves when its finger's readings move; a finger joint moves more with
// its own finger than with any other finger's (outside pinches: one finger at a time, 0 to 40).
TEST(SlotFacts, RolesMoveWithTheFingerTheyName) {
    for (const HandModel& m : kHandModels) {
        SCOPED_TRACE(m.name);
        const MeasuredSlot* measured = measured_slots(m.name);
        for (int s = 0; s < 24; ++s) {
            const SlotKind kind = slot_kind(m, s, measured);
            if (kind != SlotKind::joint && kind != SlotKind::follower) continue;
            const SlotRole& role = slot_role(m, s);
            SCOPED_TRACE(std::to_string(s) + " " + role.name);
            const double own = span_under(m, s, own_readings(role));
            if (const Elsewhere* e = moved_elsewhere(m.name, s)) {
                EXPECT_EQ(own, 0.0) << "now moved by its own finger: drop it from kMovedElsewhere";
                if (std::strcmp(e->moved_by_what, "spread") == 0) {
                    EXPECT_GT(span_under(m, s, spread_readings()), 0.0) << "not moved by the spread";
                }
                continue;
            }
            EXPECT_GT(own, 0.0) << "its own finger does not move it";
            const std::string name = role.name;
            const bool finger_joint = std::strcmp(role.finger, "thumb") != 0 &&
                                      name.find("_spread") == std::string::npos;
            if (!finger_joint) continue;
            for (const char* other : kFingers) {
                if (std::strcmp(other, role.finger) == 0) continue;
                EXPECT_LT(span_under(m, s, readings_of(other, "bend")), own) << "moved more by the " << other;
            }
        }
    }
}

// A role is one joint: at the same slot and of the same finger on every hand, and never a joint on
// one hand and no joint (unused, terminator, gesture code) on another.
TEST(SlotFacts, OneRoleNameOneBehaviour) {
    std::map<std::string, std::set<int>> slots_of;
    std::map<std::string, std::set<bool>> is_joint_of;
    for (const HandModel& m : kHandModels) {
        const MeasuredSlot* measured = measured_slots(m.name);
        for (int s = 0; s < 24; ++s) {
            const std::string role = slot_role(m, s).name;
            slots_of[role].insert(s);
            const SlotKind k = slot_kind(m, s, measured);
            is_joint_of[role].insert(k == SlotKind::joint || k == SlotKind::follower || k == SlotKind::fixed);
        }
    }
    for (const auto& [role, slots] : slots_of) {
        if (role != "unused") {
            EXPECT_EQ(slots.size(), 1u) << role << " names more than one slot";
        }
        EXPECT_EQ(is_joint_of[role].size(), 1u) << role << " is a joint on some hands and none on others";
    }
}

// The C catalogue publishes the same: kind, relation, value and range of every slot.
TEST(SlotFacts, TheCatalogueSaysWhatWasMeasured) {
    for (std::size_t h = 0; h < quil_hand_count(); ++h) {
        const quil_hand_info* info = quil_hand_at(h);
        const HandModel& m = kHandModels[h];
        const MeasuredSlot* measured = measured_slots(m.name);
        for (int s = 0; s < 24; ++s) {
            const quil_slot_info* slot = quil_hand_slot(info, s);
            ASSERT_NE(slot, nullptr);
            EXPECT_STREQ(slot->role, info->slot_roles[s]);
            EXPECT_EQ(slot->kind, static_cast<int>(slot_kind(m, s, measured)));
            EXPECT_EQ(slot->follows[0] >= 0, slot->kind == QUIL_SLOT_FOLLOWER);
            EXPECT_EQ(slot->relation[0] != '\0', slot->kind == QUIL_SLOT_FOLLOWER);
            const bool held = slot->kind == QUIL_SLOT_FIXED || slot->kind == QUIL_SLOT_UNUSED ||
                              slot->kind == QUIL_SLOT_TERMINATOR;
            EXPECT_EQ(!std::isnan(slot->value), held) << info->name << " slot " << s;
            if (held) {
                EXPECT_TRUE(slot->range_min == slot->value && slot->range_max == slot->value);
            }
            for (std::size_t r = 0; r < 12; ++r) {
                if ((slot->moved_by >> r) & 1u) {
                    EXPECT_EQ(quil_hand_uses_reading(info, r), 1);
                }
            }
        }
    }
    EXPECT_EQ(quil_hand_slot(quil_hand_at(0), 24), nullptr);
    EXPECT_EQ(quil_hand_slot(nullptr, 0), nullptr);
    EXPECT_EQ(quil_reading(12), nullptr);
    EXPECT_STREQ(quil_slot_kind_name(QUIL_SLOT_FIXED), "fixed");
    EXPECT_STREQ(quil_slot_kind_name(42), "unknown");
}

}  // namespace
