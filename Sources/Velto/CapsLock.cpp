#include "CapsLock.h"

#include <QGuiApplication>

namespace velto {

// Under X it is the lock bit of the native modifiers. Num lock has a bit of its own there and does
// not count.
bool capsLockIsOn(const QKeyEvent& event) {
  constexpr quint32 xLockMask = 1U << 1;
  return QGuiApplication::platformName() == QLatin1String("xcb") &&
         (event.nativeModifiers() & xLockMask) != 0;
}

} // namespace velto
