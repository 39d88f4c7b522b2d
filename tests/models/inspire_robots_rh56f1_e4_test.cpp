#include "test_util.h"

#include "quil_linear/quil_linear.hpp"

namespace {

using namespace quil;
using namespace quil::test;
using Hand = Quil_linear::INSPIRE_ROBOTS_RH56F1_E4;

Targets map(const Readings& in, HandMemory& memory) {
    return hands::INSPIRE_ROBOTS_RH56F1_E4(in, memory.ref());
}

Targets call_class(const Readings& in) {
    const auto& x = in.x;
    return Hand::GetDataValue(x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7], x[8], x[9], x[10], x[11]);
}

// Poses, by the glove readings that matter.
const Readings kIndexPinch = with({{0, 60.0}, {3, 60.0}});     // thumb and index closed
const Readings kIndexOnly = with({{1, 60.0}, {3, 60.0}});      // index bent, thumb short of it
const Readings kIndexHalf = with({{3, 30.0}});                 // index half bent, thumb open
const Readings kThumbAcross = with({{1, 120.0}, {2, 120.0}});  // thumb rotated across the palm
const Readings kTripod = with({{0, 30.0}, {3, 60.0}, {6, 50.0}});
const Readings kTripodThumbOpen = with({{0, 20.0}, {1, 80.0}, {2, 120.0}, {3, 40.0}, {6, 50.0}});

// The thumb tip value that the index pinch pose records: row 1 is -51, its middle band gives
// 0.6 * -51 - 20, and the tip follows at 0.9f.
const double kIndexPinchThumb = (0.6 * -51.0 - 20.0) * f32(0.9f);

TEST(InspireRH56F1E4, OpenHand) {
    HandMemory memory;
    const Targets out = map(all(0.0), memory);
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
    EXPECT_SAME_DOUBLE(-0.0, out[20]);
    // The rotation is recomputed as -0.0 from the open thumb, survives the [0, 30] limit, and
    // the mirror turns it into +0.0.
    EXPECT_SAME_DOUBLE(0.0, out[3]);
    EXPECT_SAME_DOUBLE(0.0, memory.thumb_references[0]);
    EXPECT_FALSE(memory.pinch_latches[0] || memory.pinch_latches[1]);
}

TEST(InspireRH56F1E4, IndexPinchLatchesHoldsAndReleases) {
    HandMemory memory;
    Targets out = map(kIndexPinch, memory);
    EXPECT_TRUE(memory.pinch_latches[0]);
    EXPECT_FALSE(memory.pinch_latches[1]);
    EXPECT_SAME_DOUBLE(kIndexPinchThumb, memory.thumb_references[0]);
    EXPECT_SAME_DOUBLE(-41.0, out[6]);  // pulled onto the pinch depth
    EXPECT_SAME_DOUBLE(-28.0, out[2]);  // the recorded thumb, pushed past -28, held at it
    EXPECT_SAME_DOUBLE(0.0, out[1]);
    EXPECT_SAME_DOUBLE(-22.0, out[3]);
    EXPECT_SAME_DOUBLE(-15.0, out[20]);
    EXPECT_SAME_DOUBLE(-44.0, out[5]);

    // Without the latch this pose is no pinch (thumb not closed enough): the index is not pulled.
    HandMemory fresh;
    EXPECT_NE(-41.0, map(kIndexOnly, fresh)[6]);
    EXPECT_FALSE(fresh.pinch_latches[0]);
    // With it the pinch keeps running while the index stays bent, and the latch holds.
    out = map(kIndexOnly, memory);
    EXPECT_SAME_DOUBLE(-41.0, out[6]);
    EXPECT_SAME_DOUBLE(-44.0, out[5]);
    EXPECT_TRUE(memory.pinch_latches[0]);

    // The index opens to half bent: the pinch still runs once, but its result is too shallow
    // and the latch releases in the same call.
    out = map(kIndexHalf, memory);
    EXPECT_SAME_DOUBLE(-44.0, out[5]);
    EXPECT_GT(out[6], -28.7);
    EXPECT_FALSE(memory.pinch_latches[0]);
    // Released: the same pose no longer pinches.
    out = map(kIndexHalf, memory);
    EXPECT_NE(-44.0, out[5]);
    EXPECT_FALSE(memory.pinch_latches[0]);
}

TEST(InspireRH56F1E4, ThumbReferenceIsKeptWhileTheThumbIsRotatedAcross) {
    HandMemory memory;
    map(kIndexPinch, memory);
    const Targets out = map(kThumbAcross, memory);
    EXPECT_SAME_DOUBLE(kIndexPinchThumb, memory.thumb_references[0]);
    // The tip is not damped either: it is the full 0.9f of the first thumb joint.
    EXPECT_SAME_DOUBLE(out[1] * f32(0.9f), out[2]);
    EXPECT_TRUE(memory.pinch_latches[0]);  // no pinch ran, the latch is untouched

    map(all(0.0), memory);
    EXPECT_SAME_DOUBLE(0.0, memory.thumb_references[0]);
}

TEST(InspireRH56F1E4, TripodLatchesBothAndReleasesBoth) {
    HandMemory memory;
    Targets out = map(kTripod, memory);
    EXPECT_TRUE(memory.pinch_latches[0]);
    EXPECT_TRUE(memory.pinch_latches[1]);
    EXPECT_SAME_DOUBLE(-41.0, out[6]);
    EXPECT_SAME_DOUBLE(-40.0, out[10]);
    EXPECT_SAME_DOUBLE(-29.0, out[2]);
    EXPECT_SAME_DOUBLE(-25.0, out[3]);
    EXPECT_SAME_DOUBLE(-50.0, out[9]);
    EXPECT_SAME_DOUBLE(-0.0, out[7]);   // zeroed, then mirrored
    EXPECT_SAME_DOUBLE(-0.0, out[20]);

    // An open hand runs no pinch: both latches hold, and the thumb reference drops to 0.
    map(all(0.0), memory);
    EXPECT_TRUE(memory.pinch_latches[0] && memory.pinch_latches[1]);

    // Both pinches again, with the thumb rotated across so the reference stays 0: the held grip
    // pulls the thumb only to -15, short of the hold depth, and both latches let go.
    out = map(kTripodThumbOpen, memory);
    EXPECT_SAME_DOUBLE(-15.0, out[2]);
    EXPECT_FALSE(memory.pinch_latches[0]);
    EXPECT_FALSE(memory.pinch_latches[1]);
}

TEST(InspireRH56F1E4, ClassStaticsCarryTheStateOfTheExport) {
    Hand::fingerPinchDone[0] = Hand::fingerPinchDone[1] = false;
    Hand::thumb1_ref_val = 0.0;

    call_class(kIndexPinch);
    EXPECT_TRUE(Hand::fingerPinchDone[0]);
    EXPECT_FALSE(Hand::fingerPinchDone[1]);
    EXPECT_SAME_DOUBLE(kIndexPinchThumb, Hand::thumb1_ref_val);

    call_class(kThumbAcross);
    EXPECT_SAME_DOUBLE(kIndexPinchThumb, Hand::thumb1_ref_val);
    EXPECT_TRUE(Hand::fingerPinchDone[0]);

    call_class(kIndexHalf);
    EXPECT_FALSE(Hand::fingerPinchDone[0]);
    EXPECT_SAME_DOUBLE(0.0, Hand::thumb1_ref_val);

    // The class path and caller-owned memory run the same mapping.
    HandMemory memory;
    for (const Readings& in : {kTripod, all(0.0), kTripodThumbOpen, kIndexPinch, kIndexOnly}) {
        const Targets a = call_class(in);
        const Targets b = map(in, memory);
        for (int s = 0; s < 24; ++s) EXPECT_SAME_DOUBLE(b[s], a[s]) << "slot " << s;
        EXPECT_EQ(memory.pinch_latches[0], Hand::fingerPinchDone[0]);
        EXPECT_EQ(memory.pinch_latches[1], Hand::fingerPinchDone[1]);
        EXPECT_SAME_DOUBLE(memory.thumb_references[0], Hand::thumb1_ref_val);
    }
    Hand::fingerPinchDone[0] = Hand::fingerPinchDone[1] = false;
    Hand::thumb1_ref_val = 0.0;
}

TEST(InspireRH56F1E4, NaNReadingSaturatesEveryRow) {
    // This hand's clamp lets a NaN through; it poisons every row sum (NaN times a zero weight is
    // NaN), and each row truncates to the integer minimum.
    HandMemory memory;
    const double saturated = -2147483648.0 / 10.0;
    for (int i : {0, 3, 11}) {
        const Targets out = map(with({{i, kNaN}}), memory);
        EXPECT_SAME_DOUBLE(saturated, out[22]) << "input " << i;  // row 18, unlimited
        EXPECT_SAME_DOUBLE(saturated, out[21]) << "input " << i;  // row 17, only capped at 0
        EXPECT_SAME_DOUBLE(-1.0, out[23]);
        for (int s = 0; s < 24; ++s) EXPECT_FALSE(std::isnan(out[s])) << "input " << i << " slot " << s;
    }
}

}  // namespace
