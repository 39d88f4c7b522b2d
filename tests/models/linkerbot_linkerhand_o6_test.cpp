#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) { return hands::LINKERBOT_LinkerHand_O6(in, MemoryRef{}); }

// Thumb at out[1] = -30 exactly (x0 = 40, x1 = 30); index middle joint out[6] from x3, x4.
TEST(LinkerHandO6, IndexPinchGatesAreInclusive) {
    struct Case {
        const char* name;
        Readings in;
        bool pinch;
    };
    const Case cases[] = {
        {"index at -30", with({{0, 40.0}, {1, 30.0}, {3, 43.0}, {4, 4.0}}), true},
        {"index at -29.92", with({{0, 40.0}, {1, 30.0}, {3, 43.0}, {4, 6.0}}), false},
        {"index at -70", with({{0, 40.0}, {1, 30.0}, {3, 79.0}, {4, 2.0}}), true},
        {"index at -70.1", with({{0, 40.0}, {1, 30.0}, {3, 79.0}}), false},
        {"thumb at -27.93", with({{0, 40.0}, {1, 29.9}, {3, 43.0}, {4, 4.0}}), false},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        if (c.pinch) {
            EXPECT_SAME_DOUBLE(-33.0, out[2]) << c.name;
            EXPECT_SAME_DOUBLE(13.0, out[3]) << c.name;  // set negative, returned mirrored
            EXPECT_SAME_DOUBLE(-41.0, out[6]) << c.name;
        } else {
            EXPECT_NE(-41.0, out[6]) << c.name;
            EXPECT_LT(out[3], 0.0) << c.name;
        }
    }
    EXPECT_SAME_DOUBLE(-30.0, map(cases[0].in)[1]);
    EXPECT_SAME_DOUBLE(-70.1, map(cases[3].in)[6]);
}

TEST(LinkerHandO6, SecondFingerPinch) {
    struct Case {
        const char* name;
        Readings in;
        bool pinch;
    };
    const Case cases[] = {
        {"middle at -35.04", with({{0, 40.0}, {1, 30.0}, {6, 50.2}}), true},
        {"middle at -34.96", with({{0, 40.0}, {1, 30.0}, {6, 50.0}}), false},
        {"little at -39.84", with({{0, 60.0}, {6, 55.0}, {11, 46.2}}), true},
        {"little at -40", with({{0, 60.0}, {6, 55.0}, {11, 46.37}}), false},
        // The index pinch leaves out[6] at -41, which rules the second finger out.
        {"after index pinch", with({{0, 40.0}, {1, 30.0}, {3, 43.0}, {4, 4.0}, {6, 55.0}}), false},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        EXPECT_EQ(c.pinch, out[10] == -43.0) << c.name;
        if (c.pinch) {
            EXPECT_SAME_DOUBLE(-33.0, out[2]) << c.name;
            EXPECT_SAME_DOUBLE(19.0, out[3]) << c.name;
        }
    }
    EXPECT_SAME_DOUBLE(-40.0, map(cases[3].in)[18]);
    EXPECT_SAME_DOUBLE(13.0, map(cases[4].in)[3]);
}

TEST(LinkerHandO6, ThumbRotationFollowsTipAroundMinusTen) {
    // x2 = 20 puts the tip row at exactly -10: the rotation keeps the row's 30.
    EXPECT_SAME_DOUBLE(-30.0, map(with({{2, 20.0}}))[3]);
    EXPECT_SAME_DOUBLE(-(30.0 - (-9.9 + 10) * 2.5), map(with({{2, 19.8}}))[3]);
    EXPECT_SAME_DOUBLE(-(30.0 + (-10.1 + 10) * 0.15), map(with({{2, 20.2}}))[3]);
    // A straight tip opens the rotation down to 30 - 25 = 5.
    EXPECT_SAME_DOUBLE(-5.0, map(all(0.0))[3]);
}

TEST(LinkerHandO6, LittleFingerLocksEarlierThanRing) {
    // Little finger at its -84 stop locks to -100; the ring middle joint at -90 does not lock.
    const Targets little = map(with({{11, 90.0}}));
    EXPECT_SAME_DOUBLE(-100.0, little[18]);
    EXPECT_SAME_DOUBLE(-100.0, little[17]);
    const Targets ring = map(with({{9, 120.0}}));
    EXPECT_SAME_DOUBLE(-90.0, ring[14]);
}

TEST(LinkerHandO6, MirroredZerosAndNaN) {
    const Targets open = map(all(0.0));
    EXPECT_SAME_DOUBLE(-0.0, open[20]);
    EXPECT_SAME_DOUBLE(-1.0, open[23]);
    for (int i = 0; i < 12; ++i) {
        const Targets got = map(with({{i, kNaN}}));
        const Targets want = map(with({{i, 120.0}}));
        for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(want[s], got[s]) << "input " << i << " slot " << s;
    }
}

}  // namespace
