// One listener's way through a list of trials.
#pragma once

#include "Drill.h"
#include "Grading.h"
#include "Staircase.h"
#include "Trial.h"
#include "TrialList.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

namespace velto {

// The same list and the same answers give the same trials. A plain value; no I/O.
class Sitting {
public:
  explicit Sitting(TrialList list);

  [[nodiscard]] const TrialList& list() const { return list_; }
  [[nodiscard]] std::size_t answered() const { return answered_; }

  // The first trial without an answer; nullopt after the last. The list's seed as it stands; with a
  // staircase, the difficulty follows from the answers to the earlier trials of the drill.
  [[nodiscard]] std::optional<Trial> next() const;

  // True if the window can give `answer` to `trial`, as far as grading goes: a frequency above 0, a
  // finite level, or one of the slots.
  [[nodiscard]] static bool isPossible(double answer, const Trial& trial);

  // Answers the next trial; returns its grade. Aborts if there is none or `answer` is not possible.
  Drills::Grade take(double answer);

private:
  TrialList list_;
  std::size_t answered_ = 0;
  std::unordered_map<Drill, Staircase> staircases_; // by drill; used if the list asks for it
};

// All trials of a list, in order, as they are played: render them for 3.2 seconds with
// Noise::audible. nullopt for a list with a staircase, whose trials follow from the answers.
[[nodiscard]] std::optional<std::vector<Trial>> fixedTrials(const TrialList& list);

} // namespace velto
