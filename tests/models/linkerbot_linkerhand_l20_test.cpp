#include <utility>
#include <vector>

#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::LINKERBOT_LinkerHand_L20(in, none.ref());
}

TEST(LinkerHandL20, OpenHand) {
    const Targets out = map(all(0.0));
    EXPECT_SAME_DOUBLE(-30.0, out[3]);   // thumb rotation row is a constant 30, mirrored
    EXPECT_SAME_DOUBLE(-2.0, out[7]);
    EXPECT_SAME_DOUBLE(-0.0, out[20]);   // 2.5 * 0, mirrored
    EXPECT_SAME_DOUBLE(3.0, out[19]);    // narrow little spread 2, scaled by 1.5
    EXPECT_SAME_DOUBLE(0.24 * 2.0 - 0.32 * 2.0, out[11]);
    EXPECT_SAME_DOUBLE(0.0, out[17]);    // eased by the spread, capped at 0
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
}

// Each gain curve at and just above both of its breakpoints: a value on a breakpoint belongs
// to the lower piece.
TEST(LinkerHandL20, CurvesSplitAtTheirBreakpoints) {
    struct Case {
        const char* what;
        Readings in;
        int slot;
        double want;
    };
    const Case cases[] = {
        {"index proximal -29.9", with({{3, 34.35}}), 6, 2.0 * -29.9},
        {"index proximal -30", with({{3, 34.45}}), 6, 0.6 * -30.0 - 42.0},
        {"index proximal -49.9", with({{3, 56.6}}), 6, 0.6 * -49.9 - 42.0},
        {"index proximal -50", with({{3, 56.7}}), 6, 1.5 * -50.0 + 3.0},
        {"middle middle -14.9", with({{6, 15.7}}), 9, 2.0 * -14.9},
        {"middle middle -15", with({{6, 15.8}}), 9, 0.5 * -15.0 - 22.5},
        {"middle middle -69.9", with({{4, 120.0}, {6, 73.6}}), 9, 0.5 * -69.9 - 22.5},
        {"middle middle -70", with({{4, 120.0}, {6, 73.7}}), 9, 1.5 * -70.0 + 47.5},
        {"index middle -9.9", with({{3, 10.45}}), 5, 1.5 * -9.9},
        {"index middle -10", with({{3, 10.55}}), 5, 0.5 * -10.0 - 10.0},
        {"index middle -59.9", with({{3, 63.1}}), 5, 0.5 * -59.9 - 10.0},
        {"index middle -60", with({{3, 63.2}}), 5, 2.0 * -60.0 + 80.0},
        {"thumb base -19.9", with({{0, 23.45}}), 0, 1.5 * -19.9},
        {"thumb base -20", with({{0, 23.55}}), 0, 0.6 * -20.0 - 20.0},
        {"thumb base -59.9", with({{0, 70.5}}), 0, 0.6 * -59.9 - 20.0},
        {"thumb base -60", with({{0, 70.6}}), 0, -60.0 + 4.0},
        // The thumb rotation comes back mirrored.
        {"thumb rotation -19.9", with({{1, 33.2}}), 20, -(2.5 * -19.9)},
        {"thumb rotation -20", with({{1, 33.35}}), 20, -(1.5 * -20.0 - 20.0)},
        {"thumb rotation -49.9", with({{1, 83.2}}), 20, -(1.5 * -49.9 - 20.0)},
        {"thumb rotation -50", with({{1, 83.35}}), 20, -(-50.0 - 45.0)},
    };
    for (const Case& c : cases) EXPECT_SAME_DOUBLE(c.want, map(c.in)[c.slot]) << c.what;
}

// With the thumb turned in, the bent fingers select one of eight pinch poses.
TEST(LinkerHandL20, PinchPoses) {
    struct Case {
        int pose;
        Readings in;
        std::vector<std::pair<int, double>> targets;  // final values; the thumb rotation mirrored
    };
    const Case cases[] = {
        {1, with({{1, 70.0}, {3, 105.0}}), {{0, -48}, {1, -42}, {2, -27}, {20, 100}, {5, -35}, {6, -52}}},
        {2, with({{2, 100.0}, {3, 85.0}, {6, 90.0}}),
         {{0, -48}, {1, -42}, {2, -27}, {20, 100}, {5, -35}, {6, -52}, {9, -35}, {10, -52}}},
        {3, with({{2, 30.0}, {6, 115.0}}), {{0, -48}, {1, -45}, {2, -37}, {20, 100}, {9, -35}, {10, -52}}},
        {4, with({{2, 110.0}, {6, 80.0}, {9, 30.0}}),
         {{0, -48}, {1, -42}, {2, -37}, {20, 100}, {9, -35}, {10, -52}, {13, -35}, {14, -52}}},
        {5, with({{2, 50.0}, {9, 65.0}}), {{0, -48}, {1, -42}, {2, -47}, {20, 110}, {13, -35}, {14, -52}}},
        {6, with({{1, 95.0}, {9, 25.0}, {11, 45.0}}),
         {{0, -45}, {1, -42}, {2, -47}, {20, 120}, {13, -35}, {14, -52}, {17, -35}, {18, -52}}},
        {7, with({{2, 45.0}, {9, 115.0}, {11, 115.0}}),
         {{0, -75}, {1, -55}, {2, -47}, {20, 120}, {13, -100}, {14, -100}, {17, -100}, {18, -100}}},
        {8, with({{1, 80.0}, {11, 40.0}}), {{0, -45}, {1, -40}, {2, -60}, {20, 120}, {17, -35}, {18, -52}}},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        for (const auto& [slot, want] : c.targets) EXPECT_SAME_DOUBLE(want, out[slot]) << "pose " << c.pose << " slot " << slot;
    }
}

// The index pose needs the thumb rotation strictly below -25 and the index strictly below -40.
TEST(LinkerHandL20, PinchPoseGatesAreStrict) {
    // x1 = 16.7 puts the thumb rotation row at -10, which the curve makes exactly -25.
    const Targets at_gate = map(with({{1, 16.7}, {3, 105.0}}));
    EXPECT_SAME_DOUBLE(25.0, at_gate[20]);
    EXPECT_NE(-52.0, at_gate[6]);
    const Targets past_gate = map(with({{1, 16.9}, {3, 105.0}}));
    EXPECT_SAME_DOUBLE(100.0, past_gate[20]);
    EXPECT_SAME_DOUBLE(-52.0, past_gate[6]);
    // Index proximal row at -20 curves to exactly -40: neither bent nor open, so no pose.
    const Targets on_edge = map(with({{1, 70.0}, {3, 23.35}}));
    EXPECT_SAME_DOUBLE(-40.0, on_edge[6]);
    EXPECT_SAME_DOUBLE(-(1.5 * -42.0 - 20.0), on_edge[20]);  // thumb turned in
    EXPECT_NE(-48.0, on_edge[0]);
}

// All four fingers past -50 follow the index; the middle joints were already locked closed by
// the full-bend lock and stay so.
TEST(LinkerHandL20, FingersSynchroniseWithTheIndex) {
    const Targets out = map(with({{3, 30.0}, {6, 100.0}, {9, 80.0}, {11, 40.0}}));
    EXPECT_SAME_DOUBLE(-52.0, out[6]);
    for (int s : {10, 14, 18}) EXPECT_SAME_DOUBLE(out[6], out[s]) << s;
    EXPECT_SAME_DOUBLE(-100.0, out[9]);
    EXPECT_SAME_DOUBLE(-100.0, out[13]);
}

// A fist closes all eight finger joints; the distal joints were set from the middle joints
// before the locks, so they keep the earlier value.
TEST(LinkerHandL20, FistLocksEveryFingerJoint) {
    const Targets out = map(with({{3, 100.0}, {6, 65.0}, {9, 105.0}, {11, 25.0}}));
    for (int s : {5, 6, 9, 10, 13, 14, 17, 18}) EXPECT_SAME_DOUBLE(-100.0, out[s]) << s;
    EXPECT_SAME_DOUBLE(-80.0, out[4]);
    EXPECT_GT(out[8], -80.0);
    EXPECT_GT(out[16], -80.0);
}

TEST(LinkerHandL20, OutOfRangeReadingsActAsTheirBounds) {
    const std::pair<double, double> cases[] = {{kNaN, 120.0}, {kInf, 120.0}, {-kInf, -20.0}, {1e300, 120.0}, {-30.0, -20.0}};
    for (const auto& [raw, as] : cases)
        for (int i = 0; i < 12; ++i) {
            const Targets got = map(with({{i, raw}})), want = map(with({{i, as}}));
            for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(want[s], got[s]) << "input " << i << " slot " << s;
        }
}

}  // namespace
