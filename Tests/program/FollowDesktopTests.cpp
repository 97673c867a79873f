// The window follows the desktop while it is open: light and dark, fonts, motion, scale. Runs the
// program under X, with a portal whose settings the test chooses. Run on a private desk with a
// session bus.
#include "kit/Desktop.h"
#include "kit/FakeOutput.h"
#include "kit/FakePortal.h"
#include "kit/GuiTesting.h"
#include "kit/ProgramRunner.h"
#include "kit/ScratchProfile.h"

#include "AppDelegate.h"
#include "desktop/Appearance.h"
#include "desktop/Fonts.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QtTest/QTest>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace velto::kit {
namespace {

const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString interface = QStringLiteral("org.gnome.desktop.interface");

constexpr std::uint32_t darkGround = 0x0B0C0F, lightGround = 0xFAF3EF;

class Window {
public:
  explicit Window(const ProgramRunner::Environment& environment = {}, double scale = 1)
      : program_(VELTO_PROGRAM, {"--drill", "level"}, environment),
        window_(desktop.waitForWindow("MORLA Velto", program_.pid())), scale_(scale) {
    desktop.waitForActive(window_);
  }

  [[nodiscard]] std::vector<std::uint32_t> pixels() {
    const WindowGeometry size = geometry();
    return desktop.picture(window_, {0, 0, size.width, size.height});
  }
  [[nodiscard]] std::uint32_t ground() { return desktop.picture(window_, {4, 4, 1, 1}).at(0); }
  [[nodiscard]] WindowGeometry geometry() { return desktop.geometry(window_); }

  // The picture once it has stopped changing. Where another window was, old content may remain
  // until this one is painted again.
  [[nodiscard]] std::vector<std::uint32_t> pixelsAtRest() {
    std::vector<std::uint32_t> last;
    desktop.waitUntil(
        [&] {
          const auto before = std::exchange(last, pixels());
          std::this_thread::sleep_for(std::chrono::milliseconds(200));
          return last == before;
        },
        "nothing moves");
    return last;
  }

  void waitForGround(std::uint32_t color) {
    desktop.waitUntil([&] { return ground() == color; }, "the ground changes");
  }
  // The trial is rendered when the primary button is enabled, painted in ink.
  void waitUntilRendered(std::uint32_t ink) {
    const auto at = [this](double points) {
      return static_cast<int>(std::lround(points * scale_));
    };
    desktop.waitUntil(
        [&] {
          const WindowGeometry size = geometry();
          return desktop.picture(window_, {size.width - at(1180 - 710), at(246), 1, 1}).at(0) ==
                 ink;
        },
        "the trial is rendered");
  }

  Desktop desktop;

private:
  ProgramRunner program_;
  WindowId window_;
  double scale_;
};

// The picture of a newly started program, which then ends so that its window covers no other.
std::vector<std::uint32_t> pixelsFromTheStart(std::uint32_t ink) {
  Window window;
  window.waitUntilRendered(ink);
  return window.pixelsAtRest();
}

} // namespace

TEST(FollowsTheDesktop, FromDarkToLightAndBackWhileItIsOpen) {
  FakePortal portal;
  portal.set(appearance, "color-scheme", 1U);
  Window window;
  window.waitForGround(darkGround);
  window.waitUntilRendered(0xF0F1F4);
  const auto dark = window.pixelsAtRest();
  portal.set(appearance, "color-scheme", 2U);
  window.waitForGround(lightGround);
  const auto light = pixelsFromTheStart(0x1B1D22);
  window.desktop.waitUntil([&] { return window.pixelsAtRest() == light; },
                           "nothing of the dark palette is left");
  portal.set(appearance, "color-scheme", 1U);
  window.desktop.waitUntil([&] { return window.pixelsAtRest() == dark; }, "all is dark again");
}

TEST(FollowsTheDesktop, FromOneFontToAnotherWhileItIsOpen) {
  FakePortal portal;
  portal.set(appearance, "color-scheme", 1U);
  Window window;
  window.waitUntilRendered(0xF0F1F4);
  const auto before = window.pixelsAtRest();
  const WindowGeometry small = window.geometry();
  portal.set(interface, "font-name", "DejaVu Sans 11");
  portal.set(interface, "monospace-font-name", "DejaVu Sans Mono 10");
  const auto wanted = pixelsFromTheStart(0xF0F1F4);
  window.desktop.waitUntil([&] { return window.pixelsAtRest() == wanted; },
                           "it looks like one that was started with those fonts");
  EXPECT_NE(wanted, before);
  if (window.geometry().width == small.width) { // the window did not have to grow
    portal.set(interface, "font-name", "");
    portal.set(interface, "monospace-font-name", "");
    window.desktop.waitUntil([&] { return window.pixelsAtRest() == before; }, "the fonts are back");
  }
}

TEST(FollowsTheDesktop, InEveryScale) {
  FakePortal portal;
  portal.set(appearance, "color-scheme", 2U);
  for (const double scale : {1.25, 1.5, 2.0}) {
    Window window({{"QT_SCALE_FACTOR", std::to_string(scale)}}, scale);
    window.waitForGround(lightGround);
    EXPECT_EQ(window.geometry().width, std::lround(1180 * scale));
    EXPECT_EQ(window.geometry().height, std::lround(386 * scale));
    portal.set(appearance, "color-scheme", 1U);
    window.waitForGround(darkGround);
    portal.set(appearance, "color-scheme", 2U);
  }
}

TEST(Motion, IsReducedWhereEitherSettingAsksForIt) {
  FakePortal portal;
  for (const auto& fixed : {std::optional<bool>(), std::optional(true)}) {
    Appearance motion(fixed);
    EXPECT_FALSE(motion.reducedMotion()) << "until the portal answers";
    const auto expect = [&](bool reduced) {
      EXPECT_TRUE(QTest::qWaitFor([&] { return motion.reducedMotion() == reduced; }, 10000));
    };
    portal.set(appearance, "reduced-motion", 1U);
    expect(true);
    portal.set(appearance, "reduced-motion", 0U);
    expect(false);
    portal.set(interface, "enable-animations", false);
    expect(true);
    portal.set(appearance, "reduced-motion", 1U);
    portal.set(interface, "enable-animations", true);
    portal.set(appearance, "reduced-motion", 0U);
    expect(false);
    // Set before the program starts.
    portal.set(appearance, "reduced-motion", 1U);
    Appearance late(fixed);
    EXPECT_TRUE(QTest::qWaitFor([&] { return late.reducedMotion(); }, 10000));
    portal.set(appearance, "reduced-motion", 0U);
    expect(false);
  }
}

TEST(Motion, OfTheOpenWindowFollowsThePortal) {
  FakePortal portal;
  portal.set(appearance, "reduced-motion", 1U);
  const ScratchProfile profile;
  FakeOutput output;
  AppDelegate delegate({}, output.factory());
  ASSERT_TRUE(delegate.applicationDidFinishLaunching());
  for (const uint reduced : {1U, 0U, 1U}) {
    portal.set(appearance, "reduced-motion", reduced);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
          return delegate.window()->rootObject()->property("reducedMotion").toBool() ==
                 (reduced == 1);
        },
        10000));
  }
  portal.set(appearance, "reduced-motion", 0U);
}

TEST(FontFamilies, FollowThePortal) {
  FakePortal portal;
  Fonts fonts;
  EXPECT_EQ(fonts.system(), "Inter");
  EXPECT_EQ(fonts.mono(), "JetBrains Mono");
  portal.set(interface, "font-name", "DejaVu Sans Bold 10,5");
  EXPECT_TRUE(QTest::qWaitFor([&] { return fonts.system() == "DejaVu Sans"; }, 10000));
  EXPECT_EQ(fonts.mono(), "JetBrains Mono");
  portal.set(interface, "monospace-font-name", "DejaVu Sans Mono 10");
  EXPECT_TRUE(QTest::qWaitFor([&] { return fonts.mono() == "DejaVu Sans Mono"; }, 10000));
  portal.set(interface, "font-name", "No Such Font 10");
  EXPECT_TRUE(QTest::qWaitFor([&] { return fonts.system() == "Inter"; }, 10000));
}

} // namespace velto::kit

int main(int argc, char** argv) {
  const QByteArray bus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
  velto::kit::prepareGui();
  qputenv("DBUS_SESSION_BUS_ADDRESS", bus);
  const QGuiApplication application(argc, argv);
  qunsetenv("QT_QPA_PLATFORM"); // the program itself opens a real window
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
