// A whole trial of each drill, compared with the reference model.

#include "Floors.h"
#include "ReferenceTrial.h"
#include "Rendering.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <span>
#include <string>
#include <vector>

namespace velto::benchmarks {
namespace {

void measureRender(Drill drill, Noise noise) {
  const bool audible = noise == Noise::audible;
  const std::string name =
      "render/" + std::string(drill.rawValue()) + (audible ? ", audible noise" : "");
  benchmark::RegisterBenchmark(name.c_str(), [drill, noise](benchmark::State& state) {
    const Trial trial = trialOf(drill);
    for (auto _ : state)
      benchmark::DoNotOptimize(Drills::render(trial, trialSeconds, noise));
  })->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((name + "/reference").c_str(), [=](benchmark::State& state) {
    const reference::Trial trial = referenceTrialOf(drill);
    for (auto _ : state)
      benchmark::DoNotOptimize(reference::render(trial, trialSeconds, audible));
  })->Unit(benchmark::kMillisecond);
}

// One pass of the compressor's envelope over a trial. The counter says how many passes a trial
// takes.
void measureEnvelope(benchmark::State& state) {
  const Trial trial = trialOf(Drill::dynamics);
  const std::vector<Slot> slots = Drills::render(trial, trialSeconds);
  const std::span<const float> source = *slots[0].l;
  const Search search = searchOf(source, trial.targetGRdB);
  const std::vector<double> reductionsDB = reductionsOf(source, search.thresholdDB);
  for (auto _ : state)
    benchmark::DoNotOptimize(envelopeChain(reductionsDB, HUGE_VAL));
  state.counters["passes"] = search.passes;
}

const bool registered = [] {
  for (const Drill drill : Drill::allCases)
    for (const Noise noise : {Noise::asDrawn, Noise::audible})
      measureRender(drill, noise);
  benchmark::RegisterBenchmark("floor/envelope", measureEnvelope)->Unit(benchmark::kMillisecond);
  return true;
}();

} // namespace
} // namespace velto::benchmarks
