#include "Theme.h"

#include "Colors.h"
#include "FatalError.h"

#include <QQuickItem>
#include <QtQml/qqml.h>

namespace velto {

namespace {

QColor toQt(const Colors::Color& color) {
  return QColor::fromRgbF(color.red, color.green, color.blue, color.alpha);
}

Colors::Color fromQt(const QColor& color) {
  return {color.redF(), color.greenF(), color.blueF(), color.alphaF()};
}

Palette toQt(const Colors::Palette& colors) {
  return {
      .isDark = colors.isDark,
      .bg = toQt(colors.bg),
      .surface = toQt(colors.surface),
      .soft = toQt(colors.soft),
      .ink = toQt(colors.ink),
      .muted = toQt(colors.muted),
      .faint = toQt(colors.faint),
      .line = toQt(colors.line),
      .identity = toQt(colors.identity),
      .signal = toQt(colors.signal),
      .control = toQt(colors.control),
      .selectedFill = toQt(colors.selectedFill),
      .track = toQt(colors.track),
      .good = toQt(colors.good),
      .warn = toQt(colors.warn),
      .bad = toQt(colors.bad),
  };
}

} // namespace

const Palette& Palette::dark() {
  static const Palette palette = toQt(Colors::dark());
  return palette;
}

const Palette& Palette::light() {
  static const Palette palette = toQt(Colors::light());
  return palette;
}

QColor mix(const QColor& from, const QColor& to, double t) {
  if (!from.isValid() || !to.isValid())
    fatalError("cannot mix an invalid colour");
  return toQt(Colors::mix(fromQt(from), fromQt(to), t));
}

QColor laidOver(const QColor& top, const QColor& ground) {
  return toQt(Colors::laidOver(fromQt(top), fromQt(ground)));
}

QColor weaknessColor(const Palette& palette, double weakness) {
  return toQt(
      Colors::weakness(fromQt(palette.good), fromQt(palette.warn), fromQt(palette.bad), weakness));
}

QColor Palettes::faded(const QColor& color, double opacity) {
  return toQt(Colors::faded(fromQt(color), opacity));
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
