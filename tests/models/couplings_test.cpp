// Followers: slots a hand computes from other slots, such as a finger tip driven at a share of the
// joint next to it. The catalogue writes each relation out ("min(0.8 * slot 5, 0)"); here it is
// read back and checked on the hand's own targets: a follower that never departs from its
// relation keeps it on random samples over the whole range, and one said to depart (in pinches,
// when the hand bends far) departs somewhere in them. (That each keeps it while one finger at a
// time moves moderately is the slot facts' test.)
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "quil_linear/hand.h"
#include "support/glove_sequences.h"

namespace {

using quil::test::Sample;

// Evaluates a relation as the catalogue writes it, on one sample's targets, in the order it is
// written: numbers (a trailing f is a single-precision literal), "slot N", + - *, unary minus,
// min(a, b), max(a, b) and parentheses.
class Relation {
  public:
    Relation(const char* text, const double* targets) : p_(text), t_(targets) {}
    double value() {
        const double v = sum();
        skip();
        if (*p_) throw std::runtime_error(std::string("unread: ") + p_);
        return v;
    }

  private:
    const char* p_;
    const double* t_;
    void skip() {
        while (*p_ == ' ') ++p_;
    }
    bool eat(const char* token) {
        skip();
        if (std::strncmp(p_, token, std::strlen(token)) != 0) return false;
        p_ += std::strlen(token);
        return true;
    }
    double sum() {
        double v = product();
        for (;;) {
            if (eat("+")) v = v + product();
            else if (eat("-")) v = v - product();
            else return v;
        }
    }
    double product() {
        double v = unary();
        while (eat("*")) v = v * unary();
        return v;
    }
    double unary() { return eat("-") ? -unary() : primary(); }
    double primary() {
        skip();
        if (eat("(")) {
            const double v = sum();
            if (!eat(")")) throw std::runtime_error("no )");
            return v;
        }
        for (const char* f : {"min(", "max("}) {
            if (!eat(f)) continue;
            const double a = sum();
            if (!eat(",")) throw std::runtime_error("no ,");
            const double b = sum();
            if (!eat(")")) throw std::runtime_error("no )");
            return f[1] == 'i' ? (b < a ? b : a) : (a < b ? b : a);
        }
        if (eat("slot")) {
            skip();
            char* end;
            const long slot = std::strtol(p_, &end, 10);
            if (end == p_ || slot < 0 || slot > 23) throw std::runtime_error("bad slot");
            p_ = end;
            return t_[slot];
        }
        char* end;
        const double v = std::strtod(p_, &end);
        if (end == p_) throw std::runtime_error(std::string("unexpected: ") + p_);
        p_ = end;
        if (*p_ == 'f') {
            ++p_;
            return static_cast<double>(static_cast<float>(v));
        }
        return v;
    }
};

std::vector<double> map_all(const char* hand, const std::vector<Sample>& samples) {
    std::vector<double> t(samples.size() * 24);
    quil_hand* h = quil_hand_open(hand);
    quil_hand_map_n(h, samples.size(), samples[0].data(), t.data());
    quil_hand_close(h);
    return t;
}

// Finite readings over the whole range, through pinch sessions too.
std::vector<Sample> random_finite(std::uint64_t seed) {
    std::vector<Sample> s = quil::test::concat_sessions(quil::test::random_samples(seed, 6000),
                                                        quil::test::pinch_session(seed, 6000));
    for (Sample& x : s)
        for (double& v : x)
            if (!std::isfinite(v)) v = 60.0;
    return s;
}

class Couplings : public ::testing::TestWithParam<std::size_t> {};

TEST_P(Couplings, FollowersKeepTheRelationTheCatalogueWrites) {
    const quil_hand_info* hand = quil_hand_at(GetParam());
    const std::vector<Sample> random = random_finite(GetParam() + 1);
    const std::vector<double> on_random = map_all(hand->name, random);
    for (int s = 0; s < 24; ++s) {
        const quil_slot_info* slot = quil_hand_slot(hand, s);
        if (slot->kind != QUIL_SLOT_FOLLOWER) continue;
        SCOPED_TRACE("slot " + std::to_string(s) + ": " + slot->relation);
        EXPECT_GE(slot->follows[0], 0);
        if (std::strstr(slot->relation, " if ")) continue;  // a piecewise rule, in words
        const bool departs = slot->departs[0] != '\0';
        std::size_t departures = 0;
        for (std::size_t k = 0; k < random.size(); ++k) {
            const double* t = &on_random[24 * k];
            const double want = Relation(slot->relation, t).value();
            if (!departs) ASSERT_EQ(t[s], want) << "random sample " << k;
            departures += t[s] != want;
        }
        if (departs) EXPECT_GT(departures, 0u) << "said to depart " << slot->departs << ", never does";
    }
}

std::string hand_name(const ::testing::TestParamInfo<std::size_t>& info) { return quil_hand_at(info.param)->name; }

INSTANTIATE_TEST_SUITE_P(Hands, Couplings, ::testing::Range(std::size_t{0}, quil_hand_count()), hand_name);

}  // namespace
