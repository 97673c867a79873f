#include "Answering.h"

#include "Drills.h"
#include "Numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace velto {

namespace {

// The pointer's place along the strip, 0 to 1.
double fractionAt(double x, double width) {
  return width > 0 ? std::clamp(x, 0.0, width) / width : 0;
}

// How many steps a key leads up an axis, a page being `page` of them. A step beyond every end
// stands for the end.
std::int64_t stepsOf(Move move, std::int64_t page) {
  constexpr std::int64_t beyond = 1'000'000;
  switch (move) {
  case Move::left:
  case Move::down:
    return -1;
  case Move::right:
  case Move::up:
    return 1;
  case Move::pageDown:
    return -page;
  case Move::pageUp:
    return page;
  case Move::toStart:
    return -beyond;
  case Move::toEnd:
    break;
  }
  return beyond;
}

// The band centre so many bands up the axis from the one nearest to `frequency`, held to the axis.
double bandFrom(const FrequencyScale& scale, double frequency, std::int64_t bands) {
  const auto indexOf = [](double f) { return static_cast<std::int64_t>(Bands::nearestIndex(f)); };
  const std::int64_t band = std::clamp(indexOf(std::clamp(frequency, scale.lo, scale.hi)) + bands,
                                       indexOf(scale.lo), indexOf(scale.hi));
  return Bands::centres[static_cast<std::size_t>(band)];
}

using Answering::chipGap;
using Answering::ChipPlace;
using Answering::ChipPlaces;
using Answering::chipStackGap;
using Answering::chipTop;
using Answering::MarkerSize;

double rightOf(const MarkerSize& marker) {
  return marker.x + chipGap;
}
double leftOf(const MarkerSize& marker) {
  return marker.x - chipGap - marker.chipWidth;
}

bool fitsRight(const MarkerSize& marker, double stripWidth) {
  return rightOf(marker) + marker.chipWidth <= stripWidth;
}
bool fitsLeft(const MarkerSize& marker) {
  return leftOf(marker) >= 0;
}

ChipPlace aloneOn(const MarkerSize& marker, double stripWidth) {
  const bool right = fitsRight(marker, stripWidth) || !fitsLeft(marker);
  return {right ? rightOf(marker) : leftOf(marker), chipTop};
}

// The two chips one above the other, beyond both bars on the side that has room.
std::pair<ChipPlace, ChipPlace> stacked(const MarkerSize& left, const MarkerSize& right,
                                        double stripWidth) {
  constexpr double secondRow = chipTop + Answering::chipHeight + chipStackGap;
  const double widest = std::max(left.chipWidth, right.chipWidth);
  if (rightOf(right) + widest <= stripWidth)
    return {{rightOf(right), chipTop}, {rightOf(right), secondRow}};
  return {{leftOf(left), chipTop}, {left.x - chipGap - right.chipWidth, secondRow}};
}

// `left` stands left of `right`, or at the same place.
std::pair<ChipPlace, ChipPlace> placePair(const MarkerSize& left, const MarkerSize& right,
                                          double stripWidth) {
  const double between = right.x - left.x;
  const bool rightFits = fitsRight(right, stripWidth);
  // Each right of its own bar.
  if (rightFits && chipGap + left.chipWidth + chipGap <= between)
    return {{rightOf(left), chipTop}, {rightOf(right), chipTop}};
  if (rightFits && fitsLeft(left))
    return {{leftOf(left), chipTop}, {rightOf(right), chipTop}};
  // The right one has to go left of its bar; the left one keeps clear of it.
  if (!rightFits && chipGap + right.chipWidth + chipGap <= between) {
    if (chipGap + left.chipWidth + chipStackGap + right.chipWidth + chipGap <= between)
      return {{rightOf(left), chipTop}, {leftOf(right), chipTop}};
    if (fitsLeft(left))
      return {{leftOf(left), chipTop}, {leftOf(right), chipTop}};
  }
  return stacked(left, right, stripWidth);
}

} // namespace

double FrequencyScale::position(double frequency, double width) const {
  return width * std::log2(frequency / lo) / std::log2(hi / lo);
}

double FrequencyScale::valueAt(double x, double width) const {
  const double frequency = lo * std::exp2(fractionAt(x, width) * std::log2(hi / lo));
  return Bands::centres[Bands::nearestIndex(frequency)];
}

double FrequencyScale::nearest(double frequency) const {
  return bandFrom(*this, frequency, 0);
}

double FrequencyScale::moved(double frequency, Move move) const {
  constexpr std::int64_t bandsPerOctave = 3;
  return bandFrom(*this, frequency, stepsOf(move, bandsPerOctave));
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

std::vector<ScaleTick> FrequencyScale::ticks() {
  constexpr std::array decades{100.0, 1000.0, 10000.0};
  std::vector<ScaleTick> ticks;
  for (const double centre : Bands::centres) {
    const bool decade = std::find(decades.begin(), decades.end(), centre) != decades.end();
    ticks.push_back({centre, decade ? 22.0 : 12.0, decade, decade ? Bands::label(centre) : ""});
  }
  return ticks;
}

double DecibelScale::position(double decibels, double width) const {
  return width * (decibels - lower) / (upper - lower);
}

double DecibelScale::valueAt(double x, double width) const {
  const double value = lower + fractionAt(x, width) * (upper - lower);
  return std::round(value / step) * step;
}

double DecibelScale::nearest(double decibels) const {
  const double steps =
      std::clamp(std::round(decibels / step), std::round(lower / step), std::round(upper / step));
  return steps * step + 0.0; // no negative zero
}

double DecibelScale::moved(double decibels, Move move) const {
  const double page = upper > 10 ? 2 : 1; // dB
  const auto steps = static_cast<double>(stepsOf(move, std::llround(page / step)));
  return nearest(nearest(decibels) + steps * step);
}

std::string DecibelScale::text(double decibels) {
  return Numbers::fixed(decibels, 2) + " dB";
}

std::vector<ScaleTick> DecibelScale::ticks() const {
  const bool coarse = upper > 10;
  const double spacing = coarse ? 1 : 0.5;
  const auto count = static_cast<int>(std::floor((upper - lower) / spacing));
  std::vector<ScaleTick> ticks;
  for (int i = 0; i <= count; ++i) {
    const double value = lower + i * spacing;
    const bool whole = value == std::floor(value);
    const bool major = whole && (!coarse || std::fmod(value, 2) == 0);
    ticks.push_back({value, major ? 22.0 : 11.0, major, major ? Numbers::fixed(value, 0) : ""});
  }
  return ticks;
}

int Answering::movedChoice(int chosen, int count, Move move) {
  if (count < 1)
    return -1;
  switch (move) {
  case Move::left:
  case Move::up:
    return chosen > 0 ? chosen - 1 : count - 1;
  case Move::right:
  case Move::down:
    return chosen < count - 1 ? chosen + 1 : 0;
  case Move::toStart:
    return 0;
  case Move::toEnd:
    return count - 1;
  case Move::pageUp:
  case Move::pageDown:
    break;
  }
  return chosen;
}

double Answering::snapped(double x, double devicePixelRatio) {
  return std::round(x * devicePixelRatio) / devicePixelRatio;
}

double Answering::tickLeft(double x, double width, double stripWidth, double devicePixelRatio) {
  const double left = snapped(x - width / 2, devicePixelRatio);
  constexpr double slack = 1e-6; // an edge that lies on a whole pixel stays there
  const double last = std::floor((stripWidth - width) * devicePixelRatio + slack);
  return std::clamp(left, 0.0, std::max(last / devicePixelRatio, 0.0));
}

ChipPlaces Answering::placeChips(std::optional<MarkerSize> answer, std::optional<MarkerSize> truth,
                                 double stripWidth) {
  if (!answer && !truth)
    return {};
  if (!truth)
    return {aloneOn(*answer, stripWidth), {}};
  if (!answer)
    return {{}, aloneOn(*truth, stripWidth)};
  if (answer->x <= truth->x) {
    const auto [left, right] = placePair(*answer, *truth, stripWidth);
    return {left, right};
  }
  const auto [left, right] = placePair(*truth, *answer, stripWidth);
  return {right, left};
}

} // namespace velto
