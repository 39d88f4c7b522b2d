// The records every hand works on: the glove sample, the pose rows, the joint targets, and the
// pinch memory of the hands that remember a pinch between samples.
#pragma once

#include <array>

namespace quil {

// The 24 joint targets of one sample, in the hand's slot order.
using Targets = std::array<double, 24>;

// The twelve glove readings x0..x11 of one sample, in argument order.
struct Readings {
    std::array<double, 12> x;
    double operator[](int i) const { return x[i]; }
};

// The 19 pose rows p0..p18 of the linear stage, before any hand's row limits.
struct PoseVector {
    std::array<double, 19> p;
    double operator[](int j) const { return p[j]; }
};

// One hand's coefficient tables: the compatibility class's exported tables (what the C export
// reads, and a host may rewrite) or the hand's published constants (what hand handles read).
struct Coefficients {
    const double* weight;  // 19 x 12, row-major, in hundredths
    const double* w0;      // 19 row offsets
};

// Where a hand with memory keeps it. The pointers may name the compatibility classes' exported
// statics (what the C export uses, shared by every caller) or the fields of a caller-owned
// HandMemory (what hand handles, tests and tools use). A hand uses only the fields it has.
struct MemoryRef {
    bool* pinch_latches;   // four latches: [0] index pinch, [1] middle pinch
    double* thumb_references[2];  // thumb reference values, where the hand keeps them
};

// Caller-owned pinch memory: all latches open and references 0.0, as at library load.
struct HandMemory {
    bool pinch_latches[4] = {false, false, false, false};
    double thumb_references[2] = {0.0, 0.0};

    MemoryRef ref() { return MemoryRef{pinch_latches, {&thumb_references[0], &thumb_references[1]}}; }
};

}  // namespace quil
