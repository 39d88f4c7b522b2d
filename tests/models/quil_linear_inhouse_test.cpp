// The later in-house revisions: AD, AE and AG, each checked where it departs from the others.
#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

template <Targets (*Hand)(const Readings&, const MemoryRef&, const Coefficients&), const Coefficients& tables>
Targets run(const Readings& in) {
    HandMemory none;
    return Hand(in, none.ref(), tables);
}
constexpr auto AD = run<hands::QUIL_linear_AD, hands::QUIL_linear_AD_coefficients>;
constexpr auto AE = run<hands::QUIL_linear_AE, hands::QUIL_linear_AE_coefficients>;
constexpr auto AG = run<hands::QUIL_linear_AG, hands::QUIL_linear_AG_coefficients>;

TEST(QuilLinearInHouse, OpenHandPoses) {
    struct Case {
        const char* hand;
        Targets (*map)(const Readings&);
        double thumb_rotation, second_thumb, first_thumb;
    };
    // AD: row 3 raised to its floor 5; out[20] keeps row 16 (-10), mirrored.
    // AE: the open thumb tip (0 > -10) takes 10 off the rotation 30.
    // AG: the tip at its cap 10 takes 2.5 * 20 off 25 and 2 * 20 off the first joint.
    const Case cases[] = {
        {"AD", AD, -5.0, 10.0, 0.0},
        {"AE", AE, -20.0, 5.0, 0.0},
        {"AG", AG, 25.0, -1.0, -40.0},
    };
    for (const Case& c : cases) {
        const Targets out = c.map(all(0.0));
        EXPECT_SAME_DOUBLE(c.thumb_rotation, out[3]) << c.hand;
        EXPECT_SAME_DOUBLE(c.second_thumb, out[20]) << c.hand;
        EXPECT_SAME_DOUBLE(c.first_thumb, out[1]) << c.hand;
        EXPECT_SAME_DOUBLE(-0.0, out[7]) << c.hand;
        EXPECT_SAME_DOUBLE(-1.0, out[23]) << c.hand;
    }
}

TEST(QuilLinearAD, FirstJointsRestSlightlyOpenButNeverExtend) {
    // out[5] = 0 would give 13 for out[4], which is then zeroed.
    const Targets open = AD(all(0.0));
    EXPECT_SAME_DOUBLE(0.0, open[4]);
    // x3 = 120 drives row 4 to -100: out[4] = 0.76 * -100 + 13.
    const Targets bent = AD(with({{3, 120.0}}));
    EXPECT_SAME_DOUBLE(-100.0, bent[5]);
    EXPECT_SAME_DOUBLE(-100.0 * 0.76 + 13.0, bent[4]);
}

TEST(QuilLinearAD, SecondThumbValueIsClampedBeforeTheMirror) {
    for (double x0 = -20; x0 <= 120; x0 += 7)
        for (double x1 = -20; x1 <= 120; x1 += 7) {
            const Targets out = AD(with({{0, x0}, {1, x1}}));
            EXPECT_GE(out[20], -15.0);
            EXPECT_LE(out[20], 50.0);
        }
}

TEST(QuilLinearAE, ThumbTipDeadBandLeavesRotationAlone) {
    struct Case {
        double x1;        // bends the thumb tip (row 2 = -1.05 * x1, truncated to tenths)
        double rotation;  // out[3] before the mirror
    };
    // x1 = 0: tip 0 > -10, rotation 30 - 10. x1 = 10: tip -10.5 in the dead band, 30.
    // x1 = 40: tip -42, rotation 30 + (-42 + 0.4 * -32) = -24.8, raised to 15.
    const Case cases[] = {{0.0, 20.0}, {10.0, 30.0}, {40.0, 15.0}};
    for (const Case& c : cases) EXPECT_SAME_DOUBLE(-c.rotation, AE(with({{1, c.x1}}))[3]) << c.x1;
}

TEST(QuilLinearAG, LittleSpreadIsTripledBelowSevenAndRaisedFromSeven) {
    // Row 15 = x7 / 10 + 0.35 * x10 - 2 (tenths, truncated). x7 = 69, 70, 100 give 4.9, 5, 8.
    struct Case {
        double x7;
        double spread;
    };
    const Case cases[] = {{69.0, 4.9 * 3.0}, {70.0, 5.0 * 3.0}, {90.0, 7.0 + 14.0}, {100.0, 8.0 + 14.0}};
    for (const Case& c : cases) EXPECT_SAME_DOUBLE(c.spread, AG(with({{7, c.x7}}))[19]) << c.x7;
}

TEST(QuilLinearAG, SecondThumbValueFollowsTheClampedTip) {
    // A deeply bent tip is clamped at -60 before out[20] = 0.6 * tip - 5 is formed.
    const Targets out = AG(with({{1, 120.0}}));
    EXPECT_SAME_DOUBLE(-(0.6 * -60.0 - 5.0), out[20]);
}

}  // namespace
