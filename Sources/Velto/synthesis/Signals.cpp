#include "Signals.h"

#include "DrumVoices.h"
#include "FatalError.h"
#include "Kernels.h"
#include "Numbers.h"
#include "Pair.h"
#include "Xorshift64.h"

#include <algorithm>
#include <cmath>

namespace velto {

namespace {

constexpr double outputLevelDB = -20;

// Fills `out` with the results of `next`, two samples at a time. Returns the level in dB.
template <typename Next>
double fillPairs(std::span<float> out, Next next) {
  Measure::RunningRMS rms;
  std::size_t i = 0;
  for (; i + 1 < out.size(); i += 2) {
    const SamplePair samples = next();
    setPair(out, i, samples);
    rms.add(samples);
  }
  if (i < out.size()) {
    out[i] = next()[0];
    rms.add(out[i]);
  }
  return rms.levelDB(out.size());
}

// The part of `buffer` that a voice of `length` frames starting at `start` may write.
std::span<float> voiceSpan(std::span<float> buffer, std::size_t start, std::size_t length) {
  return buffer.subspan(start, std::min(length, buffer.size() - start));
}

void mixIn(float& sample, double value) {
  sample = static_cast<float>(static_cast<double>(sample) + value);
}

void addKick(std::span<float> loop, std::size_t start) {
  const auto& kick = DrumVoices::shared().kick;
  const auto out = voiceSpan(loop, start, kick.size());
  for (std::size_t i = 0; i < out.size(); ++i)
    mixIn(out[i], kick[i]);
}

void addSnare(std::span<float> loop, std::size_t start, Xorshift64& generator) {
  const auto& tone = DrumVoices::shared().snareTone;
  const auto& envelope = DrumVoices::shared().snareEnvelope;
  const auto out = voiceSpan(loop, start, tone.size());
  Biquad filter = Biquad::bandpass(1900, 0.7, sampleRateHz);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const float noise = filter.process(static_cast<float>(generator.nextNoise()));
    mixIn(out[i], envelope[i] * (tone[i] + 0.8 * static_cast<double>(noise)) * 0.55);
  }
}

void addHat(std::span<float> loop, std::size_t start, std::span<const double> envelope,
            Xorshift64& generator) {
  const auto out = voiceSpan(loop, start, envelope.size());
  Biquad filter = Biquad::highpass(7800, 0.7, sampleRateHz);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const float noise = filter.process(static_cast<float>(generator.nextNoise()));
    mixIn(out[i], envelope[i] * static_cast<double>(noise) * 0.3);
  }
}

float gainToOutputLevel(std::span<const float> x) {
  return Measure::gainFrom(Measure::rmsDB(x), outputLevelDB);
}

// Renders a material with `fill`, and applies the gain that it returns.
template <typename Fill>
Samples leveled(double seconds, std::uint64_t seed, Fill fill) {
  Samples out(Signals::frameCount(seconds));
  const float gain = fill(out, seed);
  Measure::scale(out, gain);
  return out;
}

} // namespace

std::size_t Signals::frameCount(double seconds) {
  const double frames = seconds * sampleRateHz;
  if (!(frames >= 0))
    fatalError("a duration is negative or not a number");
  return static_cast<std::size_t>(Numbers::truncated(frames));
}

Samples Signals::pink(double seconds, std::uint64_t seed, Noise noise) {
  return leveled(seconds, seed, [noise](std::span<float> out, std::uint64_t pinkSeed) {
    return fillPink(out, pinkSeed, noise);
  });
}

Samples Signals::drums(double seconds, std::uint64_t seed) {
  return leveled(seconds, seed, fillDrums);
}

Samples Signals::pad(double seconds, std::uint64_t seed) {
  return leveled(seconds, seed, fillPad);
}

float Signals::fillPink(std::span<float> out, std::uint64_t seed, Noise noise) {
  const Kernels& kernels = Kernels::best();
  const double sumOfSquares =
      (noise == Noise::audible ? kernels.audiblePinkNoise : kernels.pinkNoise)(out, seed);
  return Measure::gainFrom(Measure::rmsDB(sumOfSquares, out.size()), outputLevelDB);
}

float Signals::fillDrums(std::span<float> out, std::uint64_t seed) {
  constexpr double stepSeconds = 0.3;

  std::fill(out.begin(), out.end(), 0.0f);
  Xorshift64 generator(seed);
  double time = 0; // a running sum: its rounding decides where some steps start
  for (std::size_t step = 0;; ++step, time += stepSeconds) {
    const std::size_t start = frameCount(time);
    if (start >= out.size())
      break;
    const std::size_t position = step % 8;
    if (position == 0 || position == 3 || position == 6)
      addKick(out, start);
    if (position == 4)
      addSnare(out, start, generator);
    const DrumVoices& voices = DrumVoices::shared();
    addHat(out, start, position == 7 ? voices.openHatEnvelope : voices.closedHatEnvelope,
           generator);
  }
  return gainToOutputLevel(out);
}

float Signals::fillPad(std::span<float> out, std::uint64_t seed) {
  constexpr std::size_t fadeFrames = 480;

  Kernels::best().pad(out, seed);
  for (std::size_t i = 0; i < std::min(out.size(), fadeFrames); ++i) {
    const float gain = static_cast<float>(i) / static_cast<float>(fadeFrames);
    out[i] *= gain;
    out[out.size() - 1 - i] *= gain;
  }
  return gainToOutputLevel(out);
}

std::pair<Samples, Samples> Signals::stereoise(std::span<const float> mono, double correlation,
                                               std::uint64_t seed, Noise noise) {
  Samples right(mono.size());
  const float gain = fillDecorrelated(right, mono, Measure::rmsDB(mono), correlation, seed, noise);
  Measure::scale(right, gain);
  return {Samples(mono.begin(), mono.end()), std::move(right)};
}

float Signals::fillDecorrelated(std::span<float> out, std::span<const float> mono, double levelDB,
                                double correlation, std::uint64_t seed, Noise noise) {
  Xorshift64 generator(seed + 7717);
  PairedBiquad filter(Biquad::lowpass(6000, 0.7, sampleRateHz));
  const double removed = noise == Noise::audible ? Xorshift64::noiseMean : 0;
  const double noiseDB =
      fillPairs(out, [&] { return filter.process(rounded(generator.nextNoisePair() - removed)); });
  const float noiseGain = Measure::gainFrom(noiseDB, levelDB);
  const double noiseWeight = 1 - correlation >= 0 ? 1 - correlation : 0;
  const auto mix = [=](auto source, auto other) {
    return rounded(correlation * widened(source) + noiseWeight * widened(other * noiseGain));
  };
  Measure::RunningRMS mixRMS;
  std::size_t i = 0;
  for (; i + 1 < out.size(); i += 2) {
    const SamplePair mixed = mix(pairAt(mono, i), pairAt(out, i));
    setPair(out, i, mixed);
    mixRMS.add(mixed);
  }
  if (i < out.size()) {
    out[i] = mix(mono[i], out[i]);
    mixRMS.add(out[i]);
  }
  return Measure::gainFrom(mixRMS.levelDB(out.size()), levelDB);
}

} // namespace velto
