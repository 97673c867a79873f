#include "Spectrum.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <stdexcept>
#include <utility>

namespace velto::kit {

namespace {

using Complex = std::complex<double>;

constexpr double sampleRate = 48000;

// Cooley-Tukey FFT in place; the size is a power of two. `direction` is +1 forwards, -1 backwards
// (unscaled).
void transform(std::vector<Complex>& x, double direction) {
  const std::size_t size = x.size();
  if (size == 0 || (size & (size - 1)) != 0)
    throw std::invalid_argument("the transform takes a power of two of samples");
  for (std::size_t i = 1, j = 0; i < size; ++i) {
    std::size_t bit = size >> 1;
    for (; (j & bit) != 0; bit >>= 1)
      j ^= bit;
    j ^= bit;
    if (i < j)
      std::swap(x[i], x[j]);
  }
  for (std::size_t half = 1; half < size; half *= 2)
    for (std::size_t k = 0; k < half; ++k) {
      const Complex turn = std::polar(1.0, -direction * std::numbers::pi * static_cast<double>(k) /
                                               static_cast<double>(half));
      for (std::size_t i = k; i < size; i += 2 * half) {
        const Complex odd = turn * x[i + half];
        x[i + half] = x[i] - odd;
        x[i] += odd;
      }
    }
}

std::vector<Complex> windowedTransform(std::span<const float> samples) {
  std::vector<Complex> x(samples.size());
  for (std::size_t i = 0; i < x.size(); ++i)
    x[i] = static_cast<double>(samples[i]) *
           (0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(i) /
                                 static_cast<double>(x.size())));
  transform(x, 1);
  return x;
}

double frequencyOf(std::size_t bin, std::size_t size) {
  return static_cast<double>(std::min(bin, size - bin)) * sampleRate / static_cast<double>(size);
}

} // namespace

std::vector<double> powerSpectrum(std::span<const float> x) {
  const auto bins = windowedTransform(x);
  const auto size = static_cast<double>(x.size());
  std::vector<double> power(x.size() / 2 + 1);
  for (std::size_t k = 0; k < bins.size(); ++k)
    power[std::min(k, bins.size() - k)] += std::norm(bins[k]) / (size * size);
  return power;
}

LoopLevel loopLevel(std::span<const float> x, double lowHz) {
  const auto size = static_cast<double>(x.size());
  double mean = 0, power = 0;
  for (const float sample : x) {
    mean += static_cast<double>(sample) / size;
    power += static_cast<double>(sample) * static_cast<double>(sample) / size;
  }
  power -= mean * mean;
  // Few lines lie below lowHz: subtract them one by one, each with its mirror image.
  for (double k = 1; k * sampleRate / size < lowHz; ++k) {
    const Complex turn = std::polar(1.0, -2 * std::numbers::pi * k / size);
    Complex line = 0, phase = 1;
    for (std::size_t i = 0; i < x.size(); ++i) {
      line += static_cast<double>(x[i]) * phase;
      phase *= turn;
    }
    power -= 2 * std::norm(line / size);
  }
  return {mean, 10 * std::log10(std::max(power, 0.0))};
}

double partAboveDB(std::span<const float> x, double lowHz) {
  const auto power = powerSpectrum(x);
  double whole = 0, above = 0;
  for (std::size_t k = 0; k < power.size(); ++k) {
    whole += power[k];
    if (frequencyOf(k, x.size()) >= lowHz)
      above += power[k];
  }
  return 10 * std::log10(above / whole);
}

double peakAboveDB(std::span<const float> x, double lowHz) {
  auto bins = windowedTransform(x);
  for (std::size_t k = 0; k < bins.size(); ++k)
    if (frequencyOf(k, bins.size()) < lowHz)
      bins[k] = 0;
  transform(bins, -1);
  double peak = 0;
  for (const Complex& sample : bins)
    peak = std::max(peak, std::abs(sample.real()));
  return 20 * std::log10(peak / static_cast<double>(bins.size()));
}

} // namespace velto::kit
