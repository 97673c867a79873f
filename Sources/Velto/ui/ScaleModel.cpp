#include "ScaleModel.h"

#include <QVariantMap>

namespace velto {

namespace {

QVariantList toList(const std::vector<ScaleTick>& ticks) {
  QVariantList list;
  for (const ScaleTick& tick : ticks)
    list.append(QVariantMap{{QStringLiteral("value"), tick.value},
                            {QStringLiteral("height"), tick.height},
                            {QStringLiteral("major"), tick.major},
                            {QStringLiteral("label"), QString::fromStdString(tick.label)}});
  return list;
}

Answering::ChipPlaces places(const QVariant& answerX, double answerWidth, const QVariant& truthX,
                             double truthWidth, double stripWidth) {
  const auto marker = [](const QVariant& x, double chipWidth) {
    return x.isValid() ? std::optional(Answering::MarkerSize{x.toDouble(), chipWidth})
                       : std::nullopt;
  };
  return Answering::placeChips(marker(answerX, answerWidth), marker(truthX, truthWidth),
                               stripWidth);
}

} // namespace

double ScaleModel::tickLeft(double x, double width, double stripWidth, double devicePixelRatio) {
  return Answering::tickLeft(x, width, stripWidth, devicePixelRatio);
}

QPointF ScaleModel::answerChip(const QVariant& answerX, double answerWidth, const QVariant& truthX,
                               double truthWidth, double stripWidth) {
  const auto place = places(answerX, answerWidth, truthX, truthWidth, stripWidth).answer;
  return {place.x, place.y};
}

QPointF ScaleModel::truthChip(const QVariant& answerX, double answerWidth, const QVariant& truthX,
                              double truthWidth, double stripWidth) {
  const auto place = places(answerX, answerWidth, truthX, truthWidth, stripWidth).truth;
  return {place.x, place.y};
}

QVariantList FrequencyScaleModel::ticks() const {
  return toList(FrequencyScale::ticks());
}

double FrequencyScaleModel::position(double value, double width) const {
  return scale().position(value, width);
}

double FrequencyScaleModel::valueAt(double x, double width) const {
  return scale().valueAt(x, width);
}

double FrequencyScaleModel::nearest(double value) const {
  return scale().nearest(value);
}

double FrequencyScaleModel::moved(double value, int move) const {
  return scale().moved(value, static_cast<Move>(move));
}

QString FrequencyScaleModel::text(double value) const {
  return QString::fromStdString(FrequencyScale::text(value));
}

QString FrequencyScaleModel::spoken(double value) const {
  return QString::fromStdString(FrequencyScale::spoken(value));
}

QVariantList DecibelScaleModel::ticks() const {
  return toList(scale().ticks());
}

double DecibelScaleModel::position(double value, double width) const {
  return scale().position(value, width);
}

double DecibelScaleModel::valueAt(double x, double width) const {
  return scale().valueAt(x, width);
}

double DecibelScaleModel::nearest(double value) const {
  return scale().nearest(value);
}

double DecibelScaleModel::moved(double value, int move) const {
  return scale().moved(value, static_cast<Move>(move));
}

QString DecibelScaleModel::text(double value) const {
  return QString::fromStdString(DecibelScale::text(value));
}

QString DecibelScaleModel::spoken(double value) const {
  return text(value);
}

} // namespace velto
