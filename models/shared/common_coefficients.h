// The coefficient set shared by eleven outside hands (the RUIYAN RY_H15 and RY_H2, the CHOHO
// hand, the TetherIA AeroHandOpen, the INSPIRE ROBOTS RH56F1_E4, the AgiBot O12, the LeadShine
// DH116, the LinkerHand O6 and O7, the PaXini DexH13 and the TalentRobot Pro): the same 19 pose
// rows from the same twelve readings, each hand shaping them with its own rules afterwards. Each
// of those hands publishes its own copy, so its compatibility class gets tables of its own (a host
// may recalibrate one hand without touching the others):
//   QUIL_PUBLISH_COEFFICIENTS(Hand, QUIL_COMMON_WEIGHT, QUIL_COMMON_W0)
#pragma once

// Rows p0..p18, columns x0..x11, in hundredths.
#define QUIL_COMMON_WEIGHT {                                                              \
    -105.0,  -20.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p0 */ \
    -85.0,  -20.0,   10.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    5.0,    0.0,    5.0,  /* p1 */ \
    15.0,  -65.0,  -50.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,  /* p2 */ \
    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p3 */ \
    0.0,    0.0,    0.0,  -95.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p4 */ \
    0.0,    0.0,    0.0,  -90.0,    5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p5 */ \
    0.0,   -3.0,    0.0,    0.0,   35.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   -6.0,   -3.0,  /* p6 */ \
    0.0,    1.0,    0.0,    0.0,    0.0,    0.0,  -95.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p7 */ \
    0.0,    1.0,    0.0,    0.0,    5.0,    0.0,  -90.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p8 */ \
    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p9 */ \
    0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -120.0,    0.0,    0.0,  /* p10 */ \
    0.0,   -5.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  -90.0,    5.0,    0.0,  /* p11 */ \
    0.0,    0.0,    0.0,    0.0,   -3.0,    0.0,    0.0,   20.0,    0.0,    0.0,   20.0,    0.0,  /* p12 */ \
    0.0,   -2.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -140.0,  /* p13 */ \
    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0, -110.0,  /* p14 */ \
    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,    0.0,    0.0,   35.0,    0.0,  /* p15 */ \
    5.0,  -60.0,  -50.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,   10.0,  /* p16 */ \
    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p17 */ \
    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,    0.0,  /* p18 */ \
}

#define QUIL_COMMON_W0 {0.0, 0.0, 0.0, 30.0, 0.0, 1.0, 2.0, 0.0, 1.0, 2.0, 0.0, 1.0, 2.0, 0.0, 1.0, 2.0, 0.0, 0.0, 0.0}
