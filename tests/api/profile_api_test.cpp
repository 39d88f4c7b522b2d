// Wiring profiles through the C API: every option of the safety stage against a computation of
// its own written here from the formulas, samples with dropouts, glitches and a stall; profiles
// refused for each kind of fault; states saved mid-filter; and no profile giving today's targets.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "quil_linear/hand.h"
#include "quil_linear/hand.hpp"
#include "support/glove_sequences.h"

namespace {

using namespace quil::test;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr const char* kHand = "RUIYAN_RY_H15";

bool same_bits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// ---- The stage as the formulas state it, one output at a time.
struct LowPass {  // the one-euro filter's building block, as its authors structure it
    bool seen = false;
    double raw = 0, out = 0;
    double filter(double x, double alpha) {
        out = seen ? alpha * x + (1 - alpha) * out : x;
        raw = x;
        seen = true;
        return out;
    }
};

struct Reference {
    quil_output o;
    double hold_after, safe_after;
    double safe, last;
    LowPass x_filter, dx_filter;
    double t_fed = 0;
    bool any = false, has_prev = false;
    double t0 = 0, prev_filtered = 0;

    Reference(const quil_output& out, double hold, double to_safe) : o(out), hold_after(hold), safe_after(to_safe) {
        safe = std::isnan(o.safe) ? std::fmin(std::fmax(o.offset, o.min), o.max) : o.safe;
        last = safe;
    }
    static double alpha(double fc, double te) { return 1.0 / (1.0 + (1.0 / (2 * M_PI * fc)) / te); }

    double stall_value(double t) const {
        if (!any || !std::isfinite(safe_after) || !(t >= t0 + safe_after)) return last;
        if (!std::isfinite(o.max_rate)) return safe;
        const double d = o.max_rate * (t - t0 - safe_after);
        if (d <= 0) return last;
        return last < safe ? std::fmin(last + d, safe) : std::fmax(last - d, safe);
    }

    double sample(double t, const double* targets) {
        if (!std::isfinite(t) || (any && t <= t0)) return last;
        const double c = stall_value(t);
        const double dt = any ? t - t0 : 0.0;
        any = true;
        t0 = t;
        const double x = o.scale * targets[o.slot] + o.offset;
        if (!std::isfinite(x)) return last = c;
        double y = x;
        if (o.smoothing.kind == QUIL_SMOOTHING_EMA) {
            y = has_prev ? o.smoothing.alpha * x + (1 - o.smoothing.alpha) * prev_filtered : x;
        } else if (o.smoothing.kind == QUIL_SMOOTHING_ONE_EURO) {
            const bool first = !x_filter.seen;
            const double freq = first ? 0 : 1.0 / (t - t_fed);
            const double te = first ? 0 : 1.0 / freq;
            const double dx = first ? 0.0 : (x - x_filter.raw) * freq;
            const double edx = first ? dx_filter.filter(dx, 0) : dx_filter.filter(dx, alpha(o.smoothing.d_cutoff, te));
            const double fc = o.smoothing.min_cutoff + o.smoothing.beta * std::fabs(edx);
            y = first ? x_filter.filter(x, 0) : x_filter.filter(x, alpha(fc, te));
            t_fed = t;
        }
        const bool jump = has_prev && std::isfinite(o.reject_above) && std::fabs(y - prev_filtered) > o.reject_above;
        prev_filtered = y;
        has_prev = true;
        if (jump) return last = c;
        if (std::isfinite(o.max_rate)) y = std::fmin(std::fmax(y, c - o.max_rate * dt), c + o.max_rate * dt);
        return last = std::fmin(std::fmax(y, o.min), o.max);
    }
};

quil_output output(const char* name, int slot, double scale, double offset, double min, double max) {
    quil_output o;
    quil_output_init(&o);
    o.name = name;
    o.slot = slot;
    o.scale = scale;
    o.offset = offset;
    o.min = min;
    o.max = max;
    return o;
}

// A session at about 1 kHz with jitter in its clock, dropouts, one-sample glitches and a gap.
struct Session {
    std::vector<double> times, readings;
};

Session session(std::uint64_t seed, std::size_t n) {
    Rng rng(seed);
    Session s;
    double t = 100.0;
    for (std::size_t i = 0; i < n; ++i) {
        t += i == n / 2 ? 0.75 : 0.001 + rng.between(-0.0002, 0.0002);
        // A sample without a usable time, and one stamped again with the previous time.
        s.times.push_back(i == n / 3 ? kNaN : i == n / 4 ? s.times.back() : t);
        for (int c = 0; c < 12; ++c) {
            double x = 45 + 40 * std::sin(0.003 * static_cast<double>(i) * (c + 1)) + rng.between(-2, 2);
            if (i % 97 == 13) x += 60;                    // a glitch
            if (i % 211 == 50 && c % 3 == 0) x = kNaN;    // a dropout
            s.readings.push_back(x);
        }
    }
    return s;
}

struct Case {
    const char* what;
    quil_output out;
    double hold_after, safe_after;
};

std::vector<Case> cases() {
    std::vector<Case> all;
    auto add = [&all](const char* what, quil_output o, double hold = kInf, double to_safe = kInf) {
        all.push_back({what, o, hold, to_safe});
    };
    add("scale and offset, clip", output("a", 6, 0.0174533, -0.1, -0.05, 0.9));
    add("negative scale", output("a", 3, -2.5, 1000, 0, 1000));
    quil_output ema = output("a", 6, 1.0, 0.0, -500, 500);
    ema.smoothing.kind = QUIL_SMOOTHING_EMA;
    ema.smoothing.alpha = 0.2;
    add("ema", ema);
    quil_output euro = output("a", 10, 0.01, 0.0, -5, 5);
    euro.smoothing = quil_smoothing{QUIL_SMOOTHING_ONE_EURO, 0, 1.0, 0.05, 1.0};
    add("one euro", euro);
    quil_output fast = euro;
    fast.smoothing = quil_smoothing{QUIL_SMOOTHING_ONE_EURO, 0, 3.0, 2.0, 0.5};
    add("one euro, high beta", fast);
    quil_output jump = output("a", 6, 1.0, 0.0, -500, 500);
    jump.reject_above = 5.0;
    add("jump rejection", jump);
    quil_output rate = output("a", 6, 1.0, 0.0, -500, 500);
    rate.max_rate = 40.0;
    rate.safe = 0.0;
    add("rate limit from safe", rate);
    quil_output all_of_it = euro;
    all_of_it.reject_above = 0.3;
    all_of_it.max_rate = 1.5;
    add("one euro, rejection, rate limit, stall", all_of_it, 0.05, 0.2);
    quil_output above = output("a", 10, -0.01, 0.0, -5, 5);  // bent fingers above safe, stalling down to it
    above.max_rate = 1.5;
    add("rate-limited stall from above safe", above, 0.05, 0.2);
    quil_output snap = output("a", 14, 1.0, 10.0, 0, 200);
    add("stall straight to safe", snap, 0.01, 0.1);
    quil_output huge = output("a", 6, 1e307, 0.0, -1e308, 1e308);  // overflows past 17.9 degrees
    huge.smoothing.kind = QUIL_SMOOTHING_EMA;
    huge.smoothing.alpha = 0.5;
    add("non-finite guard", huge);
    return all;
}

struct Wired {
    quil_hand* h;
    Wired(const quil_output* outs, std::size_t n, double hold = kInf, double to_safe = kInf) : h(quil_hand_open(kHand)) {
        quil_profile p;
        quil_profile_init(&p);
        p.hand = kHand;
        p.hold_after = hold;
        p.safe_after = to_safe;
        p.output_count = n;
        p.outputs = outs;
        quil_profile_fault fault;
        EXPECT_EQ(quil_hand_set_profile(h, &p, &fault), QUIL_OK) << fault.field << " " << fault.problem;
    }
    ~Wired() { quil_hand_close(h); }
};

TEST(Profile, EveryOptionAgreesWithTheFormulas) {
    const Session s = session(21, 3000);
    const std::size_t n = s.times.size();
    quil_hand* plain = quil_hand_open(kHand);
    std::vector<double> targets(24 * n);
    quil_hand_map_n(plain, n, s.readings.data(), targets.data());
    quil_hand_close(plain);
    for (const Case& c : cases()) {
        Wired w(&c.out, 1, c.hold_after, c.safe_after);
        std::vector<double> got(n);
        quil_hand_map_n_at(w.h, n, s.times.data(), s.readings.data(), got.data());
        Reference ref(c.out, c.hold_after, c.safe_after);
        for (std::size_t i = 0; i < n; ++i) {
            const double want = ref.sample(s.times[i], &targets[24 * i]);
            ASSERT_TRUE(same_bits(want, got[i])) << c.what << ": sample " << i << " want " << want << " got " << got[i];
            ASSERT_TRUE(std::isfinite(got[i]));
        }
        // The watchdog during a long silence: held, then toward safe, never past it.
        double prev = ref.last;
        for (double dt : {0.01, 0.06, 0.21, 0.5, 1.0, 5.0, 60.0}) {
            double tick;
            const int stale = quil_hand_tick(w.h, s.times.back() + dt, &tick);
            EXPECT_TRUE(same_bits(tick, ref.stall_value(s.times.back() + dt))) << c.what << " tick +" << dt;
            const bool expect_stale = (std::isfinite(c.hold_after) && dt >= c.hold_after) ||
                                      (std::isfinite(c.safe_after) && dt >= c.safe_after);
            EXPECT_EQ(stale, expect_stale ? 1 : 0) << c.what;
            EXPECT_LE(std::fabs(tick - ref.safe), std::fabs(prev - ref.safe) + 0.0) << c.what;
            prev = tick;
        }
    }
}

TEST(Profile, TicksChangeNothingAndOneCallEqualsMany) {
    const Session s = session(7, 1500);
    const std::vector<Case> all = cases();
    std::vector<quil_output> outs;
    const char* names[] = {"o0", "o1", "o2", "o3", "o4", "o5", "o6", "o7", "o8", "o9", "o10"};
    for (std::size_t i = 0; i < all.size(); ++i) {
        outs.push_back(all[i].out);
        outs.back().name = names[i];
    }
    Wired batch(outs.data(), outs.size(), 0.05, 0.2), single(outs.data(), outs.size(), 0.05, 0.2);
    const std::size_t n = s.times.size(), k = outs.size();
    std::vector<double> a(k * n), b(k * n), scratch(k);
    quil_hand_map_n_at(batch.h, n, s.times.data(), s.readings.data(), a.data());
    for (std::size_t i = 0; i < n; ++i) {
        if (i > 0) quil_hand_tick(single.h, (s.times[i - 1] + s.times[i]) / 2, scratch.data());
        quil_hand_map_at(single.h, s.times[i], &s.readings[12 * i], &b[k * i]);
    }
    for (std::size_t i = 0; i < a.size(); ++i) ASSERT_TRUE(same_bits(a[i], b[i])) << "value " << i;
    quil_counters c;
    ASSERT_EQ(quil_hand_counters(batch.h, &c), QUIL_OK);
    EXPECT_EQ(c.samples, n);
    EXPECT_GT(c.held, 0u);
    EXPECT_GT(c.rejected, 0u);
    EXPECT_GT(c.limited, 0u);
    EXPECT_EQ(c.stale, 0u);
    quil_counters d;
    quil_hand_counters(single.h, &d);
    EXPECT_EQ(d.stale, 1u);  // only the tick in the gap
}

TEST(Profile, WithoutOneTheHandGivesItsTargets) {
    const Session s = session(3, 400);
    const std::size_t n = s.times.size();
    quil_hand* a = quil_hand_open(kHand);
    quil_hand* b = quil_hand_open(kHand);
    std::vector<double> ta(24 * n), tb(24 * n);
    quil_hand_map_n(a, n, s.readings.data(), ta.data());
    quil_hand_map_n_at(b, n, s.times.data(), s.readings.data(), tb.data());
    for (std::size_t i = 0; i < ta.size(); ++i) ASSERT_TRUE(same_bits(ta[i], tb[i]));
    EXPECT_EQ(quil_hand_output_count(b), 24u);
    EXPECT_STREQ(quil_hand_output_name(b, 5), quil_hand_about(b)->slot_roles[5]);
    EXPECT_EQ(quil_hand_output_name(b, 24), nullptr);
    double tick[24];
    EXPECT_EQ(quil_hand_tick(b, 1.0, tick), QUIL_E_NO_PROFILE);
    EXPECT_EQ(quil_hand_state_size_of(b), quil_hand_state_size());
    quil_hand_close(a);
    quil_hand_close(b);
}

TEST(Profile, RefusedForEachFault) {
    struct Fault {
        const char* what;
        void (*spoil)(quil_profile&, quil_output*);
        int code;
        long output;
        const char* field;
    };
    const Fault faults[] = {
        {"unknown hand", [](quil_profile& p, quil_output*) { p.hand = "NO_SUCH_HAND"; }, QUIL_E_PROFILE, -1, "hand"},
        {"another hand", [](quil_profile& p, quil_output*) { p.hand = "CHOHO_Hand"; }, QUIL_E_PROFILE_HAND, -1, "hand"},
        {"no outputs", [](quil_profile& p, quil_output*) { p.output_count = 0; }, QUIL_E_PROFILE, -1, "outputs"},
        {"negative hold", [](quil_profile& p, quil_output*) { p.hold_after = -1; }, QUIL_E_PROFILE, -1, "hold_after"},
        {"NaN safe_after", [](quil_profile& p, quil_output*) { p.safe_after = kNaN; }, QUIL_E_PROFILE, -1, "safe_after"},
        {"slot 24", [](quil_profile&, quil_output* o) { o[1].slot = 24; }, QUIL_E_PROFILE, 1, "slot"},
        {"slot -1", [](quil_profile&, quil_output* o) { o[0].slot = -1; }, QUIL_E_PROFILE, 0, "slot"},
        {"min > max", [](quil_profile&, quil_output* o) { o[1].min = 2, o[1].max = 1; }, QUIL_E_PROFILE, 1, "min"},
        {"infinite scale", [](quil_profile&, quil_output* o) { o[0].scale = kInf; }, QUIL_E_PROFILE, 0, "scale"},
        {"NaN offset", [](quil_profile&, quil_output* o) { o[0].offset = kNaN; }, QUIL_E_PROFILE, 0, "offset"},
        {"safe outside", [](quil_profile&, quil_output* o) { o[0].safe = 5; }, QUIL_E_PROFILE, 0, "safe"},
        {"no name", [](quil_profile&, quil_output* o) { o[1].name = ""; }, QUIL_E_PROFILE, 1, "name"},
        {"same name", [](quil_profile&, quil_output* o) { o[1].name = o[0].name; }, QUIL_E_PROFILE, 1, "name"},
        {"ema alpha 0", [](quil_profile&, quil_output* o) { o[0].smoothing.kind = QUIL_SMOOTHING_EMA, o[0].smoothing.alpha = 0; },
         QUIL_E_PROFILE, 0, "smoothing.alpha"},
        {"euro cutoff 0", [](quil_profile&, quil_output* o) { o[0].smoothing.kind = QUIL_SMOOTHING_ONE_EURO, o[0].smoothing.min_cutoff = 0; },
         QUIL_E_PROFILE, 0, "smoothing.min_cutoff"},
        {"unknown kind", [](quil_profile&, quil_output* o) { o[1].smoothing.kind = 7; }, QUIL_E_PROFILE, 1, "smoothing.kind"},
        {"negative rate", [](quil_profile&, quil_output* o) { o[1].max_rate = -1; }, QUIL_E_PROFILE, 1, "max_rate"},
        {"NaN rejection", [](quil_profile&, quil_output* o) { o[1].reject_above = kNaN; }, QUIL_E_PROFILE, 1, "reject_above"},
    };
    const quil_output good[2] = {output("wrist", 0, 1, 0, -1, 1), output("index", 6, 1, 0, 0, 90)};
    Wired w(good, 2);
    double before[2], after[2];
    const double r[12] = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 12};
    for (const Fault& f : faults) {
        quil_output outs[2] = {good[0], good[1]};
        quil_profile p;
        quil_profile_init(&p);
        p.hand = kHand;
        p.output_count = 2;
        p.outputs = outs;
        f.spoil(p, outs);
        quil_profile_fault fault;
        EXPECT_EQ(quil_hand_set_profile(w.h, &p, &fault), f.code) << f.what;
        EXPECT_EQ(fault.output, f.output) << f.what;
        EXPECT_STREQ(fault.field, f.field) << f.what;
        EXPECT_GT(std::strlen(fault.problem), 0u) << f.what;
        EXPECT_EQ(quil_hand_output_count(w.h), 2u) << f.what << ": the old profile stays";
    }
    quil_hand_map_at(w.h, 1.0, r, before);
    quil_hand_map_at(w.h, 2.0, r, after);
    EXPECT_EQ(after[1], before[1]);
}

TEST(Profile, StatesCarryTheFilterAcrossASaveAndLoad) {
    const Session s = session(5, 2000);
    const std::vector<Case> all = cases();
    const quil_output out = all[7].out;  // one euro with rejection, rate limit and stall
    const std::size_t n = s.times.size(), half = 1234;
    Wired whole(&out, 1, 0.05, 0.2), first(&out, 1, 0.05, 0.2), second(&out, 1, 0.05, 0.2);
    std::vector<double> a(n), b(n);
    quil_hand_map_n_at(whole.h, n, s.times.data(), s.readings.data(), a.data());
    quil_hand_map_n_at(first.h, half, s.times.data(), s.readings.data(), b.data());
    std::vector<unsigned char> state(quil_hand_state_size_of(first.h));
    ASSERT_GT(state.size(), quil_hand_state_size());
    ASSERT_EQ(quil_hand_save_state(first.h, state.data(), state.size()), state.size());
    ASSERT_EQ(quil_hand_load_state(second.h, state.data(), state.size()), QUIL_OK);
    quil_hand_map_n_at(second.h, n - half, &s.times[half], &s.readings[12 * half], &b[half]);
    for (std::size_t i = 0; i < n; ++i) ASSERT_TRUE(same_bits(a[i], b[i])) << "sample " << i;
    EXPECT_STREQ(quil_state_hand(state.data(), state.size())->name, kHand);

    // Under another profile, or none, the stage's memory does not fit; damage is noticed.
    quil_output other = out;
    other.max_rate = 2.0;
    Wired elsewhere(&other, 1, 0.05, 0.2);
    EXPECT_EQ(quil_hand_load_state(elsewhere.h, state.data(), state.size()), QUIL_E_STATE_PROFILE);
    quil_hand* bare = quil_hand_open(kHand);
    EXPECT_EQ(quil_hand_load_state(bare, state.data(), state.size()), QUIL_E_STATE_PROFILE);
    quil_hand_close(bare);
    std::vector<unsigned char> bad = state;
    bad[200] ^= 1;
    EXPECT_EQ(quil_hand_load_state(second.h, bad.data(), bad.size()), QUIL_E_STATE_DAMAGED);
    EXPECT_EQ(quil_hand_load_state(second.h, state.data(), state.size() - 1), QUIL_E_STATE_TRUNCATED);
    // A last command outside the output's range, with a good checksum: forged, refused.
    auto with_last = [&state](double last) {
        std::vector<unsigned char> forged = state;
        std::memcpy(&forged[184], &last, sizeof last);
        std::uint32_t c = 0xFFFFFFFFu;
        for (std::size_t i = 0; i + 4 < forged.size(); ++i) {
            c ^= forged[i];
            for (int b = 0; b < 8; ++b) c = (c >> 1) ^ (0xEDB88320u & (0u - (c & 1u)));
        }
        c = ~c;
        for (int i = 0; i < 4; ++i) forged[forged.size() - 4 + i] = static_cast<unsigned char>(c >> (8 * i));
        return forged;
    };
    const std::vector<unsigned char> inside = with_last(0.5), outside = with_last(1e6);
    EXPECT_EQ(quil_hand_load_state(second.h, inside.data(), inside.size()), QUIL_OK);
    EXPECT_EQ(quil_hand_load_state(second.h, outside.data(), outside.size()), QUIL_E_STATE_DAMAGED);
}

// A state saved by the 1.1 library (RUIYAN_RY_H15 after two samples, dropout hold).
const char* const kState11 =
    "514c48530100a40052554959414e5f52595f483135000000000000000000000000000000000000000100000000000000"
    "0000000000000000000000000000000000000000000044400000000000003e4000000000000034400000000000805640"
    "000000000000144000000000000000000000000000805640000000000000000000000000000000000000000000805640"
    "0000000000000000000000000080564022c5911b";

std::vector<unsigned char> from_hex(const char* hex) {
    std::vector<unsigned char> bytes;
    for (std::size_t i = 0; hex[i] && hex[i + 1]; i += 2) bytes.push_back(static_cast<unsigned char>(std::stoi(std::string(hex + i, 2), nullptr, 16)));
    return bytes;
}

TEST(Profile, AStateOfTheOneOneFormatStillLoads) {
    const std::vector<unsigned char> old = from_hex(kState11);
    ASSERT_EQ(old.size(), quil_hand_state_size());
    quil_hand* plain = quil_hand_open(kHand);
    ASSERT_EQ(quil_hand_load_state(plain, old.data(), old.size()), QUIL_OK);
    std::vector<unsigned char> again(quil_hand_state_size());
    quil_hand_save_state(plain, again.data(), again.size());
    EXPECT_EQ(again, old);  // a handle without a profile still saves the 1.1 format
    const quil_output out = output("index", 6, 1, 0, -1000, 1000);
    Wired wired(&out, 1);
    ASSERT_EQ(quil_hand_load_state(wired.h, old.data(), old.size()), QUIL_OK);
    EXPECT_EQ(quil_hand_dropout(wired.h), QUIL_DROPOUT_HOLD);
    const double r[12] = {20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 0, 10};
    double t[24], c;
    quil_hand_map(plain, r, t);
    quil_hand_map_at(wired.h, 3.0, r, &c);
    EXPECT_TRUE(same_bits(c, t[6]));  // the hand's memory came along, the stage starts afresh
    quil_hand_close(plain);
}

TEST(Profile, TheCppHandWrapsItAll) {
    quil_linear::Hand hand(kHand);
    quil_output outs[2] = {output("index", 6, -1, 0, 0, 90), output("thumb", 1, -1, 0, 0, 60)};
    outs[0].max_rate = 100;
    quil_profile p;
    quil_profile_init(&p);
    p.hand = kHand;
    p.safe_after = 0.5;
    p.output_count = 2;
    p.outputs = outs;
    hand.set_profile(p);
    EXPECT_EQ(hand.output_names(), (std::vector<std::string>{"index", "thumb"}));
    const std::vector<double> first = hand.map_at(1.0, {0, 0, 0, 90, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(first[0], 0.0);  // from safe, dt = 0
    bool stale = false;
    EXPECT_EQ(hand.tick(1.2, &stale), first);
    EXPECT_FALSE(stale);
    EXPECT_EQ(hand.counters().samples, 1u);
    const std::vector<std::uint8_t> state = hand.state();
    EXPECT_EQ(state.size(), quil_hand_state_size_of(hand.get()));
    outs[1].slot = 99;
    try {
        hand.set_profile(p);
        ADD_FAILURE() << "a profile with slot 99 was taken";
    } catch (const quil_linear::Error& e) {
        EXPECT_EQ(e.code(), QUIL_E_PROFILE);
        EXPECT_NE(std::string(e.what()).find("outputs[1].slot"), std::string::npos) << e.what();
    }
    EXPECT_EQ(hand.output_count(), 2u);
    hand.clear_profile();
    EXPECT_EQ(hand.output_count(), 24u);
    EXPECT_THROW(hand.tick(2.0), quil_linear::Error);
}

}  // namespace
