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
 *   PER-CALL hands (buffer PER_CALL in quil_linear/catalogue_list.h) return a fresh 24-double
 *     buffer on every call.
 *     You own it: release it exactly once with FreeMemory() and do not touch it afterwards.
 *   PERSISTENT hands (buffer PERSISTENT there) return the same 24-double buffer on every call,
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

/* Per hand, in the order and with the columns of quil_linear/catalogue_list.h (prefix, version
 * string, buffer kind, ...):
 *
 *   double* <hand>_GetDataValue(double x0, ..., double x11);
 *     The 24 joint targets of one sample. PER_CALL hands: a fresh buffer, release it with
 *     FreeMemory(). PERSISTENT hands: the hand's own buffer, overwritten by its next call;
 *     never free it.
 *   const char* <hand>_GetVersion(void);
 *     The hand's version string (the list's second column), owned by the library.
 *
 * For example RUIYAN_RY_H15_GetDataValue and RUIYAN_RY_H15_GetVersion. */
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1)               \
    QUIL_API double* hand##_GetDataValue(double x0, double x1, double x2, double x3, double x4, \
                                         double x5, double x6, double x7, double x8, double x9, \
                                         double x10, double x11);                              \
    QUIL_API const char* hand##_GetVersion(void);
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL

#ifdef __cplusplus
}
#endif

#endif /* QUIL_LINEAR_H */
