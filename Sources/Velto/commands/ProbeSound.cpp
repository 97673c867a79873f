// The probe's gates for rendered audio.

#include "ProbeGates.h"

#include "Bands.h"
#include "Compressor.h"
#include "DSP.h"
#include "Drill.h"
#include "Numbers.h"
#include "Probe.h"
#include "Rendering.h"
#include "Signals.h"
#include "Slot.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace velto {

namespace {

using Numbers::fixed;

// ---- Measuring ----

Samples filtered(std::span<const float> x, Biquad section) {
  Samples out(x.size());
  std::transform(x.begin(), x.end(), out.begin(),
                 [&section](float sample) { return section.process(sample); });
  return out;
}

Samples sum(std::span<const float> x, std::span<const float> y) {
  Samples out(x.size());
  std::transform(x.begin(), x.end(), y.begin(), out.begin(), std::plus<>());
  return out;
}

bool haveSameBits(std::span<const float> x, std::span<const float> y) {
  return std::equal(x.begin(), x.end(), y.begin(), y.end(), [](float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
  });
}

bool haveSameBits(const std::vector<Slot>& x, const std::vector<Slot>& y) {
  return std::equal(x.begin(), x.end(), y.begin(), y.end(), [](const Slot& a, const Slot& b) {
    return haveSameBits(*a.l, *b.l) && haveSameBits(*a.r, *b.r);
  });
}

double crestDB(std::span<const float> x) {
  return Measure::peakDB(x) - Measure::rmsDB(x);
}

// The left channels of slots A and B.
struct SlotPair {
  Samples a, b;

  explicit SlotPair(const std::vector<Slot>& slots)
      : a(slots[0].l->begin(), slots[0].l->end()), b(slots[1].l->begin(), slots[1].l->end()) {}

  // Level of B over A in dB.
  [[nodiscard]] double levelDB() const { return Measure::rmsDB(b) - Measure::rmsDB(a); }

  // Level of B over A at `frequency` Hz, in dB.
  [[nodiscard]] double liftDB(double frequency) const {
    const auto magnitude = [frequency](std::span<const float> x) {
      return std::max(Measure::magnitudeAt(x, frequency, sampleRateHz), 1e-12);
    };
    return 20 * std::log10(magnitude(b) / magnitude(a));
  }

  // Level of B over A in a band around `centre` Hz, in dB.
  [[nodiscard]] double bandLiftDB(double centre) const {
    const Biquad band = Biquad::bandpass(centre, 4, sampleRateHz);
    return Measure::rmsDB(filtered(b, band)) - Measure::rmsDB(filtered(a, band));
  }
};

// ---- Frequency ----

constexpr double boostQ = 3;

SlotPair boostedPair(double frequency, double boostDB, Material material) {
  return SlotPair(Drills::render({.drill = Drill::frequency,
                                  .seed = 4242,
                                  .material = material,
                                  .targetFreq = frequency,
                                  .boostDB = boostDB,
                                  .boostQ = boostQ},
                                 2.0));
}

void checkResponse() {
  const Biquad design = Biquad::peaking(1000, 9, boostQ, sampleRateHz);
  const double peakDB = design.responseDB(1000, sampleRateHz);
  const double designed = peakDB - design.responseDB(125, sampleRateHz);
  const SlotPair boosted = boostedPair(1000, 9, Material::pinkNoise);
  const double measured = boosted.liftDB(1000) - boosted.liftDB(125);
  Probe::check("rendered audio matches the filter's designed response",
               std::abs(measured - designed) < 0.25,
               "measured " + fixed(measured, 2) + " dB, designed " + fixed(designed, 2) + " dB");
  Probe::check("that design really is a +9 dB peak", std::abs(peakDB - 9) < 0.3,
               fixed(peakDB, 2) + " dB");

  const SlotPair flat = boostedPair(1000, 0, Material::pinkNoise);
  const double lift = flat.liftDB(1000) - flat.liftDB(125);
  Probe::check("0 dB boost measures flat (negative control)", std::abs(lift) < 0.1,
               fixed(lift, 2) + " dB lift");
}

void checkTargetBand() {
  constexpr double target = 3150;
  const SlotPair boosted = boostedPair(target, 9, Material::pinkNoise);
  double loudest = 0;
  double largestLift = -std::numeric_limits<double>::infinity();
  for (const double centre : Bands::centres) {
    const double lift = boosted.bandLiftDB(centre);
    if (lift <= largestLift)
      continue;
    loudest = centre;
    largestLift = lift;
  }
  Probe::check("peak lands on the target band (3.15k)", loudest == target,
               "peak at " + fixed(loudest, 0) + " Hz, +" + fixed(largestLift, 1));
  const double difference = boosted.levelDB();
  Probe::check("boosted version is loudness-matched", std::abs(difference) < 0.15,
               fixed(difference, 3) + " dB overall");
}

// ---- Level ----

double renderedLevelDB(double targetDB) {
  return SlotPair(Drills::render({.drill = Drill::level,
                                  .seed = 7,
                                  .material = Material::drums,
                                  .difficulty = 50,
                                  .targetLevelDB = targetDB},
                                 2.0))
      .levelDB();
}

// ---- Dynamics ----

SlotPair compressedPair(double targetGRdB) {
  return SlotPair(Drills::render({.drill = Drill::dynamics,
                                  .seed = 11,
                                  .material = Material::drums,
                                  .difficulty = 30,
                                  .targetGRdB = targetGRdB},
                                 3.0));
}

std::string change(double a, double b) {
  return fixed(a, 2) + " dB -> " + fixed(b, 2) + " dB";
}

// ---- Polarity ----

std::vector<Slot> polaritySlots(double correlation) {
  return Drills::render({.drill = Drill::polarity,
                         .seed = 21,
                         .material = Material::drums,
                         .slots = 3,
                         .oddSlot = 1,
                         .correlation = correlation},
                        2.0);
}

// ---- Determinism ----

std::vector<Slot> seeded(std::uint64_t seed) {
  return Drills::render({.drill = Drill::frequency,
                         .seed = seed,
                         .material = Material::drums,
                         .difficulty = 40,
                         .boostQ = 3.2},
                        1.0);
}

} // namespace

void ProbeGates::frequency() {
  Probe::line("── frequency");
  checkResponse();
  checkTargetBand();
  for (const Material material : Material::allCases) {
    const SlotPair boosted = boostedPair(2000, 10, material);
    const double lift = boosted.liftDB(2000) - boosted.liftDB(250);
    Probe::check(std::string(material.shortName()) + ": +10 dB at 2 kHz survives",
                 std::abs(lift - 10) < 0.5, fixed(lift, 2) + " dB");
  }
}

void ProbeGates::level() {
  Probe::line("── level");
  const double easy = renderedLevelDB(3.0);
  Probe::check("3.00 dB request produces 3.00 dB", std::abs(easy - 3.0) < 0.02,
               fixed(easy, 4) + " dB");
  const double hard = renderedLevelDB(0.4);
  Probe::check("0.40 dB request survives at the hard end", std::abs(hard - 0.4) < 0.02,
               fixed(hard, 4) + " dB");
  const double none = renderedLevelDB(0);
  Probe::check("0 dB request is silent-identical (negative control)", std::abs(none) < 0.001,
               fixed(none, 6) + " dB");
}

void ProbeGates::dynamics() {
  constexpr double targetGRdB = 8;
  constexpr double windowMS = 20;
  Probe::line("── dynamics");
  const double reached = Drills::compressorHitting(targetGRdB, Signals::drums(3.0, 11)).grDB;
  Probe::check("compressor lands on the requested 8 dB GR", std::abs(reached - targetGRdB) < 1.0,
               fixed(reached, 2) + " dB GR");

  const SlotPair compressed = compressedPair(targetGRdB);
  const double difference = std::abs(compressed.levelDB());
  Probe::check("compressed version is loudness-matched", difference < 0.1,
               fixed(difference, 4) + " dB");
  const double spreadA = Probe::envelopeSpreadDB(compressed.a, windowMS);
  const double spreadB = Probe::envelopeSpreadDB(compressed.b, windowMS);
  Probe::check("short-term loudness spread shrinks", spreadA - spreadB > 1.0,
               change(spreadA, spreadB));

  const double untouched = Probe::envelopeSpreadDB(compressedPair(0).b, windowMS);
  Probe::check("0 dB GR leaves the envelope untouched (negative control)",
               std::abs(spreadA - untouched) < 0.2,
               fixed(spreadA, 2) + " dB vs " + fixed(untouched, 2) + " dB");
  const double crestA = crestDB(compressed.a);
  const double crestB = crestDB(compressed.b);
  Probe::check("transients survive the 5 ms attack (documented)", crestA < crestB,
               "crest " + change(crestA, crestB));
}

void ProbeGates::polarity() {
  Probe::line("── polarity");
  const std::vector<Slot> slots = polaritySlots(1);
  const std::span<const float> even = *slots[0].r;
  const double evenDB = Measure::rmsDB(even);
  const double residual = Measure::rmsDB(sum(*slots[1].r, even)) - evenDB;
  Probe::check("flipped channel nulls against the normal one", residual < -80,
               fixed(residual, 1) + " dB residual");
  const double doubled = Measure::rmsDB(sum(even, *slots[2].r)) - evenDB;
  Probe::check("two in-phase slots sum to +6 dB (negative control)",
               std::abs(doubled - 6.02) < 0.05, fixed(doubled, 2) + " dB");
  Probe::check("left channel is identical across all three slots",
               haveSameBits(*slots[0].l, *slots[1].l) && haveSameBits(*slots[0].l, *slots[2].l),
               "bit-exact");

  const Slot hard = polaritySlots(0.35).front();
  const double r = Probe::correlation(*hard.l, *hard.r);
  Probe::check("hard setting really decorrelates L/R", r < 0.6, "r = " + fixed(r, 3));
}

void ProbeGates::determinism() {
  Probe::line("── determinism");
  const std::vector<Slot> slots = seeded(5150);
  Probe::check("same seed renders bit-identical audio", haveSameBits(slots, seeded(5150)),
               "1 s of drums");
  Probe::check("a different seed renders different audio (negative control)",
               !haveSameBits(slots, seeded(5151)), "seed 5150 vs 5151");
}

} // namespace velto
