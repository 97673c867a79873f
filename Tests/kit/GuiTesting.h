// What a program that draws the interface without a display needs. Included once per program.
#pragma once

#include "Graphics.h"

#include <QGuiApplication>
#include <QtQml/QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(VeltoPlugin)

#include <cstdlib>
#include <filesystem>
#include <string>

namespace velto::kit {

// A folder of the process's own for what Qt keeps at run time.
class RuntimeFolder {
public:
  RuntimeFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velto-run-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
    ::setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
  }
  ~RuntimeFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  RuntimeFolder(const RuntimeFolder&) = delete;
  RuntimeFolder& operator=(const RuntimeFolder&) = delete;

private:
  std::filesystem::path folder_;
};

// Before the application is made: no display, no desktop, and the renderer that the program uses.
inline void prepareGui() {
  static const RuntimeFolder runtimeFolder;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  Graphics::prepare();
}

} // namespace velto::kit
