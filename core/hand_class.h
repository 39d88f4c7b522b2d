// The class side of a hand: the exported static GetDataValue forwards the twelve readings to the
// hand's mapping, which is written against an explicit reference to the hand's memory so the
// same code serves the class statics (the C export) and caller-owned memory (tests, tools).
#pragma once

#include "core/records.h"

namespace quil {

inline InputAngles make_inputs(double x0, double x1, double x2, double x3, double x4, double x5,
                               double x6, double x7, double x8, double x9, double x10, double x11) {
    return InputAngles{{x0, x1, x2, x3, x4, x5, x6, x7, x8, x9, x10, x11}};
}

}  // namespace quil

#define QUIL_TWELVE_PARAMS                                                                    \
    double x0, double x1, double x2, double x3, double x4, double x5, double x6, double x7, \
        double x8, double x9, double x10, double x11
#define QUIL_TWELVE_ARGS x0, x1, x2, x3, x4, x5, x6, x7, x8, x9, x10, x11

// Quil_linear::Hand::GetDataValue for a hand without memory.
#define QUIL_DEFINE_GET_DATA_VALUE(Hand)                                              \
    Quil_linear::TargetArray Quil_linear::Hand::GetDataValue(QUIL_TWELVE_PARAMS) {    \
        return quil::hands::Hand(quil::make_inputs(QUIL_TWELVE_ARGS), quil::MemoryRef{}); \
    }

// Quil_linear::Hand::GetDataValue for a hand whose memory is the MemoryRef expression `memory`.
#define QUIL_DEFINE_GET_DATA_VALUE_WITH_MEMORY(Hand, memory)                       \
    Quil_linear::TargetArray Quil_linear::Hand::GetDataValue(QUIL_TWELVE_PARAMS) { \
        return quil::hands::Hand(quil::make_inputs(QUIL_TWELVE_ARGS), memory);     \
    }

// Quil_linear::Hand::GetData1, kept for hosts that use it.
#define QUIL_DEFINE_GET_DATA1(Hand) \
    int Quil_linear::Hand::GetData1(int a, int b) { return quil::get_data1(a, b); }
