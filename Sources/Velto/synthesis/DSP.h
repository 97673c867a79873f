// Biquad filter sections and level measurements.
//
// Samples are 32-bit floats, full scale is 1; sums, coefficients and states are 64-bit floats.
// Real-time safe, except normalizeRMS(), which allocates. An object or buffer belongs to one thread
// at a time. NaN is not checked for.
#pragma once

#include "Pair.h"

#include <cstddef>
#include <span>
#include <vector>

namespace velto {

// A mono buffer at 48000 Hz.
using Samples = std::vector<float>;

// Sample rate of all rendering and playback, in Hz.
inline constexpr double sampleRateHz = 48000.0;

// 2π, to the nearest double.
inline constexpr double twoPi = 6.283185307179586;

// A second-order filter section in direct form I, normalised to a0 = 1. The designs follow Robert
// Bristow-Johnson, "Cookbook formulae for audio EQ biquad filter coefficients"; each returns a
// section with zero state.
//
// A plain value: copying it copies the state. Changing coefficients while it runs may click.
struct Biquad {
  double b0 = 1, b1 = 0, b2 = 0; // feed-forward
  double a1 = 0, a2 = 0;         // feedback
  double x1 = 0, x2 = 0;         // the previous two inputs
  double y1 = 0, y2 = 0;         // the previous two outputs, before rounding to 32 bits

  // Designs. `f0` and `sampleRate` in Hz, 0 < f0 < sampleRate / 2; `q` > 0. Not checked: arguments
  // out of range give an unusable section.

  // Unity gain at 0 Hz, a gain of `q` (linear) at `f0`, falling by 12 dB per octave far above it.
  [[nodiscard]] static Biquad lowpass(double f0, double q, double sampleRate);
  // Unity gain at half the sample rate, a gain of `q` (linear) at `f0`, falling by 12 dB per octave
  // far below it.
  [[nodiscard]] static Biquad highpass(double f0, double q, double sampleRate);
  // Unity gain at `f0`, -3 dB at two frequencies f0 / q apart (closer together near half the sample
  // rate).
  [[nodiscard]] static Biquad bandpass(double f0, double q, double sampleRate);
  // A gain of `gainDB` dB at `f0`, unity far from it, half of `gainDB` at two frequencies that lie
  // about f0 / q apart. 0 dB gives a flat response.
  [[nodiscard]] static Biquad peaking(double f0, double gainDB, double q, double sampleRate);

  // Filters one sample.
  [[nodiscard]] float process(float sample) {
    const double x = static_cast<double>(sample);
    const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    return static_cast<float>(y);
  }

  // Magnitude response at `frequency` (Hz) in dB, independent of the state; -360 dB at a perfect
  // zero. 0 <= frequency <= sampleRate / 2.
  [[nodiscard]] double responseDB(double frequency, double sampleRate) const;
};

// A section that filters two successive samples per call, with the same bits as one by one. The
// feed-forward part is computed for both at once.
class PairedBiquad {
public:
  // Starts with the state of `section`.
  explicit PairedBiquad(const Biquad& section)
      : section_(section), inputs_{section.x2, section.x1}, y1_(section.y1), y2_(section.y2) {}

  [[nodiscard]] SamplePair process(SamplePair samples) {
    const Pair x = widened(samples);
    const Pair before = straddling(inputs_, x);
    const Pair forward = section_.b0 * x + section_.b1 * before + section_.b2 * inputs_;
    const double first = forward[0] - section_.a1 * y1_ - section_.a2 * y2_;
    const double second = forward[1] - section_.a1 * first - section_.a2 * y1_;
    inputs_ = x;
    y2_ = first;
    y1_ = second;
    return rounded(Pair{first, second});
  }

private:
  Biquad section_;
  Pair inputs_; // the previous two, older one first
  double y1_, y2_;
};

// Levels in dB relative to full scale. Sums run from the first sample to the last.
namespace Measure {

// RMS level in dB; -infinity for an empty buffer, -240 for digital silence, 0 for a square wave of
// ±1.
[[nodiscard]] double rmsDB(std::span<const float> x);
// Same, of `count` samples whose squares add up to `sumOfSquares`.
[[nodiscard]] double rmsDB(double sumOfSquares, std::size_t count);

// Accumulates an RMS level, for loops that compute the samples anyway.
class RunningRMS {
public:
  void add(float sample) {
    const double v = static_cast<double>(sample);
    sumOfSquares_ += v * v;
  }
  // Adds the first sample, then the second.
  void add(SamplePair samples) {
    const Pair v = widened(samples);
    const Pair squares = v * v;
    sumOfSquares_ += squares[0];
    sumOfSquares_ += squares[1];
  }
  // Same as rmsDB() of the samples added so far, `count` in number.
  [[nodiscard]] double levelDB(std::size_t count) const { return rmsDB(sumOfSquares_, count); }

private:
  double sumOfSquares_ = 0;
};

// Peak level in dB; -240 for silence and for an empty buffer.
[[nodiscard]] double peakDB(std::span<const float> x);

// The linear gain from an RMS level of `levelDB` to one of `targetDB`; 1 if `levelDB` is not
// finite.
[[nodiscard]] float gainFrom(double levelDB, double targetDB);

// Multiplies every sample by `gain`.
void scale(std::span<float> x, float gain);

// `x` scaled to an RMS level of `targetDB`. Silence stays silent, an empty buffer empty.
[[nodiscard]] Samples normalizeRMS(Samples x, double targetDB);

// Magnitude of one Hann-windowed DFT bin at `freq` (Hz), with a main lobe 4 * sampleRate / x.size()
// Hz wide. A sine of amplitude a at `freq` gives about a / 2, because the window's coherent gain is
// not compensated: compare ratios. `x` has at least two samples; an empty buffer gives 0.
[[nodiscard]] double magnitudeAt(std::span<const float> x, double freq, double sampleRate);

} // namespace Measure

} // namespace velto
