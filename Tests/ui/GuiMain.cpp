// The main function of the tests that need a window.
#include "kit/GuiTesting.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  velto::kit::prepareGui();
  const QGuiApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
