// The class side of a hand: the exported static GetDataValue forwards the twelve readings to the
// hand's mapping, which is written against explicit references to the hand's memory and tables
// so the same code serves the class statics (the C export) and a caller's own memory (hand
// handles, tests, tools).
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

// A hand's coefficient tables, written once from the initialiser lists WEIGHT (19 x 12) and W0
// (19): the class's exported `weight` and `w0`, which the C export reads and a host may rewrite,
// and the constant copy that hand handles read, so a handle answers as the hand was published
// whatever a host does to the class tables.
#define QUIL_DEFINE_COEFFICIENTS(Hand, WEIGHT, W0)                                      \
    double Quil_linear::Hand::weight[228] = WEIGHT;                                     \
    double Quil_linear::Hand::w0[19] = W0;                                              \
    namespace {                                                                         \
    constexpr double kPublishedWeight[228] = WEIGHT;                                    \
    constexpr double kPublishedW0[19] = W0;                                             \
    }                                                                                   \
    const quil::Coefficients quil::hands::Hand##_coefficients{kPublishedWeight, kPublishedW0};

// The class tables, as the C export reads them.
#define QUIL_CLASS_TABLES(Hand) (quil::Coefficients{Quil_linear::Hand::weight, Quil_linear::Hand::w0})

// Quil_linear::Hand::GetDataValue for a hand without memory.
#define QUIL_DEFINE_GET_DATA_VALUE(Hand)                                                   \
    Quil_linear::TargetArray Quil_linear::Hand::GetDataValue(QUIL_TWELVE_PARAMS) {         \
        return quil::hands::Hand(quil::make_inputs(QUIL_TWELVE_ARGS), quil::MemoryRef{},   \
                                 QUIL_CLASS_TABLES(Hand));                                 \
    }

// Quil_linear::Hand::GetDataValue for a hand whose memory is the MemoryRef expression `memory`.
#define QUIL_DEFINE_GET_DATA_VALUE_WITH_MEMORY(Hand, memory)                                  \
    Quil_linear::TargetArray Quil_linear::Hand::GetDataValue(QUIL_TWELVE_PARAMS) {            \
        return quil::hands::Hand(quil::make_inputs(QUIL_TWELVE_ARGS), memory,                 \
                                 QUIL_CLASS_TABLES(Hand));                                    \
    }

// Quil_linear::Hand::GetData1, kept for hosts that use it.
#define QUIL_DEFINE_GET_DATA1(Hand) \
    int Quil_linear::Hand::GetData1(int a, int b) { return quil::get_data1(a, b); }
