/* quil_linear: the one export macro.
 *
 * Every public declaration of the library, in every header, carries QUIL_API: the C exports of
 * quil_linear.h, the hand API of hand.h and profile.h, and the classes of quil_linear.hpp. The
 * library is built with hidden visibility, so what is not marked stays inside it.
 *
 * A host that links the library statically and wants no visibility attributes may define
 * QUIL_API itself (empty) before including any quil_linear header.
 */
#ifndef QUIL_LINEAR_EXPORT_H
#define QUIL_LINEAR_EXPORT_H

#ifndef QUIL_API
#if defined(__GNUC__)
#define QUIL_API __attribute__((visibility("default")))
#else
#define QUIL_API
#endif
#endif

#endif /* QUIL_LINEAR_EXPORT_H */
