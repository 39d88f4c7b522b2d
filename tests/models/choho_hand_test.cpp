#include "test_util.h"

#include "quil_linear/quil_linear.hpp"

namespace {

using namespace quil;
using namespace quil::test;

// Thumb base bent with the index bent: closes the index pinch fully and latches it.
const Readings kIndexPinch = with({{0, 20.0}, {1, 90.0}, {3, 60.0}});
// Thumb base bent, every finger straight: the thumb is active, no trigger.
const Readings kThumbOnly = with({{0, 20.0}, {1, 90.0}});
// Index bent into its pinch band, thumb open.
const Readings kIndexOnly = with({{3, 60.0}});
const Readings kMiddlePinch = with({{0, 50.0}, {1, 110.0}, {6, 80.0}});
const Readings kMiddleOnly = with({{6, 80.0}});

TEST(ChohoHand, HeldPinchesRunWithoutTheirTriggerUntilReleased) {
    struct Case {
        const char* what;
        Readings first, second;
        int latch;
        int slot;          // a slot the held pinch sets in the second sample
        double held;       // its value there
        double unheld;     // its value for the second sample from a fresh memory
    };
    const Case cases[] = {
        // Thumb active, index straight: the held index pinch runs (index joint -51), and the
        // straight index opens past its release bound.
        {"index, thumb active", kIndexPinch, kThumbOnly, 0, 5, -51.0, 0.0},
        // Thumb open, index in band: the held pinch runs (thumb base -34); the open thumb tip
        // releases it.
        {"index, in band", kIndexPinch, kIndexOnly, 0, 1, -34.0, 0.0},
        // Thumb open, middle in band: the held middle pinch pulls the middle joint to -49.
        {"middle, in band", kMiddlePinch, kMiddleOnly, 1, 10, -49.0, -73.485},
    };
    for (const Case& c : cases) {
        HandMemory memory;
        hands::CHOHO_Hand(c.first, memory.ref());
        EXPECT_TRUE(memory.pinch_latches[c.latch]) << c.what;
        const Targets out = hands::CHOHO_Hand(c.second, memory.ref());
        EXPECT_SAME_DOUBLE(c.held, out[c.slot]) << c.what;
        EXPECT_FALSE(memory.pinch_latches[c.latch]) << c.what;
        EXPECT_FALSE(memory.pinch_latches[1 - c.latch]) << c.what;

        HandMemory fresh;
        EXPECT_SAME_DOUBLE(c.unheld, hands::CHOHO_Hand(c.second, fresh.ref())[c.slot]) << c.what;
    }
}

TEST(ChohoHand, EachPinchSetsItsThumbPose) {
    struct Case {
        const char* what;
        Readings in;
        double base, rotation, spread;  // out[1], out[3], out[20] as returned (3 and 20 mirrored)
    };
    const Case cases[] = {
        {"index", with({{0, 120.0}}), -34.0, -12.0, -9.0},
        {"middle", with({{0, 40.0}, {6, 100.0}}), -46.0, -17.0, -9.0},
        {"ring", with({{0, 60.0}, {9, 120.0}}), -36.0, -16.0, -0.0},
        {"little", with({{0, 100.0}, {11, 70.0}}), 0.0, -24.0, -2.0},
    };
    for (const Case& c : cases) {
        HandMemory memory;
        const Targets out = hands::CHOHO_Hand(c.in, memory.ref());
        EXPECT_SAME_DOUBLE(c.base, out[1]) << c.what;
        EXPECT_SAME_DOUBLE(c.rotation, out[3]) << c.what;
        EXPECT_SAME_DOUBLE(c.spread, out[20]) << c.what;
    }
}

TEST(ChohoHand, ClassStaticsCarryTheLatches) {
    using Hand = Quil_linear::CHOHO_Hand;
    std::fill(std::begin(Hand::fingerPinchDone), std::end(Hand::fingerPinchDone), false);
    Hand::GetDataValue(20, 90, 0, 60, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(Hand::fingerPinchDone[0]);
    EXPECT_FALSE(Hand::fingerPinchDone[1]);
    // The thumb stays active: the held index pinch runs and releases; the middle pinch latches.
    Hand::GetDataValue(50, 110, 0, 0, 0, 0, 80, 0, 0, 0, 0, 0);
    EXPECT_FALSE(Hand::fingerPinchDone[0]);
    EXPECT_TRUE(Hand::fingerPinchDone[1]);
    Hand::GetDataValue(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(Hand::fingerPinchDone[1]);
    Hand::GetDataValue(20, 90, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_FALSE(Hand::fingerPinchDone[1]);
}

}  // namespace
