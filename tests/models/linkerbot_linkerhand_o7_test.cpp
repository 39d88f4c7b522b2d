#include <vector>

#include "test_util.h"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) { return hands::LINKERBOT_LinkerHand_O7(in, MemoryRef{}); }

// Which pinch took effect, read from the thumb swing it leaves (mirrored): 4 index, 11 middle,
// 18 ring, 27 little.
TEST(LinkerHandO7, PinchCasesAndPrecedence) {
    struct Case {
        const char* name;
        Readings in;
        double swing;
        double rotation;  // returned out[3]
        std::vector<std::pair<int, double>> slots;
    };
    const Case cases[] = {
        // Index in its band (out[6] = -47.7) is floored at the pinch depth -40; the thumb tip
        // 1.3 * 0.9 * out[1] is floored at -58.
        {"index", with({{0, 60.0}, {3, 60.0}}), 4.0, -30.0, {{6, -40}, {2, -58}}},
        // A straight index still pinches when the thumb alone reaches the pinch (out[1] = -81).
        {"index by reach", with({{0, 100.0}}), 4.0, -30.0, {{6, 0}, {2, -58}}},
        // Middle at -39.6 also satisfies the ring test's middle bound, and the ring is bent:
        // the middle pinch wins and the ring is left alone.
        {"middle over ring", with({{0, 60.0}, {6, 50.0}, {9, 50.0}}), 11.0, -30.0, {{10, -39.6}, {14, -39.6}}},
        {"ring", with({{0, 60.0}, {9, 50.0}}), 18.0, -30.0, {{14, -41}}},
        {"little", with({{0, 60.0}, {11, 40.0}}), 27.0, 46.0, {{18, -50}}},
        // Index by reach keeps out[6] at -29.88, so the little pinch follows and overrides.
        {"index then little", with({{0, 65.0}, {3, 38.0}, {11, 40.0}}), 27.0, 46.0,
         {{6, -29.880000000000003}, {2, -57}, {18, -50}}},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        EXPECT_SAME_DOUBLE(c.swing, out[20]) << c.name;
        EXPECT_SAME_DOUBLE(c.rotation, out[3]) << c.name;
        for (const auto& [slot, v] : c.slots) EXPECT_SAME_DOUBLE(v, out[slot]) << c.name << " slot " << slot;
    }
}

TEST(LinkerHandO7, PinchLimitScalesAboveTheFloor) {
    // out[1] = -45.5: the tip 0.9 * out[1] scaled by 1.3 stays above -58 and is kept.
    const Targets out = map(with({{0, 50.0}, {3, 60.0}}));
    EXPECT_SAME_DOUBLE(4.0, out[20]);
    EXPECT_SAME_DOUBLE(out[1] * f32(0.9f) * f32(1.3f), out[2]);
}

TEST(LinkerHandO7, ThumbGate) {
    // Index bent into its band (x3 = 60) in every case; out[20] >= -20 decides with the thumb.
    struct Case {
        const char* name;
        Readings in;
        bool pinch;
    };
    const Case cases[] = {
        {"first joint at -40.04", with({{0, 39.3}, {3, 60.0}}), true},
        {"first joint at -39.98", with({{0, 39.2}, {3, 60.0}}), false},
        // out[1] = -89.5 floors the tip at exactly -75, which still passes.
        {"tip at -75", with({{0, 110.0}, {3, 60.0}}), true},
        {"swing at -19.985", with({{0, 40.0}, {1, 98.5}, {3, 60.0}}), true},
        {"swing at -20.02", with({{0, 38.0}, {1, 98.5}, {3, 60.0}}), false},
    };
    for (const Case& c : cases) {
        const Targets out = map(c.in);
        EXPECT_EQ(c.pinch, out[20] == 4.0) << c.name;
        EXPECT_SAME_DOUBLE(c.pinch ? -40.0 : -47.7, out[6]) << c.name;
    }
}

// A NaN reading passes this hand's clamp: every row sum is NaN, truncates to INT32_MIN, and each
// row starts from w0 - 214748364.8 before its limits.
TEST(LinkerHandO7, NaNReadingPoisonsEveryRow) {
    const double huge = -214748364.8;
    const double want[24] = {-49,  -44,  -75,  -30,  -100, -100, -81,  -0.0, -100, -100, -81,  0,
                             -100, -100, -81,  0,    -100, -100, -100, 0,    45,   huge, huge, -1};
    for (int i = 0; i < 12; ++i) {
        const Targets out = map(with({{i, kNaN}}));
        for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(want[s], out[s]) << "input " << i << " slot " << s;
    }
    // Infinities are clamped like any other number.
    const Targets inf = map(with({{3, kInf}}));
    const Targets top = map(with({{3, 120.0}}));
    for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(top[s], inf[s]) << "slot " << s;
}

TEST(LinkerHandO7, OpenHandMirrorsZeros) {
    const Targets out = map(all(0.0));
    EXPECT_SAME_DOUBLE(-0.0, out[20]);
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
    // Rotation 30 opened by the straight tip to 5, then 0.3 * 5 with nothing from tip or thumb.
    EXPECT_SAME_DOUBLE(-(5.0 * 0.3), out[3]);
}

}  // namespace
