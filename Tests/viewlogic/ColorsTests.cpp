#include "Colors.h"

#include <gtest/gtest.h>

using namespace velto;
using Colors::Color;

namespace {

void expectNear(const Color& color, const Color& wanted) {
  EXPECT_NEAR(color.red, wanted.red, 1e-6);
  EXPECT_NEAR(color.green, wanted.green, 1e-6);
  EXPECT_NEAR(color.blue, wanted.blue, 1e-6);
  EXPECT_NEAR(color.alpha, wanted.alpha, 1e-6);
}

constexpr Color red{1, 0, 0, 0.5F};
constexpr Color blue{0, 0, 1, 0.5F};

} // namespace

TEST(Colors, MixIsOpaqueAndClamped) {
  EXPECT_EQ(Colors::mix(red, blue, -0.5), (Color{1, 0, 0, 1}));
  EXPECT_EQ(Colors::mix(red, blue, 2), (Color{0, 0, 1, 1}));
  EXPECT_EQ(Colors::mix(red, blue, 0.25), (Color{0.75F, 0, 0.25F, 1}));
}

TEST(Colors, LayAColourOverAnother) {
  EXPECT_EQ(Colors::laidOver({1, 0, 0, 1}, blue), (Color{1, 0, 0, 1}));
  EXPECT_EQ(Colors::laidOver({1, 0, 0, 0}, blue), blue);
  expectNear(Colors::laidOver(red, {0, 0, 1, 1}), {0.5F, 0, 0.5F, 1});
  expectNear(Colors::laidOver(red, blue), {2 / 3.0F, 0, 1 / 3.0F, 0.75F});
  EXPECT_EQ(Colors::laidOver({1, 1, 1, 0}, {1, 1, 1, 0}), (Color{0, 0, 0, 0}));
}

TEST(Colors, FadeToAShareOfTheirOpacity) {
  EXPECT_EQ(Colors::faded(red, 0.5), (Color{1, 0, 0, 0.25F}));
}

TEST(Colors, OfWeaknessGoFromGoodThroughWarnToBad) {
  const Colors::Palette& palette = Colors::dark();
  const auto at = [&](double share) {
    return Colors::weakness(palette.good, palette.warn, palette.bad, share);
  };
  EXPECT_EQ(at(-1), palette.good);
  EXPECT_EQ(at(0), palette.good);
  EXPECT_EQ(at(0.25), Colors::mix(palette.good, palette.warn, 0.5));
  EXPECT_EQ(at(0.5), palette.warn);
  expectNear(at(1), palette.bad);
  expectNear(at(2), palette.bad);
}

TEST(Colors, OfThePalettesAreGiven) {
  EXPECT_EQ(Colors::dark().bg, (Color{11 / 255.0F, 12 / 255.0F, 15 / 255.0F, 1}));
  EXPECT_EQ(Colors::dark().line.alpha, 1);
  EXPECT_EQ(Colors::light().line, Colors::faded(Colors::light().ink, 0.12));
  EXPECT_TRUE(Colors::dark().isDark);
  EXPECT_FALSE(Colors::light().isDark);
}
