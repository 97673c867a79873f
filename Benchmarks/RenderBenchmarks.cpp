// A whole trial of each drill, beside the literal model's.

#include "LiteralTrial.h"

#include <benchmark/benchmark.h>

#include <string>

namespace velto::benchmarks {
namespace {

const bool registered = [] {
  for (const Drill drill : Drill::allCases) {
    const std::string name = "render/" + std::string(drill.rawValue());
    benchmark::RegisterBenchmark(name.c_str(), [drill](benchmark::State& state) {
      const Trial trial = trialOf(drill);
      for (auto _ : state)
        benchmark::DoNotOptimize(Drills::render(trial, trialSeconds));
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((name + "/literal").c_str(), [drill](benchmark::State& state) {
      const literal::Trial trial = literalTrialOf(drill);
      for (auto _ : state)
        benchmark::DoNotOptimize(literal::render(trial, trialSeconds));
    })->Unit(benchmark::kMillisecond);
  }
  return true;
}();

} // namespace
} // namespace velto::benchmarks
