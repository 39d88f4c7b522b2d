// The slot kinds say what each slot does, over a session other than the sweep they were measured
// on: a fixed, unused or terminator slot holds its one value over a large and varied session of
// finite readings, and every other slot moves. Roles are snake_case names, one per slot, no two
// alike within a hand except unused.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "quil_linear/hand.h"
#include "support/glove_sequences.h"

namespace {

using namespace quil::test;

// Finite readings only (infinities and extremes included): a NaN let through to the rows can
// move any slot, on the hands that let it through.
std::vector<Sample> varied_finite_session(std::uint64_t seed) {
    std::vector<Sample> s = concat_sessions(random_samples(seed, 20000), pinch_session(seed, 30000));
    for (Sample& x : s)
        for (double& v : x)
            if (std::isnan(v)) v = 60.0;
    Rng rng(seed);
    for (int k = 0; k < 5000; ++k) {  // a 0.5 grid over the whole range, where bands and pinches start
        Sample x;
        for (double& v : x) v = -20.0 + 0.5 * static_cast<double>(rng.below(281));
        s.push_back(x);
    }
    return s;
}

TEST(SlotRoles, HeldSlotsHoldTheirValueAndTheOthersMove) {
    const std::regex snake("[a-z]+(_[a-z0-9]+)*");
    for (std::size_t h = 0; h < quil_hand_count(); ++h) {
        const quil_hand_info* info = quil_hand_at(h);
        SCOPED_TRACE(info->name);
        std::set<std::string> seen;
        for (const char* role : info->slot_roles) {
            ASSERT_NE(role, nullptr);
            EXPECT_TRUE(std::regex_match(role, snake)) << role;
            EXPECT_TRUE(seen.insert(role).second || std::string(role) == "unused") << "twice: " << role;
        }

        const std::vector<Sample> samples = varied_finite_session(h + 1);
        std::vector<double> t(samples.size() * 24);
        quil_hand* hand = quil_hand_open(info->name);
        quil_hand_map_n(hand, samples.size(), samples[0].data(), t.data());
        quil_hand_close(hand);
        for (int slot = 0; slot < 24; ++slot) {
            std::size_t changes = 0;
            for (std::size_t i = 1; i < samples.size(); ++i)
                changes += std::memcmp(&t[24 * i + slot], &t[slot], sizeof(double)) != 0;
            const std::string role = info->slot_roles[slot];
            const quil_slot_info* facts = quil_hand_slot(info, static_cast<std::size_t>(slot));
            const bool held = facts->kind == QUIL_SLOT_FIXED || facts->kind == QUIL_SLOT_UNUSED ||
                              facts->kind == QUIL_SLOT_TERMINATOR;
            if (held) {
                EXPECT_EQ(changes, 0u) << "slot " << slot << " (" << role << ") moves";
                EXPECT_EQ(t[slot], facts->value) << "slot " << slot << " (" << role << ") is not held at its value";
            } else {
                EXPECT_GT(changes, 0u) << "slot " << slot << " (" << role << ") never moves";
            }
        }
    }
}

}  // namespace
