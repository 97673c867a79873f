// The probe's gates for staircase and grading.

#include "ProbeGates.h"

#include "Drill.h"
#include "Grading.h"
#include "Numbers.h"
#include "Probe.h"
#include "Staircase.h"
#include "Trial.h"

#include <string>

namespace velto {

namespace {

using Numbers::fixed;

double difficultyAfter(int answers, bool correct) {
  Staircase staircase;
  for (int i = 0; i < answers; ++i)
    staircase.record(correct);
  return staircase.difficulty;
}

} // namespace

void ProbeGates::staircase() {
  constexpr int many = 100;
  Probe::line("── staircase");
  const double fresh = Staircase().difficulty;
  const auto from = [fresh](double difficulty) {
    return fixed(fresh, 0) + " -> " + fixed(difficulty, 0);
  };
  const double afterOne = difficultyAfter(1, true);
  Probe::check("one correct answer does not move it yet", afterOne == fresh, from(afterOne));
  const double afterTwo = difficultyAfter(2, true);
  Probe::check("two in a row make it harder", afterTwo > fresh, from(afterTwo));
  const double afterWrong = difficultyAfter(1, false);
  Probe::check("one wrong answer makes it easier", afterWrong < fresh, from(afterWrong));
  const double lowest = difficultyAfter(many, false);
  Probe::check("difficulty is clamped at 0", lowest == 0, from(lowest));
  const double highest = difficultyAfter(many, true);
  Probe::check("difficulty is clamped at 100", highest == 100, from(highest));
}

void ProbeGates::grading() {
  Probe::line("── grading");
  const Trial frequency{.drill = Drill::frequency, .targetFreq = 1000};
  const Trial level{.drill = Drill::level, .targetLevelDB = 3.0};
  const Trial polarity{.drill = Drill::polarity, .slots = 3, .oddSlot = 2};
  const auto isHit = [](double answer, const Trial& trial) {
    return Drills::grade(answer, trial).correct;
  };
  Probe::check("one band off is a hit (0.32 oct < 1/3)", isHit(1250, frequency), "1250 vs 1000");
  Probe::check("two bands off is a miss", !isHit(1600, frequency), "1600 vs 1000");
  Probe::check("0.5 dB error is a hit", isHit(3.5, level), "3.5 vs 3.0");
  Probe::check("1.0 dB error is a miss", !isHit(4.0, level), "4.0 vs 3.0");
  Probe::check("picking the flipped slot is a hit", isHit(2, polarity), "slot 3");
  Probe::check("picking another slot is a miss", !isHit(0, polarity), "slot 1");
}

} // namespace velto
