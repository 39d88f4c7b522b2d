#include "test_util.h"

#include "quil_linear/quil_linear.hpp"

namespace {

using namespace quil;
using namespace quil::test;

Targets map(const Readings& in) {
    HandMemory none;
    return hands::Proception(in, none.ref());
}

TEST(Proception, SharesTheInHouseCalibrationInItsOwnTables) {
    using Quil_linear::Proception;
    using Quil_linear::QUIL_linear_AG;
    EXPECT_NE(static_cast<void*>(Proception::weight), static_cast<void*>(QUIL_linear_AG::weight));
    for (int i = 0; i < 228; ++i) EXPECT_SAME_DOUBLE(QUIL_linear_AG::weight[i], Proception::weight[i]) << i;
    for (int j = 0; j < 19; ++j) EXPECT_SAME_DOUBLE(QUIL_linear_AG::w0[j], Proception::w0[j]) << j;
}

TEST(Proception, LittleFingerPinchPose) {
    // Thumb tip bent (x1), little finger curled (x11), the others open.
    const Targets out = map(with({{1, 40.0}, {11, 60.0}}));
    EXPECT_SAME_DOUBLE(120.0, out[20]);  // the pose's -120, mirrored
    EXPECT_SAME_DOUBLE(-39.0, out[16]);
    EXPECT_SAME_DOUBLE(-52.0, out[17]);
    EXPECT_SAME_DOUBLE(-67.0, out[18]);
    EXPECT_SAME_DOUBLE(-5.0, out[2]);
}

TEST(Proception, NoPoseWithoutTheThumbTipBent) {
    const Targets out = map(with({{11, 60.0}}));
    EXPECT_NE(-67.0, out[18]);
    EXPECT_NE(120.0, out[20]);
}

TEST(Proception, FistClosesEveryFingerFully) {
    const Targets out = map(with({{3, 120.0}, {6, 120.0}, {9, 120.0}, {11, 120.0}}));
    for (int slot : {5, 6, 9, 10, 13, 14, 17, 18}) EXPECT_SAME_DOUBLE(-100.0, out[slot]) << slot;
    EXPECT_SAME_DOUBLE(-1.0, out[23]);
}

TEST(Proception, CurlingHandFollowsTheIndex) {
    // All four fingers between -80 and -50 after their curves: the others copy the index.
    const Targets out = map(with({{3, 50.0}, {6, 60.0}, {9, 50.0}, {11, 45.0}}));
    ASSERT_LT(out[6], -50.0);
    ASSERT_GE(out[6], -80.0);
    EXPECT_SAME_DOUBLE(out[6], out[10]);
    EXPECT_SAME_DOUBLE(out[6], out[14]);
    EXPECT_SAME_DOUBLE(out[6], out[18]);
}

}  // namespace
