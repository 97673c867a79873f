#include "Wording.h"

#include "FatalError.h"

namespace velto {

namespace {

std::string detail(const Drills::Grade& grade, std::string_view separator) {
  std::string text = "you " + grade.answerText;
  text.append(separator).append("actual ").append(grade.truthText);
  text.append(separator).append(grade.errorText);
  return text;
}

} // namespace

std::string_view Wording::title(Drill drill) {
  switch (drill) {
  case Drill::frequency:
    return "Frequency";
  case Drill::level:
    return "Level";
  case Drill::dynamics:
    return "Dynamics";
  case Drill::polarity:
    return "Polarity";
  }
  fatalError("unknown drill");
}

std::string_view Wording::prompt(Drill drill) {
  switch (drill) {
  case Drill::frequency:
    return "One band is boosted. Point at it.";
  case Drill::level:
    return "B is louder than A. By how much?";
  case Drill::dynamics:
    return "B is compressed, loudness-matched. How much gain reduction?";
  case Drill::polarity:
    return "One of the three has a flipped channel. Which?";
  }
  fatalError("unknown drill");
}

std::string_view Wording::title(Material material) {
  return material.shortName();
}

std::string Wording::slotTitle(Drill drill, std::int64_t index) {
  if (drill == Drill::polarity)
    return std::to_string(index + 1);
  return std::string(1, static_cast<char>('A' + index));
}

std::string Wording::playName(std::string_view slotTitle) {
  return "Play " + std::string(slotTitle);
}

std::string Wording::spokenDifficulty(std::string_view value) {
  return "Difficulty, " + std::string(value);
}

std::string_view Wording::answerName(Drill drill) {
  switch (drill) {
  case Drill::frequency:
    return "Frequency";
  case Drill::level:
    return "How much louder";
  case Drill::dynamics:
    return "How much gain reduction";
  case Drill::polarity:
    return "Flipped slot";
  }
  fatalError("unknown drill");
}

std::string Wording::spokenAnswer(std::string_view answer, std::string_view truth) {
  std::string text(answer);
  if (!truth.empty())
    text.append(", actual ").append(truth);
  return text;
}

std::string Wording::slotName(std::int64_t index) {
  return "Slot " + std::to_string(index + 1);
}

std::string_view Wording::slotCaption(std::int64_t index, std::optional<std::int64_t> flipped) {
  if (!flipped)
    return "?";
  return index == *flipped ? "FLIPPED" : "in phase";
}

std::string_view Wording::primary(bool isGraded, bool isOver) {
  if (isOver)
    return "Close";
  return isGraded ? "Next" : "Submit";
}

std::vector<std::string_view> Wording::primaryTexts(bool ends) {
  std::vector<std::string_view> texts{primary(false, false), primary(true, false)};
  if (ends)
    texts.push_back(primary(true, true));
  return texts;
}

std::string_view Wording::status(bool isRendering, bool isKeeping) {
  if (isRendering)
    return "rendering…";
  return isKeeping ? "saving…" : "listen, then answer";
}

std::string_view Wording::verdict(bool correct) {
  return correct ? "HIT" : "MISS";
}

std::string Wording::verdictDetail(const Drills::Grade& grade) {
  return detail(grade, "   ·   ");
}

std::string Wording::progress(std::size_t number, std::size_t count) {
  return std::to_string(number) + " of " + std::to_string(count);
}

std::string Wording::spokenProgress(std::string_view progress) {
  return "Trial " + std::string(progress);
}

std::string Wording::notSaved(std::string_view reason) {
  return "The answer could not be saved: " + std::string(reason) + ". Submit it again.";
}

std::string Wording::announcement(const Drills::Grade& grade) {
  return std::string(verdict(grade.correct)) + ", " + detail(grade, ", ");
}

} // namespace velto
