// The hands that remember a pinch, through the hand API: a pinch pose closes the latch, the latch
// holds through an open hand and changes what a later pose gives, a release pose opens it again,
// and the latch survives a saved and reloaded state; a reset forgets it. The hands that keep no
// state map every sample as a fresh handle would.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "quil_linear/hand.h"
#include "quil_linear/quil_linear.hpp"
#include "support/glove_sequences.h"

namespace {

using quil::test::Sample;

struct Handle {
    quil_hand* h;
    explicit Handle(const char* name) : h(quil_hand_open(name)) {}
    Handle(const Handle&) = delete;
    ~Handle() { quil_hand_close(h); }
    std::vector<double> map(const Sample& in) {
        std::vector<double> out(24);
        quil_hand_map(h, in.data(), out.data());
        return out;
    }
    quil_hand_memory memory() const {
        quil_hand_memory m;
        std::memset(&m, 0xA5, sizeof m);
        EXPECT_EQ(quil_hand_memory_of(h, &m), QUIL_OK);
        return m;
    }
    std::vector<unsigned char> state() const {
        std::vector<unsigned char> s(quil_hand_state_size());
        s.resize(quil_hand_save_state(h, s.data(), s.size()));
        return s;
    }
};

// Readings all 0 except those named.
Sample pose(std::initializer_list<std::pair<int, double>> set) {
    Sample s{};
    for (const auto& [i, v] : set) s[i] = v;
    return s;
}

const Sample kOpen{};

struct Latch {
    const char* hand;
    int latch;         // 0: thumb to index, 1: thumb to middle
    Sample pinch;      // closes the pinch and latches it
    Sample held;       // a pose that a latched hand maps otherwise than a fresh one
    int slot;          // where that shows
    Sample release;    // a pose that opens the latch (none: all zero, as an open hand keeps it)
    bool thumb;        // also remembers where the thumb was
};

// Thumb readings x0-x2, index x3, middle x6.
const Latch kLatches[] = {
    // A shallow index is held deeper by the strong pull; the middle pinch takes over the latch.
    {"RUIYAN_RY_H15", 0, pose({{0, 90}, {3, 50}}), pose({{0, 90}, {3, 30}}), 6, pose({{0, 80}, {6, 50}}), false},
    // The active thumb alone keeps running the held index pinch, which lets go in the same call.
    {"CHOHO_Hand", 0, pose({{0, 20}, {1, 90}, {3, 60}}), pose({{0, 20}, {1, 90}}), 5, pose({{0, 20}, {1, 90}}), false},
    {"CHOHO_Hand", 1, pose({{0, 50}, {1, 110}, {6, 80}}), pose({{6, 80}}), 10, pose({{0, 20}, {1, 90}}), false},
    {"TetherIA_AeroHandOpen", 0, pose({{0, 50}, {1, 90}, {3, 80}}), pose({{3, 80}}), 5, pose({{3, 80}}), true},
    {"TetherIA_AeroHandOpen", 1, pose({{0, 40}, {1, 110}, {6, 80}}), pose({{6, 80}}), 1, pose({{6, 80}}), true},
    // Latched, the index stays pulled onto the pinch with the thumb short of it; half open, it
    // lets go.
    {"INSPIRE_ROBOTS_RH56F1_E4", 0, pose({{0, 60}, {3, 60}}), pose({{1, 60}, {3, 60}}), 6, pose({{3, 30}}), true},
    // A light pinch reaches its targets only when held; a nearly straight index releases it.
    {"AgiBot_OmniHand_O10", 0, pose({{0, 60}, {3, 60}}), pose({{0, 60}, {3, 44.5}}), 6, pose({{0, 108}, {3, 5}}), false},
    {"AgiBot_OmniHand_O10", 1, pose({{0, 60}, {6, 50}}), pose({{0, 45.4}, {6, 50}}), 2, kOpen, false},
};

class PinchLatch : public ::testing::TestWithParam<Latch> {};

TEST_P(PinchLatch, ClosesHoldsChangesTheHeldPoseAndOpens) {
    const Latch& c = GetParam();
    Handle fresh(c.hand);
    const std::vector<double> unlatched = fresh.map(c.held);
    EXPECT_EQ(fresh.memory().pinch_latches[c.latch], 0) << "the held pose alone latches";

    Handle h(c.hand);
    h.map(c.pinch);
    quil_hand_memory m = h.memory();
    EXPECT_EQ(m.pinch_latches[c.latch], 1);
    EXPECT_EQ(m.pinch_latches[2] + m.pinch_latches[3], 0);
    EXPECT_EQ(m.thumb_references[0] != 0.0 || m.thumb_references[1] != 0.0, c.thumb);
    const std::vector<unsigned char> latched = h.state();

    h.map(kOpen);
    EXPECT_EQ(h.memory().pinch_latches[c.latch], 1) << "an open hand lets go";
    const std::vector<double> held = h.map(c.held);
    EXPECT_NE(held[c.slot], unlatched[c.slot]) << "the latch changes nothing";

    // Reloaded, the latch carries on as if never stopped.
    Handle again(c.hand);
    ASSERT_EQ(quil_hand_load_state(again.h, latched.data(), latched.size()), QUIL_OK);
    EXPECT_EQ(again.memory().pinch_latches[c.latch], 1);
    again.map(kOpen);
    EXPECT_EQ(again.map(c.held), held);

    if (c.release != kOpen) {
        Handle released(c.hand);
        ASSERT_EQ(quil_hand_load_state(released.h, latched.data(), latched.size()), QUIL_OK);
        released.map(c.release);
        EXPECT_EQ(released.memory().pinch_latches[c.latch], 0) << "the release pose keeps the latch";
    }

    quil_hand_reset(h.h);
    m = h.memory();
    EXPECT_EQ(m.pinch_latches[0] + m.pinch_latches[1], 0);
    EXPECT_EQ(m.thumb_references[0], 0.0);
    EXPECT_EQ(m.thumb_references[1], 0.0);
    EXPECT_EQ(h.map(c.held), unlatched) << "a reset is a fresh handle";
}

std::string latch_name(const ::testing::TestParamInfo<Latch>& info) {
    return std::string(info.param.hand) + (info.param.latch == 0 ? "_index" : "_middle");
}

INSTANTIATE_TEST_SUITE_P(Hands, PinchLatch, ::testing::ValuesIn(kLatches), latch_name);

// Every hand that keeps state latches a pinch above; every other hand maps each sample of a
// pinch session as a fresh handle does and remembers nothing but the readings.
TEST(PinchLatch, HandsWithoutMemoryMapEverySampleAfresh) {
    const std::vector<Sample> session = quil::test::pinch_session(3, 1500);
    for (std::size_t i = 0; i < quil_hand_count(); ++i) {
        const quil_hand_info* info = quil_hand_at(i);
        bool latches = false;
        for (const Latch& c : kLatches) latches |= std::strcmp(c.hand, info->name) == 0;
        EXPECT_EQ(info->keeps_state, latches ? 1 : 0) << info->name;
        if (latches) continue;
        Handle running(info->name), fresh(info->name);
        for (const Sample& s : session) {
            quil_hand_reset(fresh.h);
            ASSERT_EQ(running.map(s), fresh.map(s)) << info->name;
        }
        const quil_hand_memory m = running.memory();
        EXPECT_EQ(m.pinch_latches[0] + m.pinch_latches[1] + m.pinch_latches[2] + m.pinch_latches[3], 0) << info->name;
        EXPECT_EQ(m.thumb_references[0], 0.0) << info->name;
        EXPECT_EQ(m.thumb_references[1], 0.0) << info->name;
    }
}

// The C exports keep their memory in the class statics a host can read; they follow the same
// latches and thumb references as a handle over a pinch session.
struct Statics {
    const char* hand;
    Quil_linear::TargetArray (*map)(double, double, double, double, double, double, double, double, double, double, double,
                       double);
    bool* latches;
    double* thumb[2];
};

TEST(PinchLatch, ClassStaticsFollowTheHandlesMemory) {
    namespace Q = Quil_linear;
    const Statics hands[] = {
        {"INSPIRE_ROBOTS_RH56F1_E4", Q::INSPIRE_ROBOTS_RH56F1_E4::GetDataValue, Q::INSPIRE_ROBOTS_RH56F1_E4::fingerPinchDone,
         {&Q::INSPIRE_ROBOTS_RH56F1_E4::thumb1_ref_val, nullptr}},
        {"RUIYAN_RY_H15", Q::RUIYAN_RY_H15::GetDataValue, Q::RUIYAN_RY_H15::fingerPinchDone, {nullptr, nullptr}},
        {"CHOHO_Hand", Q::CHOHO_Hand::GetDataValue, Q::CHOHO_Hand::fingerPinchDone, {nullptr, nullptr}},
        {"TetherIA_AeroHandOpen", Q::TetherIA_AeroHandOpen::GetDataValue, Q::TetherIA_AeroHandOpen::fingerPinchDone,
         {&Q::TetherIA_AeroHandOpen::thumb1_ref_val, &Q::TetherIA_AeroHandOpen::thumb2_ref_val}},
    };
    // The poses of the table first, so that every hand latches, then a long session.
    std::vector<Sample> session;
    for (const Latch& c : kLatches) session.insert(session.end(), {c.pinch, kOpen, c.held, c.release});
    session = quil::test::concat_sessions(session, quil::test::pinch_session(4, 3000));
    for (const Statics& s : hands) {
        std::fill(s.latches, s.latches + 4, false);
        for (double* t : s.thumb)
            if (t) *t = 0.0;
        Handle h(s.hand);
        int closed = 0;
        for (std::size_t k = 0; k < session.size(); ++k) {
            const Sample& x = session[k];
            const Quil_linear::TargetArray a = s.map(x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7], x[8], x[9], x[10], x[11]);
            const std::vector<double> b = h.map(x);
            ASSERT_EQ(std::memcmp(a.data(), b.data(), sizeof(double) * 24), 0) << s.hand << " sample " << k;
            const quil_hand_memory m = h.memory();
            for (int l = 0; l < 4; ++l) ASSERT_EQ(m.pinch_latches[l], s.latches[l] ? 1 : 0) << s.hand << " sample " << k;
            for (int t = 0; t < 2; ++t)
                ASSERT_EQ(m.thumb_references[t], s.thumb[t] ? *s.thumb[t] : 0.0) << s.hand << " sample " << k;
            closed += m.pinch_latches[0] + m.pinch_latches[1];
        }
        EXPECT_GT(closed, 0) << s.hand << ": the session never latched";
    }
}

}  // namespace
