// What a program that draws the interface without a display needs. Included once per program.
#pragma once

#include <QGuiApplication>
#include <QQuickWindow>
#include <QtQml/QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(VeltoPlugin)

namespace velto::kit {

// Before the application is made: no display, no desktop, and the renderer that the program uses.
inline void prepareGui() {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

} // namespace velto::kit
