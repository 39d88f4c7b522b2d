// The full-bend lock: a finger bent past its hand's lock depth closes both of its flexion slots
// at once to the fully closed -100, or to the end stop of a finger whose linkage stops short of
// it, so that a fist closes completely. Bent alone from open to the far bound, such a finger goes
// over to the lock in one step and stays there; bent with the others in a fist, it locks too.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "quil_linear/hand.h"

namespace {

// Each finger: the reading that bends it and its two flexion slots (distal, proximal).
struct Finger {
    const char* name;
    int reading, distal, proximal;
};
const Finger kFingers[4] = {{"index", 3, 5, 6}, {"middle", 6, 9, 10}, {"ring", 9, 13, 14}, {"little", 11, 17, 18}};

struct Locks {
    const char* hand;
    double at[4];  // the locked value of the index, middle, ring and little finger; 0: it does not lock alone
};

const Locks kLocks[] = {
    {"PaXini_DexH13_GEN2", {-100, -100, -100, -100}},
    {"LINKERBOT_LinkerHand_L20", {-100, -100, -100, -100}},
    {"ROBOTERA_XHAND1", {-100, -100, -100, -100}},
    {"PICO_PXRHand", {-90, -90, -90, -90}},
    {"Proception", {0, -100, -100, -100}},
    {"DexRobot_DexHand021_MP", {-100, -100, 0, -100}},
    {"AgiBot_OmniHand_O10", {0, -100, 0, -100}},
    // The middle finger's linkage stops at -81.
    {"BrainCo_Revo2", {0, -81, 0, -100}},
    {"LINKERBOT_LinkerHand_L10", {0, -81, 0, -100}},
    {"INSPIRE_ROBOTS_RH56F1_E4", {0, -81, 0, -100}},
    {"RUIYAN_RY_H15", {0, -81, 0, -100}},
    {"CHOHO_Hand", {0, -81, 0, -100}},
    {"TetherIA_AeroHandOpen", {0, -81, 0, 0}},
    // Only the little finger, which reaches its stop earlier than the others.
    {"LINKERBOT_LinkerHand_O6", {0, 0, 0, -100}},
    {"LINKERBOT_LinkerHand_O7", {0, 0, 0, -100}},
    {"AgiBot_OmniHand_O12", {0, 0, 0, -100}},
    {"LeadShine_DH116", {0, 0, 0, -100}},
    {"RUIYAN_RY_H2", {0, 0, 0, -100}},
    {"TalentRobot_Pro", {0, 0, 0, -100}},
};

std::vector<double> map_fresh(const char* hand, const double* readings) {
    std::vector<double> out(24);
    quil_hand* h = quil_hand_open(hand);
    quil_hand_map(h, readings, out.data());
    quil_hand_close(h);
    return out;
}

class FullBendLock : public ::testing::TestWithParam<Locks> {};

TEST_P(FullBendLock, LocksInOneStepAndStaysLocked) {
    const Locks& c = GetParam();
    for (int f = 0; f < 4; ++f) {
        if (c.at[f] == 0) continue;
        const Finger& finger = kFingers[f];
        SCOPED_TRACE(finger.name);
        int first_locked = -1;
        std::vector<double> before;  // the last sample before the lock
        for (int k = 0; k <= 1400; ++k) {
            double x[12] = {};
            x[finger.reading] = -20.0 + 0.1 * k;
            const std::vector<double> out = map_fresh(c.hand, x);
            const bool locked = out[finger.distal] == c.at[f] && out[finger.proximal] == c.at[f];
            if (first_locked < 0 && locked) first_locked = k;
            if (first_locked >= 0) {
                ASSERT_TRUE(locked) << "lets go again at x" << finger.reading << " = " << x[finger.reading];
            } else {
                before = out;
            }
        }
        ASSERT_GT(first_locked, 0) << "never locks";
        // The proximal joint jumps: the lock is deeper than it goes by itself.
        EXPECT_GT(before[finger.proximal], c.at[f]);
    }
}

TEST_P(FullBendLock, AFistLocksEveryFingerThatLocksAlone) {
    const Locks& c = GetParam();
    double fist[12] = {};
    for (const Finger& f : kFingers) fist[f.reading] = 120.0;
    const std::vector<double> out = map_fresh(c.hand, fist);
    for (int f = 0; f < 4; ++f) {
        if (c.at[f] == 0) continue;
        EXPECT_EQ(out[kFingers[f].distal], c.at[f]) << kFingers[f].name;
        EXPECT_EQ(out[kFingers[f].proximal], c.at[f]) << kFingers[f].name;
    }
}

INSTANTIATE_TEST_SUITE_P(Hands, FullBendLock, ::testing::ValuesIn(kLocks),
                         [](const ::testing::TestParamInfo<Locks>& info) { return std::string(info.param.hand); });

// Hands without a lock: no finger bent alone ends with both flexion slots at one deep value.
TEST(FullBendLock, HandsWithoutALockNeverCloseBothSlotsTogether) {
    for (std::size_t i = 0; i < quil_hand_count(); ++i) {
        const char* name = quil_hand_at(i)->name;
        bool listed = false;
        for (const Locks& c : kLocks) listed |= std::strcmp(c.hand, name) == 0;
        if (listed) continue;
        for (const Finger& f : kFingers) {
            double x[12] = {};
            x[f.reading] = 120.0;
            const std::vector<double> out = map_fresh(name, x);
            EXPECT_FALSE(out[f.distal] == out[f.proximal] && out[f.proximal] <= -81) << name << " " << f.name;
        }
    }
}

}  // namespace
