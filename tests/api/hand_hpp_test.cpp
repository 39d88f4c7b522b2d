// The C++ wrapper: what it adds over the C calls (errors as exceptions, ownership, batches over
// ranges) behaves as a C++ user expects.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <vector>

#include "quil_linear/hand.hpp"
#include "support/glove_sequences.h"

namespace {

using quil_linear::Hand;
using quil_linear::Readings;
using quil_linear::Targets;

std::vector<Readings> session() {
    const auto s = quil::test::pinch_session(21, 2000);
    return std::vector<Readings>(s.begin(), s.end());
}

TEST(HandHpp, UnknownNameThrowsNamingTheClosestHands) {
    try {
        Hand hand("xhand");
        FAIL() << "no exception";
    } catch (const quil_linear::Error& e) {
        EXPECT_NE(std::string(e.what()).find("\"xhand\""), std::string::npos) << e.what();
        EXPECT_NE(std::string(e.what()).find("ROBOTERA_XHAND1"), std::string::npos) << e.what();
    }
    EXPECT_NO_THROW(Hand("ruiyan_ry_h15"));
    EXPECT_EQ(quil_linear::suggest("xhand", 1), std::vector<std::string_view>{"ROBOTERA_XHAND1"});
}

TEST(HandHpp, BatchesOverRangesEqualOneSampleAtATime) {
    const std::vector<Readings> readings = session();
    Hand single("CHOHO_Hand"), batch("CHOHO_Hand"), raw("CHOHO_Hand");
    std::vector<Targets> expected;
    for (const Readings& r : readings) expected.push_back(single.map(r));
    EXPECT_EQ(0, std::memcmp(expected.data(), batch.map(readings).data(), expected.size() * sizeof(Targets)));
    std::vector<double> flat(readings.size() * 24);
    raw.map(readings.size(), readings.data()->data(), flat.data());
    EXPECT_EQ(0, std::memcmp(expected.data(), flat.data(), flat.size() * sizeof(double)));
    const Readings one_array[1] = {readings[0]};
    Hand fresh("CHOHO_Hand");
    EXPECT_EQ(0, std::memcmp(expected.data(), fresh.map(one_array).data(), sizeof(Targets)));
}

TEST(HandHpp, MovesOwnershipAndRestoresStates) {
    static_assert(!std::is_copy_constructible_v<Hand> && std::is_nothrow_move_constructible_v<Hand>);
    const std::vector<Readings> readings = session();
    Hand a("TetherIA_AeroHandOpen", quil_linear::Dropout::hold);
    for (std::size_t i = 0; i < 1000; ++i) a.map(readings[i]);
    Hand b = std::move(a);
    EXPECT_EQ(a.get(), nullptr);
    EXPECT_EQ(b.dropout(), quil_linear::Dropout::hold);
    EXPECT_EQ(b.info().name, "TetherIA_AeroHandOpen");
    EXPECT_THROW(a.info(), quil_linear::Error);

    Hand c("TetherIA_AeroHandOpen");
    c.restore(b.state());
    const quil_hand_memory mb = b.memory(), mc = c.memory();
    EXPECT_EQ(0, std::memcmp(&mb, &mc, offsetof(quil_hand_memory, dropout)));  // latches, references, readings
    EXPECT_EQ(mc.dropout, QUIL_DROPOUT_HOLD);
    EXPECT_EQ(quil_linear::dropout_from_name(quil_linear::dropout_name(c.dropout())), c.dropout());
    EXPECT_THROW(quil_linear::dropout_from_name("Hold"), quil_linear::Error);
    for (std::size_t i = 1000; i < readings.size(); ++i) ASSERT_EQ(b.map(readings[i]), c.map(readings[i])) << i;

    Hand other("RUIYAN_RY_H15");
    try {
        other.restore(c.state());
        FAIL() << "no exception";
    } catch (const quil_linear::Error& e) {
        EXPECT_EQ(e.code(), QUIL_E_STATE_OTHER_HAND);
        EXPECT_NE(std::string(e.what()).find("TetherIA_AeroHandOpen"), std::string::npos) << e.what();
    }
}

TEST(HandHpp, CatalogueListsEveryHandWithItsRoles) {
    const auto all = quil_linear::hands();
    ASSERT_EQ(all.size(), quil_hand_count());
    for (const auto& info : all) {
        EXPECT_EQ(Hand(info.name).info().version, info.version);
        for (std::size_t s = 0; s < QUIL_TARGETS; ++s) {
            EXPECT_FALSE(info.slot_roles[s].empty()) << info.name;
            ASSERT_NE(info.slots[s], nullptr);
            EXPECT_EQ(info.slot_roles[s], info.slots[s]->role) << info.name;
        }
    }
    for (const quil_reading_info* r : quil_linear::readings()) EXPECT_STREQ(r->unit, "degrees");
}

}  // namespace
