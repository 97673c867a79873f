// What can be had without listening.
#pragma once

#include "Drill.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <utility>
#include <vector>

namespace velto {

// The result of answering every trial of a drill at a difficulty alike, as one can who reads the
// difficulty off the window and does not listen.
struct BlindAnswer {
  double answer =
      0; // that hits most often: Hz, dB or slot; of equals, that with the smallest error
  double hitRate = 0;      // share of trials that it hits, 0 to 1
  double meanError = 0;    // the smallest mean error of any one answer: octaves, dB; 0 to 1
  std::size_t targets = 0; // number of different targets
  double lowestTarget = 0; // Hz, dB or slot
  double highestTarget = 0;

  bool operator==(const BlindAnswer&) const = default;
};

// The best one over the trials of `seeds`, which are not empty. Answers are those of
// the window: the bands, the slots, and decibels in steps of 0.05 (level) and 0.5 (dynamics).
[[nodiscard]] BlindAnswer bestBlindAnswer(Drill drill, double difficulty,
                                          std::span<const std::uint64_t> seeds);

// The same for many answers: computes each drill and difficulty once. One object belongs to one
// thread.
class BlindAnswers {
public:
  explicit BlindAnswers(std::vector<std::uint64_t> seeds) : seeds_(std::move(seeds)) {}

  // Valid as long as this object.
  [[nodiscard]] const BlindAnswer& at(Drill drill, double difficulty);

private:
  std::vector<std::uint64_t> seeds_;
  std::map<std::pair<Drill::Case, double>, BlindAnswer> known_;
};

} // namespace velto
