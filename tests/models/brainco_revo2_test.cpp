#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::BrainCo_Revo2(in, none.ref());
}

// The mirrored thumb targets (out[3], out[20]) that each pinch leaves.
bool sets(const Targets& out, double rotation, double swing) { return out[3] == rotation && out[20] == swing; }
bool index_pinch(const Targets& out) { return sets(out, -21.0, -8.0); }

TEST(BrainCoRevo2, OpenHandFirstCopiesAndSwing) {
    const Targets open = map(all(0.0));
    EXPECT_SAME_DOUBLE(0.0, open[3]);    // recomputed as -0.0, so the mirror gives +0.0
    EXPECT_SAME_DOUBLE(-0.0, open[20]);
    EXPECT_SAME_DOUBLE(-1.0, open[23]);
    // The first copy of a doubly driven finger keeps the row (-56.1); the second is reshaped.
    const Targets bent = map(with({{3, 66.0}}));
    EXPECT_SAME_DOUBLE(-56.1, bent[4]);
    EXPECT_SAME_DOUBLE(0.5 * -56.1 - 10.0, bent[5]);
    // The swing keeps 0.3f of row 16 above -15 and 0.35f beyond, mirrored.
    EXPECT_SAME_DOUBLE(-(-9.0 * f32(0.3f)), map(with({{1, 20.0}}))[20]);
    EXPECT_SAME_DOUBLE(-(-18.0 * f32(0.35f)), map(with({{1, 40.0}}))[20]);
}

TEST(BrainCoRevo2, IndexPinchGates) {
    // Poses on either side of each gate, as close as the rows' 0.1 steps allow.
    const struct { const char* what; Readings in; bool pinches; } cases[] = {
        {"thumb joint -23.88, short of -25", with({{0, 26.6}, {3, 66.0}}), false},
        {"thumb joint -32", with({{0, 26.7}, {3, 66.0}}), true},
        {"reach sum exactly -65", with({{0, 30.0}, {3, 42.4}}), true},
        {"reach sum -64.91", with({{0, 30.0}, {3, 42.3}}), false},
        {"index -69.93, inside the band", with({{0, 30.0}, {3, 92.6}}), true},
        {"index -70.02, past the band", with({{0, 30.0}, {3, 92.8}}), false},
        {"swing -24.99", with({{1, 100.0}, {2, 52.8}, {3, 66.0}}), true},
        {"swing -25.025", with({{1, 100.0}, {2, 53.0}, {3, 66.0}}), false},
    };
    for (const auto& c : cases) EXPECT_EQ(c.pinches, index_pinch(map(c.in))) << c.what;
}

TEST(BrainCoRevo2, PinchPrecedence) {
    // Middle knuckle exactly -38.7 fails the strict gate: the ring pinch acts instead.
    const Targets ring = map(with({{0, 30.0}, {6, 51.8}, {9, 40.0}}));
    EXPECT_SAME_DOUBLE(-38.7, ring[10]);
    EXPECT_TRUE(sets(ring, -30.0, -32.0));
    EXPECT_SAME_DOUBLE(-45.0, ring[14]);
    // At -38.79 the middle pinch acts and the ring is left as the chain made it.
    const Targets middle = map(with({{0, 30.0}, {6, 51.9}, {9, 40.0}}));
    EXPECT_TRUE(sets(middle, -28.0, -20.0));
    EXPECT_SAME_DOUBLE(-43.0, middle[10]);
    EXPECT_SAME_DOUBLE(-36.0 * 0.9, middle[14]);
    // Index and middle both act; the middle's thumb targets win.
    const Targets both = map(with({{0, 30.0}, {3, 66.0}, {6, 51.9}}));
    EXPECT_SAME_DOUBLE(-38.0, both[6]);
    EXPECT_TRUE(sets(both, -28.0, -20.0));
}

TEST(BrainCoRevo2, FullBendLocks) {
    const struct { const char* what; Readings in; int knuckle; double locked; bool locks; } cases[] = {
        {"middle -73.98", with({{6, 97.9}}), 10, -81.0, false},
        {"middle -74.07", with({{6, 98.1}}), 10, -81.0, true},
        {"little -79.99", with({{11, 76.6}}), 18, -100.0, false},
        {"little -80.085", with({{11, 76.7}}), 18, -100.0, true},
    };
    for (const auto& c : cases) {
        const Targets out = map(c.in);
        EXPECT_EQ(c.locks, out[c.knuckle] == c.locked && out[c.knuckle - 1] == c.locked) << c.what;
    }
}

TEST(BrainCoRevo2, NaNReadingReachesTheRows) {
    // Whichever reading is NaN, every row sum saturates to the integer floor.
    const Targets first = map(with({{0, kNaN}}));
    EXPECT_SAME_DOUBLE(-214748364.8, first[22]);  // rows 17 and 18 have no lower limit
    EXPECT_SAME_DOUBLE(-214748364.8, first[21]);
    EXPECT_SAME_DOUBLE(-44.0, first[1]);
    for (int i = 1; i < 12; ++i) {
        const Targets out = map(with({{i, kNaN}}));
        for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(first[s], out[s]) << "input " << i << " slot " << s;
    }
}

}  // namespace
