// The verdict on an answer.
#pragma once

#include "Trial.h"

#include <string>

namespace velto::Drills {

// The verdict on one answer.
struct Grade {
  bool correct = false;
  double error = 0;       // octaves (frequency), dB (level, dynamics), 0 or 1 (polarity)
  std::string errorText;  // "0.32 oct off"
  std::string truthText;  // "1k Hz"
  std::string answerText; // "1.25k Hz"

  bool operator==(const Grade&) const = default;
};

// Grades `answer`: Hz (frequency), dB (level, dynamics), or a slot index (polarity; truncated
// toward zero, and one that is not finite stops the process). A hit is within a third of an octave,
// 0.75 dB or 2 dB, bounds included, or the flipped slot.
[[nodiscard]] Grade grade(double answer, const Trial& trial);

} // namespace velto::Drills
