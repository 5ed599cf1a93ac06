// What the benchmark programs share: how a benchmark is added, how its pixels are counted, and main.
#pragma once
#include <benchmark/benchmark.h>
#include <iostream>
#include <string>

namespace bench {

// `run` gets a benchmark::State.
template <class Run>
benchmark::internal::Benchmark* add(const std::string& name, Run run) {
    return benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
}

// The rate of a benchmark whose every turn handles so many pixels.
inline void countPixels(benchmark::State& state, double pixels) {
    state.counters["Mpixel/s"] =
        benchmark::Counter(pixels * static_cast<double>(state.iterations()) / 1e6, benchmark::Counter::kIsRate);
}

inline int noPictures() {
    std::cerr << "no pictures: run scripts/corpus.sh, or name their folder in PIXKIT_CORPUS\n";
    return 1;
}

// The rest of main, when all benchmarks are added.
inline int run(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

} // namespace bench
// SPDX-License-Identifier: MIT
