// Set-up of programs that draw the interface without a display. Include once per program.
#pragma once

#include "Files.h"

#include "Graphics.h"

#include <QGuiApplication>
#include <QtQml/QQmlExtensionPlugin>

#include <exception>

Q_IMPORT_QML_PLUGIN(VeltoPlugin)

namespace velto::kit {

// Call before creating the application. No display, no session bus, and the program's own renderer.
inline void prepareGui() {
  try {
    static const ScratchFolder runtimeFolder; // for Qt's runtime files
    qputenv("XDG_RUNTIME_DIR", runtimeFolder.path().c_str());
  } catch (const std::exception& error) {
    qFatal("%s", error.what());
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  Graphics::prepare();
}

} // namespace velto::kit
