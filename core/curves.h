// Piecewise-linear gain curves. Many hands' joints do not follow the glove linearly: the first
// part of a bend is amplified and deep bends are compressed, in three pieces split at two
// breakpoints.
#pragma once

namespace quil {

// One linear piece: v * gain, plus offset where the piece has one. A piece without an offset
// never adds 0.0, so the sign of a zero product survives.
struct Piece {
    double gain;
    double offset;
    bool has_offset;

    double operator()(double v) const {
        const double r = v * gain;
        return has_offset ? r + offset : r;
    }
};
constexpr Piece scale(double gain) { return Piece{gain, 0.0, false}; }
constexpr Piece affine(double gain, double offset) { return Piece{gain, offset, true}; }

// Three pieces: above t1 (strictly), above t2 up to t1, and at or below t2 (NaN falls here).
struct Curve3 {
    double t1;
    double t2;
    Piece above_t1;
    Piece middle;
    Piece rest;

    double operator()(double v) const {
        if (v > t1) return above_t1(v);
        if (v > t2) return middle(v);
        return rest(v);
    }
};

}  // namespace quil
