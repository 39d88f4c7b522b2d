// Fuzz target: the bytes are a script of hand API calls carrying arbitrary doubles and ints.
// Two handles of the same hand follow the same script, one through quil_hand_map and one
// through quil_hand_map_n (and the C++ wrapper's batches); they must agree to the bit, and
// nothing may crash, leak or read out of bounds.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "quil_linear/hand.hpp"

namespace {

struct Script {
    const std::uint8_t* p;
    std::size_t left;
    template <class T>
    T take() {
        T v{};
        const std::size_t n = left < sizeof v ? left : sizeof v;
        std::memcpy(&v, p, n);
        p += n;
        left -= n;
        return v;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script s{data, size};
    const std::size_t h = s.take<std::uint8_t>() % quil_hand_count();
    quil_hand* one = quil_hand_open(quil_hand_at(h)->name);
    quil_linear::Hand batch(quil_hand_at(h)->name);
    while (s.left > 0) {
        switch (s.take<std::uint8_t>() % 6) {
            case 0: {  // a batch of up to 8 samples of arbitrary doubles
                const std::size_t n = s.take<std::uint8_t>() % 9;
                std::vector<double> readings(12 * n), a(24 * n), b(24 * n);
                for (double& x : readings) x = s.take<double>();
                for (std::size_t i = 0; i < n; ++i) quil_hand_map(one, &readings[12 * i], &a[24 * i]);
                batch.map(n, readings.data(), b.data());
                if (n > 0 && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) != 0) std::abort();
                break;
            }
            case 1: {
                const int policy = s.take<std::int32_t>();
                const int rc = quil_hand_set_dropout(one, policy);
                if ((rc == QUIL_OK) != (policy == QUIL_DROPOUT_PASS || policy == QUIL_DROPOUT_HOLD)) std::abort();
                if (rc == QUIL_OK) batch.set_dropout(static_cast<quil_linear::Dropout>(policy));
                break;
            }
            case 2:
                quil_hand_reset(one);
                batch.reset();
                break;
            case 3: {  // save one handle, load it into the other: they stay in step
                unsigned char state[QUIL_HAND_STATE_CAPACITY];
                const std::size_t n = quil_hand_save_state(one, state, sizeof state);
                batch.restore(state, n);
                break;
            }
            case 4: {  // a state with some bytes changed is refused or taken by both alike
                std::vector<std::uint8_t> state = batch.state();
                const std::size_t at = s.take<std::uint8_t>() % (state.size() + 1);
                if (at < state.size()) state[at] ^= s.take<std::uint8_t>();
                const int rc = quil_hand_load_state(one, state.data(), state.size());
                try {
                    batch.restore(state);
                    if (rc != QUIL_OK) std::abort();
                } catch (const quil_linear::Error& e) {
                    if (e.code() != rc) std::abort();
                }
                break;
            }
            case 5: {  // a catalogue lookup by an arbitrary name
                char name[16] = {};
                for (std::size_t i = 0; i + 1 < sizeof name; ++i) name[i] = static_cast<char>(s.take<std::uint8_t>());
                const quil_hand_info* best[3];
                if (quil_hand_suggest(name, best, 3) != 3) std::abort();
                const quil_hand_info* found = quil_hand_find(name);
                if (found) {
                    quil_hand* opened = quil_hand_open(name);
                    if (!opened) std::abort();
                    quil_hand_close(opened);
                }
                break;
            }
        }
    }
    quil_hand_close(one);
    return 0;
}
