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

#define QUIL_LINEAR_MAPPING_                                                              \
    static double weight[228];                                                            \
    static double w0[19];                                                                 \
    static TargetArray GetDataValue(double x0, double x1, double x2, double x3, double x4, \
                                    double x5, double x6, double x7, double x8, double x9, \
                                    double x10, double x11);


class QUIL_API QUIL_linear_AA {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API QUIL_linear_AD {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API QUIL_linear_AE {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API QUIL_linear_AG {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API PaXini_DexH13_GEN2 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API BrainCo_Revo1 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API BrainCo_Revo2 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API DexRobot_DexHand021_MP {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API LINKERBOT_LinkerHand_O6 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API LINKERBOT_LinkerHand_O7 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API LINKERBOT_LinkerHand_L10 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API LINKERBOT_LinkerHand_L20 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API INSPIRE_ROBOTS_RH56DFX {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API INSPIRE_ROBOTS_RH56F1_E4 {
  public:
    QUIL_LINEAR_MAPPING_
    static bool fingerPinchDone[4];
    static double thumb1_ref_val;
};

class QUIL_API OYMotion_ROH_A001 {
  public:
    QUIL_LINEAR_MAPPING_
};

class QUIL_API ROBOTERA_XHAND1 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API PICO_PXRHand {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API Proception {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API AgiBot_OmniHand_O10 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API AgiBot_OmniHand_O12 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API LeadShine_DH116 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API RUIYAN_RY_H2 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API RUIYAN_RY_H15 {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
    static bool fingerPinchDone[4];
};

class QUIL_API CHOHO_Hand {
  public:
    QUIL_LINEAR_MAPPING_
    static bool fingerPinchDone[4];
};

class QUIL_API TalentRobot_Pro {
  public:
    QUIL_LINEAR_MAPPING_
    static int GetData1(int a, int b);  // a * b * 2 - 2, wrapping in 32 bits
};

class QUIL_API TetherIA_AeroHandOpen {
  public:
    QUIL_LINEAR_MAPPING_
    static bool fingerPinchDone[4];
    static double thumb1_ref_val;
    static double thumb2_ref_val;
};

#undef QUIL_LINEAR_MAPPING_

}  // namespace Quil_linear

#endif  // QUIL_LINEAR_HPP
