#include "Appearance.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace velto {

namespace {

const QString appearanceSpace = QStringLiteral("org.freedesktop.appearance");
const QString colorSchemeKey = QStringLiteral("color-scheme");
const QString reducedMotionKey = QStringLiteral("reduced-motion");
const QString interfaceSpace = QStringLiteral("org.gnome.desktop.interface");
const QString animationsKey = QStringLiteral("enable-animations");

bool paletteIsDark() {
  const QPalette palette = QGuiApplication::palette();
  return palette.color(QPalette::Window).lightnessF() <
         palette.color(QPalette::WindowText).lightnessF();
}

} // namespace

Portal::Setting Appearance::colorSchemeSetting() {
  return {appearanceSpace, colorSchemeKey};
}

Appearance::Appearance(std::optional<bool> fixedDark, QObject* parent)
    : QObject(parent), fixedDark_(fixedDark) {
  connect(&portal_, &Portal::settingChanged, this, &Appearance::receive);
  portal_.request(appearanceSpace, reducedMotionKey);
  portal_.request(interfaceSpace, animationsKey);
  if (fixedDark_) {
    dark_ = *fixedDark_;
    return;
  }
  QCoreApplication::instance()->installEventFilter(this);
  follow(portal_.read(appearanceSpace, colorSchemeKey));
}

bool Appearance::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ApplicationPaletteChange)
    follow(colorScheme_);
  return QObject::eventFilter(watched, event);
}

void Appearance::receive(const QString& space, const QString& key, const QVariant& value) {
  const bool reduced = reducedMotion();
  if (space == appearanceSpace && key == colorSchemeKey && !fixedDark_)
    follow(value);
  else if (space == appearanceSpace && key == reducedMotionKey)
    motionUnwanted_ = value.toUInt() == 1;
  else if (space == interfaceSpace && key == animationsKey)
    animationsOff_ = !value.toBool();
  if (reducedMotion() != reduced)
    Q_EMIT reducedMotionChanged();
}

void Appearance::follow(const QVariant& colorScheme) {
  constexpr uint preferDark = 1;
  constexpr uint preferLight = 2;
  colorScheme_ = colorScheme;
  const uint scheme = colorScheme.toUInt();
  const bool dark = scheme == preferDark || (scheme != preferLight && paletteIsDark());
  if (dark == dark_)
    return;
  dark_ = dark;
  Q_EMIT darkChanged();
}

} // namespace velto
