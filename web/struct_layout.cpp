// The page reads the catalogue, the slots, the readings and a handle's memory straight from the
// module's memory and writes wiring profiles into it (js/quil_api.js); these are the offsets it
// uses, checked against the compiler's on wasm32.
#include <cstddef>

#include "quil_linear/hand.h"

static_assert(sizeof(void*) == 4, "the page's offsets are wasm32's");
static_assert(offsetof(quil_hand_info, name) == 0 && offsetof(quil_hand_info, version) == 4, "quil_hand_info layout");
static_assert(offsetof(quil_hand_info, keeps_state) == 8 && offsetof(quil_hand_info, persistent_buffer) == 12,
              "quil_hand_info layout");
static_assert(offsetof(quil_hand_info, slot_roles) == 16, "quil_hand_info layout");
static_assert(offsetof(quil_slot_info, role) == 0 && offsetof(quil_slot_info, meaning) == 4, "quil_slot_info layout");
static_assert(offsetof(quil_slot_info, kind) == 8 && offsetof(quil_slot_info, follows) == 12, "quil_slot_info layout");
static_assert(offsetof(quil_slot_info, relation) == 20 && offsetof(quil_slot_info, departs) == 24, "quil_slot_info layout");
static_assert(offsetof(quil_slot_info, value) == 32 && offsetof(quil_slot_info, sign) == 40, "quil_slot_info layout");
static_assert(offsetof(quil_slot_info, range_min) == 48 && offsetof(quil_slot_info, range_max) == 56, "quil_slot_info layout");
static_assert(offsetof(quil_slot_info, moved_by) == 64 && offsetof(quil_slot_info, negative_zero) == 68,
              "quil_slot_info layout");
static_assert(offsetof(quil_reading_info, name) == 0 && offsetof(quil_reading_info, finger) == 4, "quil_reading_info layout");
static_assert(offsetof(quil_reading_info, motion) == 8 && offsetof(quil_reading_info, unit) == 12, "quil_reading_info layout");
static_assert(offsetof(quil_reading_info, meaning) == 16 && offsetof(quil_reading_info, hands) == 20, "quil_reading_info layout");
static_assert(offsetof(quil_hand_memory, pinch_latches) == 0 && offsetof(quil_hand_memory, thumb_references) == 16,
              "quil_hand_memory layout");
static_assert(offsetof(quil_hand_memory, held_readings) == 32 && offsetof(quil_hand_memory, dropout) == 128,
              "quil_hand_memory layout");
static_assert(sizeof(quil_hand_memory) == 136, "quil_hand_memory layout");
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
