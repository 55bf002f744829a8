#pragma once

#include <benchmark/benchmark.h>

#include <string>

namespace Zelm::Bench {

using Function = void (*)(benchmark::State& state);

/// Registers one row of the comparison: what we take, what a peer takes for the same in the same run, and the
/// largest ratio of the two that we are content with.
struct Comparison {
    Comparison(const std::string& row, double goal, Function ours, Function peer);
};

/// Calls `action` as often as the benchmark asks for and keeps its result from being optimised away.
template <class Action>
void repeat(benchmark::State& state, Action&& action) {
    for (auto _ : state) {
        auto result = action();
        benchmark::DoNotOptimize(result);
    }
}

} // namespace Zelm::Bench
