// Second-order filter sections and level measurements.
//
// Samples are 32-bit floats, full scale is 1; every sum, coefficient and state is a 64-bit float.
// Nothing here locks or logs, and only normalizeRMS allocates: what is called on one section or one
// buffer by one thread is real-time safe. NaN goes in and out unnoticed.
#pragma once

#include "Pair.h"

#include <cstddef>
#include <span>
#include <vector>

namespace velto {

// A mono buffer at 48000 Hz.
using Samples = std::vector<float>;

// The sample rate of everything that Velto computes and plays, in Hz.
inline constexpr double sampleRateHz = 48000.0;

// 2π, to the nearest double.
inline constexpr double twoPi = 6.283185307179586;

// One second-order section in direct form I, normalised so that a0 is 1. The designs follow Robert
// Bristow-Johnson's "Cookbook formulae for audio EQ biquad filter coefficients"; each returns a
// section whose state is zero.
//
// A plain value: copying it copies the state. Changing coefficients while it runs is not
// click-free.
struct Biquad {
  double b0 = 1, b1 = 0, b2 = 0; // feed-forward
  double a1 = 0, a2 = 0;         // feedback
  double x1 = 0, x2 = 0;         // the previous two inputs
  double y1 = 0, y2 = 0;         // the previous two outputs, before rounding to 32 bits

  // The designs. `f0` and `sampleRate` in Hz, 0 < f0 < sampleRate / 2; `q` > 0. Other values are
  // not checked and give a section of no use.

  // Unity gain at 0 Hz, `q` (as a factor) at `f0`, 12 dB less an octave far above it.
  [[nodiscard]] static Biquad lowpass(double f0, double q, double sampleRate);
  // Unity gain at half the sample rate, `q` (as a factor) at `f0`, 12 dB less an octave far below.
  [[nodiscard]] static Biquad highpass(double f0, double q, double sampleRate);
  // Unity gain at `f0`, and -3 dB at two frequencies f0 / q apart (less, near half the sample
  // rate).
  [[nodiscard]] static Biquad bandpass(double f0, double q, double sampleRate);
  // A gain of `gainDB` dB at `f0`, unity far from it, and half of `gainDB` at two frequencies about
  // f0 / q apart. A gain of 0 dB changes nothing.
  [[nodiscard]] static Biquad peaking(double f0, double gainDB, double q, double sampleRate);

  // One sample through the section.
  [[nodiscard]] float process(float sample) {
    const double x = static_cast<double>(sample);
    const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    return static_cast<float>(y);
  }

  // The magnitude of the designed response at `frequency` Hz, in dB, whatever the state; -360 dB at
  // a perfect zero. 0 <= frequency <= sampleRate / 2.
  [[nodiscard]] double responseDB(double frequency, double sampleRate) const;
};

// A section that takes two successive samples at once, and gives what it would give for one after
// the other: all that needs none of its outputs is computed for both together.
class PairedBiquad {
public:
  // Begins with `section`'s state.
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
  Pair inputs_; // the previous two, the older one first
  double y1_, y2_;
};

// Levels in dB relative to full scale. Sums run from the first sample to the last.
namespace Measure {

// RMS level; -infinity for an empty buffer, -240 for digital silence, 0 for a square wave of ±1.
[[nodiscard]] double rmsDB(std::span<const float> x);

// The RMS level of samples that are seen one by one, for whoever makes or filters them anyway.
class RunningRMS {
public:
  void add(float sample) {
    const double v = static_cast<double>(sample);
    sumOfSquares_ += v * v;
  }
  // One after the other.
  void add(SamplePair samples) {
    const Pair v = widened(samples);
    const Pair squares = v * v;
    sumOfSquares_ += squares[0];
    sumOfSquares_ += squares[1];
  }
  // What rmsDB() says of the `count` samples that were added.
  [[nodiscard]] double levelDB(std::size_t count) const;

private:
  double sumOfSquares_ = 0;
};

// Level of the largest absolute sample; -240 for silence and for an empty buffer.
[[nodiscard]] double peakDB(std::span<const float> x);

// The factor that takes an RMS level of `levelDB` to `targetDB`; 1 where `levelDB` is not finite.
[[nodiscard]] float gainFrom(double levelDB, double targetDB);

// Multiplies every sample by `gain`.
void scale(std::span<float> x, float gain);

// `x` scaled to an RMS level of `targetDB`. Silence stays silent, an empty buffer empty.
[[nodiscard]] Samples normalizeRMS(Samples x, double targetDB);

// Amplitude at `freq` Hz by one Hann-windowed DFT bin, 4 / x.size() of the sample rate wide between
// its zeros. A sine of amplitude a at `freq` measures about a / 2: the window's coherent gain stays
// in the figure, so compare ratios. `x` holds two samples or more; an empty buffer gives 0.
[[nodiscard]] double magnitudeAt(std::span<const float> x, double freq, double sampleRate);

} // namespace Measure

} // namespace velto
