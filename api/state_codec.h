// The saved state of a hand handle: the byte record quil_hand_save_state writes and
// quil_hand_load_state reads back (layout, format versions, checksum, and the checks that refuse
// a damaged or forged record). The bytes are the library's own; what a caller may look at is
// quil_hand_memory (hand.h).
#ifndef QUIL_API_STATE_CODEC_H
#define QUIL_API_STATE_CODEC_H

#include <cstddef>

#include "api/hand_internal.h"

namespace quil::state {

// The bytes a state saved without a profile takes.
std::size_t plain_size();

// The bytes the handle's state takes (with its profile's stage, if any); 0 for NULL.
std::size_t size_of(const quil_hand* hand);

// Writes the handle's state to `buffer`; returns its size, or 0 (nothing written) when a pointer
// is NULL or `capacity` is short.
std::size_t save(const quil_hand* hand, void* buffer, std::size_t capacity);

// Loads a saved state into the handle: QUIL_OK, or a QUIL_E_... code with the handle unchanged.
int load(quil_hand* hand, const void* state, std::size_t size);

// The hand a complete, undamaged state belongs to; NULL otherwise.
const HandModel* hand_of(const void* state, std::size_t size);

}  // namespace quil::state

#endif  // QUIL_API_STATE_CODEC_H
