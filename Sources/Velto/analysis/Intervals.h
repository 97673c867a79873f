// Intervals that hold a listener's true figure in 95 of 100 cases.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace velto {

// From `lower` to `upper`.
struct Interval {
  double lower = 0;
  double upper = 0;

  bool operator==(const Interval&) const = default;
};

namespace Intervals {

// Of a share of hits, 0 to 1: E. B. Wilson's score interval ("Probable inference, the law of
// succession, and statistical inference", J. Am. Stat. Assoc. 22, 1927). 0 to 1 without answers;
// `hits` beyond 0 to `answers` count as these.
[[nodiscard]] Interval ofShare(std::int64_t hits, std::int64_t answers);

inline constexpr std::size_t fewestForMean = 5;

// Of the mean of `values`, which are in any order: percentiles of 4000 bootstrap means (B. Efron,
// "Bootstrap methods: another look at the jackknife", Ann. Stat. 7, 1979). The same values give the
// same interval. nullopt for fewer than `fewestForMean` values, from which the bootstrap's interval
// would be far too narrow.
[[nodiscard]] std::optional<Interval> ofMean(std::span<const double> values);

} // namespace Intervals

} // namespace velto
