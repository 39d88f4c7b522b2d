#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets dh116(const Readings& in) {
    HandMemory none;
    return hands::LeadShine_DH116(in, none.ref());
}

Targets o12(const Readings& in) {
    HandMemory none;
    return hands::AgiBot_OmniHand_O12(in, none.ref());
}

TEST(LeadShineDH116, MatchesTheO12AwayFromPinchesAndWithThumbSlot2Straight) {
    // None of these opens either hand's pinch gate, and thumb slot 2 stays above -10.
    const Readings poses[] = {all(0.0), with({{3, 120.0}, {11, 80.0}}), with({{6, 70.0}, {9, 90.0}}),
                                 with({{4, 50.0}, {7, 30.0}, {10, 60.0}}), with({{0, 30.0}, {9, 40.0}})};
    for (const Readings& in : poses) {
        const Targets a = dh116(in), b = o12(in);
        for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(b[s], a[s]) << "slot " << s;
    }
}

TEST(LeadShineDH116, BentThumbGivesBackLessRotation) {
    // x1 = 40 bends thumb slot 2 to -26: the rotation gives 0.15 of the bend past -10, the O12
    // 0.35.
    const Readings in = with({{1, 40.0}});
    EXPECT_SAME_DOUBLE(-(30.0 + (-26.0 + 10) * 0.15), dh116(in)[3]);
    EXPECT_SAME_DOUBLE(-(30.0 + (-26.0 + 10) * 0.35), o12(in)[3]);
}

TEST(LeadShineDH116, PinchPoses) {
    // x0 = 80: thumb slot 1 at -51, slot 0 at -84. x3 = 60: index at -53, index slot 5 at -38.5.
    // x6 = 50: middle at -35.2. x0 = 40 with x1 = 30 puts slot 1 exactly on the gate, -30;
    // x1 = 29.5 leaves its row at -39.9, which lands in the 0.7 band, -27.93.
    struct Case {
        const char* name;
        Readings in;
        std::initializer_list<std::pair<int, double>> expect;
    };
    const Case cases[] = {
        // The index pose moves only slots 2, 3 and 6; it blocks the middle pose.
        {"index blocks middle", with({{0, 80.0}, {3, 60.0}, {6, 50.0}}),
         {{2, -40.0}, {3, -5.0}, {6, -50.0}, {10, -35.2}, {0, -84.0}, {1, -51.0}, {5, -38.5},
          {4, -38.5 * 0.8}, {20, -0.0}}},
        {"middle", with({{0, 80.0}, {6, 50.0}}), {{2, -39.0}, {3, 16.0}, {10, -53.0}, {6, 0.0}}},
        {"gate edge", with({{0, 40.0}, {1, 30.0}, {3, 60.0}}), {{1, -30.0}, {2, -40.0}, {6, -50.0}}},
        {"just outside the gate", with({{0, 40.0}, {1, 29.5}, {3, 60.0}}), {{1, -39.9 * 0.7}, {6, -53.0}}},
    };
    for (const Case& c : cases) {
        const Targets out = dh116(c.in);
        for (const auto& [slot, v] : c.expect) EXPECT_SAME_DOUBLE(v, out[slot]) << c.name << " slot " << slot;
    }
}

}  // namespace
