#include "Scales.h"

#include "Numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace velto {

namespace {

constexpr double majorTick = 22; // points

// `x` as a fraction of the strip, 0 to 1.
double fractionAt(double x, double width) {
  return width > 0 ? std::clamp(x, 0.0, width) / width : 0;
}

// The band centre `bands` up the axis from the one nearest to `frequency`, clamped to the axis.
double bandFrom(const FrequencyScale& scale, double frequency, std::int64_t bands) {
  const auto indexOf = [](double f) { return static_cast<std::int64_t>(Bands::nearestIndex(f)); };
  const std::int64_t band =
      std::clamp(indexOf(std::clamp(frequency, scale.lowest, scale.highest)) + bands,
                 indexOf(scale.lowest), indexOf(scale.highest));
  return Bands::centres[static_cast<std::size_t>(band)];
}

} // namespace

double FrequencyScale::position(double frequency, double width) const {
  return width * std::log2(frequency / lowest) / std::log2(highest / lowest);
}

double FrequencyScale::valueAt(double x, double width) const {
  const double frequency = lowest * std::exp2(fractionAt(x, width) * std::log2(highest / lowest));
  return Bands::centres[Bands::nearestIndex(frequency)];
}

double FrequencyScale::nearest(double frequency) const {
  return bandFrom(*this, frequency, 0);
}

double FrequencyScale::moved(double frequency, Move move) const {
  constexpr std::int64_t bandsPerOctave = 3;
  return bandFrom(*this, frequency, KeyMoves::steps(move, bandsPerOctave));
}

std::vector<ScaleTick> FrequencyScale::ticks() const {
  constexpr std::array decades{100.0, 1000.0, 10000.0};
  constexpr double minorTick = 12;
  std::vector<ScaleTick> ticks;
  for (const double centre : Bands::centres) {
    if (centre < lowest || centre > highest)
      continue;
    const bool decade = std::find(decades.begin(), decades.end(), centre) != decades.end();
    ticks.push_back(
        {centre, decade ? majorTick : minorTick, decade, decade ? Bands::label(centre) : ""});
  }
  return ticks;
}

std::string FrequencyScale::text(double frequency) {
  return Bands::label(frequency) + " Hz";
}

std::string FrequencyScale::spoken(double frequency) {
  std::string label = Bands::label(frequency);
  if (!label.ends_with('k'))
    return label + " Hz";
  label.pop_back();
  return label + " kHz";
}

double DecibelScale::position(double decibels, double width) const {
  return width * (decibels - lowest) / (highest - lowest);
}

double DecibelScale::valueAt(double x, double width) const {
  const double value = lowest + fractionAt(x, width) * (highest - lowest);
  return std::round(value / step) * step;
}

double DecibelScale::nearest(double decibels) const {
  const double steps = std::clamp(std::round(decibels / step), std::round(lowest / step),
                                  std::round(highest / step));
  return steps * step + 0.0; // no negative zero
}

double DecibelScale::moved(double decibels, Move move) const {
  const double page = isCoarse() ? 2 : 1; // dB
  const auto steps = static_cast<double>(KeyMoves::steps(move, std::llround(page / step)));
  return nearest(nearest(decibels) + steps * step);
}

std::vector<ScaleTick> DecibelScale::ticks() const {
  constexpr double minorTick = 11;
  const double spacing = isCoarse() ? 1 : 0.5;
  const auto count = static_cast<int>(std::floor((highest - lowest) / spacing));
  std::vector<ScaleTick> ticks;
  for (int i = 0; i <= count; ++i) {
    const double value = lowest + i * spacing;
    const bool whole = value == std::floor(value);
    const bool major = whole && (!isCoarse() || std::fmod(value, 2) == 0);
    ticks.push_back(
        {value, major ? majorTick : minorTick, major, major ? Numbers::fixed(value, 0) : ""});
  }
  return ticks;
}

std::string DecibelScale::text(double decibels) {
  return Numbers::fixed(decibels, 2) + " dB";
}

} // namespace velto
