// C++ view of quil_linear's compatibility interface: the per-hand classes behind the C exports
// of quil_linear.h, kept for the hosts that use them. New code should use quil_linear/hand.h
// (or its C++ wrapper quil_linear/hand.hpp).
//
// Every hand is a class of static members only: its coefficient tables `weight` (19 rows of 12
// inputs, in hundredths) and `w0` (19 row offsets), the mapping `GetDataValue`, and on some
// hands `GetData1` and the pinch memory (`fingerPinchDone`, `thumb1_ref_val`,
// `thumb2_ref_val`). The tables are plain arrays so that calibration tools can read them; they
// hold the hand's published coefficients from the moment the library is loaded, the library
// never writes them afterwards, and a host that does changes what the hand's C export answers
// (never what a hand handle of hand.h answers).
#ifndef QUIL_LINEAR_HPP
#define QUIL_LINEAR_HPP

#include <array>

#include "quil_linear/quil_linear.h"

namespace Quil_linear {

// The 24 joint targets of one sample, in the hand's slot order.
using TargetArray = std::array<double, 24>;

// One class per line of quil_linear/catalogue_list.h, named by its first column. The list's
// `get_data1` column says whether the class has GetData1, and `class_memory` which pinch memory
// it shows: LATCHES (fingerPinchDone), LATCHES_THUMB1 (and thumb1_ref_val), LATCHES_THUMBS (and
// thumb2_ref_val); NO_MEMORY and PRIVATE_LATCHES show none.
#define QUIL_LINEAR_GET_DATA1_0_
#define QUIL_LINEAR_GET_DATA1_1_ static int GetData1(int a, int b); /* a * b * 2 - 2, wrapping in 32 bits */
#define QUIL_LINEAR_MEMORY_NO_MEMORY_
#define QUIL_LINEAR_MEMORY_PRIVATE_LATCHES_
#define QUIL_LINEAR_MEMORY_LATCHES_ static bool fingerPinchDone[4];
#define QUIL_LINEAR_MEMORY_LATCHES_THUMB1_ QUIL_LINEAR_MEMORY_LATCHES_ static double thumb1_ref_val;
#define QUIL_LINEAR_MEMORY_LATCHES_THUMBS_ \
    QUIL_LINEAR_MEMORY_LATCHES_THUMB1_ static double thumb2_ref_val;

#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1)                   \
    class QUIL_API hand {                                                                        \
      public:                                                                                    \
        static double weight[228];                                                               \
        static double w0[19];                                                                    \
        static TargetArray GetDataValue(double x0, double x1, double x2, double x3, double x4,   \
                                        double x5, double x6, double x7, double x8, double x9,   \
                                        double x10, double x11);                                 \
        QUIL_LINEAR_GET_DATA1_##get_data1##_                                                     \
        QUIL_LINEAR_MEMORY_##class_memory##_                                                     \
    };
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
#undef QUIL_LINEAR_GET_DATA1_0_
#undef QUIL_LINEAR_GET_DATA1_1_
#undef QUIL_LINEAR_MEMORY_NO_MEMORY_
#undef QUIL_LINEAR_MEMORY_PRIVATE_LATCHES_
#undef QUIL_LINEAR_MEMORY_LATCHES_
#undef QUIL_LINEAR_MEMORY_LATCHES_THUMB1_
#undef QUIL_LINEAR_MEMORY_LATCHES_THUMBS_

}  // namespace Quil_linear

#endif  // QUIL_LINEAR_HPP
