#include "AnswerLayout.h"

#include <optional>

namespace velto {

namespace {

ChipLayout::Places places(const QVariant& answerX, double answerWidth, const QVariant& truthX,
                          double truthWidth, double stripWidth) {
  const auto marker = [](const QVariant& x, double chipWidth) {
    return x.isValid() ? std::optional(ChipLayout::Marker{x.toDouble(), chipWidth}) : std::nullopt;
  };
  return ChipLayout::place(marker(answerX, answerWidth), marker(truthX, truthWidth), stripWidth);
}

QPointF toPoint(const ChipLayout::Place& place) {
  return {place.x, place.y};
}

} // namespace

QPointF AnswerLayout::answerChip(const QVariant& answerX, double answerWidth,
                                 const QVariant& truthX, double truthWidth, double stripWidth) {
  return toPoint(places(answerX, answerWidth, truthX, truthWidth, stripWidth).answer);
}

QPointF AnswerLayout::truthChip(const QVariant& answerX, double answerWidth, const QVariant& truthX,
                                double truthWidth, double stripWidth) {
  return toPoint(places(answerX, answerWidth, truthX, truthWidth, stripWidth).truth);
}

} // namespace velto
