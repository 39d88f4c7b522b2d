#include "test_util.h"

#include "quil_linear/quil_linear.hpp"

namespace {

using namespace quil;
using namespace quil::test;

// Poses, each with the thumb reaching (x0 sets thumb slot 1):
//   kIndexDeep:  slot 1 at -47, index at -47.7; the first pinch reaches its targets.
//   kIndexLight: the same thumb, index at -35.1, pinched only because thumb and index together
//                are in far enough; from open latches it stops short of -41.
//   kIndexOpen:  the thumb deep (-77) and the index nearly straight (-3.15), still a pinch.
//   kMiddleDeep: slot 1 at -47, middle at -45.54; the first pinch reaches its targets.
//   kMiddleLight: slot 1 at -40.4, same middle; from open latches slot 2 stops short of -53.
const Readings kIndexDeep = with({{0, 60.0}, {3, 60.0}});
const Readings kIndexLight = with({{0, 60.0}, {3, 44.5}});
const Readings kIndexOpen = with({{0, 108.0}, {3, 5.0}});
const Readings kMiddleDeep = with({{0, 60.0}, {6, 50.0}});
const Readings kMiddleLight = with({{0, 45.4}, {6, 50.0}});

// Runs the poses in order through one memory, open at the start; returns the last result.
Targets run(std::initializer_list<Readings> poses, HandMemory& memory) {
    Targets out{};
    for (const Readings& in : poses) out = hands::AgiBot_OmniHand_O10(in, memory.ref());
    return out;
}

Targets run(std::initializer_list<Readings> poses) {
    HandMemory memory;
    return run(poses, memory);
}

TEST(AgiBotOmniHandO10, FirstIndexPinchReachesItsTargetsAndLatches) {
    HandMemory memory;
    const Targets out = run({kIndexDeep}, memory);
    EXPECT_SAME_DOUBLE(-41.0, out[6]);
    EXPECT_SAME_DOUBLE(-51.0, out[2]);
    EXPECT_SAME_DOUBLE(0.0, out[1]);
    EXPECT_SAME_DOUBLE(-16.0, out[3]);
    EXPECT_SAME_DOUBLE(-15.0, out[20]);
    EXPECT_TRUE(memory.pinch_latches[0]);
    EXPECT_FALSE(memory.pinch_latches[1]);
}

TEST(AgiBotOmniHandO10, HeldIndexPinchPullsHarderUntilThePoseOpens) {
    struct Case {
        const char* name;
        std::initializer_list<Readings> poses;
        bool reaches_target;
    };
    const Case cases[] = {
        {"open latches", {kIndexLight}, false},
        {"held", {kIndexDeep, kIndexLight}, true},
        {"held over several samples", {kIndexDeep, kIndexLight, kIndexLight}, true},
        // A nearly straight index lands above the release bound: the latch opens again.
        {"released", {kIndexDeep, kIndexOpen, kIndexLight}, false},
    };
    for (const Case& c : cases) {
        const Targets out = run(c.poses);
        if (c.reaches_target) {
            EXPECT_SAME_DOUBLE(-41.0, out[6]) << c.name;
        } else {
            EXPECT_GT(out[6], -41.0) << c.name;
            EXPECT_LT(out[6], -35.1) << c.name;  // pulled, but not all the way
        }
    }
    HandMemory memory;
    run({kIndexDeep, kIndexOpen}, memory);
    EXPECT_FALSE(memory.pinch_latches[0]);
}

TEST(AgiBotOmniHandO10, HeldMiddlePinchPullsHarder) {
    HandMemory memory;
    const Targets first = run({kMiddleDeep}, memory);
    EXPECT_SAME_DOUBLE(-44.0, first[10]);
    EXPECT_SAME_DOUBLE(-53.0, first[2]);
    EXPECT_SAME_DOUBLE(-19.0, first[3]);
    EXPECT_SAME_DOUBLE(-21.0, first[20]);
    EXPECT_TRUE(memory.pinch_latches[1]);
    EXPECT_FALSE(memory.pinch_latches[0]);

    EXPECT_GT(run({kMiddleLight})[2], -53.0);
    EXPECT_SAME_DOUBLE(-53.0, run({kMiddleDeep, kMiddleLight})[2]);
}

TEST(AgiBotOmniHandO10, RotationLeansOnThumbSlotsInSinglePrecision) {
    // x0 = 20: rows 1 and 2 give -15 and -3, so the rotation 30 - 7 x 2.5 = 12.5 is then mixed
    // with them before thumb slot 1 is rescaled.
    const Targets out = run({with({{0, 20.0}})});
    EXPECT_SAME_DOUBLE(-(12.5 * 0.3 - f32(0.2f) * -3.0 - f32(0.3f) * -15.0), out[3]);
}

TEST(AgiBotOmniHandO10, NaNReadingReachesEveryRow) {
    // The hand's own clamp lets NaN through; every row sum becomes NaN and truncates to the
    // 32-bit minimum. Rows 17 and 18 (slots 21, 22) have no limit and show it.
    for (int i = 0; i < 12; ++i) {
        const Targets out = run({with({{i, kNaN}})});
        EXPECT_SAME_DOUBLE(-2147483648.0 / 10.0, out[21]) << "input " << i;
        EXPECT_SAME_DOUBLE(-2147483648.0 / 10.0, out[22]) << "input " << i;
        EXPECT_SAME_DOUBLE(-1.0, out[23]) << "input " << i;
    }
}

TEST(AgiBotOmniHandO10, ExportedMappingKeepsItsLatchesBetweenCalls) {
    const auto call = [](const Readings& in) {
        const auto& x = in.x;
        return Quil_linear::AgiBot_OmniHand_O10::GetDataValue(x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7],
                                                             x[8], x[9], x[10], x[11]);
    };
    EXPECT_GT(call(kIndexLight)[6], -41.0);
    call(kIndexDeep);
    EXPECT_SAME_DOUBLE(-41.0, call(kIndexLight)[6]);
}

}  // namespace
