// The records every hand works on: the glove sample, the pose rows, the joint targets, and the
// pinch memory of the hands that remember a pinch between samples.
#pragma once

#include <array>

namespace quil {

// The 24 joint targets of one sample, in the hand's slot order.
using TargetArray = std::array<double, 24>;

// The twelve glove readings x0..x11 of one sample, in argument order.
struct InputAngles {
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
    bool* fingerPinchDone;   // four latches: [0] index pinch, [1] middle pinch
    double* thumb1_ref_val;  // thumb reference values, where the hand keeps them
    double* thumb2_ref_val;
};

// Caller-owned pinch memory: all latches open and references 0.0, as at library load.
struct HandMemory {
    bool fingerPinchDone[4] = {false, false, false, false};
    double thumb1_ref_val = 0.0;
    double thumb2_ref_val = 0.0;

    MemoryRef ref() { return MemoryRef{fingerPinchDone, &thumb1_ref_val, &thumb2_ref_val}; }
};

}  // namespace quil
