// The compatibility classes of quil_linear.hpp as the library builds them from the list of hands:
// their tables hold the hand's published coefficients from load on, in storage of their own,
// and GetDataValue maps through them and the class's memory.
#include <gtest/gtest.h>

#include <cstring>

#include "models/catalogue.h"
#include "quil_linear/quil_linear.hpp"

namespace {

struct ClassTables {
    const char* hand;
    double* weight;
    double* w0;
    const quil::Coefficients& published;
};

const ClassTables kClasses[] = {
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) \
    {#hand, Quil_linear::hand::weight, Quil_linear::hand::w0, quil::hands::hand##_coefficients},
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
};

TEST(CompatClasses, TablesStartAsThePublishedCoefficientsInTheirOwnStorage) {
    for (const ClassTables& c : kClasses) {
        EXPECT_EQ(0, std::memcmp(c.weight, c.published.weight, 228 * sizeof(double))) << c.hand;
        EXPECT_EQ(0, std::memcmp(c.w0, c.published.w0, 19 * sizeof(double))) << c.hand;
        EXPECT_NE(static_cast<const void*>(c.weight), static_cast<const void*>(c.published.weight)) << c.hand;
        EXPECT_NE(static_cast<const void*>(c.w0), static_cast<const void*>(c.published.w0)) << c.hand;
    }
}

TEST(CompatClasses, GetDataValueReadsTheClassTables) {
    using Hand = Quil_linear::QUIL_linear_AA;
    const Quil_linear::TargetArray before = Hand::GetDataValue(10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 0);
    double saved[19];
    std::memcpy(saved, Hand::w0, sizeof saved);
    for (double& offset : Hand::w0) offset += 25.0;
    const Quil_linear::TargetArray changed = Hand::GetDataValue(10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 0);
    std::memcpy(Hand::w0, saved, sizeof saved);
    EXPECT_NE(before, changed);
    EXPECT_EQ(before, Hand::GetDataValue(10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 0));
}

TEST(CompatClasses, GetData1WrapsIn32Bits) {
    struct Case {
        int a, b, expected;
    };
    const Case cases[] = {{3, 4, 22}, {0, 5, -2}, {65536, 32768, -2}, {-3, 4, -26}};
    for (const Case& c : cases) {
        EXPECT_EQ(c.expected, Quil_linear::QUIL_linear_AA::GetData1(c.a, c.b)) << c.a << " * " << c.b;
        EXPECT_EQ(c.expected, Quil_linear::TalentRobot_Pro::GetData1(c.a, c.b)) << c.a << " * " << c.b;
    }
}

}  // namespace
