// Parses the command line and runs the window or a mode.

#include "AppDelegate.h"
#include "AudioEngine.h"
#include "Bench.h"
#include "BrandCheck.h"
#include "DemoData.h"
#include "EndSignals.h"
#include "Graphics.h"
#include "Help.h"
#include "LaunchOptions.h"
#include "Memory.h"
#include "OutputDevice.h"
#include "PlaybackBench.h"
#include "Player.h"
#include "Probe.h"
#include "Report.h"
#include "StandardStreams.h"
#include "Subprocess.h"
#include "desktop/Fonts.h"

#include <QGuiApplication>
#include <QIcon>
#include <QSocketNotifier>
#include <QtQml/QQmlExtensionPlugin>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

Q_IMPORT_QML_PLUGIN(VeltoPlugin)

namespace {

using namespace velto;

// Qt's only expected fatal message is that there is no display: exit with one line instead of Qt's
// long text and abort.
void reportMessages(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type == QtFatalMsg) {
    std::fputs("Velto: there is no display to open a window on\n", stderr);
    std::_Exit(EXIT_FAILURE);
  }
  if (QCoreApplication::instance() != nullptr && !QCoreApplication::startingUp())
    std::fprintf(stderr, "Velto: %s\n", text.toUtf8().constData());
}

// Used under X11; under Wayland the desktop finds the icon by the name of the desktop file.
QIcon windowIcon() {
  QIcon icon;
  for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
    icon.addFile(QStringLiteral(":/icons/%1x%1/apps/" VELTO_ID ".png").arg(size));
  return icon;
}

OutputDeviceFactory output() {
  return systemOutput(Subprocess::ownPath());
}

// The exit status of wrong use.
constexpr int misused = 2;

int misuse(const std::string& line) {
  StandardStreams::writeToError("Velto: " + line + "\n");
  return misused;
}

int runWindow(int argc, char** argv, const LaunchOptions& options,
              std::optional<Assignment> assignment = std::nullopt) {
  Memory::returnLargeBlocks();
  qInstallMessageHandler(reportMessages);
  const int signals = EndSignals::hold();
  Graphics::prepare();
  // Meanwhile Qt connects to the display.
  const auto fonts = Fonts::readConfigurationAhead();
  QGuiApplication application(argc, argv);
  fonts.wait();
  QGuiApplication::setApplicationName(QStringLiteral("velto"));
  QGuiApplication::setApplicationDisplayName(QStringLiteral("MORLA Velto"));
  QGuiApplication::setDesktopFileName(QStringLiteral(VELTO_ID));

  AppDelegate delegate(options, output(), std::move(assignment));
  // Decoding the icon and sending it to the display takes milliseconds.
  QObject::connect(&delegate, &AppDelegate::opened, &application,
                   [] { QGuiApplication::setWindowIcon(windowIcon()); });
  if (!delegate.applicationDidFinishLaunching())
    return EXIT_FAILURE;
  // A signal ends the program as closing the window does.
  QSocketNotifier signalled(signals, QSocketNotifier::Read);
  QObject::connect(&signalled, &QSocketNotifier::activated,
                   [] { QCoreApplication::exit(EndSignals::exitStatus(EndSignals::received())); });
  return QGuiApplication::exec();
}

int runAssignment(int argc, char** argv, const LaunchOptions& options) {
  auto opened = Assignment::open(options.assignment->list, options.assignment->results);
  if (const auto* wrong = std::get_if<std::string>(&opened))
    return misuse(*wrong);
  auto& assignment = *std::get_if<Assignment>(&opened);
  if (!assignment.reading.sitting.next()) {
    Report::line(options.assignment->results + ": all trials of the list are answered");
    return EXIT_SUCCESS;
  }
  return runWindow(argc, argv, options, std::move(assignment));
}

// Fonts need a QGuiApplication, but no display. Its constructor looks for a Wayland socket in the
// session's runtime folder; if there is none, Qt creates that folder in the temporary one. An
// invalid TMPDIR prevents this, because the check must change nothing on disk.
bool runBrandCheck(int argc, char** argv) {
  qInstallMessageHandler(reportMessages);
  Fonts::readConfigurationAhead().wait();
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const auto temporary = Environment::ofProcess().variable("TMPDIR");
  Environment::setVariable("TMPDIR", "/there is no such folder");
  const QGuiApplication application(argc, argv);
  Environment::setVariable("TMPDIR", temporary);
  return BrandCheck::run();
}

// A mode whose output was lost has failed.
int statusOf(bool passed) {
  return passed && Report::isComplete() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

// Of several switches, the first in the order below wins, regardless of their order on the command
// line. Modes without a window need no display, and only the brand check creates an application.
int main(int argc, char** argv) {
  StandardStreams::prepare();
  // This program as its own helper.
  if (argc == 2 && argv[1] == std::string_view(jackFinderSwitch))
    return findJackServer();
  const Arguments arguments(std::vector<std::string>(argv, argv + argc));
  if (arguments.has("--help")) {
    Report::line(Help::text(Environment::ofProcess()));
    return statusOf(true);
  }
  if (arguments.has("--version")) {
    Report::line(Help::version());
    return statusOf(true);
  }
  if (arguments.has("--probe"))
    return statusOf(Probe::run());
  if (const auto load = arguments.valueOf("--bench-audio"))
    return PlaybackBench::run(*load == "on", output());
  if (arguments.has("--brand-check"))
    return statusOf(runBrandCheck(argc, argv));
  if (arguments.has("--bench")) {
    Bench::run();
    return EXIT_SUCCESS;
  }
  if (arguments.has("--audio-selftest"))
    return statusOf(Player::selfTest(std::make_unique<Engine>(output()), Report::line));
  if (arguments.has("--seed-demo")) {
    DemoData::seed();
    return EXIT_SUCCESS;
  }
  if (const auto wrong = wrongUse(arguments))
    return misuse(*wrong);
  const LaunchOptions options = launchOptions(arguments);
  return options.assignment ? runAssignment(argc, argv, options) : runWindow(argc, argv, options);
}
