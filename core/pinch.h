// Pinch assists: when the thumb and a finger are already close to touching, the hand drives
// them the rest of the way to fixed pinch targets instead of leaving a gap between the pads.
#pragma once

#include <cmath>

namespace quil {

// A pair of single-precision gates. [0] is the bound a slot must be at or below, [1] the bound
// it must be at or above. Comparisons widen each element to double; sums of elements of two
// pairs are formed in single precision first, as the firmware did.
struct ThresholdPair {
    float at_or_below;  // element [0]
    float at_or_above;  // element [1]

    bool within(double v) const { return v <= double(at_or_below) && v >= double(at_or_above); }
};

// Sum of the [0] elements of two pairs, in single precision, widened.
inline double sum_of_upper_edges(const ThresholdPair& a, const ThresholdPair& b) {
    return double(a.at_or_below + b.at_or_below);
}

// Drives v toward a (negative) pinch target without passing it: the closer v already is, the
// harder it is pulled. A v at or beyond the target, or NaN, gives the target. Gain and offset
// are single-precision constants widened here.
inline double pinch_toward(double v, int target, float gain, float offset = 0.0f) {
    const double t = target;
    if (v > t) {
        const double r = (1.0 + double(gain) * std::fabs(v / t)) * v - double(offset);
        return r > t ? r : t;
    }
    return t;
}

// A floor at the pinch depth: v if v is above the limit, else the limit (NaN gives the limit).
inline double pinch_floor(double v, int limit) { return v > limit ? v : double(limit); }

}  // namespace quil
