// The compatibility layer's hand classes (quil_linear/quil_linear.hpp), generated from the list
// of hands: for each hand, Quil_linear::<hand>'s coefficient tables `weight` and `w0`,
// `GetDataValue`, and where the list says so `GetData1` and the pinch latches and thumb
// references the C export remembers between calls. GetDataValue runs the hand's mapping
// (models/) against these tables and this memory; hand handles never touch either.
#include <cstdint>
#include <cstring>

#include "api/compat.h"
#include "models/catalogue.h"
#include "quil_linear/quil_linear.hpp"

// ---- Coefficient tables ----------------------------------------------------------------------
//
// The tables a host may read or rewrite, which the C export reads on every call. They start as
// the hand's published constants (constant-initialised in the hands' files), copied in by the
// library's own initialisation, which runs before that of any program or library linked to it.
// In a shared object they stay in the section of initialised data, as tables written with their
// values would, so the library's exported symbols are what they always were.
#if defined(__ELF__)
#define QUIL_COMPAT_TABLE_SECTION [[gnu::section(".data")]]
#else
#define QUIL_COMPAT_TABLE_SECTION
#endif
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) \
    QUIL_COMPAT_TABLE_SECTION double Quil_linear::hand::weight[228];              \
    QUIL_COMPAT_TABLE_SECTION double Quil_linear::hand::w0[19];
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL

namespace {

struct PublishedTables {
    PublishedTables() {
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1)                  \
    static_assert(sizeof Quil_linear::hand::weight == 228 * sizeof(double), #hand);             \
    static_assert(sizeof Quil_linear::hand::w0 == 19 * sizeof(double), #hand);                  \
    std::memcpy(Quil_linear::hand::weight, quil::hands::hand##_coefficients.weight,             \
                sizeof Quil_linear::hand::weight);                                              \
    std::memcpy(Quil_linear::hand::w0, quil::hands::hand##_coefficients.w0, sizeof Quil_linear::hand::w0);
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
    }
};
const PublishedTables published_tables;

// The host-side checksum helper some classes carry: a * b * 2 - 2 in wrapping 32-bit arithmetic.
int get_data1(int a, int b) {
    const std::uint32_t r = static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b) * 2u - 2u;
    return static_cast<int>(static_cast<std::int32_t>(r));
}

}  // namespace

// ---- Memory ----------------------------------------------------------------------------------
//
// The class statics of each kind of class memory in the list, all open or 0.0 at load, and the
// memory GetDataValue hands the mapping. PRIVATE_LATCHES: the latches live inside GetDataValue,
// shared by every caller for the life of the process, where no host can see them.
#define QUIL_COMPAT_STATICS_NO_MEMORY(hand)
#define QUIL_COMPAT_STATICS_PRIVATE_LATCHES(hand)
#define QUIL_COMPAT_STATICS_LATCHES(hand) bool Quil_linear::hand::fingerPinchDone[4] = {};
#define QUIL_COMPAT_STATICS_LATCHES_THUMB1(hand) \
    QUIL_COMPAT_STATICS_LATCHES(hand)            \
    double Quil_linear::hand::thumb1_ref_val = 0.0;
#define QUIL_COMPAT_STATICS_LATCHES_THUMBS(hand) \
    QUIL_COMPAT_STATICS_LATCHES_THUMB1(hand)     \
    double Quil_linear::hand::thumb2_ref_val = 0.0;

#define QUIL_COMPAT_LOCAL_NO_MEMORY
#define QUIL_COMPAT_LOCAL_LATCHES
#define QUIL_COMPAT_LOCAL_LATCHES_THUMB1
#define QUIL_COMPAT_LOCAL_LATCHES_THUMBS
#define QUIL_COMPAT_LOCAL_PRIVATE_LATCHES static bool fingerPinchDone[4] = {};

#define QUIL_COMPAT_MEMORY_NO_MEMORY(hand) quil::MemoryRef{}
#define QUIL_COMPAT_MEMORY_PRIVATE_LATCHES(hand) quil::MemoryRef{fingerPinchDone, {nullptr, nullptr}}
#define QUIL_COMPAT_MEMORY_LATCHES(hand) \
    quil::MemoryRef{Quil_linear::hand::fingerPinchDone, {nullptr, nullptr}}
#define QUIL_COMPAT_MEMORY_LATCHES_THUMB1(hand) \
    quil::MemoryRef{Quil_linear::hand::fingerPinchDone, {&Quil_linear::hand::thumb1_ref_val, nullptr}}
#define QUIL_COMPAT_MEMORY_LATCHES_THUMBS(hand)                                                \
    quil::MemoryRef{Quil_linear::hand::fingerPinchDone, {&Quil_linear::hand::thumb1_ref_val, \
                                                         &Quil_linear::hand::thumb2_ref_val}}

#define QUIL_COMPAT_KEEPS_STATE_NO_MEMORY 0
#define QUIL_COMPAT_KEEPS_STATE_LATCHES 1
#define QUIL_COMPAT_KEEPS_STATE_LATCHES_THUMB1 1
#define QUIL_COMPAT_KEEPS_STATE_LATCHES_THUMBS 1
#define QUIL_COMPAT_KEEPS_STATE_PRIVATE_LATCHES 1

// ---- Members ---------------------------------------------------------------------------------

#define QUIL_COMPAT_GET_DATA1_0(hand)
#define QUIL_COMPAT_GET_DATA1_1(hand) \
    int Quil_linear::hand::GetData1(int a, int b) { return get_data1(a, b); }

#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1)                  \
    static_assert((keeps_state) == QUIL_COMPAT_KEEPS_STATE_##class_memory,                      \
                  #hand ": keeps_state and class_memory disagree");                             \
    QUIL_COMPAT_STATICS_##class_memory(hand)                                                    \
    Quil_linear::TargetArray Quil_linear::hand::GetDataValue(QUIL_TWELVE_PARAMS) {              \
        QUIL_COMPAT_LOCAL_##class_memory                                                        \
        return quil::hands::hand(quil::compat::readings(QUIL_TWELVE_ARGS),                      \
                                 QUIL_COMPAT_MEMORY_##class_memory(hand),                       \
                                 quil::Coefficients{weight, w0});                               \
    }                                                                                           \
    QUIL_COMPAT_GET_DATA1_##get_data1(hand)
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
