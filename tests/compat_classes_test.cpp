// The compatibility classes of quil_linear.hpp as the library builds them from the list of hands:
// their tables hold the hand's published coefficients from load on, in storage of their own,
// and GetDataValue maps through them and the class's memory.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <string>

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

// FNV-1a over the bits of a class's 228 weights then 19 offsets.
std::uint64_t table_digest(const double* weight, const double* w0) {
    std::uint64_t h = 14695981039346656037ull;
    auto mix = [&h](const double* v, std::size_t n) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(v);
        for (std::size_t i = 0; i < n * sizeof(double); ++i) h = (h ^ bytes[i]) * 1099511628211ull;
    };
    mix(weight, 228);
    mix(w0, 19);
    return h;
}

// The tables hosts read and recalibrate through the classes are part of the frozen interface, so
// every coefficient is pinned here, the ones of pose rows a hand leaves unused included (the
// golden record cannot see those).
const std::map<std::string, std::uint64_t> kTableDigests = {
    {"QUIL_linear_AA", 0x258baacb5b996fc4ull},
    {"QUIL_linear_AD", 0x72d7ee9c9f446e0eull},
    {"QUIL_linear_AE", 0x5e5d3691fbf53a12ull},
    {"QUIL_linear_AG", 0x2e1e07273f386338ull},
    {"PaXini_DexH13_GEN2", 0xda578ef23b8ef9feull},
    {"BrainCo_Revo1", 0x5af3800314e3a072ull},
    {"BrainCo_Revo2", 0x0656881b3787499dull},
    {"DexRobot_DexHand021_MP", 0xec5f12c5f7599df4ull},
    {"LINKERBOT_LinkerHand_O6", 0xda578ef23b8ef9feull},
    {"LINKERBOT_LinkerHand_O7", 0xda578ef23b8ef9feull},
    {"LINKERBOT_LinkerHand_L10", 0x929deeb91b4e606eull},
    {"LINKERBOT_LinkerHand_L20", 0xe3a8ba2c8e81722full},
    {"INSPIRE_ROBOTS_RH56DFX", 0x25bcaf94774a0569ull},
    {"INSPIRE_ROBOTS_RH56F1_E4", 0xda578ef23b8ef9feull},
    {"OYMotion_ROH_A001", 0x4e4f91f81c055fc0ull},
    {"ROBOTERA_XHAND1", 0xa18d007340468f50ull},
    {"PICO_PXRHand", 0x03d978fe1f1b9787ull},
    {"Proception", 0x2e1e07273f386338ull},
    {"AgiBot_OmniHand_O10", 0x7459307415a6e17aull},
    {"AgiBot_OmniHand_O12", 0xda578ef23b8ef9feull},
    {"LeadShine_DH116", 0xda578ef23b8ef9feull},
    {"RUIYAN_RY_H2", 0xda578ef23b8ef9feull},
    {"RUIYAN_RY_H15", 0xda578ef23b8ef9feull},
    {"CHOHO_Hand", 0xda578ef23b8ef9feull},
    {"TalentRobot_Pro", 0xda578ef23b8ef9feull},
    {"TetherIA_AeroHandOpen", 0xda578ef23b8ef9feull},
};

TEST(CompatClasses, TablesHoldTheShippedCoefficients) {
    ASSERT_EQ(kTableDigests.size(), std::size(kClasses));
    for (const ClassTables& c : kClasses) {
        const auto it = kTableDigests.find(c.hand);
        ASSERT_NE(it, kTableDigests.end()) << c.hand;
        EXPECT_EQ(it->second, table_digest(c.published.weight, c.published.w0))
            << c.hand << ": coefficients changed, digest now 0x" << std::hex
            << table_digest(c.published.weight, c.published.w0);
    }
}

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
