#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::QUIL_linear_AA(in, none.ref());
}

TEST(QuilLinearAA, OpenHandPose) {
    const Targets out = map(all(0.0));
    EXPECT_SAME_DOUBLE(15.0, out[3]);    // row 3 offset -15, mirrored
    EXPECT_SAME_DOUBLE(-27.0, out[1]);   // dragged by the thumb rotation: -15 * 1.8
    EXPECT_SAME_DOUBLE(5.0, out[20]);    // -(0.5 * 0 - 5)
    EXPECT_SAME_DOUBLE(-0.0, out[7]);    // a mirrored zero keeps its sign bit
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
    EXPECT_SAME_DOUBLE(0.0, out[11]);
}

TEST(QuilLinearAA, SecondThumbValueFollowsOnlyTheThumbTip) {
    // out[20] is recomputed from out[2]; row 16 (x0, x1) matters only through out[2].
    const Targets a = map(with({{0, 10.0}}));
    const Targets b = map(with({{0, 10.0}, {3, 50.0}}));
    EXPECT_SAME_DOUBLE(-(0.5 * a[2] - 5.0), a[20]);
    EXPECT_SAME_DOUBLE(a[20], b[20]);
}

TEST(QuilLinearAA, DistalJointsFollowAtEightTenths) {
    // x3 = 120 drives row 4 to its floor -100 in both copies; the first copy becomes 0.8 of it.
    const Targets out = map(with({{3, 120.0}}));
    EXPECT_SAME_DOUBLE(-100.0, out[5]);
    EXPECT_SAME_DOUBLE(-80.0, out[4]);
    // x9 = 120 drives row 10 to -100; x8 = 80 keeps the neighbour row 7 at 0 so it adds no
    // pull, and the ring joint is compressed to 0.85 * -100 - 6.
    const Targets ring = map(with({{8, 80.0}, {9, 120.0}}));
    const double compressed = 0.85 * -100.0 - 6.0;  // -91 up to rounding
    EXPECT_SAME_DOUBLE(compressed, ring[13]);
    EXPECT_SAME_DOUBLE(compressed * 0.8, ring[12]);
}

TEST(QuilLinearAA, OutOfRangeReadingsActAsTheirBounds) {
    struct Case {
        double raw, as;
    };
    const Case cases[] = {{kNaN, 120.0}, {kInf, 120.0}, {-kInf, -20.0}, {1e300, 120.0}, {-30.0, -20.0}};
    for (const Case& c : cases)
        for (int i = 0; i < 12; ++i) {
            const Targets got = map(with({{i, c.raw}}));
            const Targets want = map(with({{i, c.as}}));
            for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(want[s], got[s]) << "input " << i << " slot " << s;
        }
}

}  // namespace
