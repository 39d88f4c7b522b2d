#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::ROBOTERA_XHAND1(in, none.ref());
}

TEST(RoboteraXHand1, OpenHand) {
    const Targets out = map(all(0.0));
    EXPECT_SAME_DOUBLE(-30.0, out[3]);  // row 3's offset, mirrored
    EXPECT_SAME_DOUBLE(-22.0, out[2]);  // row 2's offset -10 amplified by 2.2
    EXPECT_SAME_DOUBLE(0.0, out[21]);
    EXPECT_SAME_DOUBLE(0.0, out[22]);
    EXPECT_SAME_DOUBLE(-0.0, out[20]);
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
}

// With the thumb flexed, the bent fingers select a fixed pose. Inputs: x1 thumb, x3 index,
// x6 middle, x9 ring, x11 little.
TEST(RoboteraXHand1, ThumbFlexedPoses) {
    struct Case {
        const char* pose;
        Readings in;
        std::initializer_list<std::pair<int, double>> expect;
    };
    const Case cases[] = {
        {"index pinch", with({{1, 20.0}, {3, 40.0}}),
         {{0, -35.0}, {1, -35.0}, {5, -40.0}, {6, -76.0}, {20, 19.0}}},
        {"middle pinch", with({{1, 20.0}, {6, 40.0}}), {{0, -35.0}, {1, -35.0}, {9, -40.0}, {10, -76.0}}},
        {"ring pinch", with({{1, 20.0}, {9, 40.0}}), {{0, -33.0}, {1, -32.0}, {13, -40.0}, {14, -76.0}}},
        {"ring and little half bent", with({{1, 40.0}, {9, 40.0}, {11, 20.0}}),
         {{0, -33.0}, {1, -32.0}, {2, -100.0}, {13, -39.5}, {14, -70.0}}},
        {"ring and little closed", with({{1, 40.0}, {9, 60.0}, {11, 40.0}}),
         {{0, -35.0}, {1, -35.0}, {2, -100.0}, {13, -100.0}, {14, -100.0}, {17, -100.0}, {18, -100.0}}},
        {"little pinch", with({{1, 40.0}, {11, 40.0}}),
         {{0, -30.0}, {1, -30.0}, {2, -110.0}, {17, -40.0}, {18, -76.0}}},
        // Index and middle together: the index-and-middle pose fires, then the middle pinch sees
        // the index it left (no longer bent past -50) and wins the thumb.
        {"index and middle", with({{1, 40.0}, {3, 20.0}, {6, 40.0}}),
         {{0, -35.0}, {1, -35.0}, {2, -85.0}, {5, -40.0}, {9, -40.0}, {10, -76.0}}},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        for (const auto& [slot, v] : c.expect) EXPECT_SAME_DOUBLE(v, out[slot]) << c.pose << " slot " << slot;
        EXPECT_SAME_DOUBLE(-1.0, out[23]) << c.pose;
    }
}

TEST(RoboteraXHand1, GraspCurlScalesByHowFarTheJointAlreadyIs) {
    // Middle and ring together. The middle knuckle arrives at row 8 = 1 - 40.4, remapped in its
    // middle piece, and is curled toward -76 with gain 1.0: |v / -76| * (1.0 * v), which from
    // this start relaxes it rather than deepening it.
    const Targets out = map(with({{1, 40.0}, {6, 40.0}, {9, 40.0}}));
    const double v = 0.6 * (1.0 + -40.4) - 42.0;
    EXPECT_SAME_DOUBLE(std::fabs(v / -76.0) * (1.0 * v), out[10]);
    EXPECT_SAME_DOUBLE(-40.0, out[9]);
    EXPECT_SAME_DOUBLE(-40.0, out[13]);
    EXPECT_GT(out[14], -76.0);
    EXPECT_GT(out[2], -95.0);
}

TEST(RoboteraXHand1, FistClosesEveryFingerWhateverTheThumb) {
    const Targets out = map(with({{3, 60.0}, {6, 60.0}, {9, 60.0}, {11, 40.0}}));
    for (int slot : {5, 6, 9, 10, 13, 14, 17, 18}) EXPECT_SAME_DOUBLE(-100.0, out[slot]) << slot;
    // The first copies followed their joints before the fist snapped them shut.
    for (int slot : {4, 8, 12, 16}) EXPECT_GT(out[slot], -80.0) << slot;
    EXPECT_SAME_DOUBLE(0.0, out[2]);  // the thumb stays open
}

}  // namespace
