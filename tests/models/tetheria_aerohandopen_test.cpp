#include "test_util.h"

#include "quil_linear/quil_linear.hpp"

namespace {

using namespace quil;
using namespace quil::test;

// Thumb roll and base bent with the index bent: the index pinch closes fully and latches.
const Readings kIndexPinch = with({{0, 50.0}, {1, 90.0}, {3, 80.0}});
const Readings kMiddlePinch = with({{0, 40.0}, {1, 110.0}, {6, 80.0}});

TEST(TetheriaAeroHandOpen, PinchLatchesAcrossSamples) {
    struct Step {
        const char* what;
        Readings in;
        bool index_latch, middle_latch;
        int slot;
        double value;
    };
    const Step steps[] = {
        {"first index pinch reaches -66", kIndexPinch, true, false, 6, -66.0},
        // Thumb base only slightly bent, index straight: no pinch runs, the latch stays.
        {"thumb barely active", with({{1, 90.0}}), true, false, 5, 0.0},
        {"open hand", all(0.0), true, false, 5, 0.0},
        // Thumb open, index in band: the held pinch runs and the open thumb releases it.
        {"index in band", with({{3, 80.0}}), false, false, 5, -59.0},
        {"first middle pinch reaches -59", kMiddlePinch, false, true, 10, -59.0},
        // Thumb open, middle in band: the held middle pinch runs (thumb base -61) and releases.
        {"middle in band", with({{6, 80.0}}), false, false, 1, -61.0},
        {"middle in band, released", with({{6, 80.0}}), false, false, 1, 0.0},
    };
    HandMemory memory;
    for (const Step& s : steps) {
        const Targets out = hands::TetherIA_AeroHandOpen(s.in, memory.ref());
        EXPECT_EQ(s.index_latch, memory.pinch_latches[0]) << s.what;
        EXPECT_EQ(s.middle_latch, memory.pinch_latches[1]) << s.what;
        EXPECT_SAME_DOUBLE(s.value, out[s.slot]) << s.what;
    }
}

TEST(TetheriaAeroHandOpen, HeldIndexPinchRunsOnTheRememberedThumb) {
    // The scaled thumb base alone would not count as active; the unscaled one does, so the
    // held pinch runs with the index straight, and releases.
    HandMemory memory;
    hands::TetherIA_AeroHandOpen(kIndexPinch, memory.ref());
    const Targets out = hands::TetherIA_AeroHandOpen(with({{0, 50.0}, {1, 90.0}}), memory.ref());
    EXPECT_SAME_DOUBLE(-59.0, out[5]);
    EXPECT_SAME_DOUBLE(-21.0, out[3]);
    EXPECT_SAME_DOUBLE(0.0, out[6]);
    EXPECT_FALSE(memory.pinch_latches[0]);
}

TEST(TetheriaAeroHandOpen, ThumbIsScaledByThePalmOpeningAndRememberedUnscaled) {
    struct Case {
        Readings in;
        double thumb1, thumb2;  // the remembered tip and base
    };
    const Case cases[] = {
        {with({{1, 90.0}}), -39.17268907563025, -18.0},             // rotation 15.3: x0.3
        {with({{1, 100.0}, {2, 90.0}}), -37.694117647058825, -11.0},  // rotation 24.0: x rotation/30
        {all(0.0), 0.0, 0.0},
    };
    for (const Case& c : cases) {
        HandMemory memory;
        memory.thumb_references[0] = memory.thumb_references[1] = 99.0;
        const Targets out = hands::TetherIA_AeroHandOpen(c.in, memory.ref());
        EXPECT_SAME_DOUBLE(c.thumb1, memory.thumb_references[0]);
        EXPECT_SAME_DOUBLE(c.thumb2, memory.thumb_references[1]);
        const double rotation = -out[3];
        const double gain = rotation <= 22 ? 0.3 : rotation / 30.0;
        EXPECT_SAME_DOUBLE(c.thumb2 * gain, out[1]);
    }
}

TEST(TetheriaAeroHandOpen, FistRollsTheThumbAndTheLittleFingerHasNoLock) {
    HandMemory memory;
    const Targets fist =
        hands::TetherIA_AeroHandOpen(with({{3, 120.0}, {6, 120.0}, {9, 120.0}, {11, 120.0}}), memory.ref());
    EXPECT_SAME_DOUBLE(-50.0, fist[0]);
    EXPECT_SAME_DOUBLE(0.0, hands::TetherIA_AeroHandOpen(with({{3, 120.0}}), memory.ref())[0]);
    // Little finger past -80 but not driven to -100.
    const Targets little = hands::TetherIA_AeroHandOpen(with({{11, 70.0}}), memory.ref());
    EXPECT_SAME_DOUBLE(-76.0 * 1.1, little[18]);  // row 14 amplified, past -80
    EXPECT_SAME_DOUBLE(-98.0, little[17]);
}

TEST(TetheriaAeroHandOpen, RingAndLittlePinchPoses) {
    HandMemory memory;
    const Targets ring = hands::TetherIA_AeroHandOpen(with({{0, 60.0}, {9, 120.0}}), memory.ref());
    EXPECT_SAME_DOUBLE(-58.0, ring[1]);
    EXPECT_SAME_DOUBLE(-30.0, ring[3]);
    EXPECT_SAME_DOUBLE(-0.0, ring[20]);
    EXPECT_SAME_DOUBLE(-83.0, ring[13]);
    const Targets little = hands::TetherIA_AeroHandOpen(with({{0, 60.0}, {11, 50.0}}), memory.ref());
    EXPECT_SAME_DOUBLE(-52.0, little[1]);
    EXPECT_SAME_DOUBLE(-2.0, little[20]);
    EXPECT_SAME_DOUBLE(-73.0, little[17]);
    EXPECT_FALSE(memory.pinch_latches[0] || memory.pinch_latches[1]);
}

TEST(TetheriaAeroHandOpen, ClassStaticsCarryLatchesAndThumb) {
    using Hand = Quil_linear::TetherIA_AeroHandOpen;
    std::fill(std::begin(Hand::fingerPinchDone), std::end(Hand::fingerPinchDone), false);
    Hand::GetDataValue(50, 90, 0, 80, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(Hand::fingerPinchDone[0]);
    EXPECT_FALSE(Hand::fingerPinchDone[1]);
    EXPECT_SAME_DOUBLE(-49.061344537815124, Hand::thumb1_ref_val);
    EXPECT_SAME_DOUBLE(-55.0, Hand::thumb2_ref_val);
    Hand::GetDataValue(0, 90, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(Hand::fingerPinchDone[0]);
    EXPECT_SAME_DOUBLE(-39.17268907563025, Hand::thumb1_ref_val);
    EXPECT_SAME_DOUBLE(-18.0, Hand::thumb2_ref_val);
    Hand::GetDataValue(0, 0, 0, 80, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_FALSE(Hand::fingerPinchDone[0]);
}

}  // namespace
