#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::AgiBot_OmniHand_O12(in, none.ref());
}

TEST(AgiBotOmniHandO12, OpenHandPose) {
    const Targets out = map(all(0.0));
    EXPECT_SAME_DOUBLE(-5.0, out[3]);           // 30 pulled in by 2.5 x (0 + 10), mirrored
    EXPECT_SAME_DOUBLE(-2.0, out[7]);           // row 6 offset, mirrored
    EXPECT_SAME_DOUBLE(-0.0, out[20]);          // a mirrored zero keeps its sign bit
    EXPECT_SAME_DOUBLE(3.0, out[19]);           // small little spread boosted by 1.5
    EXPECT_SAME_DOUBLE(0.24 * 2.0 - 0.32 * 2.0, out[11]);
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
}

TEST(AgiBotOmniHandO12, LittleFingerLocksAtMinus80WhereTheIndexNeedsBelowMinus90) {
    // x3 = 120 leaves the index at exactly -90 (not below), x11 = 80 the little finger at its
    // floor -84, below its own lock threshold.
    const Targets out = map(with({{3, 120.0}, {11, 80.0}}));
    EXPECT_SAME_DOUBLE(-90.0, out[6]);
    EXPECT_SAME_DOUBLE(-100.0, out[5]);
    EXPECT_SAME_DOUBLE(-100.0, out[17]);
    EXPECT_SAME_DOUBLE(-100.0, out[18]);
    EXPECT_SAME_DOUBLE(-80.0, out[16]);  // the distal joint followed before the lock
}

TEST(AgiBotOmniHandO12, PinchPoses) {
    // x0 = 80 bends thumb slot 1 to -51 (gate open); x0 = 60 leaves it at -38.25 (gate shut).
    // x3 = 60 puts the index at -53, x6 = 50 the middle finger at -35.2.
    struct Case {
        const char* name;
        Readings in;
        std::initializer_list<std::pair<int, double>> expect;
    };
    const Case cases[] = {
        {"index", with({{0, 80.0}, {3, 60.0}}),
         {{0, 0.0}, {1, -37.0}, {2, -7.0}, {3, 8.0}, {20, 8.0}, {4, 0.0}, {5, -44.0}, {6, -39.0}}},
        // The index pose leaves out[6] at -39, so the middle pose overrides the thumb slots.
        {"index then middle", with({{0, 80.0}, {3, 60.0}, {6, 50.0}}),
         {{0, 0.0}, {1, -36.0}, {2, 0.0}, {3, 11.0}, {20, 15.0}, {4, 0.0}, {5, -44.0}, {6, -39.0},
          {8, 0.0}, {9, -50.0}, {10, -37.0}}},
        {"gate shut", with({{0, 60.0}, {3, 60.0}}), {{1, -38.25}, {6, -53.0}}},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        for (const auto& [slot, v] : c.expect) EXPECT_SAME_DOUBLE(v, out[slot]) << c.name << " slot " << slot;
        EXPECT_SAME_DOUBLE(-1.0, out[23]) << c.name;
    }
}

}  // namespace
