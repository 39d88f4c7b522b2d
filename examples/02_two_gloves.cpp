// 02: two gloves, left and right, each driving its own hand of the same model on its own
// thread. Each quil_linear::Hand keeps its own memory (here: the pinch latches of RUIYAN_RY_H15),
// so the two never disturb each other, and a dropped glove channel is held, not read as a fist.
//   ./02_two_gloves
// The same in Python: 02_two_gloves.py.
#include <cmath>
#include <cstdio>
#include <limits>
#include <thread>
#include <vector>

#include <quil_linear/hand.hpp>

namespace {

constexpr int kSamples = 1000;  // 10 s at 100 Hz

// One glove's session: the thumb meets the index (left) or the middle finger (right) and lets
// go, every two seconds; the left glove's index channel drops out for a moment.
std::vector<quil_linear::Readings> glove_session(bool left) {
    std::vector<quil_linear::Readings> session(kSamples);
    for (int k = 0; k < kSamples; ++k) {
        const double closing = 0.5 - 0.5 * std::cos(k * 3.14159265358979 / 100.0);
        quil_linear::Readings& x = session[k];
        x = {60 * closing, 40 * closing, 10 * closing, 5, 0, 0, 5, 0, 0, 5, 0, 5};
        (left ? x[3] : x[6]) = 62 * closing;
        if (left && k >= 300 && k < 310) x[3] = std::numeric_limits<double>::quiet_NaN();
    }
    return session;
}

struct Glove {
    const char* side;
    std::vector<quil_linear::Readings> session;
    std::vector<quil_linear::Targets> targets;
};

void drive(Glove& glove) {
    // In a real host this loop runs at the glove's rate and sends each result to the robot.
    quil_linear::Hand hand("RUIYAN_RY_H15", quil_linear::Dropout::hold);
    for (const quil_linear::Readings& readings : glove.session) glove.targets.push_back(hand.map(readings));
}

}  // namespace

int main() {
    Glove left{"left", glove_session(true), {}}, right{"right", glove_session(false), {}};
    std::thread left_thread(drive, std::ref(left)), right_thread(drive, std::ref(right));
    left_thread.join();
    right_thread.join();

    const auto roles = quil_linear::hands()[quil_hand_find("RUIYAN_RY_H15") - quil_hand_at(0)].slot_roles;
    for (const Glove* g : {&left, &right}) {
        std::printf("%s glove, %zu samples; at the deepest pinch (sample 100):\n", g->side, g->targets.size());
        for (int slot : {1, 2, 6, 10})
            std::printf("  %2d %-20.*s %8.2f\n", slot, static_cast<int>(roles[slot].size()), roles[slot].data(),
                        g->targets[100][slot]);
    }
    // During the dropout the held index reading keeps the left hand in its pinch; passed on as
    // it is, the NaN would act as a fully bent index.
    quil_linear::Hand passing("RUIYAN_RY_H15", quil_linear::Dropout::pass);
    const auto passed = passing.map(left.session);
    std::printf("left index at sample 305, channel dropped: held %.2f, passed %.2f\n", left.targets[305][6],
                passed[305][6]);
    return 0;
}
