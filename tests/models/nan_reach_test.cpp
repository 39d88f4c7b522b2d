// What a glove channel that drops out (a NaN or infinite reading) does to each hand as the
// handle passes it on (QUIL_DROPOUT_PASS). Most hands clamp their readings in a way that turns a
// NaN into the upper bound, a fully bent finger; the others let it into every row sum, which then
// truncates to the integer floor, so it reaches every slot the rows drive, the two unused ones
// too. Either way no NaN comes out, and the terminator stays. (What a handle that holds dropouts
// sends instead is the hand API's test.)
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <set>
#include <string>

#include "quil_linear/hand.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// The hands whose clamp lets a NaN through.
const std::set<std::string> kNaNReachesEveryRow = {
    "BrainCo_Revo2",       "LINKERBOT_LinkerHand_O7", "LINKERBOT_LinkerHand_L10", "INSPIRE_ROBOTS_RH56F1_E4",
    "AgiBot_OmniHand_O10", "RUIYAN_RY_H15",           "CHOHO_Hand",               "TetherIA_AeroHandOpen",
};

struct Targets {
    double t[24];
    bool operator==(const Targets& o) const { return std::memcmp(t, o.t, sizeof t) == 0; }
};

// One sample from a fresh handle: every reading 0 but `reading`, which is `value`.
Targets alone(const char* hand, int reading, double value) {
    double x[12] = {};
    x[reading] = value;
    Targets out;
    quil_hand* h = quil_hand_open(hand);
    quil_hand_map(h, x, out.t);
    quil_hand_close(h);
    return out;
}

class NaNReach : public ::testing::TestWithParam<std::size_t> {};

TEST_P(NaNReach, ClampedToTheBoundOrIntoEveryRow) {
    const quil_hand_info* hand = quil_hand_at(GetParam());
    const bool every_row = kNaNReachesEveryRow.count(hand->name) > 0;
    for (int r = 0; r < 12; ++r) {
        SCOPED_TRACE("reading " + std::to_string(r));
        const Targets nan = alone(hand->name, r, kNaN), neg_nan = alone(hand->name, r, -kNaN);
        const Targets open = alone(hand->name, r, 0.0);
        EXPECT_EQ(nan, neg_nan) << "the sign of a NaN matters";
        for (int s = 0; s < 24; ++s) EXPECT_FALSE(std::isnan(nan.t[s])) << "slot " << s;
        EXPECT_EQ(nan.t[23], open.t[23]);
        // Infinities and far readings act as the bounds on every hand.
        EXPECT_EQ(alone(hand->name, r, kInf), alone(hand->name, r, 120.0));
        EXPECT_EQ(alone(hand->name, r, 1e300), alone(hand->name, r, 120.0));
        EXPECT_EQ(alone(hand->name, r, -kInf), alone(hand->name, r, -20.0));
        for (int s : {21, 22}) {
            const quil_slot_info* slot = quil_hand_slot(hand, s);
            ASSERT_EQ(slot->kind, QUIL_SLOT_UNUSED);
            EXPECT_EQ(open.t[s], slot->value);
            if (every_row) {
                EXPECT_NE(nan.t[s], slot->value) << "slot " << s << " not reached";
                EXPECT_EQ(nan.t[s], -2147483648.0 / 10) << "slot " << s;
            } else {
                EXPECT_EQ(nan.t[s], slot->value) << "slot " << s << " reached";
            }
        }
        if (!every_row) EXPECT_EQ(nan, alone(hand->name, r, 120.0)) << "a NaN is not a bent finger";
    }
}

std::string hand_name(const ::testing::TestParamInfo<std::size_t>& info) { return quil_hand_at(info.param)->name; }

INSTANTIATE_TEST_SUITE_P(Hands, NaNReach, ::testing::Range(std::size_t{0}, quil_hand_count()), hand_name);

TEST(NaNReach, TheListNamesHandsOfTheCatalogue) {
    for (const std::string& name : kNaNReachesEveryRow) EXPECT_NE(quil_hand_find(name.c_str()), nullptr) << name;
}

}  // namespace
