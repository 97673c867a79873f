#include "Listener.h"

#include "Spectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace velto::kit::Listener {

namespace {

constexpr std::size_t bandCount = 27;

// Exact third-octave bands: ten per decade, one of them at 1 kHz.
double centreHz(std::size_t band) {
  return 1000 * std::pow(10, (static_cast<double>(band) - 14) / 10);
}

std::array<double, bandCount> bandPowers(const Recording& recording) {
  const auto power = powerSpectrum(std::span(recording.l).first(spectrumFrames));
  std::array<double, bandCount> bands{};
  for (std::size_t band = 0; band < bandCount; ++band)
    for (std::size_t bin = 1; bin < power.size(); ++bin) {
      const double octaves =
          std::log2(static_cast<double>(bin) * 48000 / spectrumFrames / centreHz(band));
      if (std::abs(octaves) <= 1.0 / 6)
        bands[band] += power[bin];
    }
  return bands;
}

double power(const Recording& recording) {
  double sum = 0;
  for (const auto* channel : {&recording.l, &recording.r})
    for (const float sample : *channel)
      sum += static_cast<double>(sample) * static_cast<double>(sample);
  return sum;
}

// Correlation coefficient of two channels.
double correlation(const std::vector<float>& a, const std::vector<float>& b) {
  double ab = 0, aa = 0, bb = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const auto x = static_cast<double>(a[i]), y = static_cast<double>(b[i]);
    ab += x * y;
    aa += x * x;
    bb += y * y;
  }
  return ab / std::sqrt(aa * bb);
}

// `x` less the straight line that fits it best.
std::vector<double> withoutTrend(std::span<const float> x) {
  const double middle = (static_cast<double>(x.size()) - 1) / 2;
  double sum = 0, slope = 0, squares = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double t = static_cast<double>(i) - middle;
    sum += static_cast<double>(x[i]);
    slope += t * static_cast<double>(x[i]);
    squares += t * t;
  }
  std::vector<double> rest;
  for (std::size_t i = 0; i < x.size(); ++i)
    rest.push_back(static_cast<double>(x[i]) - sum / static_cast<double>(x.size()) -
                   (static_cast<double>(i) - middle) * slope / squares);
  return rest;
}

// Frames of two parts at the same place of the loop.
struct Stretch {
  std::size_t inA = 0, inB = 0, frames = 0;
};

std::vector<Stretch> stretches(const Part& a, const Part& b, std::size_t loopFrames) {
  // Frame i of `a` lies at the place of frame i + shift + k * loopFrames of `b`, for any integer k.
  const auto loop = static_cast<std::ptrdiff_t>(loopFrames);
  const auto sizeA = static_cast<std::ptrdiff_t>(a.sound.frames());
  const auto sizeB = static_cast<std::ptrdiff_t>(b.sound.frames());
  const auto apart = static_cast<std::ptrdiff_t>(a.begin) - static_cast<std::ptrdiff_t>(b.begin);
  std::vector<Stretch> found;
  for (std::ptrdiff_t shift = apart % loop - ((sizeA / loop) + 2) * loop; shift < sizeB;
       shift += loop) {
    const std::ptrdiff_t begin = std::max<std::ptrdiff_t>(0, -shift);
    const std::ptrdiff_t length = std::min(sizeA - begin, sizeB - begin - shift);
    if (length > 0)
      found.push_back({static_cast<std::size_t>(begin), static_cast<std::size_t>(begin + shift),
                       static_cast<std::size_t>(length)});
  }
  return found;
}

} // namespace

std::pair<Recording, Recording> samePlace(const Part& a, const Part& b, std::size_t loopFrames) {
  Stretch longest;
  for (const Stretch& stretch : stretches(a, b, loopFrames))
    if (stretch.frames > longest.frames)
      longest = stretch;
  return {a.sound.part(longest.inA, longest.frames), b.sound.part(longest.inB, longest.frames)};
}

std::pair<Recording, Recording> everyPlace(const Part& a, const Part& b, std::size_t loopFrames) {
  std::pair<Recording, Recording> all;
  for (const Stretch& stretch : stretches(a, b, loopFrames)) {
    all.first.append(a.sound, stretch.inA, stretch.frames);
    all.second.append(b.sound, stretch.inB, stretch.frames);
  }
  return all;
}

std::optional<std::size_t> boostedBand(const Recording& a, const Recording& b) {
  if (a.frames() < spectrumFrames || b.frames() < spectrumFrames)
    return std::nullopt;
  const auto before = bandPowers(a), after = bandPowers(b);
  std::array<double, bandCount> lift{};
  for (std::size_t band = 0; band < bandCount; ++band)
    lift[band] = 10 * std::log10(after[band] / before[band]);
  // Loudness matching shifts all bands alike, so only the lift relative to the others counts.
  auto sorted = lift;
  std::sort(sorted.begin(), sorted.end());
  const auto highest = std::max_element(lift.begin(), lift.end());
  if (!(*highest - sorted[bandCount / 2] >= 1))
    return std::nullopt;
  return static_cast<std::size_t>(highest - lift.begin());
}

double levelDifferenceDB(const Recording& a, const Recording& b) {
  return 10 * std::log10(power(b) / power(a));
}

double gainReductionDB(const Recording& a, const Recording& b) {
  constexpr float loud = 0.001F;
  double least = std::numeric_limits<double>::infinity(), most = 0;
  for (std::size_t i = 0; i < std::min(a.frames(), b.frames()); ++i) {
    if (std::abs(a.l[i]) < loud)
      continue;
    const double gain = static_cast<double>(b.l[i]) / static_cast<double>(a.l[i]);
    least = std::min(least, gain);
    most = std::max(most, gain);
  }
  return 20 * std::log10(most / least);
}

double gainReductionByPiecesDB(const Recording& a, const Recording& b) {
  constexpr std::size_t piece = 240, step = 60;
  constexpr double loud = 1e-7; // mean power: -70 dB
  double least = std::numeric_limits<double>::infinity(), most = 0;
  for (std::size_t i = 0; i + piece <= std::min(a.frames(), b.frames()); i += step) {
    const auto x = withoutTrend(std::span(a.l).subspan(i, piece));
    const auto y = withoutTrend(std::span(b.l).subspan(i, piece));
    const double xx = std::inner_product(x.begin(), x.end(), x.begin(), 0.0);
    if (xx < loud * double{piece})
      continue;
    const double gain = std::inner_product(x.begin(), x.end(), y.begin(), 0.0) / xx;
    least = std::min(least, gain);
    most = std::max(most, gain);
  }
  return 20 * std::log10(most / least);
}

std::optional<std::size_t> flippedSlot(std::span<const Part> parts, std::size_t loopFrames) {
  constexpr std::size_t slots = 3, enough = 4800;
  // For each pair of slots: +1 if their right channels are in phase, -1 if opposed, 0 if unknown.
  std::array<std::array<int, slots>, slots> sign{};
  for (const Part& a : parts)
    for (const Part& b : parts) {
      if (a.slot >= slots || b.slot >= slots || a.slot == b.slot)
        continue;
      const auto [x, y] = samePlace(a, b, loopFrames);
      if (x.frames() < enough)
        continue;
      const double together = correlation(x.r, y.r);
      if (std::abs(together) > 0.9)
        sign[a.slot][b.slot] = sign[b.slot][a.slot] = together > 0 ? 1 : -1;
    }
  // Two relations between three slots give the third.
  for (std::size_t i = 0; i < slots; ++i) {
    const std::size_t j = (i + 1) % slots, k = (i + 2) % slots;
    if (sign[i][j] == 0)
      sign[i][j] = sign[j][i] = sign[i][k] * sign[k][j];
  }
  for (std::size_t i = 0; i < slots; ++i) {
    const std::size_t j = (i + 1) % slots, k = (i + 2) % slots;
    if (sign[i][j] == -1 && sign[i][k] == -1 && sign[j][k] == 1)
      return i;
  }
  return std::nullopt;
}

} // namespace velto::kit::Listener
