#include "CapsLock.h"

#include <QGuiApplication>

namespace velto {

// X and Wayland report it as the lock bit of the native modifiers. Num lock has another bit.
bool capsLockIsOn(const QKeyEvent& event) {
  constexpr quint32 lockMask = 1U << 1;
  const QString platform = QGuiApplication::platformName();
  return (platform == QLatin1String("xcb") || platform.startsWith(QLatin1String("wayland"))) &&
         (event.nativeModifiers() & lockMask) != 0;
}

} // namespace velto
