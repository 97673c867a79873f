// Adaptive difficulty.
#pragma once

#include <cstdint>

namespace velto {

// Adaptive difficulty of one drill: two correct answers in a row raise it, one wrong answer lowers
// it, in steps that shrink with the number of reversals (H. Levitt, "Transformed up-down methods in
// psychoacoustics", J. Acoust. Soc. Am. 49, 1971).
struct Staircase {
  double difficulty = 20;              // 0 (easiest) to 100 (hardest); not clamped on decoding
  std::int64_t consecutiveCorrect = 0; // correct answers since the last move
  std::int64_t reversals = 0;          // changes of direction so far; saturates
  std::int64_t lastDirection = 0;      // +1 harder, -1 easier, 0 before the first move

  // Updates the staircase with one graded answer.
  void record(bool correct);

  bool operator==(const Staircase&) const = default;
};

} // namespace velto
