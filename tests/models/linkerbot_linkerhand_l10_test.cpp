#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::LINKERBOT_LinkerHand_L10(in, none.ref());
}

// The mirrored thumb targets (out[3], out[20]) that each pinch leaves.
bool sets(const Targets& out, double rotation, double swing) { return out[3] == rotation && out[20] == swing; }
bool index_pinch(const Targets& out) { return sets(out, -13.0, -27.0); }

TEST(LinkerHandL10, EveryPinchOpensTheThumbFirstJoint) {
    const struct { const char* what; Readings in; double rotation, swing; } cases[] = {
        {"index", with({{0, 44.6}, {3, 66.0}}), -13.0, -27.0},
        {"middle", with({{0, 50.0}, {6, 45.4}, {9, 40.0}}), -18.0, -27.0},
        {"ring", with({{0, 50.0}, {6, 45.2}, {9, 40.0}}), -21.0, -34.0},
        {"little", with({{0, 90.0}, {11, 40.0}}), -22.0, -42.0},
    };
    for (const auto& c : cases) {
        const Targets out = map(c.in);
        EXPECT_TRUE(sets(out, c.rotation, c.swing)) << c.what;
        EXPECT_SAME_DOUBLE(0.0, out[1]) << c.what;
    }
}

TEST(LinkerHandL10, IndexPinchGates) {
    // Poses on either side of each gate, as close as the rows' 0.1 steps allow.
    const struct { const char* what; Readings in; bool pinches; } cases[] = {
        {"thumb joint -39.98, short of -40", with({{0, 44.4}, {3, 66.0}}), false},
        {"thumb joint -40.04", with({{0, 44.6}, {3, 66.0}}), true},
        {"reach sum exactly -80", with({{0, 53.4}, {3, 51.3}}), true},
        {"reach sum -79.91", with({{0, 53.4}, {3, 51.2}}), false},
        {"index -74.97, inside the band", with({{0, 44.6}, {3, 105.4}}), true},
        {"index -75.06, past the band", with({{0, 44.6}, {3, 105.6}}), false},
        {"swing -24.99", with({{0, 20.0}, {1, 120.0}, {2, 98.0}, {3, 66.0}}), true},
        {"swing -25.01", with({{0, 20.0}, {1, 120.0}, {2, 98.2}, {3, 66.0}}), false},
    };
    for (const auto& c : cases) EXPECT_EQ(c.pinches, index_pinch(map(c.in))) << c.what;
}

TEST(LinkerHandL10, PinchPrecedence) {
    // Middle knuckle -39.537 is above the strict -39.6 gate: the ring pinch acts (see above);
    // at -39.64 the middle pinch acts and the ring is left as the chain made it.
    EXPECT_SAME_DOUBLE(-44.0, map(with({{0, 50.0}, {6, 45.2}, {9, 40.0}}))[14]);
    EXPECT_SAME_DOUBLE(-36.0 * 0.9, map(with({{0, 50.0}, {6, 45.4}, {9, 40.0}}))[14]);
    // Index and middle both act; the middle's rotation target wins.
    const Targets both = map(with({{0, 50.0}, {3, 66.0}, {6, 46.3}}));
    EXPECT_SAME_DOUBLE(-44.0, both[6]);
    EXPECT_TRUE(sets(both, -18.0, -27.0));
    // An index reached with a deeply bent thumb stays above -40 after its pull (-29.97 to
    // about -33.03), so the little-finger pinch follows and its targets win.
    const Targets little = map(with({{0, 90.0}, {3, 42.9}, {11, 40.0}}));
    EXPECT_LT(little[6], -33.0);
    EXPECT_TRUE(sets(little, -22.0, -42.0));
}

TEST(LinkerHandL10, KnuckleSwingAndDistalGains) {
    EXPECT_SAME_DOUBLE(-16.0 * 0.9 * f32(1.15f), map(with({{6, 20.0}}))[10]);      // row 8 is -16
    EXPECT_SAME_DOUBLE(-(-18.0 * 0.35 * f32(0.7f)), map(with({{1, 40.0}}))[20]);  // row 16 is -18
    const Targets index = map(with({{3, 66.0}}));                              // row 4 is -56.1
    EXPECT_SAME_DOUBLE(0.5 * -56.1 - 10.0, index[5]);
    EXPECT_SAME_DOUBLE(0.8 * index[5], index[4]);
}

TEST(LinkerHandL10, FullBendLocks) {
    const struct { const char* what; Readings in; int knuckle; double locked; bool locks; } cases[] = {
        {"middle -73.90", with({{6, 85.2}}), 10, -81.0, false},
        {"middle -74.003", with({{6, 85.35}}), 10, -81.0, true},
        {"little -79.99", with({{11, 84.25}}), 18, -100.0, false},
        {"little -80.085", with({{11, 84.35}}), 18, -100.0, true},
    };
    for (const auto& c : cases) {
        const Targets out = map(c.in);
        EXPECT_EQ(c.locks, out[c.knuckle] == c.locked && out[c.knuckle - 1] == c.locked) << c.what;
    }
}

TEST(LinkerHandL10, EmissionGuardNeverTripsAndNaNReachesTheRows) {
    for (const Readings& in : {all(0.0), all(120.0), all(-20.0), all(kNaN), all(kInf)})
        EXPECT_SAME_DOUBLE(-1.0, map(in)[23]);
    // Whichever reading is NaN, every row sum saturates to the integer floor.
    const Targets first = map(with({{0, kNaN}}));
    EXPECT_SAME_DOUBLE(-214748364.8, first[22]);  // rows 17 and 18 have no lower limit
    EXPECT_SAME_DOUBLE(-214748364.8, first[21]);
    EXPECT_SAME_DOUBLE(-81.0, first[10]);  // the saturated middle knuckle is locked
    for (int i = 1; i < 12; ++i) {
        const Targets out = map(with({{i, kNaN}}));
        for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(first[s], out[s]) << "input " << i << " slot " << s;
    }
}

}  // namespace
