// The window under a Wayland compositor: painting, keys, and how it follows desktop and focus. Run
// on a private desk with a display, next to a compositor and a session bus.
#include "kit/Alignment.h"
#include "kit/Command.h"
#include "kit/Eventually.h"
#include "kit/FakePortal.h"
#include "kit/Launch.h"
#include "kit/ProfileReader.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"

#include "Drill.h"
#include "Grading.h"
#include "Trial.h"

#include <nlohmann/json.hpp>

#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velto::kit {
namespace {

constexpr std::size_t second = 48000; // frames

std::string run(const std::string& command) {
  const CommandResult result = runCommand(command + " 2>&1");
  if (result.status != 0)
    throw std::runtime_error(command + ": " + result.output);
  return result.output;
}

// Finds the window of a process in the compositor's tree.
std::optional<nlohmann::json> findWindow(const nlohmann::json& node, pid_t pid) {
  if (node.value("pid", 0) == pid && node.contains("app_id"))
    return std::optional<nlohmann::json>(std::in_place, node);
  for (const char* list : {"nodes", "floating_nodes"})
    for (const auto& child : node.value(list, nlohmann::json::array()))
      if (auto found = findWindow(child, pid))
        return found;
  return std::nullopt;
}

class Window {
public:
  // Without `audible` the program finds no sound server.
  explicit Window(std::vector<std::string> arguments, bool audible = true)
      : program(VELTO_PROGRAM, std::move(arguments), environment(audible)) {
    waitUntil([this] { return node() && node()->value("focused", false); }, "the window opens");
  }

  [[nodiscard]] std::optional<nlohmann::json> node() const {
    return findWindow(nlohmann::json::parse(run("swaymsg -r -t get_tree")), program.pid());
  }
  void focus() const { run("swaymsg '[pid=" + std::to_string(program.pid()) + "] focus'"); }

  // The window's content on the screen, in pixels.
  [[nodiscard]] QImage picture() const {
    const auto rect = node().value()["rect"];
    const auto number = [&](const char* name) { return std::to_string(rect[name].get<int>()); };
    const std::string file = (program.scratch() / "screen.png").string();
    run("grim -g '" + number("x") + "," + number("y") + " " + number("width") + "x" +
        number("height") + "' " + file);
    return QImage(QString::fromStdString(file)).convertToFormat(QImage::Format_RGB32);
  }

  // Moves the window to the top left, because a scaled output shows less of the desktop.
  void moveIntoSight() const {
    run("swaymsg '[pid=" + std::to_string(program.pid()) + "] move absolute position 20 20'");
    waitUntil([this] { return node().value()["rect"]["x"] == 20; }, "the window moves");
  }

  // Waits until the primary button is enabled, painted in the dark palette's ink.
  void waitUntilRendered() const {
    waitUntil([&] { return picture().pixel(710, 246) == qRgb(0xF0, 0xF1, 0xF4); },
              "the trial is rendered");
  }

  void waitForGround(QRgb color) const {
    waitUntil([&] { return picture().pixel(4, 4) == color; }, "the ground changes");
  }

private:
  static ProgramRunner::Environment environment(bool audible) {
    ProgramRunner::Environment changes{{"QT_QPA_PLATFORM", "wayland"}};
    if (!audible)
      changes.emplace("PULSE_SERVER", "unix:/nowhere");
    return changes;
  }

public:
  ProgramRunner program;
};

class OutputScale {
public:
  explicit OutputScale(const std::string& scale) { set(scale); }
  ~OutputScale() { set("1"); }
  OutputScale(const OutputScale&) = delete;
  OutputScale& operator=(const OutputScale&) = delete;

private:
  static void set(const std::string& scale) {
    static_cast<void>(runCommand("swaymsg -q output HEADLESS-1 scale " + scale));
  }
};

// The scale at which Qt draws a bare window on this output. A fractional one needs a newer release;
// older ones draw at the next whole scale, for the compositor to shrink. Qt 6.8 may complain on
// standard error that the scale changed while the window was drawn.
double drawnScale() {
  return std::stod(run("(QT_QPA_PLATFORM=wayland " VELTO_OUTPUT_SCALE " 2>/dev/null)"));
}

// Runs the program to take its own screenshot.
class Shot {
public:
  explicit Shot(const std::string& platform)
      : file_((folder_.path() / "shot.png").string()),
        program_(VELTO_PROGRAM, {"--appearance", "dark", "--shot", file_},
                 {{"QT_QPA_PLATFORM", platform}}) {}

  [[nodiscard]] QImage image() {
    if (program_.waitForExit() != 0)
      throw std::runtime_error("no picture: " + program_.errors());
    return QImage(QString::fromStdString(file_)).convertToFormat(QImage::Format_RGB32);
  }

private:
  ScratchFolder folder_;
  std::string file_;
  ProgramRunner program_;
};

bool isSilent(Recorder& recorder) {
  recorder.waitForMore(second / 10);
  const Recording sound = recorder.recording();
  return firstSound(sound, sound.frames() - second / 10) == sound.frames();
}

} // namespace

TEST(Wayland, MatchesThePictureUnderX) {
  Shot underX("xcb"), underWayland("wayland");
  const QImage wanted = underX.image();
  ASSERT_EQ(wanted.size(), QSize(1180, 386));
  EXPECT_EQ(underWayland.image(), wanted) << "the program's own picture";
  Window window({"--appearance", "dark"});
  waitUntil([&] { return window.picture() == wanted; }, "the screen shows the same");
}

TEST(Wayland, IsDrawnAtTheScaleOfItsOutput) {
  for (const char* scale : {"2", "1.5"}) {
    SCOPED_TRACE(scale);
    const OutputScale output(scale);
    const double drawn = drawnScale();
    const QImage wanted = Shot("wayland").image();
    ASSERT_EQ(wanted.size(), QSize(static_cast<int>(std::lround(1180 * drawn)),
                                   static_cast<int>(std::lround(386 * drawn))));
    if (drawn != std::stod(scale)) {
      EXPECT_EQ(drawn, std::ceil(std::stod(scale)));
      continue;
    }
    Window window({"--appearance", "dark"});
    window.moveIntoSight();
    waitUntil([&] { return window.picture() == wanted; }, "the screen shows the same");
  }
}

TEST(Wayland, FollowsLightAndDark) {
  FakePortal portal;
  const auto space = QStringLiteral("org.freedesktop.appearance");
  const auto key = QStringLiteral("color-scheme");
  portal.set(space, key, 1U);
  Window window({});
  window.waitForGround(qRgb(0x0B, 0x0C, 0x0F));
  portal.set(space, key, 2U);
  window.waitForGround(qRgb(0xFA, 0xF3, 0xEF));
  portal.set(space, key, 1U);
  window.waitForGround(qRgb(0x0B, 0x0C, 0x0F));
}

TEST(Wayland, TakesKeysAndCapsLockBlocksAllButReturn) {
  Launch launch;
  Window window({"--drill", "level", "--appearance", "dark"});
  launch.hasHappened();
  window.waitUntilRendered();
  run("wtype -M capslock -k 2 -m capslock");
  run("wtype -k Tab -k Tab");
  run("wtype -k Right -k Right -k Next -k Up"); // 2.05, 2.10, 1.10, 1.15 dB
  run("wtype -M capslock -k Return -m capslock");
  const ReadProfile profile = waitForAttempts(window.program.profileFile(), 1);
  const std::vector<Trial> trials = launch.trials(Drill::level);
  EXPECT_TRUE(std::any_of(trials.begin(), trials.end(), [&](const Trial& trial) {
    return std::abs(Drills::grade(1.15, trial).error - profile.attempts[0].error) < 1e-9;
  }));
  constexpr QPoint besideB(110, 254), verdict(740, 312);
  constexpr QRgb surface = qRgb(0x12, 0x13, 0x18), selectedFill = qRgb(0x1D, 0x27, 0x33);
  waitUntil([&] { return window.picture().pixel(verdict) != surface; }, "the verdict shows");
  EXPECT_EQ(window.picture().pixel(besideB), surface) << "B was not picked";
  run("wtype -M capslock -k n -m capslock");
  run("wtype -k 2");
  waitUntil([&] { return window.picture().pixel(besideB) == selectedFill; }, "B is picked");
  EXPECT_NE(window.picture().pixel(verdict), surface) << "no new trial yet";
  run("wtype -k n");
  waitUntil([&] { return window.picture().pixel(verdict) == surface; }, "n starts the next trial");
  EXPECT_EQ(window.program.errors().find("qrc:"), std::string::npos);
}

TEST(Wayland, IsSilentWhileAnotherWindowHasTheFocusOrItIsOutOfSight) {
  Recorder recorder;
  Window window({"--appearance", "dark"});
  waitUntil([&] { return !isSilent(recorder); }, "it plays");
  {
    Window other({"--appearance", "light"}, false);
    waitUntil([&] { return isSilent(recorder); }, "it is silent behind another window");
    recorder.waitForMore(second / 2);
    EXPECT_TRUE(isSilent(recorder));
    window.focus();
    waitUntil([&] { return !isSilent(recorder); }, "it plays again");
  }
  run("swaymsg workspace 2");
  waitUntil([&] { return isSilent(recorder); }, "it is silent on another workspace");
  run("swaymsg workspace 1");
  window.focus();
  waitUntil([&] { return !isSilent(recorder); }, "it plays again");
}

} // namespace velto::kit

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
