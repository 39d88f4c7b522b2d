#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::RUIYAN_RY_H2(in, none.ref());
}

TEST(RuiyanRYH2, ThumbRotationFollowsSlot2BothWays) {
    // x2 sets thumb slot 2 (row 2 = -0.5 x2) with nothing else bent; the rotation starts at 30.
    struct Case {
        double x2, rotation;
    };
    const Case cases[] = {
        {19.8, 25.0},                           // -9.9: pulled in by 2.3 x 0.1, capped at 25
        {20.0, (30.0 + 0.0 * 0.15) * 0.78},     // exactly -10: the inclusive branch still rescales
        {30.0, (30.0 + -5.0 * 0.15) * 0.78},
        {100.0, 20.0},                          // -50: 18.72 is floored at 20
    };
    for (const Case& c : cases) EXPECT_SAME_DOUBLE(-c.rotation, map(with({{2, c.x2}}))[3]) << "x2 " << c.x2;
}

TEST(RuiyanRYH2, ThumbSlot1IsLiftedRatherThanScaledWhenDeep) {
    EXPECT_SAME_DOUBLE(-68.0 + 4, map(with({{0, 80.0}}))[1]);
    EXPECT_SAME_DOUBLE(-34.0 * 0.6, map(with({{0, 40.0}}))[1]);
    EXPECT_SAME_DOUBLE(-90.0, map(with({{0, 120.0}, {1, 120.0}}))[1]);  // -94 + 4 floored
}

TEST(RuiyanRYH2, PinchPosesSetOnlyThumbSlots2And3AndTheFinger) {
    // x0 = 80 opens the gate (slot 1 at -64, slot 0 at -84, -82 with x9 or x11 at 40).
    // x3 = 60: index at -47.7; x6 = 50: middle at -39.6; x9 = 40: ring at -31.5;
    // x11 = 40: little at -40.85. Thumb slot 0 keeps following the glove.
    struct Case {
        const char* name;
        Readings in;
        int finger;
        double slot2, rotation, bend, slot0;
    };
    const Case cases[] = {
        {"index", with({{0, 80.0}, {3, 60.0}}), 6, -26.0, -20.0, -43.0, -84.0},
        {"middle", with({{0, 80.0}, {6, 50.0}}), 10, -23.0, -25.0, -45.0, -84.0},
        {"ring", with({{0, 80.0}, {9, 40.0}}), 14, -23.0, -28.0, -41.0, -82.0},
        {"little", with({{0, 80.0}, {11, 40.0}}), 18, -18.0, -30.0, -55.0, -82.0},
        // The index pose leaves out[6] at -43, which shuts the middle pose out.
        {"index blocks middle", with({{0, 80.0}, {3, 60.0}, {6, 50.0}}), 10, -26.0, -20.0, -44.0 * 0.9, -84.0},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        EXPECT_SAME_DOUBLE(c.slot2, out[2]) << c.name;
        EXPECT_SAME_DOUBLE(c.rotation, out[3]) << c.name;
        EXPECT_SAME_DOUBLE(c.bend, out[c.finger]) << c.name;
        EXPECT_SAME_DOUBLE(c.slot0, out[0]) << c.name;
        EXPECT_SAME_DOUBLE(-1.0, out[23]) << c.name;
    }
}

}  // namespace
