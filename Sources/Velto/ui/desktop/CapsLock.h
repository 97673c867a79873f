// The state of caps lock, which Qt does not report.
#pragma once

#include <QKeyEvent>

namespace velto {

// True if caps lock was on when the key was pressed; false on window systems other than X and
// Wayland. Main thread only; needs a QGuiApplication.
[[nodiscard]] bool capsLockIsOn(const QKeyEvent& event);

} // namespace velto
