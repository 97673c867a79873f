// Materials, filters and measurements over the length of one trial, compared with the reference
// model and the floors.

#include "Compressor.h"
#include "Floors.h"
#include "ReferenceTrial.h"
#include "Signals.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace velto::benchmarks {
namespace {

constexpr std::uint64_t seed = 4242;

// `work` returns a value, so that it is not optimised away.
template <typename Work>
void measure(const std::string& name, Work work) {
  benchmark::RegisterBenchmark(name.c_str(), [work](benchmark::State& state) {
    for (auto _ : state)
      benchmark::DoNotOptimize(work());
  })->Unit(benchmark::kMillisecond);
}

const Samples& noise() {
  static const Samples samples = Signals::pink(trialSeconds, seed);
  return samples;
}
const Samples& loop() {
  static const Samples samples = Signals::drums(trialSeconds, seed);
  return samples;
}

void measureFloors() {
  measure("floor/xorshift", [] { return xorshiftChain(seed, trialFrames); });
  measure("floor/one-pole", [] { return onePoleChain(noise()); });
  measure("floor/biquad", [] { return biquadChain(noise()); });
  measure("floor/sum", [] { return sumChain(noise()); });
}

void measureMaterials() {
  measure("material/pink", [] { return Signals::pink(trialSeconds, seed); });
  measure("material/pink/reference", [] { return reference::pink(trialSeconds, seed); });
  measure("material/drums", [] { return Signals::drums(trialSeconds, seed); });
  measure("material/drums/reference", [] { return reference::drums(trialSeconds, seed); });
  measure("material/pad", [] { return Signals::pad(trialSeconds, seed); });
  measure("material/pad/reference", [] { return reference::pad(trialSeconds, seed); });
  measure("stereoise", [] { return Signals::stereoise(noise(), 0.5, seed); });
  measure("stereoise/reference", [] { return reference::stereoise(noise(), 0.5, seed); });
}

template <typename Section>
Samples filtered(Section section) {
  Samples out(noise().size());
  for (std::size_t i = 0; i < out.size(); ++i)
    out[i] = section.process(noise()[i]);
  return out;
}

void measureFilters() {
  constexpr double rate = sampleRateHz;
  measure("filter/lowpass", [] { return filtered(Biquad::lowpass(5200, 0.6, rate)); });
  measure("filter/lowpass/reference", [] { return filtered(reference::lowpass(5200, 0.6, rate)); });
  measure("filter/highpass", [] { return filtered(Biquad::highpass(7800, 0.7, rate)); });
  measure("filter/highpass/reference",
          [] { return filtered(reference::highpass(7800, 0.7, rate)); });
  measure("filter/bandpass", [] { return filtered(Biquad::bandpass(1900, 0.7, rate)); });
  measure("filter/bandpass/reference",
          [] { return filtered(reference::bandpass(1900, 0.7, rate)); });
  measure("filter/peaking", [] { return filtered(Biquad::peaking(1000, 9, 3, rate)); });
  measure("filter/peaking/reference",
          [] { return filtered(reference::peaking(1000, 9, 3, rate)); });
}

void measureMeasurements() {
  measure("measure/rms", [] { return Measure::rmsDB(noise()); });
  measure("measure/rms/reference", [] { return reference::rmsDB(noise()); });
  measure("measure/peak", [] { return Measure::peakDB(noise()); });
  measure("measure/peak/reference", [] { return reference::peakDB(noise()); });
  measure("measure/normalize", [] { return Measure::normalizeRMS(noise(), -26); });
  measure("measure/normalize/reference", [] { return reference::normalizeRMS(noise(), -26); });
  measure("measure/magnitude", [] { return Measure::magnitudeAt(noise(), 1000, sampleRateHz); });
  measure("measure/magnitude/reference",
          [] { return reference::magnitudeAt(noise(), 1000, sampleRateHz); });
  measure("compressor", [] { return Drills::compressorHitting(6, loop()); });
  measure("compressor/reference", [] { return reference::compressorHitting(6, loop()); });
}

const bool registered = [] {
  measureFloors();
  measureMaterials();
  measureFilters();
  measureMeasurements();
  return true;
}();

} // namespace
} // namespace velto::benchmarks
