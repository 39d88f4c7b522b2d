#include "test_util.h"

#include "quil_linear/quil_linear.hpp"

namespace {

using namespace quil;
using namespace quil::test;

// Poses that drive the pinches: thumb roll bent with the index half bent (index pinch), thumb
// roll bent with the middle finger half bent (middle pinch, and the index pinch through the sum
// of thumb and index bends).
const Readings kIndexPinch = with({{0, 90.0}, {3, 50.0}});
const Readings kIndexPinchShallow = with({{0, 90.0}, {3, 30.0}});
const Readings kMiddlePinch = with({{0, 80.0}, {6, 50.0}});
const Readings kOpen = all(0.0);

TEST(RuiyanRyH15, PinchLatchesAcrossSamples) {
    struct Step {
        const char* what;
        Readings in;
        bool index_latch, middle_latch;
        int slot;
        double value;
    };
    const Step steps[] = {
        // The gentle pull reaches both targets exactly (index -44, thumb tip -43): latched.
        {"first index pinch", kIndexPinch, true, false, 6, -44.0},
        {"open hand, thumb gate shut", kOpen, true, false, 6, 0.0},
        // Latched: the strong pull holds a shallow index deeper than the gentle one would.
        {"shallow index, latched", kIndexPinchShallow, true, false, 6, -39.62227272727273},
        // The index pinch runs once more with the strong pull and its offset of 10, but leaves
        // the straight index above its release bound; the middle pinch latches.
        {"middle pinch", kMiddlePinch, false, true, 6, -10.0},
        {"middle pinch again", kMiddlePinch, false, true, 6, 0.0},
    };
    HandMemory memory;
    for (const Step& s : steps) {
        const Targets out = hands::RUIYAN_RY_H15(s.in, memory.ref());
        EXPECT_EQ(s.index_latch, memory.pinch_latches[0]) << s.what;
        EXPECT_EQ(s.middle_latch, memory.pinch_latches[1]) << s.what;
        EXPECT_SAME_DOUBLE(s.value, out[s.slot]) << s.what;
    }
    HandMemory fresh;
    EXPECT_SAME_DOUBLE(-25.266681892357088, hands::RUIYAN_RY_H15(kIndexPinchShallow, fresh.ref())[6]);
    EXPECT_FALSE(fresh.pinch_latches[0]);
}

TEST(RuiyanRyH15, BothPinchesInOneSampleLeaveTheMiddleThumbPose) {
    HandMemory memory;
    const Targets out = hands::RUIYAN_RY_H15(kMiddlePinch, memory.ref());
    EXPECT_SAME_DOUBLE(-46.0, out[1]);
    EXPECT_SAME_DOUBLE(-28.0, out[3]);   // 28, mirrored
    EXPECT_SAME_DOUBLE(-21.0, out[20]);  // 21, mirrored
    EXPECT_SAME_DOUBLE(-51.0, out[5]);   // from the index pinch
    EXPECT_SAME_DOUBLE(-41.0, out[10]);
}

TEST(RuiyanRyH15, ClassStaticsCarryTheLatches) {
    using Hand = Quil_linear::RUIYAN_RY_H15;
    std::fill(std::begin(Hand::fingerPinchDone), std::end(Hand::fingerPinchDone), false);
    Hand::GetDataValue(90, 0, 0, 50, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(Hand::fingerPinchDone[0]);
    EXPECT_FALSE(Hand::fingerPinchDone[1]);
    Hand::GetDataValue(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(Hand::fingerPinchDone[0]);
    Hand::GetDataValue(80, 0, 0, 0, 0, 0, 50, 0, 0, 0, 0, 0);
    EXPECT_FALSE(Hand::fingerPinchDone[0]);
    EXPECT_TRUE(Hand::fingerPinchDone[1]);
}

TEST(RuiyanRyH15, FullBendLocks) {
    struct Case {
        Readings in;
        int slot;
        double value;  // both slot and slot + 1
    };
    const Case cases[] = {
        {with({{6, 120.0}}), 9, -81.0},    // the middle finger locks at its own -81
        {with({{11, 120.0}}), 17, -100.0},
    };
    for (const Case& c : cases) {
        HandMemory memory;
        const Targets out = hands::RUIYAN_RY_H15(c.in, memory.ref());
        EXPECT_SAME_DOUBLE(c.value, out[c.slot]);
        EXPECT_SAME_DOUBLE(c.value, out[c.slot + 1]);
    }
}

TEST(RuiyanRyH15, NaNReadingReachesEveryRow) {
    // A NaN passes the clamp; every row sum is NaN and truncates to the 32-bit minimum, so the
    // unlimited rows 17 and 18 come out at -2147483648 / 10 whichever reading was NaN.
    for (int i = 0; i < 12; ++i) {
        HandMemory memory;
        const Targets out = hands::RUIYAN_RY_H15(with({{i, kNaN}}), memory.ref());
        EXPECT_SAME_DOUBLE(-214748364.8, out[21]) << "input " << i;
        EXPECT_SAME_DOUBLE(-214748364.8, out[22]) << "input " << i;
        EXPECT_SAME_DOUBLE(-1.0, out[23]);
    }
    HandMemory memory;
    EXPECT_SAME_DOUBLE(0.0, hands::RUIYAN_RY_H15(with({{0, kInf}}), memory.ref())[22]);
}

}  // namespace
