#include "Grading.h"

#include "Bands.h"
#include "FatalError.h"
#include "Numbers.h"

#include <cmath>

namespace velto {

namespace {

std::string decibelsOff(double error, int decimals) {
  return Numbers::fixed(error, decimals) + " dB off";
}

std::string slotText(std::int64_t index) {
  return "slot " + std::to_string(Numbers::saturatingIncrement(index));
}

} // namespace

double Drills::truth(const Trial& trial) {
  switch (trial.drill) {
  case Drill::frequency:
    return trial.targetFreq;
  case Drill::level:
    return trial.targetLevelDB;
  case Drill::dynamics:
    return trial.targetGRdB;
  case Drill::polarity:
    return static_cast<double>(trial.oddSlot);
  }
  fatalError("unknown drill");
}

Drills::Grade Drills::grade(double answer, const Trial& trial) {
  Grade grade;
  switch (trial.drill) {
  case Drill::frequency:
    grade.error = std::abs(std::log2(answer / trial.targetFreq));
    grade.correct = grade.error <= 1.0 / 3.0;
    grade.errorText = Numbers::fixed(grade.error, 2) + " oct off";
    grade.truthText = Bands::label(trial.targetFreq) + " Hz";
    grade.answerText = Bands::label(answer) + " Hz";
    break;
  case Drill::level:
    grade.error = std::abs(answer - trial.targetLevelDB);
    grade.correct = grade.error <= 0.75;
    grade.errorText = decibelsOff(grade.error, 2);
    grade.truthText = Numbers::fixed(trial.targetLevelDB, 2) + " dB";
    grade.answerText = Numbers::fixed(answer, 2) + " dB";
    break;
  case Drill::dynamics:
    grade.error = std::abs(answer - trial.targetGRdB);
    grade.correct = grade.error <= 2.0;
    grade.errorText = decibelsOff(grade.error, 1);
    grade.truthText = Numbers::fixed(trial.targetGRdB, 1) + " dB GR";
    grade.answerText = Numbers::fixed(answer, 1) + " dB GR";
    break;
  case Drill::polarity: {
    const std::int64_t pick = Numbers::truncated(answer);
    grade.correct = pick == trial.oddSlot;
    grade.error = grade.correct ? 0 : 1;
    grade.errorText = grade.correct ? "hit" : "miss";
    grade.truthText = slotText(trial.oddSlot);
    grade.answerText = slotText(pick);
    break;
  }
  }
  return grade;
}

} // namespace velto
