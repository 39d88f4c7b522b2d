#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/linear_stage.h"
#include "models/shared/common_coefficients.h"

namespace {

using namespace quil;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

double common_weight[228] = QUIL_COMMON_WEIGHT;
double common_w0[19] = QUIL_COMMON_W0;
const Coefficients kCommon{common_weight, common_w0};

Readings only(int i, double v) {
    Readings in{};
    in.x[i] = v;
    return in;
}

TEST(Clamp, BothVariantsAgreeOnNumbersAndDifferOnNaN) {
    struct Case {
        double in, min_max, passes_nan;
    };
    const Case cases[] = {
        {0.0, 0.0, 0.0},       {120.0, 120.0, 120.0},   {-20.0, -20.0, -20.0},
        {125.0, 120.0, 120.0}, {-30.0, -20.0, -20.0},   {kInf, 120.0, 120.0},
        {-kInf, -20.0, -20.0}, {119.99, 119.99, 119.99}, {-0.0, -0.0, -0.0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(clamp_reading(c.in), c.min_max) << c.in;
        EXPECT_EQ(clamp_reading_passing_nan(c.in), c.passes_nan) << c.in;
    }
    EXPECT_EQ(clamp_reading(kNaN), 120.0);
    EXPECT_TRUE(std::isnan(clamp_reading_passing_nan(kNaN)));
}

TEST(Truncation, TowardZeroWithOutOfRangeAsInt32Min) {
    struct Case {
        double in, out;
    };
    const Case cases[] = {
        {10.5, 10.0},   {-10.5, -10.0},  {1.5, 1.0},    {-1.5, -1.0},  {0.99, 0.0},
        {-0.99, 0.0},   {2147483647.9, 2147483647.0}, {-2147483648.9, -2147483648.0},
        {2147483648.0, -2147483648.0}, {-2147483649.0, -2147483648.0},
        {kInf, -2147483648.0}, {-kInf, -2147483648.0}, {kNaN, -2147483648.0},
    };
    for (const Case& c : cases) EXPECT_EQ(truncate_int32(c.in), c.out) << c.in;
    // A small negative sum truncates to +0.0, not -0.0: the integer has no sign of zero.
    EXPECT_FALSE(std::signbit(truncate_int32(-0.5)));
}

TEST(PoseRows, QuantiseTowardZeroInTenths) {
    // x0 = 1: row 0 sums -105 -> trunc(-10.5) / 10 = -1.0; row 2 sums 15 -> trunc(1.5) / 10 = 0.1.
    const PoseVector p = linear_pose(kCommon, only(0, 1.0));
    EXPECT_EQ(p[0], -1.0);
    EXPECT_EQ(p[2], 0.1);
    // x3 = 120: row 4 sums -11400 -> -114.0 before any limit.
    EXPECT_EQ(linear_pose(kCommon, only(3, 120.0))[4], -114.0);
}

TEST(PoseRows, AllZeroInputsGiveOffsetsAndWeightlessRowsIgnoreInputs) {
    const PoseVector zero = linear_pose(kCommon, Readings{});
    for (int j = 0; j < 19; ++j) EXPECT_EQ(zero[j], common_w0[j]) << j;
    Readings busy{};
    for (int i = 0; i < 12; ++i) busy.x[i] = 17.3 * (i + 1);
    EXPECT_EQ(linear_pose(kCommon, busy)[3], 30.0);
}

TEST(PoseRows, NaNReachingTheRowsGivesInt32MinTenths) {
    const PoseVector p = linear_pose(kCommon, only(5, kNaN));
    for (int j = 0; j < 19; ++j) EXPECT_EQ(p[j], common_w0[j] + -214748364.8) << j;
}

TEST(Emission, LimitsInOrderAndDoubledRows) {
    constexpr RowRules rules = RowRules{}
        .rows({0}, lower(-60), upper(0))
        .rows({1}, upper(0), lower(-90))
        .twice({4, 7, 10, 13}, upper(0), lower(-100));
    PoseVector p{};
    p.p[0] = 12.0;
    p.p[1] = -95.0;
    p.p[4] = -130.0;
    p.p[7] = 3.0;
    Targets out{};
    EXPECT_EQ(emit_rows(p, rules, out), 23);
    EXPECT_EQ(out[0], 0.0);
    EXPECT_EQ(out[1], -90.0);
    EXPECT_EQ(out[4], -100.0);
    EXPECT_EQ(out[5], -100.0);
    EXPECT_EQ(out[8], 0.0);
    EXPECT_EQ(out[9], 0.0);
}

TEST(SignFlip, FlipsTheSignBitEvenOfZero) {
    Targets out{};
    out[7] = 2.5;
    flip_thumb_and_index(out);
    EXPECT_TRUE(std::signbit(out[3]));
    EXPECT_EQ(out[7], -2.5);
    EXPECT_TRUE(std::signbit(out[20]));
    EXPECT_FALSE(std::signbit(out[4]));
}

}  // namespace
