// The slot names the hands' rules are written with, and the rules several hands share through
// them: the little finger's spread reshaping and the guard against a short emission.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "core/finger_coupling.h"
#include "core/linear_stage.h"
#include "core/slots.h"
#include "models/slot_layout.h"

namespace {

using namespace quil;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

bool same_bits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// A rule written against a name must move the joint the library reports under that name.
TEST(SlotNames, AreTheRolesTheLibraryReports) {
    const struct {
        int slot;
        const char* role;
    } cases[] = {
        {slot::thumb_base, "thumb_base"},           {slot::thumb_proximal, "thumb_proximal"},
        {slot::thumb_distal, "thumb_distal"},       {slot::thumb_abduction, "thumb_abduction"},
        {slot::index_tip, "index_tip"},             {slot::index_distal, "index_distal"},
        {slot::index_proximal, "index_proximal"},   {slot::index_spread, "index_spread"},
        {slot::middle_tip, "middle_tip"},           {slot::middle_distal, "middle_distal"},
        {slot::middle_proximal, "middle_proximal"}, {slot::middle_spread, "middle_spread"},
        {slot::ring_tip, "ring_tip"},               {slot::ring_distal, "ring_distal"},
        {slot::ring_proximal, "ring_proximal"},     {slot::ring_spread, "ring_spread"},
        {slot::little_tip, "little_tip"},           {slot::little_distal, "little_distal"},
        {slot::little_proximal, "little_proximal"}, {slot::little_spread, "little_spread"},
        {slot::thumb_rotation, "thumb_rotation"},   {slot::unused_first, "unused"},
        {slot::unused_second, "unused"},            {slot::terminator, "terminator"},
    };
    bool named[24] = {};
    for (const auto& c : cases) {
        ASSERT_GE(c.slot, 0);
        ASSERT_LT(c.slot, 24);
        EXPECT_EQ(std::string(c.role), kSlotRoles[static_cast<std::size_t>(c.slot)].name) << "slot " << c.slot;
        EXPECT_FALSE(named[c.slot]) << "slot " << c.slot << " has two names";
        named[c.slot] = true;
    }
}

// The hands' little fingers spread less than a human one: a narrow spread (below 7) is scaled,
// a wider one lifted and capped. A NaN takes the wide branch and stays NaN.
TEST(LittleSpread, NarrowScaledWideLiftedAndCapped) {
    const LittleSpreadGain outside{1.5, 3.5, 30};  // most outside hands
    const LittleSpreadGain wide{3, 14, 35};        // the hands with the widest little spread
    const struct {
        LittleSpreadGain gain;
        double in, out;
    } cases[] = {
        {outside, 0.0, 0.0},   {outside, -0.0, -0.0}, {outside, 4.0, 6.0},   {outside, 6.5, 9.75},
        {outside, 7.0, 10.5},  {outside, 26.0, 29.5}, {outside, 27.0, 30.0}, {outside, kInf, 30.0},
        {outside, -kInf, -kInf}, {wide, 6.0, 18.0},    {wide, 7.0, 21.0},     {wide, 22.0, 35.0},
    };
    for (const auto& c : cases) {
        double v = c.in;
        reshape_little_spread(v, c.gain);
        EXPECT_TRUE(same_bits(c.out, v)) << c.out << " got " << v;
    }
    double v = kNaN;
    reshape_little_spread(v, outside);
    EXPECT_TRUE(std::isnan(v));
}

// The rows fill slots 0..22. Fewer values leave the hand half-set and send all zeros (+0.0);
// a full emission is left as it is.
TEST(ShortEmission, ZeroesEveryTargetOnlyWhenShort) {
    for (int emitted : {0, 19, 22, 23, 24}) {
        Targets out;
        out.fill(-7.5);
        const bool zeroed = zero_short_emission(emitted, out);
        EXPECT_EQ(emitted <= 22, zeroed) << emitted;
        for (double v : out) EXPECT_TRUE(same_bits(zeroed ? 0.0 : -7.5, v)) << v;
    }
}

}  // namespace
