// A whole trial of each drill, compared with the reference model.

#include "ReferenceTrial.h"
#include "Rendering.h"

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
    benchmark::RegisterBenchmark((name + "/reference").c_str(), [drill](benchmark::State& state) {
      const reference::Trial trial = referenceTrialOf(drill);
      for (auto _ : state)
        benchmark::DoNotOptimize(reference::render(trial, trialSeconds));
    })->Unit(benchmark::kMillisecond);
  }
  return true;
}();

} // namespace
} // namespace velto::benchmarks
