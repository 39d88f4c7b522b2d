#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::TalentRobot_Pro(in, none.ref());
}

TEST(TalentRobotPro, ThumbTipIsRemappedOntoTheHandsRange) {
    // Open: the tip lands at 50, which turns the rotation to 30 - 60 * 1.2 (mirrored: 42).
    const Targets open = map(all(0.0));
    EXPECT_SAME_DOUBLE(50.0, open[2]);
    EXPECT_SAME_DOUBLE(42.0, open[3]);
    EXPECT_SAME_DOUBLE(-0.0, open[20]);
    EXPECT_SAME_DOUBLE(-1.0, open[23]);
    // Tip fully bent: -60 is not scaled and lands at -40; the rotation bottoms out at 20; the
    // deepest spread band scales -60 by 0.7 (mirrored: 42).
    const Targets bent = map(with({{2, 120.0}}));
    EXPECT_SAME_DOUBLE(-40.0, bent[2]);
    EXPECT_SAME_DOUBLE(-20.0, bent[3]);
    EXPECT_SAME_DOUBLE(42.0, bent[20]);
}

TEST(TalentRobotPro, PinchPoses) {
    struct Case {
        const char* what;
        Readings in;
        double base, tip, rotation, spread;  // out[1], out[2], out[3], out[20] as returned
        int finger_slot;
        double finger[3];
    };
    const Case cases[] = {
        {"index", with({{0, 60.0}, {3, 60.0}}), -26.0, 15.0, 41.0, 45.0, 4, {-77.0, -38.0, -61.0}},
        {"middle", with({{0, 80.0}, {6, 90.0}}), -53.0, 30.0, 20.0, 44.0, 8, {-38.0, -64.0, -74.0}},
        {"ring", with({{0, 70.0}, {9, 80.0}}), -53.0, 30.0, -7.0, 45.0, 12, {-18.0, -41.0, -79.0}},
        {"little", with({{0, 80.0}, {11, 80.0}}), -53.0, 30.0, -22.0, 45.0, 16, {-38.0, -35.0, -56.0}},
        // A fired index pose leaves the index at -61, which shuts out the middle pose.
        {"index before middle", with({{0, 60.0}, {3, 60.0}, {6, 90.0}}), -26.0, 15.0, 41.0, 45.0, 4, {-77.0, -38.0, -61.0}},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        EXPECT_SAME_DOUBLE(0.0, out[0]) << c.what;
        EXPECT_SAME_DOUBLE(c.base, out[1]) << c.what;
        EXPECT_SAME_DOUBLE(c.tip, out[2]) << c.what;
        EXPECT_SAME_DOUBLE(c.rotation, out[3]) << c.what;
        EXPECT_SAME_DOUBLE(c.spread, out[20]) << c.what;
        for (int i = 0; i < 3; ++i) EXPECT_SAME_DOUBLE(c.finger[i], out[c.finger_slot + i]) << c.what;
    }
    EXPECT_SAME_DOUBLE(-72.0, map(with({{0, 60.0}, {3, 60.0}, {6, 90.0}}))[10]);
}

TEST(TalentRobotPro, PinchNeedsTheThumbBaseHalfBent) {
    // The index alone is in its pinch band, but the open thumb keeps the gate shut.
    const Targets out = map(with({{3, 60.0}}));
    EXPECT_SAME_DOUBLE(0.0, out[1]);
    EXPECT_SAME_DOUBLE(50.0, out[2]);
    EXPECT_NE(-61.0, out[6]);
}

TEST(TalentRobotPro, OutOfRangeReadingsActAsTheirBounds) {
    struct Case {
        double raw, as;
    };
    const Case cases[] = {{kNaN, 120.0}, {kInf, 120.0}, {-kInf, -20.0}, {-30.0, -20.0}};
    for (const Case& c : cases)
        for (int i = 0; i < 12; ++i) {
            const Targets got = map(with({{i, c.raw}}));
            const Targets want = map(with({{i, c.as}}));
            for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(want[s], got[s]) << "input " << i << " slot " << s;
        }
}

}  // namespace
