#include <vector>

#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) { return hands::DexRobot_DexHand021_MP(in, MemoryRef{}); }

TEST(DexRobotDexHand021MP, OpenHandPose) {
    const Targets out = map(all(0.0));
    EXPECT_SAME_DOUBLE(-30.0, out[3]);   // row 3 offset 30, mirrored
    EXPECT_SAME_DOUBLE(20.0, out[20]);   // row 16 offset -10 doubled, mirrored
    EXPECT_SAME_DOUBLE(-1.0, out[7]);    // row 6 offset 1, mirrored
    EXPECT_SAME_DOUBLE(0.24, out[11]);   // middle spread from the index spread: 0.24 * 1 - 0.32 * 0
    EXPECT_SAME_DOUBLE(-10.0, out[2]);
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
    // Bending the thumb base closes the index spread to zero, which comes out mirrored as -0.0.
    EXPECT_SAME_DOUBLE(-0.0, map(with({{1, 40.0}}))[7]);
}

// Each pinch pose is recognised from which finger middle joints are bent once the thumb has
// swung across the palm (x2 bends the thumb; x3, x6, x9, x11 bend index, middle, ring, little).
TEST(DexRobotDexHand021MP, PinchPoseChosenByBentFingers) {
    struct Case {
        const char* name;
        Readings in;
        double swing;  // returned out[20], mirrored
        std::vector<std::pair<int, double>> targets;
    };
    const Case cases[] = {
        {"index", with({{2, 20.0}, {3, 40.0}}), 45.0, {{0, -30}, {1, -30}, {2, -30}, {5, -38}, {6, -64}}},
        {"index+middle", with({{2, 20.0}, {3, 40.0}, {6, 40.0}}), 55.0,
         {{0, 0}, {1, -30}, {2, -30}, {5, -38}, {6, -64}, {9, -38}, {10, -64}}},
        {"middle", with({{2, 20.0}, {6, 40.0}}), 65.0, {{1, -29}, {2, -38}, {9, -38}, {10, -68}}},
        {"middle+ring", with({{2, 40.0}, {6, 40.0}, {9, 40.0}}), 75.0,
         {{1, -30}, {2, -40}, {9, -38}, {10, -64}, {13, -38}, {14, -64}}},
        {"ring", with({{2, 40.0}, {9, 40.0}}), 95.0, {{1, -25}, {2, -42}, {13, -40}, {14, -64}}},
        // The little finger bent along with the ring: same targets, out[18] keeps its bend.
        {"ring+little", with({{2, 40.0}, {9, 30.0}, {11, 30.0}}), 95.0,
         {{1, -25}, {2, -42}, {13, -40}, {14, -64}}},
        {"little", with({{2, 40.0}, {11, 40.0}}), 120.0, {{1, -23}, {2, -33}, {17, -38}, {18, -64}}},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        EXPECT_SAME_DOUBLE(c.swing, out[20]) << c.name;
        for (const auto& [slot, v] : c.targets) EXPECT_SAME_DOUBLE(v, out[slot]) << c.name << " slot " << slot;
    }
    EXPECT_LT(map(with({{2, 40.0}, {9, 30.0}, {11, 30.0}}))[18], -50.0);
}

TEST(DexRobotDexHand021MP, PinchNeedsThumbSwungStrictlyPastGate) {
    // x2 = 12.6 puts out[20] at exactly -35: no pose, although the index alone is bent.
    const Targets at_gate = map(with({{2, 12.6}, {3, 40.0}}));
    EXPECT_SAME_DOUBLE(35.0, at_gate[20]);
    EXPECT_SAME_DOUBLE(-61.2, at_gate[6]);
    EXPECT_SAME_DOUBLE(0.0, at_gate[0]);
    const Targets past = map(with({{2, 12.8}, {3, 40.0}}));
    EXPECT_SAME_DOUBLE(45.0, past[20]);
    EXPECT_SAME_DOUBLE(-64.0, past[6]);
}

TEST(DexRobotDexHand021MP, FullBendLockIsStrict) {
    // Index middle joint at exactly -80 stays; at -80.1 the whole finger closes to -100.
    const Targets at = map(with({{3, 88.9}}));
    EXPECT_SAME_DOUBLE(-80.0, at[6]);
    EXPECT_SAME_DOUBLE(-66.75, at[5]);
    const Targets past = map(with({{3, 89.0}}));
    EXPECT_SAME_DOUBLE(-100.0, past[6]);
    EXPECT_SAME_DOUBLE(-100.0, past[5]);
    // The distal slot followed the proximal one before the lock and is not closed with it.
    EXPECT_SAME_DOUBLE(0.8 * (1.5 * -75.6 + 46.5), past[4]);
}

TEST(DexRobotDexHand021MP, RingMiddleJointKnee) {
    // Ring middle joint row at -40 (x9 = 40). With the middle finger's middle joint above -60 it
    // takes the mid piece 0.4v - 40; with the middle finger bent past -60 (x6 = 70) it takes the
    // last piece v - 4 although its own value is in the mid range.
    EXPECT_SAME_DOUBLE(0.4 * -40.0 - 40.0, map(with({{9, 40.0}}))[14]);
    const Targets bent = map(with({{6, 70.0}, {9, 40.0}}));
    EXPECT_LT(bent[10], -60.0);
    EXPECT_SAME_DOUBLE(-44.0, bent[14]);
}

TEST(DexRobotDexHand021MP, NaNReadingActsAsUpperBound) {
    for (int i = 0; i < 12; ++i) {
        const Targets got = map(with({{i, kNaN}}));
        const Targets want = map(with({{i, 120.0}}));
        for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(want[s], got[s]) << "input " << i << " slot " << s;
    }
}

}  // namespace
