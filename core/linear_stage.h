// The linear pose stage that every hand starts with: clamp the twelve readings, push them through
// a sparse 19x12 layer with per-row offsets, quantise each row to steps of 0.1, then limit and
// emit the rows into the joint targets.
//
// The arithmetic is deliberately literal. The truncation to whole tenths makes the last bit of
// every row sum visible, so products are rounded one by one and summed in input order, and the
// quantisation divides by 10.0 twice instead of multiplying by 0.1.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "core/records.h"
#include "core/slots.h"

namespace quil {

constexpr double kInputLow = -20.0;
constexpr double kInputHigh = 120.0;

// Glove readings outside [-20, 120] are sensor glitches. This clamp maps NaN and +inf to 120,
// -inf to -20: a NaN never reaches the rows.
inline double clamp_reading(double x) {
    const double t = std::min(kInputHigh, x);
    return std::max(kInputLow, t);
}

// The clamp of the hands whose firmware tests the two bounds itself. Same result for every
// number, but a NaN passes through and poisons every row sum of the sample.
inline double clamp_reading_passing_nan(double x) {
    if (x > kInputHigh) x = kInputHigh;
    if (x < kInputLow) x = kInputLow;
    return x;
}

enum class Clamp { min_max, passes_nan };

inline Readings clamp_inputs(const Readings& raw, Clamp kind) {
    Readings c{};
    for (int i = 0; i < 12; ++i)
        c.x[i] = kind == Clamp::min_max ? clamp_reading(raw.x[i]) : clamp_reading_passing_nan(raw.x[i]);
    return c;
}

// Truncation toward zero to a 32-bit integer. A NaN, infinite or out-of-range value gives
// INT32_MIN, as the hardware's truncating conversion does; clamped finite readings never get
// near the range, a NaN reading does. Written without branches so the 19 rows quantise side by
// side.
inline double truncate_int32(double s) {
    const bool in_range = s > -2147483649.0 && s < 2147483648.0;
    const double t = in_range ? s : 0.0;
    const double r = static_cast<double>(static_cast<std::int32_t>(t));
    return in_range ? r : -2147483648.0;
}

namespace detail {
// Two doubles side by side (GCC/Clang vector extension): the quantisation below runs two rows
// per instruction. Each lane rounds exactly as the scalar operation does.
typedef double Pair __attribute__((vector_size(16)));
typedef long long PairMask __attribute__((vector_size(16)));
typedef int PairInt32 __attribute__((vector_size(8)));

// trunc(s / 10) / 10 for two rows at once, with truncate_int32's rule for NaN and out-of-range
// sums.
inline Pair quantise_pair(Pair s) {
    const Pair ten = {10.0, 10.0};
    const Pair low = {-2147483649.0, -2147483649.0};
    const Pair high = {2147483648.0, 2147483648.0};
    const Pair zero = {0.0, 0.0};
    const Pair int32_min = {-2147483648.0, -2147483648.0};
    Pair v = s / ten;
    const PairMask in_range = (v > low) & (v < high);
    const Pair t = in_range ? v : zero;
    Pair r = __builtin_convertvector(__builtin_convertvector(t, PairInt32), Pair);
    r = in_range ? r : int32_min;
    return r / ten;
}
}  // namespace detail

// Row j of the pose: w0[j] + trunc(sum_i c_i * weight[j*12 + i] / 10) / 10, each row summing
// its products in input order. Two rows are summed side by side, one per lane, each lane doing
// exactly the scalar row's operations; the quantisation runs over a padded 20th row, two rows at
// a time.
inline PoseVector linear_pose(const Coefficients& k, const Readings& c) {
    detail::Pair s[10];
    for (int pair = 0; pair < 9; ++pair) {
        const double* a = k.weight + (2 * pair) * 12;
        const double* b = a + 12;
        detail::Pair sum = {0.0, 0.0};
        for (int i = 0; i < 12; ++i) {
            const detail::Pair x = {c.x[i], c.x[i]};
            const detail::Pair w = {a[i], b[i]};
            sum = x * w + sum;
        }
        s[pair] = sum;
    }
    {
        const double* a = k.weight + 18 * 12;
        double sum = 0.0;
        for (int i = 0; i < 12; ++i) sum = c.x[i] * a[i] + sum;
        s[9][0] = sum;
        s[9][1] = 0.0;
    }
    PoseVector p;
    for (int pair = 0; pair < 10; ++pair) {
        const detail::Pair q = detail::quantise_pair(s[pair]);
        p.p[2 * pair] = k.w0[2 * pair] + q[0];
        if (pair < 9) p.p[2 * pair + 1] = k.w0[2 * pair + 1] + q[1];
    }
    return p;
}

// A row limit: "if p > value then p = value" (upper) or "if p < value then p = value" (lower).
struct Bound {
    enum Kind : unsigned char { none, upper, lower };
    Kind kind;
    double value;
};
constexpr Bound upper(double v) { return Bound{Bound::upper, v}; }
constexpr Bound lower(double v) { return Bound{Bound::lower, v}; }

inline double apply_bound(double p, Bound b) {
    if (b.kind == Bound::upper) {
        if (p > b.value) p = b.value;
    } else if (b.kind == Bound::lower) {
        if (p < b.value) p = b.value;
    }
    return p;
}

// What a hand does with each row inside the loop: up to four limits in order, then how many
// copies of the row it emits (the joints driven by two motors get the same row twice).
struct RowRule {
    std::array<Bound, 4> bounds{};
    int copies = 1;
};

// The 19 row rules of a hand, written like its documentation:
//   constexpr RowRules kRows = RowRules{}
//       .rows({0, 5, 8, 11, 14}, upper(0), lower(-90))
//       .twice({4, 7, 10, 13}, upper(0), lower(-100));
// Rows not named are emitted once, unlimited.
struct RowRules {
    std::array<RowRule, 19> row{};

    template <class... B>
    constexpr RowRules rows(std::initializer_list<int> js, B... b) const {
        return with(js, 1, b...);
    }
    template <class... B>
    constexpr RowRules twice(std::initializer_list<int> js, B... b) const {
        return with(js, 2, b...);
    }

  private:
    template <class... B>
    constexpr RowRules with(std::initializer_list<int> js, int copies, B... b) const {
        RowRules r = *this;
        const Bound bs[] = {Bound{Bound::none, 0.0}, b...};
        for (int j : js) {
            RowRule rule{};
            for (unsigned n = 1; n < sizeof...(B) + 1; ++n) rule.bounds[n - 1] = bs[n];
            rule.copies = copies;
            r.row[j] = rule;
        }
        return r;
    }
};

// The row limits that most outside hands share: finger joints bent no further than -90 and
// never past straight, the doubly driven joints within [-100, 0], the thumb tip within
// [-60, 0], the thumb rotation within [5, 35], the spreads never negative, the second thumb
// value and row 17 never positive.
inline constexpr RowRules kStandardRows = RowRules{}
    .rows({0, 5, 8, 11, 14}, upper(0), lower(-90))
    .rows({2}, lower(-60), upper(0))
    .rows({3}, lower(5), upper(35))
    .rows({6, 12, 15}, lower(0))
    .rows({16, 17}, upper(0))
    .twice({4, 7, 10, 13}, upper(0), lower(-100));

// Limits each row and writes it to out[k], k growing with each value written; returns k.
inline int emit_rows(const PoseVector& p, const RowRules& rules, Targets& out) {
    int k = 0;
    for (int j = 0; j < 19; ++j) {
        double v = p.p[j];
        for (const Bound& b : rules.row[j].bounds) v = apply_bound(v, b);
        for (int c = 0; c < rules.row[j].copies; ++c) out[k++] = v;
    }
    return k;
}

namespace detail {
template <const RowRules& R, int J>
inline void emit_row(double v, Targets& out, int& k) {
    constexpr RowRule rule = R.row[J];
    if constexpr (rule.bounds[0].kind != Bound::none) v = apply_bound(v, rule.bounds[0]);
    if constexpr (rule.bounds[1].kind != Bound::none) v = apply_bound(v, rule.bounds[1]);
    if constexpr (rule.bounds[2].kind != Bound::none) v = apply_bound(v, rule.bounds[2]);
    if constexpr (rule.bounds[3].kind != Bound::none) v = apply_bound(v, rule.bounds[3]);
    for (int c = 0; c < rule.copies; ++c) out[k++] = v;
}
template <const RowRules& R, std::size_t... J>
inline int emit_rows_fixed(const PoseVector& p, Targets& out, std::index_sequence<J...>) {
    int k = 0;
    (emit_row<R, static_cast<int>(J)>(p.p[J], out, k), ...);
    return k;
}
}  // namespace detail

// The whole stage for a hand whose row rules R are a compile-time table: clamp, rows, limits,
// emission, with the limits resolved at compile time. Returns the number of values emitted.
template <const RowRules& R>
inline int run_linear_stage(const Readings& raw, Clamp clamp, const Coefficients& k, Targets& out) {
    const PoseVector p = linear_pose(k, clamp_inputs(raw, clamp));
    return detail::emit_rows_fixed<R>(p, out, std::make_index_sequence<19>{});
}

// The rows fill slots 0..22 (the hand writes the terminator itself). The hands whose rules read
// every one of those slots check the count the emission returned: a short emission would leave
// the hand half-set, so they send all zeros instead. Returns whether it did.
inline bool zero_short_emission(int emitted, Targets& out) {
    if (emitted <= 22) {
        out.fill(0.0);
        return true;
    }
    return false;
}

// The hand's controller expects some joints mirrored: flip the sign bit, so 0.0 becomes -0.0.
inline void flip_signs(Targets& out, std::initializer_list<int> slots) {
    for (int i : slots) out[i] = -out[i];
}

// Most hands mirror the thumb rotation (3), the index abduction (7) and the second thumb value (20).
inline void flip_thumb_and_index(Targets& out) {
    flip_signs(out, {slot::thumb_abduction, slot::index_spread, slot::thumb_rotation});
}

}  // namespace quil
