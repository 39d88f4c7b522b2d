// The compatibility layer's C exports (quil_linear/quil_linear.h): for each hand
// <hand>_GetDataValue and <hand>_GetVersion, and FreeMemory. They are shown to hosts by QUIL_API
// on their declarations; a hand missing from the header would stay hidden.
//
// Per-call hands hand out a fresh 24-double array that the host owns and releases with
// FreeMemory. Persistent hands keep one array each, made on the first call under the runtime's
// one-time initialisation of a function-local static and overwritten by every later call.
#include <cstring>

#include "api/compat.h"
#include "quil_linear/quil_linear.hpp"

namespace {

double* fresh_buffer(const Quil_linear::TargetArray& result) {
    double* buffer = new double[24];
    std::memcpy(buffer, result.data(), sizeof(double) * 24);
    return buffer;
}

void copy_into(double* array, const Quil_linear::TargetArray& result) {
    for (int i = 0; i < 24; ++i) array[i] = result[i];
}

}  // namespace

extern "C" void FreeMemory(double* p) { delete[] p; }

#define QUIL_EXPORT_PER_CALL(hand, version)                                            \
    extern "C" double* hand##_GetDataValue(QUIL_TWELVE_PARAMS) {                      \
        const Quil_linear::TargetArray result = Quil_linear::hand::GetDataValue(QUIL_TWELVE_ARGS); \
        return fresh_buffer(result);                                                   \
    }

#define QUIL_EXPORT_PERSISTENT(hand, version)                                          \
    extern "C" double* hand##_GetDataValue(QUIL_TWELVE_PARAMS) {                      \
        static double* array = new double[24];                                         \
        const Quil_linear::TargetArray result = Quil_linear::hand::GetDataValue(QUIL_TWELVE_ARGS); \
        copy_into(array, result);                                                      \
        return array;                                                                  \
    }

#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) \
    QUIL_EXPORT_##buffer(hand, version)                                         \
    extern "C" const char* hand##_GetVersion(void) { return version; }
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
