// Fuzz target: arbitrary bytes as a saved hand state. A state that loads must save back to the
// same bytes and drive the hand; one that is refused must leave the handle exactly as it was.
// The same for a handle wired by a profile, whose states carry the safety stage's memory.
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

    // A wired hand: the stage's memory in the state must come back exactly, or not at all.
    quil_hand* wired = quil_hand_open("RUIYAN_RY_H15");
    quil_output outs[2];
    quil_output_init(&outs[0]);
    outs[0].name = "index";
    outs[0].slot = 6;
    outs[0].min = -100;
    outs[0].max = 100;
    outs[0].smoothing.kind = QUIL_SMOOTHING_ONE_EURO;
    outs[0].max_rate = 50;
    outs[1] = outs[0];
    outs[1].name = "thumb";
    outs[1].slot = 1;
    outs[1].reject_above = 5;
    quil_profile profile;
    quil_profile_init(&profile);
    profile.hand = "RUIYAN_RY_H15";
    profile.safe_after = 0.5;
    profile.output_count = 2;
    profile.outputs = outs;
    if (quil_hand_set_profile(wired, &profile, nullptr) != QUIL_OK) std::abort();
    double commands[2];
    quil_hand_map_at(wired, 1.0, pinch, commands);
    std::vector<unsigned char> before(quil_hand_state_size_of(wired)), after(before.size() + size);
    const std::size_t n = quil_hand_save_state(wired, before.data(), before.size());
    const int rc = quil_hand_load_state(wired, data, size);
    const std::size_t m = quil_hand_save_state(wired, after.data(), after.size());
    if (rc == QUIL_OK) {
        // A state saved without a profile loads too, the stage starting afresh; it saves back
        // with the stage's memory.
        if (size != quil_hand_state_size() && (m != size || std::memcmp(after.data(), data, size) != 0)) std::abort();
        quil_hand_map_at(wired, 2.0, pinch, commands);
        if (!(commands[0] >= -100 && commands[0] <= 100 && commands[1] >= -100 && commands[1] <= 100)) std::abort();
    } else if (m != n || std::memcmp(before.data(), after.data(), n) != 0) {
        std::abort();
    }
    quil_hand_close(wired);
    return 0;
}
