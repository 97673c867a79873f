#include "Signals.h"

#include "Numbers.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velto {

namespace {

constexpr double outputLevelDB = -20;

double secondsAt(std::size_t frame) { return static_cast<double>(frame) / sampleRateHz; }

// The part of `buffer` that a voice of `length` frames starting at `start` may write.
std::span<float> voiceSpan(Samples& buffer, std::size_t start, std::size_t length) {
  const std::size_t begin = std::min(start, buffer.size());
  return std::span(buffer).subspan(begin, std::min(length, buffer.size() - begin));
}

void mixIn(float& sample, double value) {
  sample = static_cast<float>(static_cast<double>(sample) + value);
}

void addKick(std::span<float> out) {
  for (std::size_t i = 0; i < out.size(); ++i) {
    const double tau = secondsAt(i);
    // Instantaneous frequency times elapsed time, not its integral: the chirp falls faster.
    const double frequency = 55 + 75 * std::exp(-tau / 0.022);
    const double amplitude = 0.9 * std::exp(-tau / 0.075);
    mixIn(out[i], amplitude * std::sin(twoPi * frequency * tau));
  }
}

void addSnare(std::span<float> out, Xorshift64& generator) {
  Biquad noiseFilter = Biquad::bandpass(1900, 0.7, sampleRateHz);
  Biquad toneFilter = Biquad::bandpass(190, 2.0, sampleRateHz);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const double tau = secondsAt(i);
    const float tone = toneFilter.process(static_cast<float>(std::sin(twoPi * 185 * tau)));
    const float noise = noiseFilter.process(static_cast<float>(generator.nextNoise()));
    const double envelope = std::exp(-tau / 0.055);
    mixIn(out[i],
          envelope * (1.4 * static_cast<double>(tone) + 0.8 * static_cast<double>(noise)) * 0.55);
  }
}

void addHat(std::span<float> out, double decaySeconds, Xorshift64& generator) {
  Biquad filter = Biquad::highpass(7800, 0.7, sampleRateHz);
  for (std::size_t i = 0; i < out.size(); ++i) {
    const double envelope = std::exp(-secondsAt(i) / decaySeconds);
    const float noise = filter.process(static_cast<float>(generator.nextNoise()));
    mixIn(out[i], envelope * static_cast<double>(noise) * 0.3);
  }
}

} // namespace

std::size_t Signals::frameCount(double seconds) {
  const double frames = seconds * sampleRateHz;
  if (!(frames >= 0))
    fatalError("a duration is negative or not a number");
  return static_cast<std::size_t>(Numbers::truncated(frames));
}

Samples Signals::pink(double seconds, std::uint64_t seed) {
  Samples out(frameCount(seconds));
  Xorshift64 generator(seed);
  double b0 = 0, b1 = 0, b2 = 0, b3 = 0, b4 = 0, b5 = 0, b6 = 0;
  for (float& sample : out) {
    const double w = generator.nextNoise();
    b0 = 0.99886 * b0 + 0.0555179 * w;
    b1 = 0.99332 * b1 + 0.0750759 * w;
    b2 = 0.969 * b2 + 0.153852 * w;
    b3 = 0.8665 * b3 + 0.3104856 * w;
    b4 = 0.55 * b4 + 0.5329522 * w;
    b5 = -0.7616 * b5 - 0.016898 * w;
    sample = static_cast<float>(0.11 * (b0 + b1 + b2 + b3 + b4 + b5 + b6 + 0.5362 * w));
    b6 = 0.115926 * w;
  }
  return Measure::normalizeRMS(std::move(out), outputLevelDB);
}

Samples Signals::drums(double seconds, std::uint64_t seed) {
  constexpr double stepSeconds = 0.3;
  constexpr std::size_t kickFrames = 13440;
  constexpr std::size_t snareFrames = 9600;
  constexpr std::size_t closedHatFrames = 2640;
  constexpr std::size_t openHatFrames = 7680;

  Samples out(frameCount(seconds));
  Xorshift64 generator(seed);
  double time = 0; // a running sum: its rounding decides where some steps start
  for (std::size_t step = 0; time < seconds; ++step, time += stepSeconds) {
    const std::size_t start = frameCount(time);
    const std::size_t position = step % 8;
    if (position == 0 || position == 3 || position == 6)
      addKick(voiceSpan(out, start, kickFrames));
    if (position == 4)
      addSnare(voiceSpan(out, start, snareFrames), generator);
    if (position == 7)
      addHat(voiceSpan(out, start, openHatFrames), 0.05, generator);
    else
      addHat(voiceSpan(out, start, closedHatFrames), 0.014, generator);
  }
  return Measure::normalizeRMS(std::move(out), outputLevelDB);
}

Samples Signals::pad(double seconds, std::uint64_t seed) {
  constexpr std::array<double, 4> rootsHz{110.0, 164.81, 220.0, 277.18};
  constexpr std::array<double, 3> detunings{0.994, 1.0, 1.007};
  constexpr std::size_t fadeFrames = 480;

  struct Sawtooth {
    double increment; // cycles per frame
    double phase;     // cycles
  };
  std::array<Sawtooth, rootsHz.size() * detunings.size()> oscillators;
  Xorshift64 generator(seed);
  std::size_t index = 0;
  for (const double root : rootsHz)
    for (const double detuning : detunings)
      oscillators[index++] = {root * detuning / sampleRateHz, generator.nextUnit()};

  Samples out(frameCount(seconds));
  Biquad filter = Biquad::lowpass(5200, 0.6, sampleRateHz);
  for (float& sample : out) {
    double sum = 0;
    for (Sawtooth& oscillator : oscillators) {
      oscillator.phase += oscillator.increment;
      if (oscillator.phase >= 1)
        oscillator.phase -= 1;
      sum += 2 * oscillator.phase - 1;
    }
    sample = filter.process(static_cast<float>(sum / static_cast<double>(oscillators.size())));
  }

  for (std::size_t i = 0; i < std::min(out.size(), fadeFrames); ++i) {
    const float gain = static_cast<float>(i) / static_cast<float>(fadeFrames);
    out[i] *= gain;
    out[out.size() - 1 - i] *= gain;
  }
  return Measure::normalizeRMS(std::move(out), outputLevelDB);
}

std::pair<Samples, Samples> Signals::stereoise(std::span<const float> mono, double correlation,
                                               std::uint64_t seed) {
  Xorshift64 generator(seed + 7717);
  Biquad filter = Biquad::lowpass(6000, 0.7, sampleRateHz);
  Samples noise(mono.size());
  for (float& sample : noise)
    sample = filter.process(static_cast<float>(generator.nextNoise()));

  const double levelDB = Measure::rmsDB(mono);
  noise = Measure::normalizeRMS(std::move(noise), levelDB);

  const double noiseWeight = 1 - correlation >= 0 ? 1 - correlation : 0;
  Samples mix(mono.size());
  for (std::size_t i = 0; i < mix.size(); ++i)
    mix[i] = static_cast<float>(correlation * static_cast<double>(mono[i]) +
                                noiseWeight * static_cast<double>(noise[i]));
  return {Samples(mono.begin(), mono.end()), Measure::normalizeRMS(std::move(mix), levelDB)};
}

} // namespace velto
