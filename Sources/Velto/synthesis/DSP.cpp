#include "DSP.h"

#include "Quad.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velto {

namespace {

// Terms shared by all designs.
struct Prewarp {
  double cs, sn, alpha;

  Prewarp(double f0, double q, double sampleRate) : Prewarp(twoPi * f0 / sampleRate, q) {}

private:
  Prewarp(double w0, double q) : cs(std::cos(w0)), sn(std::sin(w0)), alpha(sn / (2 * q)) {}
};

Biquad normalized(double b0, double b1, double b2, double a0, double a1, double a2) {
  Biquad section;
  section.b0 = b0 / a0;
  section.b1 = b1 / a0;
  section.b2 = b2 / a0;
  section.a1 = a1 / a0;
  section.a2 = a2 / a0;
  return section;
}

double decibels(double amplitude, double floor) {
  return 20 * std::log10(std::max(amplitude, floor));
}

} // namespace

Biquad Biquad::lowpass(double f0, double q, double sampleRate) {
  const Prewarp p(f0, q, sampleRate);
  return normalized((1 - p.cs) / 2, 1 - p.cs, (1 - p.cs) / 2, 1 + p.alpha, -2 * p.cs, 1 - p.alpha);
}

Biquad Biquad::highpass(double f0, double q, double sampleRate) {
  const Prewarp p(f0, q, sampleRate);
  return normalized((1 + p.cs) / 2, -(1 + p.cs), (1 + p.cs) / 2, 1 + p.alpha, -2 * p.cs,
                    1 - p.alpha);
}

Biquad Biquad::bandpass(double f0, double q, double sampleRate) {
  const Prewarp p(f0, q, sampleRate);
  return normalized(p.alpha, 0, -p.alpha, 1 + p.alpha, -2 * p.cs, 1 - p.alpha);
}

Biquad Biquad::peaking(double f0, double gainDB, double q, double sampleRate) {
  const Prewarp p(f0, q, sampleRate);
  const double a = std::pow(10.0, gainDB / 40);
  return normalized(1 + p.alpha * a, -2 * p.cs, 1 - p.alpha * a, 1 + p.alpha / a, -2 * p.cs,
                    1 - p.alpha / a);
}

double Biquad::responseDB(double frequency, double sampleRate) const {
  constexpr double floor = 1e-18;
  const double w = twoPi * frequency / sampleRate;
  const double numeratorRe = b0 + b1 * std::cos(w) + b2 * std::cos(2 * w);
  const double numeratorIm = b1 * std::sin(w) + b2 * std::sin(2 * w);
  const double denominatorRe = 1 + a1 * std::cos(w) + a2 * std::cos(2 * w);
  const double denominatorIm = a1 * std::sin(w) + a2 * std::sin(2 * w);
  const double numerator = std::sqrt(numeratorRe * numeratorRe + numeratorIm * numeratorIm);
  const double denominator =
      std::sqrt(denominatorRe * denominatorRe + denominatorIm * denominatorIm);
  return decibels(numerator / std::max(denominator, floor), floor);
}

double Measure::rmsDB(std::span<const float> x) {
  RunningRMS rms;
  for (const float sample : x)
    rms.add(sample);
  return rms.levelDB(x.size());
}

double Measure::rmsDB(double sumOfSquares, std::size_t count) {
  if (count == 0)
    return -std::numeric_limits<double>::infinity();
  return decibels(std::sqrt(sumOfSquares / static_cast<double>(count)), 1e-12);
}

double Measure::peakDB(std::span<const float> x) {
  SampleQuad peaks{};
  std::size_t i = 0;
  for (; i + 4 <= x.size(); i += 4) {
    const SampleQuad now = magnitudes(quadAt(x, i));
    peaks = now > peaks ? now : peaks;
  }
  float peak = std::max({peaks[0], peaks[1], peaks[2], peaks[3]});
  for (; i < x.size(); ++i)
    peak = std::max(peak, std::abs(x[i]));
  return decibels(static_cast<double>(peak), 1e-12);
}

float Measure::gainFrom(double levelDB, double targetDB) {
  if (!std::isfinite(levelDB))
    return 1;
  return static_cast<float>(std::pow(10.0, (targetDB - levelDB) / 20));
}

void Measure::scale(std::span<float> x, float gain) {
  for (float& sample : x)
    sample *= gain;
}

Samples Measure::normalizeRMS(Samples x, double targetDB) {
  scale(x, gainFrom(rmsDB(x), targetDB));
  return x;
}

double Measure::magnitudeAt(std::span<const float> x, double freq, double sampleRate) {
  if (x.empty())
    return 0;
  const auto n = static_cast<double>(x.size());
  const double omega = twoPi * freq / sampleRate;
  double re = 0;
  double im = 0;
  double k = 0;
  for (const float sample : x) {
    const double window = 0.5 - 0.5 * std::cos(twoPi * k / (n - 1));
    const double v = window * static_cast<double>(sample);
    re += v * std::cos(omega * k);
    im -= v * std::sin(omega * k);
    k += 1;
  }
  return std::sqrt(re * re + im * im) / (n * 0.5);
}

} // namespace velto
