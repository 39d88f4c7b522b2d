// Time of one sample for every hand: through its C export (with the result buffer, released
// again for per-call hands), and through the mapping alone (no heap buffer).
//   ./build/bench/hands_bench [--benchmark_filter=XHAND]
#include <benchmark/benchmark.h>

#include <array>
#include <random>
#include <vector>

#include "api/registry.h"
#include "quil_linear/quil_linear.h"

namespace {

// A few hundred glove samples spanning open hands, fists and pinches, cycled through so the
// branches of each hand see realistic variety.
const std::vector<quil::InputAngles>& samples() {
    static const std::vector<quil::InputAngles> s = [] {
        std::mt19937 rng(7);
        std::uniform_real_distribution<double> angle(-10.0, 110.0);
        std::vector<quil::InputAngles> v(512);
        for (auto& in : v)
            for (double& x : in.x) x = angle(rng);
        return v;
    }();
    return s;
}

void export_call(benchmark::State& state, const quil::ModelInfo* m) {
    const auto& in = samples();
    std::size_t i = 0;
    for (auto _ : state) {
        const auto& x = in[i++ % in.size()].x;
        double* r = m->get_data_value(x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7], x[8], x[9], x[10], x[11]);
        benchmark::DoNotOptimize(r[0]);
        if (m->buffer == quil::BufferKind::per_call) FreeMemory(r);
    }
}

void mapping_only(benchmark::State& state, const quil::ModelInfo* m) {
    const auto& in = samples();
    quil::HandMemory memory;
    std::size_t i = 0;
    for (auto _ : state) {
        const quil::TargetArray r = m->map(in[i++ % in.size()], memory.ref());
        benchmark::DoNotOptimize(r);
    }
}

const bool registered = [] {
    for (const quil::ModelInfo& m : quil::all_models()) {
        benchmark::RegisterBenchmark((std::string("export/") + m.name).c_str(), export_call, &m);
        benchmark::RegisterBenchmark((std::string("mapping/") + m.name).c_str(), mapping_only, &m);
    }
    return true;
}();

}  // namespace

BENCHMARK_MAIN();
