// The sweep of glove readings over which the library measures what each slot does, and the
// measurement itself. The `facts` tool writes the result into models/slot_facts_measured.inc;
// the tests measure again and compare, so the shipped facts always say what the hands do.
//
// The sweep, in this order through one fresh handle per hand:
//   1. open to fist: each finger's bend readings (thumb x0-x2, index x3 and x5, middle x6 and x8,
//      ring x9, little x11), then the spread readings (x4, x7, x10), then all twelve readings,
//      each from 0 to 90 degrees and back in steps of 1, the other readings at 0;
//   2. pinches: for the index, middle, ring and little finger in turn, the thumb at every pose of
//      a grid (x0 20..70 by 10, x1 and x2 0..40 by 10), the finger's bend readings going from 20
//      to 70 and back by 10, the other readings at 0;
//   3. 20 000 random samples, every reading uniform over [-20, 120] (splitmix64, seed 0x5eed).
// A slot's range is the least and greatest value over it.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "models/catalogue.h"
#include "models/slot_facts.h"
#include "quil_linear/hand.h"

namespace quil::facts {

using Readings = std::array<double, 12>;

enum Part : int { kOpenToFist = 0, kPinches = 1, kRandom = 2 };

struct SweepSample {
    Readings x;
    Part part;
};

// The readings that bend each finger, and the spreads, as the reading roles name them
// (finger "" for every finger).
inline std::vector<int> readings_of(const char* finger, const char* motion) {
    std::vector<int> r;
    for (int i = 0; i < 12; ++i)
        if ((!*finger || std::strcmp(kReadingRoles[i].finger, finger) == 0) &&
            std::strcmp(kReadingRoles[i].motion, motion) == 0)
            r.push_back(i);
    return r;
}
inline std::vector<int> spread_readings() { return readings_of("", "spread"); }

constexpr const char* kFingers[] = {"thumb", "index", "middle", "ring", "little"};

inline Readings with(const std::vector<int>& channels, double v) {
    Readings x{};
    for (int c : channels) x[c] = v;
    return x;
}

inline std::vector<SweepSample> sweep() {
    std::vector<SweepSample> out;
    std::vector<std::vector<int>> groups;
    for (const char* f : kFingers) groups.push_back(readings_of(f, "bend"));
    groups.push_back(spread_readings());
    groups.push_back({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    for (const auto& g : groups) {
        for (int v = 0; v <= 90; ++v) out.push_back({with(g, v), kOpenToFist});
        for (int v = 89; v >= 0; --v) out.push_back({with(g, v), kOpenToFist});
    }
    for (int f = 1; f < 5; ++f) {
        const std::vector<int> finger = readings_of(kFingers[f], "bend");
        for (int t0 = 20; t0 <= 70; t0 += 10)
            for (int t1 = 0; t1 <= 40; t1 += 10)
                for (int t2 = 0; t2 <= 40; t2 += 10) {
                    auto at = [&](int bend) {
                        Readings x = with(finger, bend);
                        x[0] = t0;
                        x[1] = t1;
                        x[2] = t2;
                        out.push_back({x, kPinches});
                    };
                    for (int b = 20; b <= 70; b += 10) at(b);
                    for (int b = 60; b >= 20; b -= 10) at(b);
                }
    }
    std::uint64_t state = 0x5eed;
    auto next = [&state] {  // splitmix64
        std::uint64_t z = (state += 0x9e3779b97f4a7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return z ^ (z >> 31);
    };
    for (int k = 0; k < 20000; ++k) {
        Readings x;
        for (double& v : x) v = -20.0 + 140.0 * static_cast<double>(next() >> 11) * 0x1.0p-53;
        out.push_back({x, kRandom});
    }
    return out;
}

// Moderate motions that no pinch, lock or snap reaches: each finger's bend readings, then the
// spreads, from 0 to 40 degrees in steps of 0.5, the rest at 0. A follower's relation holds on
// every one of them.
inline std::vector<Readings> plain_sweep() {
    std::vector<Readings> out;
    std::vector<std::vector<int>> groups;
    for (const char* f : kFingers) groups.push_back(readings_of(f, "bend"));
    groups.push_back(spread_readings());
    for (const auto& g : groups)
        for (int v = 0; v <= 80; ++v) out.push_back(with(g, 0.5 * v));
    return out;
}

// Maps `samples` in order through a fresh handle of `hand`.
inline std::vector<std::array<double, 24>> run(const char* hand, const std::vector<Readings>& samples) {
    std::vector<std::array<double, 24>> out(samples.size());
    quil_hand* h = quil_hand_open(hand);
    quil_hand_map_n(h, samples.size(), samples.empty() ? nullptr : samples[0].data(),
                    out.empty() ? nullptr : out[0].data());
    quil_hand_close(h);
    return out;
}

// The readings that move a slot with its finger: its finger's bend readings, or the spreads for a
// spread slot; none for a slot of no finger.
inline std::vector<int> own_readings(const SlotRole& role) {
    if (role.finger[0] == '\0') return {};
    const std::string name = role.name;
    if (name.size() > 7 && name.compare(name.size() - 7, 7, "_spread") == 0) return spread_readings();
    return readings_of(role.finger, "bend");
}

// Everything measured of one hand's 24 slots.
inline std::array<MeasuredSlot, 24> measure(const HandModel& model) {
    std::array<MeasuredSlot, 24> m{};
    const std::vector<SweepSample> samples = sweep();
    std::vector<Readings> readings;
    readings.reserve(samples.size());
    for (const SweepSample& s : samples) readings.push_back(s.x);
    const auto targets = run(model.name, readings);

    for (int s = 0; s < 24; ++s) {
        m[s].min = m[s].max = targets[0][s];
        const SlotRelation* follower = model.slots->follower(s);
        for (std::size_t k = 0; k < targets.size(); ++k) {
            const double v = targets[k][s];
            if (v < m[s].min) m[s].min = v;
            if (v > m[s].max) m[s].max = v;
            if (v == 0.0 && std::signbit(v)) m[s].flags |= kMeasuredNegativeZero;
            if (follower && follower->apply(targets[k].data()) != v) m[s].departs |= 1u << samples[k].part;
        }
        if (m[s].min == m[s].max) m[s].flags |= kMeasuredConstant;

        const std::vector<int> own = own_readings(slot_role(model, s));
        if (!own.empty()) {
            const auto ends = run(model.name, {Readings{}, with(own, 60.0)});
            m[s].sign = ends[1][s] > ends[0][s] ? 1 : ends[1][s] < ends[0][s] ? -1 : 0;
        }
    }
    for (int i = 0; i < 12; ++i) {
        std::vector<Readings> alone;
        alone.push_back(Readings{});
        for (int k = 0; k <= 280; ++k) {
            Readings x{};
            x[i] = -20.0 + 0.5 * k;
            alone.push_back(x);
        }
        const auto t = run(model.name, alone);
        for (int s = 0; s < 24; ++s)
            for (const auto& row : t)
                if (row[s] != t[0][s]) {
                    m[s].moved_by |= 1u << i;
                    break;
                }
    }
    return m;
}

}  // namespace quil::facts
