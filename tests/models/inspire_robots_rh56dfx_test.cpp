#include <utility>

#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::INSPIRE_ROBOTS_RH56DFX(in, none.ref());
}

TEST(InspireRH56DFX, OpenHand) {
    const Targets out = map(all(0.0));
    EXPECT_SAME_DOUBLE(2 * (0.9 * -10.0), out[2]);  // tip row offset -10, eased, doubled
    EXPECT_SAME_DOUBLE(10.0, out[20]);              // row offset -10, mirrored
    EXPECT_SAME_DOUBLE(-30.0, out[3]);
    EXPECT_SAME_DOUBLE(-0.0, out[7]);               // a mirrored zero keeps its sign bit
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
}

// Band edges belong to the lower band: the thumb tip at -20 and the index middle joint at -20
// and -50.
TEST(InspireRH56DFX, BandEdges) {
    struct Case {
        const char* what;
        Readings in;
        int slot;
        double want;
    };
    const Case cases[] = {
        {"tip -19.9", with({{1, 19.8}}), 2, 2 * (0.9 * -19.9)},
        {"tip -20", with({{1, 20.0}}), 2, 2 * (-20.0 * 3.9 + 60)},
        {"index middle -19.9", with({{3, 20.95}}), 5, -19.9 + -19.9},
        {"index middle -20", with({{3, 21.1}}), 5, 0.3 * -20.0 - 34},
        {"index middle -49.9", with({{3, 52.55}}), 5, 0.3 * -49.9 - 34},
        {"index middle -50", with({{3, 52.65}}), 5, -50.0 + 1},
    };
    for (const Case& c : cases) EXPECT_SAME_DOUBLE(c.want, map(c.in)[c.slot]) << c.what;
}

// A thumb tip bent past -50 pulls the thumb base in (row 0 at -9.5, tip at -68.7).
TEST(InspireRH56DFX, BentThumbTipPullsTheBase) {
    const Targets out = map(with({{0, 20.0}, {1, 50.0}}));
    const double tip = -33.0 * 3.9 + 60;
    EXPECT_SAME_DOUBLE(2 * tip, out[2]);
    EXPECT_SAME_DOUBLE(2 * (-9.5 - (tip * 0.2 + 10)), out[0]);
}

// A little spread of 5 to 7 turns the thumb and is tripled; from 7 on it is offset by 14.
TEST(InspireRH56DFX, LittleSpreadTurnsTheThumb) {
    struct Case {
        double x7, spread;
        double want_spread;
    };
    const Case cases[] = {{60.0, 6.0, 6.0 * 3}, {69.9, 6.9, 6.9 * 3}, {70.0, 7.0, 7.0 + 14}};
    for (const Case& c : cases) {
        const Targets out = map(with({{7, c.x7}}));
        EXPECT_SAME_DOUBLE(-(30.0 + (c.spread - 5) * 1.3), out[3]) << c.x7;
        EXPECT_SAME_DOUBLE(c.want_spread, out[19]) << c.x7;
    }
}

// The doubled proximal joints reach -200; the middle joints stop at -100.
TEST(InspireRH56DFX, DeepBendsReachTwiceTheFloor) {
    const Targets out = map(with({{6, 100.0}, {9, 100.0}}));
    EXPECT_SAME_DOUBLE(-200.0, out[14]);
    EXPECT_SAME_DOUBLE(-100.0, out[13]);
    EXPECT_SAME_DOUBLE(-80.0, out[12]);
}

TEST(InspireRH56DFX, OutOfRangeReadingsActAsTheirBounds) {
    const std::pair<double, double> cases[] = {{kNaN, 120.0}, {kInf, 120.0}, {-kInf, -20.0}, {1e300, 120.0}, {-30.0, -20.0}};
    for (const auto& [raw, as] : cases)
        for (int i = 0; i < 12; ++i) {
            const Targets got = map(with({{i, raw}})), want = map(with({{i, as}}));
            for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(want[s], got[s]) << "input " << i << " slot " << s;
        }
}

}  // namespace
