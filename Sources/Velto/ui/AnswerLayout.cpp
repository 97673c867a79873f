#include "AnswerLayout.h"

#include <optional>

namespace velto {

namespace {

ChipLayout::Places places(const QVariant& answerX, double answerWidth, const QVariant& truthX,
                          double truthWidth, double stripWidth, double devicePixelRatio) {
  const auto marker = [](const QVariant& x, double chipWidth) {
    return x.isValid() ? std::optional(ChipLayout::Marker{x.toDouble(), chipWidth}) : std::nullopt;
  };
  return ChipLayout::place(marker(answerX, answerWidth), marker(truthX, truthWidth), stripWidth,
                           devicePixelRatio);
}

ChipPlace toChipPlace(const ChipLayout::Place& place) {
  return {place.x, place.y, place.crosses};
}

} // namespace

ChipPlace AnswerLayout::answerChip(const QVariant& answerX, double answerWidth,
                                   const QVariant& truthX, double truthWidth, double stripWidth,
                                   double devicePixelRatio) {
  return toChipPlace(
      places(answerX, answerWidth, truthX, truthWidth, stripWidth, devicePixelRatio).answer);
}

ChipPlace AnswerLayout::truthChip(const QVariant& answerX, double answerWidth,
                                  const QVariant& truthX, double truthWidth, double stripWidth,
                                  double devicePixelRatio) {
  return toChipPlace(
      places(answerX, answerWidth, truthX, truthWidth, stripWidth, devicePixelRatio).truth);
}

} // namespace velto
