// The window on a small screen, whose size in pixels VELTO_TEST_SCREEN gives. Run on a private desk
// of that size.
#include "kit/Desktop.h"
#include "kit/ProgramRunner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace velto::kit {
namespace {

struct Screen {
  int width = 0, height = 0; // pixels
  double scale = 1;

  Screen() {
    const char* size = std::getenv("VELTO_TEST_SCREEN");
    if (size == nullptr || std::sscanf(size, "%dx%d", &width, &height) != 2)
      throw std::runtime_error("VELTO_TEST_SCREEN is not set");
    if (const char* factor = std::getenv("QT_SCALE_FACTOR"))
      scale = std::stod(factor);
  }
};

} // namespace

TEST(SmallScreen, ShowsTheWholeWindowBelowItsTitleBar) {
  const Screen screen;
  for (const char* drill : {"frequency", "level", "dynamics", "polarity"}) {
    ProgramRunner program(VELTO_PROGRAM, {"--drill", drill});
    Desktop desktop;
    const WindowId window = desktop.waitForWindow("MORLA Velto", program.pid());
    desktop.waitForActive(window);
    const WindowGeometry content = desktop.geometry(window);
    constexpr int titleBar = 10; // at least
    EXPECT_GE(content.x, 0);
    EXPECT_GE(content.y, titleBar);
    EXPECT_LE(content.x + content.width, screen.width);
    EXPECT_LE(content.y + content.height, screen.height);
    // The content is whole: main column, divider and side panel.
    EXPECT_GE(content.width, std::lround(1001 * screen.scale));
    EXPECT_GE(content.height, std::lround(386 * screen.scale));
  }
}

// At 1.25x the window's height is not a whole number of pixels.
TEST(SmallScreen, PaintsTheWindowToItsLastRowAndColumn) {
  ProgramRunner program(VELTO_PROGRAM, {"--appearance", "light"});
  Desktop desktop;
  const WindowId window = desktop.waitForWindow("MORLA Velto", program.pid());
  desktop.waitForActive(window);
  const WindowGeometry content = desktop.geometry(window);
  const auto isGround = [&](const WindowGeometry& part) {
    const auto pixels = desktop.picture(window, part);
    constexpr std::uint32_t ground = 0xFAF3EF;
    const auto others = std::count_if(pixels.begin(), pixels.end(),
                                      [](std::uint32_t color) { return color != ground; });
    return others <= 2; // the divider's
  };
  desktop.waitUntil(
      [&] {
        return isGround({0, content.height - 1, content.width, 1});
      },
      "the last row has the background's colour");
  desktop.waitUntil(
      [&] {
        return isGround({content.width - 1, 0, 1, content.height});
      },
      "the last column has the background's colour");
}

} // namespace velto::kit
