// Glove sessions for tests: deterministic, with a PRNG of our own (no standard-library
// distributions), so every machine and compiler produces the same samples.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace quil::test {

using Sample = std::array<double, 12>;

// xoshiro256** seeded through splitmix64.
class Rng {
  public:
    explicit Rng(std::uint64_t seed) {
        for (auto& w : s_) {
            seed += 0x9E3779B97F4A7C15ull;
            std::uint64_t z = seed;
            z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
            z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
            w = z ^ (z >> 31);
        }
    }
    std::uint64_t next() {
        const std::uint64_t result = rotl(s_[1] * 5, 7) * 9;
        const std::uint64_t t = s_[1] << 17;
        s_[2] ^= s_[0];
        s_[3] ^= s_[1];
        s_[1] ^= s_[2];
        s_[0] ^= s_[3];
        s_[2] ^= t;
        s_[3] = rotl(s_[3], 45);
        return result;
    }
    double unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }  // [0, 1)
    double between(double lo, double hi) { return lo + (hi - lo) * unit(); }
    std::size_t below(std::size_t n) { return static_cast<std::size_t>(next() % n); }

  private:
    static std::uint64_t rotl(std::uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
    std::uint64_t s_[4];
};

// Readings a glove or a recorder can produce besides ordinary angles.
inline const std::array<double, 12>& special_readings() {
    static const std::array<double, 12> v = {
        std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::quiet_NaN(),
        std::numeric_limits<double>::infinity(),  -std::numeric_limits<double>::infinity(),
        0.0, -0.0, 1e300, -1e300, 4.9406564584124654e-324, -2.2250738585072014e-308, 120.0, -20.0};
    return v;
}

// Independent samples over the whole reading range and a little beyond, one in eight carrying a
// special reading in a random channel.
inline std::vector<Sample> random_samples(std::uint64_t seed, std::size_t n) {
    Rng rng(seed);
    std::vector<Sample> out(n);
    for (std::size_t k = 0; k < n; ++k) {
        for (double& x : out[k]) x = rng.between(-30.0, 130.0);
        if (rng.below(8) == 0) out[k][rng.below(12)] = special_readings()[rng.below(12)];
    }
    return out;
}

// A session of pinches: the hand moves smoothly between poses, holds each for a while with glove
// noise, and moves on, so the hands' pinch latches set, hold and release. In four poses of five
// the thumb bends toward the fingers (its three readings drawn independently, so its tip may be
// straight or curled); any subset of index, middle, ring and little fingers bends to a random
// depth, which gives single-finger pinches, tripods, half-closed hands and fists.
inline std::vector<Sample> pinch_session(std::uint64_t seed, std::size_t n) {
    Rng rng(seed);
    std::vector<Sample> out;
    out.reserve(n);
    Sample from{};
    const int finger_bend[] = {3, 6, 9, 11};
    while (out.size() < n) {
        Sample to{};
        for (double& x : to) x = rng.between(-5.0, 15.0);
        if (rng.below(5) != 0) {
            to[0] = rng.between(0.0, 100.0);
            to[1] = rng.between(-10.0, 80.0);
            to[2] = rng.between(-10.0, 80.0);
        }
        const std::size_t fingers = rng.below(16);
        for (int f = 0; f < 4; ++f)
            if (fingers & (1u << f)) to[finger_bend[f]] = rng.between(-10.0, 110.0);
        const std::size_t move = 10 + rng.below(80), hold = rng.below(40);
        for (std::size_t k = 0; k < move + hold && out.size() < n; ++k) {
            const double w = k < move ? 0.5 - 0.5 * std::cos(3.141592653589793 * static_cast<double>(k) / move) : 1.0;
            Sample s;
            for (int i = 0; i < 12; ++i) s[i] = from[i] + (to[i] - from[i]) * w + rng.between(-1.5, 1.5);
            out.push_back(s);
        }
        from = to;
    }
    return out;
}

// Pinches held while one reading moves slowly: the hand closes on a pinch pose (the thumb and
// any of the fingers bent, as in pinch_session) and holds it, so a latch can set; then one
// reading walks away from the pose and back on the 0.1 lattice, up to 25 either way, while the
// others keep the pose; then the hand opens. The latches' release bounds and the pinch rules'
// thresholds are crossed in small steps while a pinch is held.
inline std::vector<Sample> held_pinch_sweeps(std::uint64_t seed, std::size_t n) {
    Rng rng(seed);
    std::vector<Sample> out;
    out.reserve(n);
    const int finger_bend[] = {3, 6, 9, 11};
    auto lattice = [](double x) { return static_cast<double>(static_cast<long>(x * 10.0)) / 10.0; };
    while (out.size() < n) {
        Sample pose{};
        for (double& x : pose) x = lattice(rng.between(-5.0, 15.0));
        pose[0] = lattice(rng.between(0.0, 100.0));
        pose[1] = lattice(rng.between(-10.0, 80.0));
        pose[2] = lattice(rng.between(-10.0, 80.0));
        const std::size_t fingers = 1 + rng.below(15);
        for (int f = 0; f < 4; ++f)
            if (fingers & (1u << f)) pose[finger_bend[f]] = lattice(rng.between(10.0, 110.0));
        // Close on the pose in 12 steps and hold it.
        for (int k = 1; k <= 20; ++k) {
            Sample s = pose;
            if (k < 12)
                for (double& x : s) x = lattice(x * k / 12.0);
            out.push_back(s);
        }
        // One reading out and back in tenths: a thumb reading or a bent finger most of the time.
        const std::size_t pick = rng.below(8);
        const int channel = pick < 3 ? static_cast<int>(pick) : pick < 7 ? finger_bend[pick - 3] : static_cast<int>(rng.below(12));
        const int reach = 50 + static_cast<int>(rng.below(200)), direction = rng.below(2) ? 1 : -1;
        for (int k = 1; k <= 2 * reach; ++k) {
            Sample s = pose;
            const int step = k <= reach ? k : 2 * reach - k;
            s[channel] = static_cast<double>(static_cast<long>(pose[channel] * 10.0) + direction * step) / 10.0;
            out.push_back(s);
        }
        for (int k = 0; k < 5; ++k) out.push_back(Sample{});
    }
    out.resize(n);
    return out;
}

inline std::vector<Sample> concat_sessions(std::vector<Sample> a, const std::vector<Sample>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

}  // namespace quil::test
