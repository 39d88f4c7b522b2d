// The page writes wiring profiles straight into the module's memory (js/quil_api.js); these are
// the offsets it writes at, checked against the compiler's on wasm32.
#include <cstddef>

#include "quil_linear/hand.h"

static_assert(sizeof(void*) == 4, "the page's offsets are wasm32's");
static_assert(offsetof(quil_output, name) == 0 && offsetof(quil_output, slot) == 4, "quil_output layout");
static_assert(offsetof(quil_output, scale) == 8 && offsetof(quil_output, offset) == 16, "quil_output layout");
static_assert(offsetof(quil_output, min) == 24 && offsetof(quil_output, max) == 32, "quil_output layout");
static_assert(offsetof(quil_output, safe) == 40 && offsetof(quil_output, smoothing) == 48, "quil_output layout");
static_assert(offsetof(quil_smoothing, kind) == 0 && offsetof(quil_smoothing, alpha) == 8, "quil_smoothing layout");
static_assert(offsetof(quil_smoothing, min_cutoff) == 16 && offsetof(quil_smoothing, beta) == 24, "quil_smoothing layout");
static_assert(offsetof(quil_smoothing, d_cutoff) == 32 && sizeof(quil_smoothing) == 40, "quil_smoothing layout");
static_assert(offsetof(quil_output, reject_above) == 88 && offsetof(quil_output, max_rate) == 96, "quil_output layout");
static_assert(sizeof(quil_output) == 104, "quil_output layout");
static_assert(offsetof(quil_profile, hand) == 0 && offsetof(quil_profile, hold_after) == 8, "quil_profile layout");
static_assert(offsetof(quil_profile, safe_after) == 16 && offsetof(quil_profile, output_count) == 24, "quil_profile layout");
static_assert(offsetof(quil_profile, outputs) == 28 && sizeof(quil_profile) == 32, "quil_profile layout");
static_assert(offsetof(quil_profile_fault, output) == 0 && offsetof(quil_profile_fault, field) == 4, "fault layout");
static_assert(offsetof(quil_profile_fault, problem) == 8, "fault layout");
