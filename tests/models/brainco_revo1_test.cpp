#include <utility>

#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::BrainCo_Revo1(in, none.ref());
}

TEST(BrainCoRevo1, OpenHandPose) {
    const Targets out = map(all(0.0));
    EXPECT_SAME_DOUBLE(-30.0, out[3]);  // rotation 30, not raised (spread 2 is not above 5), mirrored
    EXPECT_SAME_DOUBLE(6.0, out[19]);   // spread 2, tripled
    EXPECT_SAME_DOUBLE(-2.0, out[7]);
    EXPECT_SAME_DOUBLE(2.0 * 0.24 - 0.32 * 2.0, out[11]);
    EXPECT_SAME_DOUBLE(0.0, out[2]);
    EXPECT_SAME_DOUBLE(-0.0, out[20]);  // a mirrored zero keeps its sign bit
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
}

TEST(BrainCoRevo1, ThumbBaseCurve) {
    struct Case {
        double x0;  // thumb base row = -0.75 * x0, truncated to tenths
        double want;
    };
    const Case cases[] = {
        {26.6, -19.9 * 0.5},        // near open: half gain
        {26.7, 0.2 * -20.0 - 6.0},  // at -20: middle piece, -10 as the first would give
        {80.0, -60.0 + 42.0},       // at -60: deepest piece, -18
        {93.4, -27.0},              // -70 + 42 = -28 stops at -27
    };
    for (const Case& c : cases) EXPECT_SAME_DOUBLE(c.want, map(with({{0, c.x0}}))[1]) << "x0 = " << c.x0;
}

TEST(BrainCoRevo1, ThumbTipPieceChosenByTipDrivenByOpposition) {
    // Whether the tip is near open is read from the tip row; the opposition row picks the other
    // two pieces and is what gets scaled.
    struct Case {
        double x1, x2;
        double tip, opposition;  // the two rows, for reference
        double want;
    };
    const Case cases[] = {
        {-20.0, 60.0, -13.9, -21.0, -21.0 * 2.5},        // tip near open, opposition is not
        {40.0, 0.0, -26.2, -18.0, 1.5 * -18.0 - 20.0},   // the other way round
        {100.0, 0.0, -65.5, -45.0, 1.5 * -45.0 - 20.0},  // tip deep, opposition above -50
    };
    for (const Case& c : cases) {
        const Targets out = map(with({{1, c.x1}, {2, c.x2}}));
        EXPECT_SAME_DOUBLE(c.want, out[2]) << "tip " << c.tip << ", opposition " << c.opposition;
        EXPECT_SAME_DOUBLE(-c.opposition, out[20]) << "the opposition row itself is left as it was";
    }
}

TEST(BrainCoRevo1, ThumbToIndexContact) {
    struct Case {
        double thumb, index;  // x2, x3
        bool contact;
        double index_joint;   // out[6] when there is no contact
    };
    const Case cases[] = {
        {40.0, 23.8, false, 0.5 * -20.0 - 20.0},      // index at -30 exactly: not past it
        {40.0, 23.9, true, 0.0},
        {40.0, 82.6, false, (1.0 + -71.0) + 10.0},    // index at -60 exactly
        {40.0, 82.5, true, 0.0},
        {0.0, 40.0, false, 0.5 * (1.0 + -34.0) - 20.0},  // thumb tip not across the palm
        {40.0, 40.0, true, 0.0},
    };
    for (const Case& c : cases) {
        const Targets out = map(with({{2, c.thumb}, {3, c.index}}));
        if (c.contact) {
            EXPECT_SAME_DOUBLE(-30.0, out[0]) << "x3 = " << c.index;
            EXPECT_SAME_DOUBLE(-90.0, out[2]) << "x3 = " << c.index;
            EXPECT_SAME_DOUBLE(-40.0, out[6]) << "x3 = " << c.index;
        } else {
            EXPECT_SAME_DOUBLE(c.index_joint, out[6]) << "x2 = " << c.thumb << ", x3 = " << c.index;
            EXPECT_NE(-90.0, out[2]) << "x2 = " << c.thumb << ", x3 = " << c.index;
        }
    }
}

TEST(BrainCoRevo1, FistSnapsToEndStop) {
    struct Case {
        double index, middle, ring, little;  // x3, x6, x9, x11 (x6 and x9 also bend the index row)
        double want[4];                      // out[6], out[10], out[14], out[18]
    };
    const double middle = (1.0 + -78.3) + 10.0;
    const Case cases[] = {
        // Two fingers deep: no snap.
        {0.0, 90.0, 90.0, 0.0, {(1.0 + -7.2) * 1.5, middle, -81.0 + 10.0, 0.0}},
        // Three: they close to -74, the index at -48.6 stays.
        {60.0, 90.0, 90.0, 90.0, {0.5 * (1.0 + -58.2) - 20.0, -74.0, -74.0, -74.0}},
        // Four: all close.
        {90.0, 90.0, 90.0, 90.0, {-74.0, -74.0, -74.0, -74.0}},
    };
    for (const Case& c : cases) {
        const Targets out = map(with({{3, c.index}, {6, c.middle}, {9, c.ring}, {11, c.little}}));
        const int slots[4] = {6, 10, 14, 18};
        for (int f = 0; f < 4; ++f) EXPECT_SAME_DOUBLE(c.want[f], out[slots[f]]) << "x3 = " << c.index << ", slot " << slots[f];
    }
}

TEST(BrainCoRevo1, OutOfRangeReadingsActAsTheirBounds) {
    const std::pair<double, double> cases[] = {{kNaN, 120.0}, {kInf, 120.0}, {-kInf, -20.0}, {-30.0, -20.0}};
    for (const auto& [raw, as] : cases)
        for (int i = 0; i < 12; ++i) {
            const Targets got = map(with({{i, raw}}));
            const Targets want = map(with({{i, as}}));
            for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(want[s], got[s]) << "input " << i << " slot " << s;
        }
}

}  // namespace
