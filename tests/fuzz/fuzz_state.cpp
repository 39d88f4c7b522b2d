// Fuzz target: arbitrary bytes as a saved hand state. A state that loads must save back to the
// same bytes and drive the hand; one that is refused must leave the handle exactly as it was.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "quil_linear/hand.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const double pinch[12] = {45, 30, 20, 55, 5, 0, 10, 0, 0, 10, 0, 10};
    for (std::size_t h = 0; h < quil_hand_count(); ++h) {
        quil_hand* hand = quil_hand_open(quil_hand_at(h)->name);
        double targets[24];
        quil_hand_map(hand, pinch, targets);
        unsigned char before[QUIL_HAND_STATE_CAPACITY], after[QUIL_HAND_STATE_CAPACITY];
        const std::size_t n = quil_hand_save_state(hand, before, sizeof before);

        const int rc = quil_hand_load_state(hand, data, size);
        const quil_hand_info* owner = quil_state_hand(data, size);
        const std::size_t m = quil_hand_save_state(hand, after, sizeof after);
        if (rc == QUIL_OK) {
            if (m != size || std::memcmp(after, data, size) != 0 || owner != quil_hand_at(h)) std::abort();
            quil_hand_map(hand, pinch, targets);
        } else {
            if (m != n || std::memcmp(before, after, n) != 0) std::abort();
            if (rc == QUIL_E_STATE_OTHER_HAND && (owner == nullptr || owner == quil_hand_at(h))) std::abort();
            if (quil_error_text(rc) == nullptr) std::abort();
        }
        quil_hand_close(hand);
    }
    return 0;
}
