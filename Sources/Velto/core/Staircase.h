// The adaptive difficulty.
#pragma once

#include <cstdint>

namespace velto {

// The adaptive difficulty of one drill: two right answers in a row make it harder, one wrong answer
// easier, in steps that shrink as the direction reverses (H. Levitt, "Transformed up-down methods
// in psychoacoustics", J. Acoust. Soc. Am. 49, 1971).
struct Staircase {
  double difficulty = 20;              // 0 (easiest) to 100 (hardest) after any record
  std::int64_t consecutiveCorrect = 0; // right answers since the last move
  std::int64_t reversals = 0;          // changes of direction so far; saturates
  std::int64_t lastDirection = 0;      // +1 harder, -1 easier, 0 never moved

  // Moves the staircase after one graded answer.
  void record(bool correct);

  bool operator==(const Staircase&) const = default;
};

} // namespace velto
