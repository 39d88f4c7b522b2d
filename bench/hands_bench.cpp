// Nanoseconds per glove sample for every hand, four ways over the same million samples:
//   export/HAND   the C export <HAND>_GetDataValue (its result buffer released again for
//                 per-call hands)
//   map/HAND      quil_hand_map, one sample per call
//   map_n/HAND    quil_hand_map_n, the whole million in one call
//   linear/HAND   the bare linear stage with the hand's coefficients: clamp, 19 rows, limits
//                 and emission, none of the hand's own rules
//
//   ./build/bench/hands_bench [--benchmark_filter=XHAND]
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "core/linear_stage.h"
#include "models/catalogue.h"
#include "quil_linear/hand.h"
#include "quil_linear/quil_linear.h"

namespace {

using ExportFn = double* (*)(double, double, double, double, double, double, double, double, double, double,
                             double, double);

constexpr std::size_t kSamples = 1000000;

// A million samples of slow glove motion: every channel wanders over the whole range, so the
// hands' bands, pinch poses and latches all take their turn, as in a real session.
const std::vector<double>& samples() {
    static const std::vector<double> s = [] {
        std::vector<double> v(kSamples * 12);
        std::uint64_t state = 0x9E3779B97F4A7C15ull;
        auto next = [&state] {
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
            return static_cast<double>(state >> 11) / 9007199254740992.0;
        };
        double x[12];
        for (double& c : x) c = next() * 100.0;
        for (std::size_t r = 0; r < kSamples; ++r)
            for (int i = 0; i < 12; ++i) {
                x[i] += (next() - 0.5) * 6.0;
                if (x[i] < -25.0) x[i] = -25.0;
                if (x[i] > 125.0) x[i] = 125.0;
                v[r * 12 + i] = x[i];
            }
        return v;
    }();
    return s;
}

void per_sample(benchmark::State& state) {
    state.counters["ns/sample"] = benchmark::Counter(
        static_cast<double>(kSamples), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

const ExportFn kExports[] = {
#define QUIL_MODEL(hand, version, buffer, keeps_state, class_memory, get_data1) &hand##_GetDataValue,
#include "quil_linear/catalogue_list.h"
#undef QUIL_MODEL
};

void export_call(benchmark::State& state, std::size_t h) {
    const double* x = samples().data();
    const ExportFn fn = kExports[h];
    const bool per_call = quil::kHandModels[h].buffer == quil::BufferKind::per_call;
    for (auto _ : state) {
        for (std::size_t r = 0; r < kSamples; ++r) {
            const double* s = x + 12 * r;
            double* t = fn(s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[8], s[9], s[10], s[11]);
            benchmark::DoNotOptimize(t[0]);
            if (per_call) FreeMemory(t);
        }
    }
    per_sample(state);
}

void hand_map(benchmark::State& state, std::size_t h) {
    const double* x = samples().data();
    quil_hand* hand = quil_hand_open(quil::kHandModels[h].name);
    double t[24];
    for (auto _ : state) {
        for (std::size_t r = 0; r < kSamples; ++r) {
            quil_hand_map(hand, x + 12 * r, t);
            benchmark::DoNotOptimize(t[0]);
        }
    }
    quil_hand_close(hand);
    per_sample(state);
}

void hand_map_n(benchmark::State& state, std::size_t h) {
    const double* x = samples().data();
    quil_hand* hand = quil_hand_open(quil::kHandModels[h].name);
    std::vector<double> t(kSamples * 24);
    for (auto _ : state) {
        quil_hand_map_n(hand, kSamples, x, t.data());
        benchmark::DoNotOptimize(t.data());
        benchmark::ClobberMemory();
    }
    quil_hand_close(hand);
    per_sample(state);
}

void linear_stage(benchmark::State& state, std::size_t h) {
    const double* x = samples().data();
    const quil::Coefficients& tables = *quil::kHandModels[h].published;
    for (auto _ : state) {
        for (std::size_t r = 0; r < kSamples; ++r) {
            quil::Readings in;
            for (int i = 0; i < 12; ++i) in.x[i] = x[12 * r + i];
            quil::Targets out;
            quil::run_linear_stage<quil::kStandardRows>(in, quil::Clamp::min_max, tables, out);
            benchmark::DoNotOptimize(out);
        }
    }
    per_sample(state);
}

const bool registered = [] {
    for (std::size_t h = 0; h < quil::kHandCount; ++h) {
        const std::string name = quil::kHandModels[h].name;
        for (auto [kind, fn] : {std::pair{"export/", &export_call}, std::pair{"map/", &hand_map},
                                std::pair{"map_n/", &hand_map_n}, std::pair{"linear/", &linear_stage}})
            benchmark::RegisterBenchmark((kind + name).c_str(), fn, h)
                ->Unit(benchmark::kMillisecond)
                ->Iterations(3);
    }
    return true;
}();

}  // namespace

BENCHMARK_MAIN();
