// The compatibility layer's shared pieces: the twelve-argument signature of GetDataValue and
// its C export, and the readings record those arguments make.
#ifndef QUIL_API_COMPAT_H
#define QUIL_API_COMPAT_H

#include "core/records.h"

#define QUIL_TWELVE_PARAMS                                                                    \
    double x0, double x1, double x2, double x3, double x4, double x5, double x6, double x7, \
        double x8, double x9, double x10, double x11
#define QUIL_TWELVE_ARGS x0, x1, x2, x3, x4, x5, x6, x7, x8, x9, x10, x11

namespace quil::compat {

inline Readings readings(QUIL_TWELVE_PARAMS) { return Readings{{QUIL_TWELVE_ARGS}}; }

}  // namespace quil::compat

#endif  // QUIL_API_COMPAT_H
