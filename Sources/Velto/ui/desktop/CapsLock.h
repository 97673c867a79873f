// Caps lock, which Qt does not tell.
#pragma once

#include <QKeyEvent>

namespace velto {

// Whether caps lock was on when the key was pressed; false where the window system is not known to
// tell it. Main thread only; needs a QGuiApplication.
[[nodiscard]] bool capsLockIsOn(const QKeyEvent& event);

} // namespace velto
