// Handles on threads: several threads, each with its own handle of the same hand that keeps
// state, give what one thread gives for the same sessions. Also run under ThreadSanitizer.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "quil_linear/hand.h"
#include "support/glove_sequences.h"

namespace {

using namespace quil::test;

constexpr int kThreads = 4;

std::vector<double> run(const char* name, const std::vector<Sample>& samples, int dropout) {
    quil_hand* h = quil_hand_open(name);
    quil_hand_set_dropout(h, dropout);
    std::vector<double> t(samples.size() * 24);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i % 500 == 250) {  // a pause and a resume through a saved state, as a host may do
            unsigned char state[QUIL_HAND_STATE_CAPACITY];
            const std::size_t n = quil_hand_save_state(h, state, sizeof state);
            quil_hand_close(h);
            h = quil_hand_open(name);
            quil_hand_load_state(h, state, n);
        }
        if (i % 2) quil_hand_map(h, samples[i].data(), &t[24 * i]);
        else quil_hand_map_n(h, 1, samples[i].data(), &t[24 * i]);
    }
    quil_hand_close(h);
    return t;
}

TEST(HandThreads, EachThreadsHandleAgreesWithASingleThreadedRun) {
    // The threads start together so that the first calls into the catalogue race too.
    std::atomic<int> ready{0};
    std::vector<std::vector<Sample>> sessions;
    for (int t = 0; t < kThreads; ++t)
        sessions.push_back(concat_sessions(pinch_session(100 + t, 3000), random_samples(200 + t, 1000)));

    const char* const names[] = {"INSPIRE_ROBOTS_RH56F1_E4", "AgiBot_OmniHand_O10", "RUIYAN_RY_H15", "CHOHO_Hand",
                                 "TetherIA_AeroHandOpen"};
    std::vector<std::vector<double>> got(kThreads * 5);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            ++ready;
            while (ready < kThreads) {
            }
            for (int h = 0; h < 5; ++h) got[t * 5 + h] = run(names[h], sessions[t], t % 2);
        });
    for (auto& th : threads) th.join();

    for (int h = 0; h < 5; ++h) {
        ASSERT_TRUE(quil_hand_find(names[h])->keeps_state) << names[h];
        for (int t = 0; t < kThreads; ++t) {
            const std::vector<double> expected = run(names[h], sessions[t], t % 2);
            EXPECT_EQ(0, std::memcmp(expected.data(), got[t * 5 + h].data(), expected.size() * sizeof(double)))
                << names[h] << " on thread " << t;
        }
    }
}

}  // namespace
