#include "Theme.h"

#include "kit/Snippet.h"

using namespace velto;
using namespace velto::kit;

TEST(PaletteEnvironment, IsDarkByDefault) {
  Snippet snippet("Panel { width: 200; height: 80 }");
  expectColor(snippet.picture().colorAt({100, 60}), "#121318", "the panel");
}

TEST(PaletteEnvironment, ChangesAllDescendantsLive) {
  Snippet snippet(R"(Item {
    width: 400; height: 80
    Theme.palette: Palettes.light
    Panel { width: 200; height: 80 }
    Item { x: 200; width: 200; height: 80
      Panel { width: 200; height: 80; title: "deep" }
    }
  })");
  const Picture light = snippet.picture();
  expectColor(light.colorAt({100, 60}), "#FFFBF6", "the panel");
  expectColor(light.colorAt({300, 60}), "#FFFBF6", "the deeper panel");
  auto* theme = qobject_cast<Theme*>(qmlAttachedPropertiesObject<Theme>(snippet.root, true));
  theme->setPalette(Palette::dark());
  const Picture dark = snippet.picture();
  expectColor(dark.colorAt({100, 60}), "#121318", "the panel");
  expectColor(dark.colorAt({300, 60}), "#121318", "the deeper panel");
  EXPECT_EQ(snippet.item("panelTitle")->property("color").value<QColor>(), QColor("#646975"));
}

TEST(PaletteEnvironment, TheNearestPaletteWins) {
  Snippet snippet(R"(Item {
    width: 400; height: 80
    Theme.palette: Palettes.light
    Panel { width: 200; height: 80 }
    Item { x: 200; width: 200; height: 80
      Theme.palette: Palettes.dark
      Panel { width: 200; height: 80 }
    }
  })");
  const Picture picture = snippet.picture();
  expectColor(picture.colorAt({100, 60}), "#FFFBF6", "the outer panel");
  expectColor(picture.colorAt({300, 60}), "#121318", "the inner panel");
}

TEST(PaletteEnvironment, FollowsAnItemToItsNewParent) {
  Snippet snippet(R"(Item {
    width: 400; height: 80
    Item { objectName: "home"; width: 200; height: 80; Theme.palette: Palettes.light
      Panel { objectName: "mover"; width: 200; height: 80 }
    }
    Item { objectName: "abroad"; x: 200; width: 200; height: 80 }
  })");
  expectColor(snippet.picture().colorAt({100, 60}), "#FFFBF6", "at home");
  snippet.item("mover")->setParentItem(snippet.item("abroad"));
  expectColor(snippet.picture().colorAt({300, 60}), "#121318", "abroad");
}

TEST(Palettes, HaveTheExpectedColours) {
  const auto same = [](const Palette& palette, const Hues& hues) {
    EXPECT_EQ(palette.bg, hues.bg);
    EXPECT_EQ(palette.surface, hues.surface);
    EXPECT_EQ(palette.soft, hues.soft);
    EXPECT_EQ(palette.ink, hues.ink);
    EXPECT_EQ(palette.muted, hues.muted);
    EXPECT_EQ(palette.faint, hues.faint);
    EXPECT_EQ(palette.line.rgba(), hues.line.rgba());
    EXPECT_EQ(palette.identity, hues.identity);
    EXPECT_EQ(palette.signal, hues.signal);
    EXPECT_EQ(palette.control, hues.control);
    EXPECT_EQ(palette.selectedFill, hues.selectedFill);
    EXPECT_EQ(palette.track, hues.track);
    EXPECT_EQ(palette.good, hues.good);
    EXPECT_EQ(palette.warn, hues.warn);
    EXPECT_EQ(palette.bad, hues.bad);
  };
  same(Palette::dark(), darkHues);
  same(Palette::light(), lightHues);
  EXPECT_TRUE(Palette::dark().isDark);
  EXPECT_FALSE(Palette::light().isDark);
  EXPECT_EQ(&Palette::dark(), &Palette::dark());
}

TEST(Mix, BlendsByAFractionClampedToItsRange) {
  const QColor from("#204060");
  const QColor to("#E0A010");
  EXPECT_LE(difference(mix(from, to, -0.5), from), 0);
  EXPECT_LE(difference(mix(from, to, 0), from), 0);
  EXPECT_LE(difference(mix(from, to, 1), to), 0);
  EXPECT_LE(difference(mix(from, to, 2), to), 0);
  const QColor grey = mix(QColor("#000000"), QColor("#FFFFFF"), 0.5);
  for (const float channel : {grey.redF(), grey.greenF(), grey.blueF()})
    EXPECT_NEAR(channel, 127.5 / 255, 1e-4);
  EXPECT_EQ(grey.alphaF(), 1.0F);
  const QColor third = mix(from, to, 0.25);
  EXPECT_NEAR(third.redF() * 255, 0x20 + 0.25 * (0xE0 - 0x20), 0.01);
  EXPECT_NEAR(third.greenF() * 255, 0x40 + 0.25 * (0xA0 - 0x40), 0.01);
  EXPECT_NEAR(third.blueF() * 255, 0x60 + 0.25 * (0x10 - 0x60), 0.01);
}

TEST(Mix, IsOpaqueForAnyColours) {
  const QColor mixed = mix(QColor(10, 20, 30, 128), QColor(50, 60, 70, 128), 0.5);
  EXPECT_EQ(mixed.alpha(), 255);
  EXPECT_NEAR(mixed.redF() * 255, 30, 0.01);
}

TEST(MixDeathTest, AbortsOnAnInvalidColour) {
  EXPECT_DEATH((void)mix(QColor(), QColor("#FFFFFF"), 0.5), "");
  EXPECT_DEATH((void)mix(QColor("#FFFFFF"), QColor(), 0.5), "");
}
