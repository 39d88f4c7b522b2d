// The hand API against the C exports: for every hand, over long random and pinch sessions, a
// handle gives bit for bit what the export of a freshly loaded library gives, whether it maps
// one sample at a time or in batches, after a reset, across a saved and reloaded state, and
// next to another handle of the same hand; and using handles leaves the exports' memory alone.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "quil_linear/hand.h"
#include "quil_linear/quil_linear.hpp"
#include "support/fresh_export.h"
#include "support/glove_sequences.h"

namespace {

using namespace quil::test;

// Equal to the bit; on a difference, names the first differing sample and slot.
::testing::AssertionResult same_targets(const std::vector<double>& expected, const std::vector<double>& actual) {
    if (expected.size() != actual.size())
        return ::testing::AssertionFailure() << "sizes differ: " << expected.size() << " vs " << actual.size();
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (std::memcmp(&expected[i], &actual[i], sizeof(double)) != 0)
            return ::testing::AssertionFailure() << "first difference at sample " << i / 24 << ", slot " << i % 24
                                                 << ": expected " << expected[i] << ", got " << actual[i];
    return ::testing::AssertionSuccess();
}

std::vector<double> map_one_by_one(quil_hand* h, const std::vector<Sample>& samples) {
    std::vector<double> t(samples.size() * 24);
    for (std::size_t i = 0; i < samples.size(); ++i) quil_hand_map(h, samples[i].data(), &t[24 * i]);
    return t;
}

std::vector<double> map_batched(quil_hand* h, const std::vector<Sample>& samples) {
    // Uneven batches, a batch of one and an empty batch among them.
    std::vector<double> t(samples.size() * 24);
    std::size_t at = 0;
    for (std::size_t batch : {std::size_t{1}, std::size_t{0}, std::size_t{7}, std::size_t{1000}, samples.size()}) {
        const std::size_t n = std::min(batch, samples.size() - at);
        quil_hand_map_n(h, n, reinterpret_cast<const double*>(samples.data()) + 12 * at, t.data() + 24 * at);
        at += n;
    }
    return t;
}

struct Handle {
    quil_hand* h;
    explicit Handle(const char* name) : h(quil_hand_open(name)) {}
    ~Handle() { quil_hand_close(h); }
    std::vector<unsigned char> state() const {
        std::vector<unsigned char> s(quil_hand_state_size());
        s.resize(quil_hand_save_state(h, s.data(), s.size()));
        return s;
    }
    quil_hand_memory memory() const {
        quil_hand_memory m;
        std::memset(&m, 0xA5, sizeof m);  // every field must be written
        EXPECT_EQ(quil_hand_memory_of(h, &m), QUIL_OK);
        return m;
    }
};

// Field by field, doubles to the bit.
::testing::AssertionResult same_memory(const quil_hand_memory& a, const quil_hand_memory& b) {
    if (std::memcmp(a.pinch_latches, b.pinch_latches, sizeof a.pinch_latches) != 0 ||
        std::memcmp(a.thumb_references, b.thumb_references, sizeof a.thumb_references) != 0 ||
        std::memcmp(a.held_readings, b.held_readings, sizeof a.held_readings) != 0 || a.dropout != b.dropout)
        return ::testing::AssertionFailure() << "memories differ";
    return ::testing::AssertionSuccess();
}

class EveryHand : public ::testing::TestWithParam<std::size_t> {
  protected:
    const Export& hand() const { return exports()[GetParam()]; }
    std::vector<Sample> session(std::uint64_t seed) const {
        return concat_sessions(random_samples(seed * 31 + GetParam(), 4000), pinch_session(seed * 17 + GetParam(), 20000));
    }
};

TEST_P(EveryHand, HandleGivesTheFreshExportsTargetsOneByOneInBatchesAndAfterReset) {
    ASSERT_STREQ(quil_hand_at(GetParam())->name, hand().name);
    const std::vector<Sample> samples = session(1);
    const std::vector<double> expected = fresh_export(hand(), samples);

    Handle one(hand().name), batched(hand().name);
    EXPECT_TRUE(same_targets(expected, map_one_by_one(one.h, samples)));
    EXPECT_TRUE(same_targets(expected, map_batched(batched.h, samples)));
    EXPECT_EQ(one.state(), batched.state());  // the same memory, last finite readings included
    EXPECT_TRUE(same_memory(one.memory(), batched.memory()));
    quil_hand_reset(one.h);
    EXPECT_TRUE(same_memory(one.memory(), Handle(hand().name).memory())) << "a reset is a fresh handle";
    EXPECT_TRUE(same_targets(expected, map_batched(one.h, samples)));
}

TEST_P(EveryHand, SavedStateResumesExactlyAtAnySample) {
    const std::vector<Sample> samples = session(2);
    for (int policy : {QUIL_DROPOUT_PASS, QUIL_DROPOUT_HOLD}) {
        Handle whole(hand().name);
        quil_hand_set_dropout(whole.h, policy);
        const std::vector<double> expected = map_one_by_one(whole.h, samples);

        Handle first(hand().name);
        quil_hand_set_dropout(first.h, policy);
        std::size_t done = 0;
        for (std::size_t stop : {std::size_t{0}, std::size_t{1}, std::size_t{17}, std::size_t{4001}, std::size_t{9999},
                                 samples.size() / 2, samples.size() - 1, samples.size()}) {
            const std::vector<Sample> before(samples.begin() + done, samples.begin() + stop);
            map_one_by_one(first.h, before);
            done = stop;
            Handle resumed(hand().name);  // dropout PASS until the state says otherwise
            ASSERT_EQ(quil_hand_load_state(resumed.h, first.state().data(), first.state().size()), QUIL_OK);
            EXPECT_TRUE(same_memory(first.memory(), resumed.memory())) << "policy " << policy << ", saved after " << stop;
            EXPECT_EQ(resumed.memory().dropout, policy);
            const std::vector<Sample> rest(samples.begin() + stop, samples.end());
            const std::vector<double> tail(expected.begin() + 24 * stop, expected.end());
            EXPECT_TRUE(same_targets(tail, map_batched(resumed.h, rest))) << "policy " << policy << ", saved after " << stop;
        }
    }
}

TEST_P(EveryHand, TwoHandlesOfOneHandFedInterleavedGiveTwoSeparateRuns) {
    const std::vector<Sample> left = session(3), right = session(4);
    const std::vector<double> expected_left = fresh_export(hand(), left);
    const std::vector<double> expected_right = fresh_export(hand(), right);
    Handle a(hand().name), b(hand().name);
    std::vector<double> got_left(left.size() * 24), got_right(right.size() * 24);
    for (std::size_t i = 0; i < left.size(); ++i) {
        quil_hand_map(a.h, left[i].data(), &got_left[24 * i]);
        quil_hand_map(b.h, right[i].data(), &got_right[24 * i]);
    }
    EXPECT_TRUE(same_targets(expected_left, got_left));
    EXPECT_TRUE(same_targets(expected_right, got_right));
}

// Every static a host can see, as bytes.
std::vector<unsigned char> class_statics() {
    std::vector<unsigned char> bytes;
    auto add = [&bytes](const void* p, std::size_t n) {
        bytes.insert(bytes.end(), static_cast<const unsigned char*>(p), static_cast<const unsigned char*>(p) + n);
    };
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) \
    add(Quil_linear::hand::weight, sizeof(Quil_linear::hand::weight)); \
    add(Quil_linear::hand::w0, sizeof(Quil_linear::hand::w0));
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
    add(Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::fingerPinchDone, 4);
    add(&Quil_linear::INSPIRE_ROBOTS_RH56F1_E4::thumb1_ref_val, 8);
    add(Quil_linear::RUIYAN_RY_H15::fingerPinchDone, 4);
    add(Quil_linear::CHOHO_Hand::fingerPinchDone, 4);
    add(Quil_linear::TetherIA_AeroHandOpen::fingerPinchDone, 4);
    add(&Quil_linear::TetherIA_AeroHandOpen::thumb1_ref_val, 8);
    add(&Quil_linear::TetherIA_AeroHandOpen::thumb2_ref_val, 8);
    return bytes;
}

TEST_P(EveryHand, HandlesLeaveTheExportsMemoryAlone) {
    const std::vector<Sample> samples = session(5);
    const std::vector<double> expected = fresh_export(hand(), samples);
    // In a fresh process, handles first, then the export: the export must not notice. This
    // reaches memory a host cannot see too, such as the O10's latches inside its export.
    const std::vector<double> after_handles = in_fresh_process([&] {
        const std::vector<unsigned char> statics = class_statics();
        Handle h(hand().name);
        map_batched(h.h, samples);
        if (class_statics() != statics) return std::vector<double>{};
        return run_export(hand(), samples);
    });
    EXPECT_TRUE(same_targets(expected, after_handles));
}

std::string hand_name(const ::testing::TestParamInfo<std::size_t>& info) { return exports()[info.param].name; }

INSTANTIATE_TEST_SUITE_P(HandApi, EveryHand, ::testing::Range(std::size_t{0}, exports().size()), hand_name);

// ---- Dropouts

TEST(HandApiDropout, HoldReplacesEachNonFiniteReadingByItsChannelsLastFiniteOne) {
    for (std::size_t h = 0; h < quil_hand_count(); ++h) {
        const char* name = quil_hand_at(h)->name;
        const std::vector<Sample> samples = random_samples(h, 3000);  // one in eight with a NaN, inf, ...
        std::vector<Sample> held = samples;
        Sample last{};  // 0.0 before the first finite reading
        for (Sample& s : held)
            for (int i = 0; i < 12; ++i) {
                if (std::isfinite(s[i])) last[i] = s[i];
                else s[i] = last[i];
            }
        Handle hold(name), pass(name);
        ASSERT_EQ(quil_hand_set_dropout(hold.h, QUIL_DROPOUT_HOLD), QUIL_OK);
        EXPECT_EQ(quil_hand_dropout(hold.h), QUIL_DROPOUT_HOLD);
        EXPECT_TRUE(same_targets(map_one_by_one(pass.h, held), map_batched(hold.h, samples))) << name;
        const quil_hand_memory m = hold.memory();
        EXPECT_EQ(std::memcmp(m.held_readings, last.data(), sizeof m.held_readings), 0) << name;
        EXPECT_EQ(m.dropout, QUIL_DROPOUT_HOLD);
    }
}

TEST(HandApiDropout, SwitchingToHoldMidSessionHoldsWhatPassSaw) {
    Handle switched("RUIYAN_RY_H15"), reference("RUIYAN_RY_H15");
    const double nan = std::nan("");
    const Sample seen = {40, 30, 20, 50, 5, 0, 10, 0, 0, 10, 0, 10};
    Sample dropped = seen;
    dropped[3] = nan;
    double a[24], b[24];
    quil_hand_map(switched.h, seen.data(), a);   // under PASS, the readings are still noted
    quil_hand_map(reference.h, seen.data(), b);
    quil_hand_set_dropout(switched.h, QUIL_DROPOUT_HOLD);
    quil_hand_map(switched.h, dropped.data(), a);
    quil_hand_map(reference.h, seen.data(), b);
    EXPECT_EQ(std::memcmp(a, b, sizeof a), 0);
    EXPECT_EQ(quil_hand_set_dropout(switched.h, 2), QUIL_E_DROPOUT_POLICY);
    EXPECT_EQ(quil_hand_set_dropout(switched.h, -1), QUIL_E_DROPOUT_POLICY);
    EXPECT_EQ(quil_hand_dropout(switched.h), QUIL_DROPOUT_HOLD);
    quil_hand_reset(switched.h);  // the policy outlives a reset
    EXPECT_EQ(quil_hand_dropout(switched.h), QUIL_DROPOUT_HOLD);
}

// ---- Saved states that do not fit

TEST(HandApiState, WrongTruncatedOrDamagedStatesAreRefusedAndLeaveTheHandleAlone) {
    Handle h15("RUIYAN_RY_H15"), choho("CHOHO_Hand");
    quil_hand_set_dropout(h15.h, QUIL_DROPOUT_HOLD);
    map_one_by_one(h15.h, pinch_session(9, 3000));
    map_one_by_one(choho.h, pinch_session(9, 3000));
    const std::vector<unsigned char> good = h15.state(), choho_before = choho.state();
    ASSERT_EQ(good.size(), quil_hand_state_size());
    ASSERT_LE(good.size(), std::size_t{QUIL_HAND_STATE_CAPACITY});

    auto refused = [&](const std::vector<unsigned char>& bytes, int code, const char* what) {
        Handle target("RUIYAN_RY_H15");
        map_one_by_one(target.h, pinch_session(10, 500));
        const std::vector<unsigned char> before = target.state();
        EXPECT_EQ(quil_hand_load_state(target.h, bytes.data(), bytes.size()), code) << what;
        EXPECT_EQ(target.state(), before) << what;
    };
    EXPECT_EQ(quil_hand_load_state(choho.h, good.data(), good.size()), QUIL_E_STATE_OTHER_HAND);
    EXPECT_EQ(choho.state(), choho_before);
    EXPECT_STREQ(quil_state_hand(good.data(), good.size())->name, "RUIYAN_RY_H15");

    for (std::size_t n = 0; n < good.size(); ++n)
        refused(std::vector<unsigned char>(good.begin(), good.begin() + n), QUIL_E_STATE_TRUNCATED, "truncated");
    std::vector<unsigned char> longer = good;
    longer.push_back(0);
    refused(longer, QUIL_E_STATE_DAMAGED, "a byte too many");
    for (std::size_t i = 0; i < good.size(); ++i)
        for (unsigned char bit : {0x01, 0x80}) {
            std::vector<unsigned char> bad = good;
            bad[i] ^= bit;
            const int expected = i < 4 ? QUIL_E_STATE_NOT_A_STATE : i < 6 ? QUIL_E_STATE_VERSION : QUIL_E_STATE_DAMAGED;
            refused(bad, expected, ("bit flipped in byte " + std::to_string(i)).c_str());
            EXPECT_EQ(quil_state_hand(bad.data(), bad.size()), nullptr);
        }
    refused(std::vector<unsigned char>(good.size(), 0), QUIL_E_STATE_NOT_A_STATE, "zeros");

    unsigned char small[8];
    EXPECT_EQ(quil_hand_save_state(h15.h, small, sizeof small), 0u);
}

// ---- Calls a careless host makes

TEST(HandApiBadCalls, GetDefinedAnswers) {
    EXPECT_EQ(quil_hand_open("NoSuchHand"), nullptr);
    EXPECT_EQ(quil_hand_open(nullptr), nullptr);
    EXPECT_EQ(quil_hand_find(nullptr), nullptr);
    EXPECT_EQ(quil_hand_at(quil_hand_count()), nullptr);
    EXPECT_STREQ(quil_hand_find("robotera_xhand1")->name, "ROBOTERA_XHAND1");

    quil_hand_close(nullptr);
    quil_hand_reset(nullptr);
    EXPECT_EQ(quil_hand_about(nullptr), nullptr);
    EXPECT_EQ(quil_hand_dropout(nullptr), QUIL_E_NULL);
    EXPECT_EQ(quil_hand_set_dropout(nullptr, QUIL_DROPOUT_HOLD), QUIL_E_NULL);
    EXPECT_EQ(quil_hand_load_state(nullptr, "x", 1), QUIL_E_NULL);
    unsigned char state[QUIL_HAND_STATE_CAPACITY];
    EXPECT_EQ(quil_hand_save_state(nullptr, state, sizeof state), 0u);
    EXPECT_EQ(quil_state_hand(nullptr, 10), nullptr);

    Handle h("QUIL_linear_AA");
    EXPECT_EQ(quil_hand_load_state(h.h, nullptr, 10), QUIL_E_NULL);
    EXPECT_EQ(quil_hand_save_state(h.h, nullptr, sizeof state), 0u);
    const double readings[12] = {};
    double targets[24];
    std::fill(targets, targets + 24, 7.0);
    quil_hand_map(nullptr, readings, targets);
    quil_hand_map(h.h, nullptr, targets);
    quil_hand_map_n(h.h, 0, readings, targets);
    quil_hand_map_n(h.h, 3, nullptr, targets);
    quil_hand_map_n(nullptr, 1, readings, targets);
    for (double t : targets) EXPECT_EQ(t, 7.0);  // nothing written
    quil_hand_map(h.h, nullptr, nullptr);
    quil_hand_map_n(h.h, 1, readings, nullptr);

    for (int code = QUIL_OK; code >= QUIL_E_STATE_PROFILE; --code)
        EXPECT_STRNE(quil_error_text(code), quil_error_text(-1000)) << code;
    EXPECT_STREQ(quil_error_text(-1000), "unknown error code");
}

TEST(HandApiCatalogue, SuggestsTheClosestHandsForAMistypedName) {
    struct Case {
        const char* typed;
        const char* first;
    } cases[] = {{"xhand1", "ROBOTERA_XHAND1"}, {"xhand", "ROBOTERA_XHAND1"}, {"RUIYAN_RY_H51", "RUIYAN_RY_H15"}, {"choho", "CHOHO_Hand"},
                 {"LinkerHand_O7", "LINKERBOT_LinkerHand_O7"},
                 // A wrong letter costs one edit, as a missing or extra one does: Revo2, not Revo1.
                 {"BrainCo_Rev12", "BrainCo_Revo2"}};
    for (const Case& c : cases) {
        const quil_hand_info* best[3] = {};
        ASSERT_EQ(quil_hand_suggest(c.typed, best, 3), 3u) << c.typed;
        EXPECT_STREQ(best[0]->name, c.first) << c.typed;
    }
    // A very long guess is answered, and alike however much longer it grows.
    const std::string long_guess = "ROBOTERA_XHAND1" + std::string(5000, 'x');
    const quil_hand_info *from_long[3] = {}, *from_longer[3] = {};
    ASSERT_EQ(quil_hand_suggest(long_guess.substr(0, 100).c_str(), from_long, 3), 3u);
    ASSERT_EQ(quil_hand_suggest(long_guess.c_str(), from_longer, 3), 3u);
    EXPECT_TRUE(std::equal(from_long, from_long + 3, from_longer));
    const quil_hand_info* none[1];
    EXPECT_EQ(quil_hand_suggest(nullptr, none, 1), 0u);
    EXPECT_EQ(quil_hand_suggest("x", nullptr, 1), 0u);
    EXPECT_EQ(quil_hand_suggest("x", none, 0), 0u);
}

TEST(HandApiVersion, HeaderLibraryAndBuildAgree) {
    EXPECT_STREQ(quil_linear_version(), QUIL_LINEAR_VERSION_STRING);
    EXPECT_STREQ(quil_linear_version(), QUIL_LINEAR_PROJECT_VERSION);
    EXPECT_EQ(quil_linear_version_number(), unsigned{QUIL_LINEAR_VERSION_NUMBER});
    EXPECT_EQ(std::to_string(quil_linear_version_number() / 10000) + "." + std::to_string(quil_linear_version_number() / 100 % 100) +
                  "." + std::to_string(quil_linear_version_number() % 100),
              quil_linear_version());
}

// The values hosts compiled against earlier headers hold.
TEST(HandApiCodes, KeepTheirValuesAndDropoutNamesRoundTrip) {
    const std::pair<int, int> codes[] = {
        {QUIL_OK, 0}, {QUIL_E_NULL, -1}, {QUIL_E_DROPOUT_POLICY, -2}, {QUIL_E_STATE_TRUNCATED, -3},
        {QUIL_E_STATE_NOT_A_STATE, -4}, {QUIL_E_STATE_VERSION, -5}, {QUIL_E_STATE_OTHER_HAND, -6},
        {QUIL_E_STATE_DAMAGED, -7}, {QUIL_E_PROFILE, -8}, {QUIL_E_PROFILE_HAND, -9}, {QUIL_E_NO_PROFILE, -10},
        {QUIL_E_STATE_PROFILE, -11}, {QUIL_DROPOUT_PASS, 0}, {QUIL_DROPOUT_HOLD, 1}};
    for (const auto& [code, value] : codes) EXPECT_EQ(code, value);
    static_assert(sizeof(quil_dropout) == sizeof(int) && sizeof(quil_status) == sizeof(int), "enums are ints");

    const struct {
        int policy;
        const char* name;
    } names[] = {{QUIL_DROPOUT_PASS, "pass"}, {QUIL_DROPOUT_HOLD, "hold"}, {2, nullptr}, {-1, nullptr}};
    for (const auto& n : names) {
        if (!n.name) {
            EXPECT_EQ(quil_dropout_name(n.policy), nullptr) << n.policy;
            continue;
        }
        EXPECT_STREQ(quil_dropout_name(n.policy), n.name);
        EXPECT_EQ(quil_dropout_from_name(n.name), n.policy);
    }
    for (const char* wrong : {"HOLD", "", "hold ", "drop"}) EXPECT_EQ(quil_dropout_from_name(wrong), QUIL_E_DROPOUT_POLICY) << wrong;
    EXPECT_EQ(quil_dropout_from_name(nullptr), QUIL_E_NULL);

    quil_hand_memory m;
    EXPECT_EQ(quil_hand_memory_of(nullptr, &m), QUIL_E_NULL);
    Handle h("CHOHO_Hand");
    EXPECT_EQ(quil_hand_memory_of(h.h, nullptr), QUIL_E_NULL);
}

}  // namespace
