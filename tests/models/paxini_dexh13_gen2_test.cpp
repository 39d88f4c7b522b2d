#include <utility>
#include <vector>

#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::PaXini_DexH13_GEN2(in, none.ref());
}

using Slots = std::vector<std::pair<int, double>>;

void expect_slots(const Targets& out, const Slots& want, const char* what) {
    for (const auto& [slot, value] : want) EXPECT_SAME_DOUBLE(value, out[slot]) << what << ", slot " << slot;
}

TEST(PaXiniDexH13Gen2, OpenHandPose) {
    const Targets out = map(all(0.0));
    expect_slots(out, {{3, -30.0},                        // rotation offset 30, mirrored
                       {7, -2.0},                         // index spread offset 2, mirrored
                       {11, 2.0 * 0.24 - 0.32 * 2.0},     // middle spread between index and ring
                       {19, 3.0},                         // little spread 2, stretched by 1.5
                       {17, 0.0}, {18, 0.0},              // lifted by the spread, then held straight
                       {20, -0.0},                        // a mirrored zero keeps its sign bit
                       {23, -1.0}},
                 "open hand");
}

TEST(PaXiniDexH13Gen2, GainCurvesPieceByPiece) {
    struct Case {
        int input;
        double value;
        int slot;
        double want;
    };
    const Case cases[] = {
        {0, 19.1, 0, 0.6 * -20.0 - 20.0},   // thumb base at -20 exactly takes the middle piece (-32)
        {0, 19.0, 0, 1.5 * -19.9},          // just above: -29.85, the jump is kept
        {0, 57.2, 0, -60.0 + 4.0},          // deepest piece
        {2, 39.9, 2, -19.9 * 2.5},          // thumb tip near open
        {2, 100.0, 2, -90.0},               // -50 - 45 = -95 stops at -90
        {2, 100.0, 20, 90.0},               // same curve on the opposition joint, mirrored
        {3, 34.5, 6, 0.6 * -30.0 - 42.0},   // index proximal at -30, middle piece
        {3, 34.5, 5, 0.5 * -32.7 - 10.0},   // index distal drive
        {6, 40.0, 9, 0.5 * -38.0 - 22.5},   // middle distal drive
        {6, 40.0, 8, 0.8 * (0.5 * -38.0 - 22.5)},  // its distal joint follows at 0.8
        {6, 40.0, 10, 0.6 * (1.0 + -36.0) - 42.0},
    };
    for (const Case& c : cases)
        EXPECT_SAME_DOUBLE(c.want, map(with({{c.input, c.value}}))[c.slot])
            << "x" << c.input << " = " << c.value << ", slot " << c.slot;
}

// Thumb tip across the palm (x2 = 40); bent fingers sit at -43 after the curve, open ones at 0.
TEST(PaXiniDexH13Gen2, ContactPoseSelection) {
    const Slots index_pad = {{0, -45.0}, {1, -60.0}, {2, -78.0}, {3, -5.0}, {5, -32.0}, {6, -55.0}};
    Slots index_middle = index_pad;
    index_middle.insert(index_middle.end(), {{9, -32.0}, {10, -55.0}});
    const Slots middle_pad = {{0, -45.0}, {1, -60.0}, {2, -80.0}, {3, -20.0}, {9, -32.0}, {10, -55.0}, {11, 10.0}};
    const Slots ring_pad = {{0, -50.0}, {1, -65.0}, {2, -80.0}, {3, -20.0}, {13, -35.0}, {14, -55.0}};
    Slots index_only = index_pad;
    index_only.push_back({10, 0.0});  // the index pose leaves the middle finger alone

    // Readings of the index, middle, ring and little fingers (x3, x6, x9, x11).
    constexpr double B = 25.0;     // bent: -43 after the curve
    constexpr double E = 23.4;     // exactly -40: neither bent nor open
    struct Case {
        const char* name;
        double index, middle, ring, little;
        Slots want;
    };
    const Case cases[] = {
        {"index", B, 0, 0, 0, index_only},
        {"index+middle", B, B, 0, 0, index_middle},
        {"index+middle+ring", B, B, B, 0, index_middle},  // ring not looked at
        {"middle", 0, B, 0, 0, middle_pad},
        {"middle+ring", 0, B, B, 0, middle_pad},
        {"ring", 0, 0, B, 0, ring_pad},
        {"index+ring", B, 0, B, 0, {{3, -30.0}, {6, -43.0}, {14, -43.0}}},
        {"index+little", B, 0, 0, B, {{3, -30.0}, {6, -43.0}}},
        {"middle, index at -40", E, B, 0, 0, {{3, -30.0}, {6, -40.0}, {10, -43.0}}},
        {"none", 0, 0, 0, 0, {{3, -30.0}, {2, 1.5 * -20.0 - 20.0}}},
    };
    for (const Case& c : cases)
        expect_slots(map(with({{2, 40.0}, {3, c.index}, {6, c.middle}, {9, c.ring}, {11, c.little}})), c.want, c.name);
}

TEST(PaXiniDexH13Gen2, ContactNeedsThumbTipPastMinus25) {
    // Thumb tip row -10 curves to exactly -25: not across; -10.1 curves to -25.25: across.
    EXPECT_SAME_DOUBLE(-10.0 * 2.5, map(with({{2, 20.0}, {3, 25.0}}))[2]);
    EXPECT_SAME_DOUBLE(-78.0, map(with({{2, 20.3}, {3, 25.0}}))[2]);
}

TEST(PaXiniDexH13Gen2, DeepFlexionSnaps) {
    // Index and little both end near -84.6: only the little finger (snap below -80) closes.
    const Targets out = map(with({{3, 66.1}, {11, 54.05}}));
    EXPECT_SAME_DOUBLE((1.0 + -59.4) * 1.5 + 3.0, out[6]);
    EXPECT_SAME_DOUBLE(-62.7 + -62.7 + 80.0, out[5]);
    EXPECT_SAME_DOUBLE(-100.0, out[17]);
    EXPECT_SAME_DOUBLE(-100.0, out[18]);
    EXPECT_SAME_DOUBLE(0.8 * (-75.6 * 1.5 + 47.5), out[16]);  // the distal joint keeps its value
}

TEST(PaXiniDexH13Gen2, ClosingHandFollowsIndexThenClosesFully) {
    // Middle, ring and little bent deep; the index at -76.5 leads the others.
    const Targets follow = map(with({{3, 60.0}, {6, 66.1}, {9, 66.1}, {11, 66.1}}));
    const double index = (1.0 + -54.0) * 1.5 + 3.0;
    for (int s : {6, 10, 14, 18}) EXPECT_SAME_DOUBLE(index, follow[s]) << "slot " << s;
    EXPECT_SAME_DOUBLE(0.5 * -57.0 - 10.0, follow[5]);  // not closed: index above -80

    // All four past -80: every finger joint closes, the distal joints keep their values.
    const Targets fist = map(with({{3, 66.1}, {6, 66.1}, {9, 66.1}, {11, 66.1}}));
    for (int s : {5, 6, 9, 10, 13, 14, 17, 18}) EXPECT_SAME_DOUBLE(-100.0, fist[s]) << "slot " << s;
    EXPECT_SAME_DOUBLE((-62.7 + -62.7 + 80.0) * 0.8, fist[4]);
}

TEST(PaXiniDexH13Gen2, OutOfRangeReadingsActAsTheirBounds) {
    const std::pair<double, double> cases[] = {{kNaN, 120.0}, {kInf, 120.0}, {-kInf, -20.0}, {-30.0, -20.0}};
    for (const auto& [raw, as] : cases)
        for (int i = 0; i < 12; ++i) {
            const Targets got = map(with({{i, raw}}));
            const Targets want = map(with({{i, as}}));
            for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(want[s], got[s]) << "input " << i << " slot " << s;
        }
}

}  // namespace
