// Helpers shared by the hand tests.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "core/records.h"
#include "models/catalogue.h"

namespace quil::test {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

inline std::uint64_t bits(double v) {
    std::uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

// Equal to the last bit, sign of zero and NaN payload class included.
#define EXPECT_SAME_DOUBLE(expected, actual) \
    EXPECT_EQ(::quil::test::bits(expected), ::quil::test::bits(actual)) << "expected " << (expected) << " got " << (actual)

// Inputs all zero except those named: with({{3, 90.0}, {6, 45.0}}).
inline Readings with(std::initializer_list<std::pair<int, double>> set) {
    Readings in{};
    for (const auto& [i, v] : set) in.x[i] = v;
    return in;
}

inline Readings all(double v) {
    Readings in{};
    in.x.fill(v);
    return in;
}

// A single-precision literal as the hands use it, e.g. f32(1.2) == 1.2000000476837158.
constexpr double f32(float v) { return static_cast<double>(v); }

}  // namespace quil::test
