#include <utility>

#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::OYMotion_ROH_A001(in, none.ref());
}

TEST(OYMotionROHA001, OpenHand) {
    const Targets out = map(all(0.0));
    EXPECT_SAME_DOUBLE(-10.0, out[2]);                 // tip row offset, not doubled
    EXPECT_SAME_DOUBLE(-(-10.0 * 3 + 5), out[20]);     // rotation from the tip, mirrored
    EXPECT_SAME_DOUBLE(-30.0, out[3]);
    EXPECT_SAME_DOUBLE(0.0, out[1]);                   // follows the straight index: 0 + 0
    EXPECT_SAME_DOUBLE(-0.0, out[7]);
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
}

// The thumb base takes the index middle joint (0 here) while above -40, and is only offset
// from -40 down; each edge belongs to the lower band.
TEST(OYMotionROHA001, ThumbBaseBands) {
    struct Case {
        double x0, row;
        double want;
    };
    const Case cases[] = {
        {10.45, -9.9, 0.0 + 0.0},
        {10.55, -10.0, 0.25 * 0.0 - 17.5},
        {42.0, -39.9, 0.25 * 0.0 - 17.5},
        {42.15, -40.0, 12.5 + -40.0},
    };
    for (const Case& c : cases) EXPECT_SAME_DOUBLE(c.want, map(with({{0, c.x0}}))[1]) << c.row;
}

// The thumb rotation comes from the tip in four bands, mirrored at the end.
TEST(OYMotionROHA001, ThumbRotationFollowsTheTip) {
    struct Case {
        Readings in;
        double tip;
        double want;
    };
    const Case cases[] = {
        {with({{9, 60.0}}), -1.0, -(-1.0 * 0.5)},
        {with({{0, 80.0}}), -2.0, -(-2.0 * 3 + 5)},
        {with({{0, -19.95}}), -11.9, -(-11.9 * 3 + 5)},
        {with({{0, -20.0}}), -12.0, -(-12.0 - 16)},
        {with({{1, 14.0}}), -14.9, -(-14.9 - 16)},
        {with({{1, 14.3}}), -15.0, 31.0},
    };
    for (const Case& c : cases) EXPECT_SAME_DOUBLE(c.want, map(c.in)[20]) << c.tip;
}

// Middle joints close to -100, proximal joints only to -80.
TEST(OYMotionROHA001, ProximalJointsStopAtEighty) {
    const Targets out = map(with({{6, 100.0}, {9, 100.0}}));
    EXPECT_SAME_DOUBLE(-100.0, out[13]);
    EXPECT_SAME_DOUBLE(-80.0, out[12]);
    EXPECT_SAME_DOUBLE(-80.0, out[14]);
    EXPECT_SAME_DOUBLE(-80.0, out[10]);
}

TEST(OYMotionROHA001, OutOfRangeReadingsActAsTheirBounds) {
    const std::pair<double, double> cases[] = {{kNaN, 120.0}, {kInf, 120.0}, {-kInf, -20.0}, {1e300, 120.0}, {-30.0, -20.0}};
    for (const auto& [raw, as] : cases)
        for (int i = 0; i < 12; ++i) {
            const Targets got = map(with({{i, raw}})), want = map(with({{i, as}}));
            for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(want[s], got[s]) << "input " << i << " slot " << s;
        }
}

}  // namespace
