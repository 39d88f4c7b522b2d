/* quil_linear: glove finger angles to dexterous robot hand joint targets -- the compatibility
 * interface.
 *
 * These are the C exports hosts already link against: per hand <hand>_GetDataValue and
 * <hand>_GetVersion, and FreeMemory (quil_linear.hpp adds the per-hand classes behind them).
 * They stay as they are, bit for bit. New code should use quil_linear/hand.h instead: a handle
 * per glove with its own memory, the catalogue by name, batches, saved state, and no buffers or
 * shared latches to manage.
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

#include "quil_linear/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Releases a buffer returned by a PER-CALL hand. A null pointer is ignored. */
QUIL_API void FreeMemory(double* p);

/* ---- PER-CALL hands: release every result with FreeMemory(). ---- */

QUIL_API double* QUIL_linear_AA_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* QUIL_linear_AA_GetVersion(void); /* "v1.1.5.1" */

QUIL_API double* QUIL_linear_AD_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* QUIL_linear_AD_GetVersion(void); /* "v1.2.0.1" */

QUIL_API double* QUIL_linear_AE_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* QUIL_linear_AE_GetVersion(void); /* "v1.3.6.1b" */

QUIL_API double* QUIL_linear_AG_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* QUIL_linear_AG_GetVersion(void); /* "v1.4.9.1b" */

QUIL_API double* PaXini_DexH13_GEN2_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* PaXini_DexH13_GEN2_GetVersion(void); /* "v1.4.8.1k" */

QUIL_API double* BrainCo_Revo1_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* BrainCo_Revo1_GetVersion(void); /* "V 1.4.8.1i" */

QUIL_API double* BrainCo_Revo2_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* BrainCo_Revo2_GetVersion(void); /* "V 1.4.8.1_BCRevo2_2" */

QUIL_API double* DexRobot_DexHand021_MP_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* DexRobot_DexHand021_MP_GetVersion(void); /* "V 1.4.8.1d" */

QUIL_API double* LINKERBOT_LinkerHand_O6_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* LINKERBOT_LinkerHand_O6_GetVersion(void); /* "V 1.4.9.1_LO6_1" */

QUIL_API double* LINKERBOT_LinkerHand_O7_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* LINKERBOT_LinkerHand_O7_GetVersion(void); /* "V 1.4.9.1_LO7_2" */

QUIL_API double* LINKERBOT_LinkerHand_L10_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* LINKERBOT_LinkerHand_L10_GetVersion(void); /* "V 1.4.9.1_LL10_1" */

QUIL_API double* LINKERBOT_LinkerHand_L20_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* LINKERBOT_LinkerHand_L20_GetVersion(void); /* "V 1.4.8.1E" */

QUIL_API double* INSPIRE_ROBOTS_RH56DFX_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* INSPIRE_ROBOTS_RH56DFX_GetVersion(void); /* "V 1.4.8.1g" */

QUIL_API double* INSPIRE_ROBOTS_RH56F1_E4_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);  /* remembers pinch latches between calls */
QUIL_API const char* INSPIRE_ROBOTS_RH56F1_E4_GetVersion(void); /* "V 1.4.9.1_INSRH56F1_2" */

QUIL_API double* OYMotion_ROH_A001_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* OYMotion_ROH_A001_GetVersion(void); /* "V 1.4.7.1c" */

/* ---- PERSISTENT hands: the result is the hand's own buffer; never free it. ---- */

QUIL_API double* ROBOTERA_XHAND1_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* ROBOTERA_XHAND1_GetVersion(void); /* "V 1.4.8.1f" */

QUIL_API double* PICO_PXRHand_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* PICO_PXRHand_GetVersion(void); /* "V 1.4.8.1PICO_1" */

QUIL_API double* Proception_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* Proception_GetVersion(void); /* "V 1.4.9.1_PRO_1" */

QUIL_API double* AgiBot_OmniHand_O10_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);  /* remembers pinch latches between calls */
QUIL_API const char* AgiBot_OmniHand_O10_GetVersion(void); /* "V 1.4.8.1_OmniO10_3" */

QUIL_API double* AgiBot_OmniHand_O12_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* AgiBot_OmniHand_O12_GetVersion(void); /* "V 1.4.9.1_OmniO12_1" */

QUIL_API double* LeadShine_DH116_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* LeadShine_DH116_GetVersion(void); /* "V 1.4.9.1_LSD116_1" */

QUIL_API double* RUIYAN_RY_H2_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* RUIYAN_RY_H2_GetVersion(void); /* "V 1.4.9.1_RYH2_2" */

QUIL_API double* RUIYAN_RY_H15_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);  /* remembers pinch latches between calls */
QUIL_API const char* RUIYAN_RY_H15_GetVersion(void); /* "V 1.4.9.1_RYH15_1" */

QUIL_API double* CHOHO_Hand_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);  /* remembers pinch latches between calls */
QUIL_API const char* CHOHO_Hand_GetVersion(void); /* "V 1.4.9.1_CHOHO_1" */

QUIL_API double* TalentRobot_Pro_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);
QUIL_API const char* TalentRobot_Pro_GetVersion(void); /* "V 1.4.9.1_TLT" */

QUIL_API double* TetherIA_AeroHandOpen_GetDataValue(
    double x0, double x1, double x2, double x3, double x4, double x5,
    double x6, double x7, double x8, double x9, double x10, double x11);  /* remembers pinch latches between calls */
QUIL_API const char* TetherIA_AeroHandOpen_GetVersion(void); /* "V 1.4.9.1_Aerohandop_3" */

#ifdef __cplusplus
}
#endif

#endif /* QUIL_LINEAR_H */
