// Correct and wrong answers.
#pragma once

#include "Drill.h"
#include "Trial.h"

namespace velto::kit {

// The exact answer, in the unit of the session's answer.
[[nodiscard]] inline double truthOf(const Trial& trial) {
  switch (trial.drill) {
  case Drill::frequency:
    return trial.targetFreq;
  case Drill::level:
    return trial.targetLevelDB;
  case Drill::dynamics:
    return trial.targetGRdB;
  case Drill::polarity:
    break;
  }
  return static_cast<double>(trial.oddSlot);
}

// A wrong answer that a listener can give.
[[nodiscard]] inline double missOf(const Trial& trial) {
  switch (trial.drill) {
  case Drill::frequency:
    return trial.targetFreq < 800 ? 4000 : 250;
  case Drill::level:
    return trial.targetLevelDB < 3.5 ? trial.targetLevelDB + 2 : trial.targetLevelDB - 2;
  case Drill::dynamics:
    return trial.targetGRdB < 7 ? 12.5 : 2.5;
  case Drill::polarity:
    break;
  }
  return static_cast<double>((trial.oddSlot + 1) % 3);
}

} // namespace velto::kit
