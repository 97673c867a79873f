// What a program that draws the interface without a display needs. Included once per program.
#pragma once

#include "Files.h"

#include "Graphics.h"

#include <QGuiApplication>
#include <QtQml/QQmlExtensionPlugin>

#include <exception>

Q_IMPORT_QML_PLUGIN(VeltoPlugin)

namespace velto::kit {

// Before the application is made: no display, no desktop, and the renderer that the program uses.
inline void prepareGui() {
  try {
    static const ScratchFolder runtimeFolder; // for what Qt keeps while it runs
    qputenv("XDG_RUNTIME_DIR", runtimeFolder.path().c_str());
  } catch (const std::exception& error) {
    qFatal("%s", error.what());
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  Graphics::prepare();
}

} // namespace velto::kit
