#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::PICO_PXRHand(in, none.ref());
}

// Inputs: x1 thumb, x3 index, x6 middle, x9 ring, x11 little.
const Readings kIndexPinch = with({{1, 20.0}, {3, 30.0}});
const Readings kMiddlePinch = with({{1, 20.0}, {6, 40.0}});
const Readings kFistThumbIn = with({{1, 60.0}, {3, 60.0}, {6, 60.0}, {9, 60.0}, {11, 40.0}});
const Readings kFistThumbOut = with({{3, 60.0}, {6, 60.0}, {9, 60.0}, {11, 40.0}});

TEST(PicoPXRHand, GestureCodeAndFixedThumbRotation) {
    struct Case {
        const char* pose;
        Readings in;
        double code;
    };
    const Case cases[] = {
        {"open hand", all(0.0), -1.0},
        {"index pinch", kIndexPinch, 0.0},
        {"middle pinch", kMiddlePinch, -1.0},
        {"fist, thumb folded over", kFistThumbIn, 2.0},
        {"fist, thumb open", kFistThumbOut, -1.0},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        EXPECT_SAME_DOUBLE(c.code, out[23]) << c.pose;
        EXPECT_SAME_DOUBLE(-40.0, out[3]) << c.pose;
    }
}

TEST(PicoPXRHand, PinchPoses) {
    const Targets index = map(kIndexPinch);
    const std::pair<int, double> index_pose[] = {{0, -35.0}, {1, -35.0}, {2, -33.0}, {5, -40.0},
                                                 {6, -76.0}, {20, 26.0}, {4, -32.0}};
    for (const auto& [slot, v] : index_pose) EXPECT_SAME_DOUBLE(v, index[slot]) << "index slot " << slot;

    const Targets middle = map(kMiddlePinch);
    const std::pair<int, double> middle_pose[] = {{0, -35.0}, {1, -35.0}, {2, -85.0}, {9, -40.0},
                                                  {10, -76.0}, {20, 45.0}, {8, -32.0}};
    for (const auto& [slot, v] : middle_pose) EXPECT_SAME_DOUBLE(v, middle[slot]) << "middle slot " << slot;
}

TEST(PicoPXRHand, CurledMiddleAndRingWidenTheIndexPinch) {
    // The index is only half bent (out[6] about -31): enough for a pinch when the middle and
    // ring fingers are both curled away, not when only the middle is (which pinches instead).
    const Targets both = map(with({{1, 20.0}, {3, 4.0}, {6, 120.0}, {9, 40.0}}));
    EXPECT_SAME_DOUBLE(0.0, both[23]);
    EXPECT_SAME_DOUBLE(-76.0, both[6]);
    const Targets middle_only = map(with({{1, 20.0}, {3, 4.0}, {6, 120.0}}));
    EXPECT_SAME_DOUBLE(-1.0, middle_only[23]);
    EXPECT_GT(middle_only[6], -40.0);
    EXPECT_LT(middle_only[6], -20.0);
}

TEST(PicoPXRHand, FistSnapsFingersToTheirStop) {
    for (const Readings& in : {kFistThumbIn, kFistThumbOut}) {
        const Targets out = map(in);
        for (int slot : {5, 6, 9, 10, 13, 14, 17, 18}) EXPECT_SAME_DOUBLE(-90.0, out[slot]) << slot;
        for (int slot : {4, 8, 12, 16}) EXPECT_SAME_DOUBLE(-72.0, out[slot]) << slot;
    }
}

}  // namespace
