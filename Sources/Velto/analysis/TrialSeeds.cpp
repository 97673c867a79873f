#include "TrialSeeds.h"

#include <algorithm>
#include <cstddef>

namespace velto {

namespace {

// The seed whose first random number is `state`: the steps of Xorshift64, undone last to first.
std::uint64_t seedBefore(std::uint64_t state) {
  for (int shift = 17; shift < 64; shift *= 2)
    state ^= state << shift;
  for (int shift = 7; shift < 64; shift *= 2)
    state ^= state >> shift;
  for (int shift = 13; shift < 64; shift *= 2)
    state ^= state << shift;
  return state;
}

} // namespace

std::vector<std::uint64_t> TrialSeeds::spread() {
  constexpr std::size_t count = 27 * 740; // a multiple of the numbers of bands and slots
  // A step that leaves the remainder 1 visits all bands and slots in turn.
  constexpr std::uint64_t widest = UINT64_MAX / count;
  constexpr std::uint64_t step = widest - widest % 27 + 1 - 27;
  std::vector<std::uint64_t> seeds(count);
  for (std::size_t i = 0; i < count; ++i)
    seeds[i] = seedBefore(step / 2 + i * step);
  return seeds;
}

std::vector<std::uint64_t> TrialSeeds::clock(Date start) {
  constexpr double latest = 253'402'300'800; // the year 10000
  constexpr std::uint64_t step = 317;        // seconds
  constexpr std::size_t count = 366 * 86'400 / step;
  const double seconds = start.secondsSinceReferenceDate + Date::referenceSince1970;
  const auto first = static_cast<std::uint64_t>(seconds >= 0 ? std::min(seconds, latest) : 0);
  std::vector<std::uint64_t> seeds(count);
  for (std::size_t i = 0; i < count; ++i)
    seeds[i] = first + i * step;
  return seeds;
}

} // namespace velto
