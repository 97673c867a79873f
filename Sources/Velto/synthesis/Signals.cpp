#include "Signals.h"

#include "DrumVoices.h"
#include "FatalError.h"
#include "Numbers.h"
#include "Pair.h"
#include "Xorshift64.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace velto {

namespace {

constexpr double outputLevelDB = -20;
constexpr double noiseMean = 1; // of Xorshift64::nextNoise

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

// Paul Kellet's refined pink filter: six one-pole filters and a delayed tap, summed in this order.
// Filters are computed in pairs, sums in pairs of successive frames.
class PinkFilter {
public:
  // Filters two frames of white noise.
  Pair next(Pair noise) {
    const Poles now = after(poles_, noise[0]);
    const Poles then = after(now, noise[1]);
    const Pair tap{tap_, 0.115926 * noise[0]};
    poles_ = then;
    tap_ = 0.115926 * noise[1];
    return 0.11 * (firstOfEach(now.b01, then.b01) + secondOfEach(now.b01, then.b01) +
                   firstOfEach(now.b23, then.b23) + secondOfEach(now.b23, then.b23) +
                   firstOfEach(now.b45, then.b45) + secondOfEach(now.b45, then.b45) + tap +
                   0.5362 * noise);
  }

private:
  struct Poles {
    Pair b01{}, b23{}, b45{};
  };

  static Poles after(const Poles& poles, double noise) {
    const Pair w = both(noise);
    return {Pair{0.99886, 0.99332} * poles.b01 + Pair{0.0555179, 0.0750759} * w,
            Pair{0.969, 0.8665} * poles.b23 + Pair{0.153852, 0.3104856} * w,
            Pair{0.55, -0.7616} * poles.b45 + Pair{0.5329522, -0.016898} * w};
  }

  Poles poles_;
  double tap_ = 0;
};

// Twelve sawtooth oscillators on an A major chord, three per note, with random phases.
//
// Phases are stored doubled: doubling is exact, so the sums are the same. Oscillators are computed
// in pairs, sums in pairs of successive frames.
class SawtoothChord {
public:
  static constexpr std::size_t blockFrames = 8;
  using Block = std::array<Pair, blockFrames / 2>; // successive frames

  explicit SawtoothChord(Xorshift64& generator) {
    constexpr std::array<double, 4> rootsHz{110.0, 164.81, 220.0, 277.18};
    constexpr std::array<double, 3> detunings{0.994, 1.0, 1.007};
    for (std::size_t i = 0; i < voices; ++i) {
      const double increment = rootsHz[i / 3] * detunings[i % 3] / sampleRateHz;
      oscillators_[i / 2].increment[i % 2] = 2 * increment;
      oscillators_[i / 2].phase[i % 2] = 2 * generator.nextUnit();
    }
  }

  // The mean of the oscillators in each of the next frames.
  Block next() {
    return next([](std::size_t) {});
  }

  // Same, and calls `meanwhile` with 0 to blockFrames / 2 - 1 between oscillators. Interleaving
  // hides the latency of dependent operations such as a filter's.
  template <typename Meanwhile>
  Block next(Meanwhile meanwhile) {
    Block sums{};
    for (std::size_t i = 0; i < oscillators_.size(); ++i) {
      if (i < sums.size())
        meanwhile(i);
      Oscillators& pair = oscillators_[i];
      if (pair.mayWrap())
        pair.addTo<true>(sums);
      else
        pair.addTo<false>(sums);
    }
    for (Pair& sum : sums)
      sum /= static_cast<double>(voices);
    return sums;
  }

private:
  static constexpr std::size_t voices = 12;

  struct Oscillators {
    Pair increment{};
    Pair phase{}; // in [0, 2)

    // Whether a phase may reach 2 within a block, with a frame of margin for rounding.
    [[nodiscard]] bool mayWrap() const {
      const Pair end = phase + static_cast<double>(blockFrames + 1) * increment;
      return end[0] >= 2 || end[1] >= 2;
    }

    template <bool wraps>
    Pair advance() {
      phase += increment;
      if constexpr (wraps)
        phase -= phase >= 2.0 ? both(2.0) : both(0.0);
      return phase;
    }

    template <bool wraps>
    void addTo(Block& sums) {
      for (Pair& sum : sums) {
        const Pair now = advance<wraps>();
        const Pair then = advance<wraps>();
        sum += firstOfEach(now, then) - 1.0;
        sum += secondOfEach(now, then) - 1.0;
      }
    }
  };

  std::array<Oscillators, voices / 2> oscillators_;
};

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
  Xorshift64 generator(seed);
  PinkFilter filter;
  if (noise == Noise::asDrawn) {
    const double levelDB =
        fillPairs(out, [&] { return rounded(filter.next(generator.nextNoisePair())); });
    return Measure::gainFrom(levelDB, outputLevelDB);
  }
  // A fourth-order Butterworth high-pass in two sections.
  PairedBiquad first(Biquad::highpass(20, 0.5412, sampleRateHz));
  PairedBiquad second(Biquad::highpass(20, 1.3066, sampleRateHz));
  const double levelDB = fillPairs(out, [&] {
    return second.process(
        first.process(rounded(filter.next(generator.nextNoisePair() - noiseMean))));
  });
  return Measure::gainFrom(levelDB, outputLevelDB);
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

  Xorshift64 generator(seed);
  SawtoothChord chord(generator);
  PairedBiquad filter(Biquad::lowpass(5200, 0.6, sampleRateHz));
  SawtoothChord::Block means = chord.next();
  for (std::size_t begin = 0; begin < out.size(); begin += SawtoothChord::blockFrames) {
    std::array<SamplePair, means.size()> filtered{};
    means = chord.next([&](std::size_t i) { filtered[i] = filter.process(rounded(means[i])); });
    const std::size_t count = std::min(SawtoothChord::blockFrames, out.size() - begin);
    std::memcpy(&out[begin], filtered.data(), count * sizeof(float));
  }

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
  const double removed = noise == Noise::audible ? noiseMean : 0;
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
