// C++ view of quil_linear: the hand classes behind the C exports of quil_linear.h.
//
// Every hand is a class of static members only: its coefficient tables `weight` (19 rows of 12
// inputs, in hundredths) and `w0` (19 row offsets), the mapping `GetDataValue`, and on some
// hands `GetData1` and the pinch memory (`fingerPinchDone`, `thumb1_ref_val`,
// `thumb2_ref_val`). The tables are plain arrays so that calibration tools can read them; the
// library never writes them, and a host that does changes what the hand answers.
#ifndef QUIL_LINEAR_HPP
#define QUIL_LINEAR_HPP

#include <array>

#include "quil_linear/quil_linear.h"

// The classes' static members are part of the library's interface, whatever visibility the
// rest of the library is built with.
#define QUIL_LINEAR_CLASS __attribute__((visibility("default")))

namespace Quil_linear {

// The 24 joint targets of one sample, in the hand's slot order.
using TargetArray = std::array<double, 24>;

#define QUIL_LINEAR_MAPPING_                                                              \
    static double weight[228];                                                            \
    static double w0[19];                                                                 \
    static TargetArray GetDataValue(double x0, double x1, double x2, double x3, double x4, \
                                    double x5, double x6, double x7, double x8, double x9, \
                                    double x10, double x11);


class QUIL_LINEAR_CLASS QUIL_linear_AA {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS QUIL_linear_AD {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS QUIL_linear_AE {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS QUIL_linear_AG {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS PaXini_DexH13_GEN2 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS BrainCo_Revo1 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS BrainCo_Revo2 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS DexRobot_DexHand021_MP {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS LINKERBOT_LinkerHand_O6 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS LINKERBOT_LinkerHand_O7 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS LINKERBOT_LinkerHand_L10 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS LINKERBOT_LinkerHand_L20 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS INSPIRE_ROBOTS_RH56DFX {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS INSPIRE_ROBOTS_RH56F1_E4 {
  public:
    QUIL_LINEAR_MAPPING_
    static bool fingerPinchDone[4];
    static double thumb1_ref_val;
};

class QUIL_LINEAR_CLASS OYMotion_ROH_A001 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_LINEAR_CLASS ROBOTERA_XHAND1 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS PICO_PXRHand {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS Proception {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS AgiBot_OmniHand_O10 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS AgiBot_OmniHand_O12 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS LeadShine_DH116 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS RUIYAN_RY_H2 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS RUIYAN_RY_H15 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
    static bool fingerPinchDone[4];
};

class QUIL_LINEAR_CLASS CHOHO_Hand {
  public:
    QUIL_LINEAR_MAPPING_
    static bool fingerPinchDone[4];
};

class QUIL_LINEAR_CLASS TalentRobot_Pro {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_LINEAR_CLASS TetherIA_AeroHandOpen {
  public:
    QUIL_LINEAR_MAPPING_
    static bool fingerPinchDone[4];
    static double thumb1_ref_val;
    static double thumb2_ref_val;
};

#undef QUIL_LINEAR_MAPPING_

}  // namespace Quil_linear

#endif  // QUIL_LINEAR_HPP
