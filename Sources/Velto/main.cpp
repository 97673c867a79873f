// Reads the command line and runs what it asks for.

#include "AppDelegate.h"
#include "LaunchOptions.h"
#include "PlaybackBench.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QtQml/QQmlExtensionPlugin>

#include <cstdio>
#include <cstdlib>

Q_IMPORT_QML_PLUGIN(VeltoPlugin)

namespace {

using namespace velto;

// Qt aborts with a page of advice when there is no display to connect to.
void reportFatalMessages(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type == QtFatalMsg) {
    std::fputs("Velto: there is no display to open a window on\n", stderr);
    std::_Exit(EXIT_FAILURE);
  }
  if (QCoreApplication::instance() != nullptr && !QCoreApplication::startingUp())
    std::fprintf(stderr, "Velto: %s\n", text.toUtf8().constData());
}

int runWindow(int argc, char** argv, const LaunchOptions& options) {
  qInstallMessageHandler(reportFatalMessages);
  if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND"))
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  QGuiApplication application(argc, argv);
  QGuiApplication::setApplicationName(QStringLiteral("velto"));
  QGuiApplication::setApplicationDisplayName(QStringLiteral("MORLA Velto"));

  AppDelegate delegate(options);
  if (!delegate.applicationDidFinishLaunching())
    return EXIT_FAILURE;
  return QGuiApplication::exec();
}

} // namespace

int main(int argc, char** argv) {
  const Arguments arguments(std::vector<std::string>(argv, argv + argc));
  if (const auto load = arguments.valueOf("--bench-audio"))
    return PlaybackBench::run(*load == "on");
  return runWindow(argc, argv, launchOptions(arguments));
}
