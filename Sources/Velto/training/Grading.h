// Grading of answers.
#pragma once

#include "Trial.h"

#include <string>

namespace velto::Drills {

// The right answer to `trial`, in the unit of its answers: Hz (frequency), dB (level, dynamics) or
// a slot index (polarity).
[[nodiscard]] double truth(const Trial& trial);

// The verdict on one answer.
struct Grade {
  bool correct = false;
  double error = 0;       // octaves (frequency), dB (level, dynamics), 0 or 1 (polarity)
  std::string errorText;  // "0.32 oct off"
  std::string truthText;  // "1k Hz"
  std::string answerText; // "1.25k Hz"

  bool operator==(const Grade&) const = default;
};

// Grades `answer`: Hz (frequency), dB (level, dynamics) or a slot index (polarity; truncated toward
// zero, aborts if it does not fit into 64 bits). Correct within a third of an octave, 0.75 dB
// (level) or 2 dB (dynamics), bounds included, or for the flipped slot.
[[nodiscard]] Grade grade(double answer, const Trial& trial);

} // namespace velto::Drills
