// What the wiring profile's safety stage costs per glove sample, over a million samples at
// 1 kHz, against the same hand without a profile:
//   targets/HAND      quil_hand_map_n_at without a profile (the 24 targets)
//   stage/K/HAND      with a profile of K outputs, each with one-euro smoothing, jump rejection,
//                     a rate limit and stall handling: the cost of the stage is the difference
//
//   ./build/bench/stage_bench
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "quil_linear/hand.h"

namespace {

constexpr std::size_t kSamples = 1000000;
constexpr const char* kHand = "RUIYAN_RY_H15";

struct Session {
    std::vector<double> t, x;
};

const Session& session() {
    static const Session s = [] {
        Session v;
        v.t.resize(kSamples);
        v.x.resize(kSamples * 12);
        for (std::size_t r = 0; r < kSamples; ++r) {
            v.t[r] = 0.001 * static_cast<double>(r);
            for (int i = 0; i < 12; ++i) v.x[12 * r + i] = 50 + 45 * std::sin(0.0007 * static_cast<double>(r) * (i + 1));
        }
        return v;
    }();
    return s;
}

void per_sample(benchmark::State& state) {
    state.counters["ns/sample"] = benchmark::Counter(static_cast<double>(kSamples) * static_cast<double>(state.iterations()),
                                                     benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void run(benchmark::State& state, std::size_t outputs) {
    quil_hand* hand = quil_hand_open(kHand);
    std::vector<quil_output> outs(outputs);
    std::vector<std::string> names(outputs);
    for (std::size_t i = 0; i < outputs; ++i) {
        names[i] = "out" + std::to_string(i);
        quil_output_init(&outs[i]);
        outs[i].name = names[i].c_str();
        outs[i].slot = static_cast<int>(i % 20);
        outs[i].scale = -0.0174533;
        outs[i].min = -5;
        outs[i].max = 5;
        outs[i].smoothing = quil_smoothing{QUIL_SMOOTHING_ONE_EURO, 0, 1.0, 0.05, 1.0};
        outs[i].reject_above = 0.5;
        outs[i].max_rate = 8.0;
    }
    if (outputs) {
        quil_profile p;
        quil_profile_init(&p);
        p.hand = kHand;
        p.hold_after = 0.05;
        p.safe_after = 0.2;
        p.output_count = outputs;
        p.outputs = outs.data();
        quil_hand_set_profile(hand, &p, nullptr);
    }
    std::vector<double> out(kSamples * quil_hand_output_count(hand));
    for (auto _ : state) {
        quil_hand_reset(hand);
        quil_hand_map_n_at(hand, kSamples, session().t.data(), session().x.data(), out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    quil_hand_close(hand);
    per_sample(state);
}

const bool registered = [] {
    benchmark::RegisterBenchmark((std::string("targets/") + kHand).c_str(), run, std::size_t{0})
        ->Unit(benchmark::kMillisecond)->Iterations(3);
    for (std::size_t k : {6, 16})
        benchmark::RegisterBenchmark(("stage/" + std::to_string(k) + "/" + kHand).c_str(), run, k)
            ->Unit(benchmark::kMillisecond)->Iterations(3);
    return true;
}();

}  // namespace

BENCHMARK_MAIN();
