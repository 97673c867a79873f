#include "Theme.h"

#include "FatalError.h"

#include <QQuickItem>
#include <QtQml/qqml.h>

#include <algorithm>

namespace velto {

namespace {

QColor rgb(QRgb value) {
  return QColor::fromRgb(value);
}

} // namespace

const Palette& Palette::dark() {
  static const Palette palette{
      .isDark = true,
      .bg = rgb(0x0B0C0F),
      .surface = rgb(0x121318),
      .soft = rgb(0x17181E),
      .ink = rgb(0xF0F1F4),
      .muted = rgb(0x9B9FAB),
      .faint = rgb(0x646975),
      .line = rgb(0x26272E),
      .identity = rgb(0xFF453A),
      .signal = rgb(0x00A7C8),
      .control = rgb(0x6E7580),
      .selectedFill = rgb(0x1D2733),
      .track = rgb(0x1F2129),
      .good = rgb(0x30D158),
      .warn = rgb(0xFF9F0A),
      .bad = rgb(0xE74C3C),
  };
  return palette;
}

const Palette& Palette::light() {
  static const Palette palette{
      .isDark = false,
      .bg = rgb(0xFAF3EF),
      .surface = rgb(0xFFFBF6),
      .soft = rgb(0xF1E7DF),
      .ink = rgb(0x1B1D22),
      .muted = rgb(0x6F665D),
      .faint = rgb(0x9A8F84),
      .line = Palettes::faded(rgb(0x1B1D22), 0.12), // the ink; opaque grey in the dark palette
      .identity = rgb(0xD6342A),
      .signal = rgb(0x007A97),
      .control = rgb(0x8A8078),
      .selectedFill = rgb(0xE7EEF1),
      .track = rgb(0xE8DDD4),
      .good = rgb(0x248A3D),
      .warn = rgb(0xB25000),
      .bad = rgb(0xC0392B),
  };
  return palette;
}

QColor mix(const QColor& from, const QColor& to, double t) {
  if (!from.isValid() || !to.isValid())
    fatalError("cannot mix an invalid colour");
  const auto weight = static_cast<float>(t <= 0 ? 0 : std::min(t, 1.0));
  const auto blend = [weight](float a, float b) { return a + weight * (b - a); };
  return QColor::fromRgbF(blend(from.redF(), to.redF()), blend(from.greenF(), to.greenF()),
                          blend(from.blueF(), to.blueF()));
}

QColor weaknessColor(const Palette& palette, double weakness) {
  if (weakness < 0.5)
    return mix(palette.good, palette.warn, 2 * weakness);
  return mix(palette.warn, palette.bad, 2 * (weakness - 0.5));
}

Theme::Theme(QObject* parent) : QObject(parent) {
  if (const auto* item = qobject_cast<QQuickItem*>(parent))
    connect(item, &QQuickItem::parentChanged, this, &Theme::followParent);
  followParent();
}

void Theme::setPalette(const Palette& palette) {
  own_ = palette;
  update();
}

void Theme::followParent() {
  disconnect(ancestorConnection_);
  ancestor_ = nullptr;
  const auto* item = qobject_cast<QQuickItem*>(parent());
  if (QQuickItem* parentItem = item ? item->parentItem() : nullptr) {
    ancestor_ = qobject_cast<Theme*>(qmlAttachedPropertiesObject<Theme>(parentItem, true));
    ancestorConnection_ = connect(ancestor_, &Theme::paletteChanged, this, &Theme::update);
  }
  update();
}

void Theme::update() {
  const Palette& palette = own_ ? *own_ : ancestor_ ? ancestor_->palette() : Palette::dark();
  if (palette_ == palette)
    return;
  palette_ = palette;
  Q_EMIT paletteChanged();
}

} // namespace velto
