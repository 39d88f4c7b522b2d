/* quil_linear: glove finger angles to dexterous robot hand joint targets.
 *
 * One call per glove sample: pass the twelve readings x0..x11 of the glove, get back 24 doubles,
 * the joint targets of the chosen hand in that hand's own slot order (slot 23 is -1.0, or a
 * gesture code for PICO_PXRHand). Readings are clamped to [-20, 120] by the library; any
 * double, NaN and infinities included, is accepted.
 *
 * Buffer ownership -- read this before you call anything:
 *   PER-CALL hands (the first 15 below) return a fresh 24-double buffer on every call.
 *     You own it: release it exactly once with FreeMemory() and do not touch it afterwards.
 *   PERSISTENT hands (the last 11 below) return the same 24-double buffer on every call,
 *     owned by the library and overwritten by the next call of that hand. Never pass it to
 *     FreeMemory(); copy it out if you need it after the next call.
 *   <hand>_GetVersion() returns a constant string owned by the library; never free it.
 *
 * Threads: calls of one hand must be serialised by the host (persistent buffers and the pinch
 * latches of some hands are shared by every caller); different hands share nothing.
 */
#ifndef QUIL_LINEAR_H
#define QUIL_LINEAR_H

#ifdef __cplusplus
extern "C" {
#endif

/* Releases a buffer returned by a PER-CALL hand. A null pointer is ignored. */
void FreeMemory(double* p);

/* ---- PER-CALL hands: release every result with FreeMemory(). ---- */

double* QUIL_linear_AA_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* QUIL_linear_AA_GetVersion(void); /* "v1.1.5.1" */

double* QUIL_linear_AD_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* QUIL_linear_AD_GetVersion(void); /* "v1.2.0.1" */

double* QUIL_linear_AE_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* QUIL_linear_AE_GetVersion(void); /* "v1.3.6.1b" */

double* QUIL_linear_AG_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* QUIL_linear_AG_GetVersion(void); /* "v1.4.9.1b" */

double* PaXini_DexH13_GEN2_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* PaXini_DexH13_GEN2_GetVersion(void); /* "v1.4.8.1k" */

double* BrainCo_Revo1_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* BrainCo_Revo1_GetVersion(void); /* "V 1.4.8.1i" */

double* BrainCo_Revo2_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* BrainCo_Revo2_GetVersion(void); /* "V 1.4.8.1_BCRevo2_2" */

double* DexRobot_DexHand021_MP_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* DexRobot_DexHand021_MP_GetVersion(void); /* "V 1.4.8.1d" */

double* LINKERBOT_LinkerHand_O6_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* LINKERBOT_LinkerHand_O6_GetVersion(void); /* "V 1.4.9.1_LO6_1" */

double* LINKERBOT_LinkerHand_O7_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* LINKERBOT_LinkerHand_O7_GetVersion(void); /* "V 1.4.9.1_LO7_2" */

double* LINKERBOT_LinkerHand_L10_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* LINKERBOT_LinkerHand_L10_GetVersion(void); /* "V 1.4.9.1_LL10_1" */

double* LINKERBOT_LinkerHand_L20_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* LINKERBOT_LinkerHand_L20_GetVersion(void); /* "V 1.4.8.1E" */

double* INSPIRE_ROBOTS_RH56DFX_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* INSPIRE_ROBOTS_RH56DFX_GetVersion(void); /* "V 1.4.8.1g" */

double* INSPIRE_ROBOTS_RH56F1_E4_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);  /* remembers pinch latches between calls */
const char* INSPIRE_ROBOTS_RH56F1_E4_GetVersion(void); /* "V 1.4.9.1_INSRH56F1_2" */

double* OYMotion_ROH_A001_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* OYMotion_ROH_A001_GetVersion(void); /* "V 1.4.7.1c" */

/* ---- PERSISTENT hands: the result is the hand's own buffer; never free it. ---- */

double* ROBOTERA_XHAND1_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* ROBOTERA_XHAND1_GetVersion(void); /* "V 1.4.8.1f" */

double* PICO_PXRHand_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* PICO_PXRHand_GetVersion(void); /* "V 1.4.8.1PICO_1" */

double* Proception_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* Proception_GetVersion(void); /* "V 1.4.9.1_PRO_1" */

double* AgiBot_OmniHand_O10_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);  /* remembers pinch latches between calls */
const char* AgiBot_OmniHand_O10_GetVersion(void); /* "V 1.4.8.1_OmniO10_3" */

double* AgiBot_OmniHand_O12_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* AgiBot_OmniHand_O12_GetVersion(void); /* "V 1.4.9.1_OmniO12_1" */

double* LeadShine_DH116_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* LeadShine_DH116_GetVersion(void); /* "V 1.4.9.1_LSD116_1" */

double* RUIYAN_RY_H2_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* RUIYAN_RY_H2_GetVersion(void); /* "V 1.4.9.1_RYH2_2" */

double* RUIYAN_RY_H15_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);  /* remembers pinch latches between calls */
const char* RUIYAN_RY_H15_GetVersion(void); /* "V 1.4.9.1_RYH15_1" */

double* CHOHO_Hand_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);  /* remembers pinch latches between calls */
const char* CHOHO_Hand_GetVersion(void); /* "V 1.4.9.1_CHOHO_1" */

double* TalentRobot_Pro_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
const char* TalentRobot_Pro_GetVersion(void); /* "V 1.4.9.1_TLT" */

double* TetherIA_AeroHandOpen_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);  /* remembers pinch latches between calls */
const char* TetherIA_AeroHandOpen_GetVersion(void); /* "V 1.4.9.1_Aerohandop_3" */

#ifdef __cplusplus
}
#endif

#endif /* QUIL_LINEAR_H */
