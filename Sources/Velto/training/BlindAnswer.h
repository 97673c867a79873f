// What can be had without listening.
#pragma once

#include "Drill.h"
#include "Targets.h"

#include <cstddef>
#include <functional>
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

  // The best one for `targets`: those of one drill, one or more, ascending. Answers are those of
  // the window: the bands, the slots, and decibels in steps of 0.05 (level) and 0.5 (dynamics). Any
  // thread.
  [[nodiscard]] static BlindAnswer best(std::span<const Target> targets);

  bool operator==(const BlindAnswer&) const = default;
};

// The same for many answers: computes each drill and difficulty once. One object belongs to one
// thread.
class BlindAnswers {
public:
  using TargetsAt = std::function<std::vector<Target>(Drill drill, double difficulty)>;

  explicit BlindAnswers(TargetsAt targetsAt) : targetsAt_(std::move(targetsAt)) {}

  // Valid as long as this object.
  [[nodiscard]] const BlindAnswer& at(Drill drill, double difficulty);

private:
  TargetsAt targetsAt_;
  std::map<std::pair<Drill::Case, double>, BlindAnswer> known_;
};

} // namespace velto
