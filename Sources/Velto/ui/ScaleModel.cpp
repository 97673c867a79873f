#include "ScaleModel.h"

#include "Scales.h"

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

template <typename Scale>
class ModelOf final : public ScaleModel {
public:
  ModelOf(const Scale& scale, QObject* parent) : ScaleModel(parent), scale_(scale) {}

  [[nodiscard]] QVariantList ticks() const override { return toList(scale_.ticks()); }
  [[nodiscard]] double labelOffset() const override { return Scale::labelOffset; }
  [[nodiscard]] double lowest() const override { return scale_.lowest; }
  [[nodiscard]] double highest() const override { return scale_.highest; }
  [[nodiscard]] double step() const override { return scale_.step; }
  [[nodiscard]] double position(double value, double width) const override {
    return scale_.position(value, width);
  }
  [[nodiscard]] double valueAt(double x, double width) const override {
    return scale_.valueAt(x, width);
  }
  [[nodiscard]] double nearest(double value) const override { return scale_.nearest(value); }
  [[nodiscard]] double moved(double value, int move) const override {
    return scale_.moved(value, static_cast<Move>(move));
  }
  [[nodiscard]] QString text(double value) const override {
    return QString::fromStdString(Scale::text(value));
  }
  [[nodiscard]] QString spoken(double value) const override {
    return QString::fromStdString(Scale::spoken(value));
  }

private:
  Scale scale_;
};

} // namespace

double ScaleModel::increased(double value) const {
  return moved(value, static_cast<int>(Move::up));
}

double ScaleModel::decreased(double value) const {
  return moved(value, static_cast<int>(Move::down));
}

Scales::Scales(QObject* parent)
    : QObject(parent), frequency_(new ModelOf(frequencyScale, this)),
      level_(new ModelOf(levelScale, this)), dynamics_(new ModelOf(dynamicsScale, this)) {}

} // namespace velto
