// The side panel in the scene and in its picture, in both palettes.

#include "kit/Seen.h"

#include "CurveLine.h"
#include "desktop/Fonts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

using namespace velto;
using namespace velto::kit;

namespace {

// Records `times` answers to `targetFreq` (Hz) that are `octavesOff` octaves wrong.
void answer(Profile& profile, double targetFreq, double octavesOff, int times) {
  for (int i = 0; i < times; ++i) {
    const Trial trial{.drill = Drill::frequency, .difficulty = 40, .targetFreq = targetFreq};
    profile.record(trial, Drills::grade(targetFreq * std::exp2(octavesOff), trial));
  }
}

// The practice view over a record with answers.
struct Practised : Stage {
  explicit Practised(const Earlier& earlier)
      : Stage(Drill::frequency, true, {1180, 386}, earlier) {}
};

void inBothPalettes(Stage& stage,
                    const std::function<void(const Picture&, const Hues&)>& expectations) {
  for (const bool dark : {true, false}) {
    SCOPED_TRACE(dark ? "dark" : "light");
    stage.setDark(dark);
    expectations(Picture(stage.picture()), dark ? darkHues : lightHues);
  }
}

void expectStat(const Stage& stage, const Picture& picture, const Hues& hues, const QString& label,
                const QString& value, double x) {
  expectRect(stage.box("stat" + label), {x, 20, 100, 54});
  expectBox(stage.item("statBox" + label), picture,
            {.radius = 8,
             .fill = Qt::transparent,
             .stroke = hues.line,
             .ground = hues.bg,
             .probe = {12, 27}});
  expectText(stage.item("statLabel" + label), picture,
             {label, "Inter", medium, 8, 1.2, hues.faint, hues.bg});
  const bool brand = BrandType::registered();
  expectText(stage.item("statValue" + label), picture,
             {value, brand ? "MORLA Display" : "Inter", brand ? regular : semibold, 19, 0, hues.ink,
              hues.bg});
  const QRectF number = stage.box("statValue" + label);
  const QRectF caption = stage.box("statLabel" + label);
  EXPECT_LE(number.bottom(), caption.top());
  EXPECT_NEAR(number.center().x(), x + 50, 0.51);
  EXPECT_NEAR(caption.center().x(), x + 50 + 0.6, 0.51);
}

// Expects a bar's place, its height above the map's foot at y = 136, and its colour.
void expectBar(const Stage& stage, const Picture& picture, const QColor& ground, int index,
               double height, const QColor& color) {
  SCOPED_TRACE("bar " + std::to_string(index));
  QQuickItem* bar = stage.item("bar" + QString::number(index));
  const QRectF box = Stage::box(bar);
  const double gap = std::round(2 * picture.scale()) / picture.scale();
  const double share = (320.0 - gap * 26) / 27;
  EXPECT_NEAR(box.left(), 840 + index * (share + gap), 0.5);
  EXPECT_NEAR(box.right(), 840 + index * (share + gap) + share, 0.5);
  EXPECT_NEAR(box.bottom(), 136, 0.01);
  EXPECT_NEAR(bar->property("barHeight").toDouble(), height, 0.01);
  EXPECT_NEAR(bar->property("radius").toDouble(), 2, 1e-9);
  EXPECT_TRUE(bar->property("continuous").toBool());
  const double middle = box.center().x();
  expectColor(picture.colorAt({middle, 136 - height / 2}), color, "the bar");
  const double s = picture.scale();
  const int column = static_cast<int>(std::floor(middle * s));
  const double seen = picture.thickness({column, static_cast<int>(100 * s)}, {0, 1},
                                        static_cast<int>(40 * s), ground, color);
  // The map's upper edge, which is the tallest bar's, is snapped to a whole pixel.
  const double snapped = std::abs(34 * s - std::round(34 * s)) / s;
  if (bar->property("strokeColor").value<QColor>().alpha() == 0) {
    EXPECT_NEAR(seen / s, height, std::max(0.35, snapped + 0.01));
  }
}

} // namespace

TEST(SidePanel, ExplainsAnEmptyRecord) {
  Stage stage;
  inBothPalettes(stage, [&](const Picture& picture, const Hues& hues) {
    expectStat(stage, picture, hues, "STREAK", "—", 840);
    expectStat(stage, picture, hues, "TODAY", "0", 950);
    expectStat(stage, picture, hues, "ACC", "—", 1060);
    expectText(stage.item("mapTitle"), picture,
               {"weakness map", "Inter", regular, 9, 0, hues.faint, hues.bg});
    for (int band = 0; band < 27; ++band)
      expectBar(stage, picture, hues.bg, band, 6, hues.track);
    expectText(stage.item("weakestText"), picture,
               {"needs 3 answers in a band before it names a weak spot", "Inter", regular, 9, 0,
                hues.faint, hues.bg});
    expectText(stage.item("curveTitle"), picture,
               {"progress · frequency", "Inter", regular, 9, 0, hues.faint, hues.bg});
    expectText(
        stage.item("curveHint"), picture,
        {"answer a few to draw the curve", "JetBrains Mono", regular, 9, 0, hues.faint, hues.bg});
    expectText(stage.item("keyHint"), picture,
               {"1/2/3 pick · space switch · ↩ submit", "JetBrains Mono", regular, 10, 0,
                hues.faint, hues.bg});
    EXPECT_EQ(stage.find("curve"), nullptr);
    EXPECT_EQ(stage.find("curveFrame"), nullptr);
  });
}

TEST(SidePanel, StacksItsPartsWithEightPointsBetween) {
  Stage stage;
  expectRect(stage.box("sidePanel"), {840, 20, 320, 346});
  EXPECT_EQ(stage.box("mapTitle").top(), 82);
  EXPECT_EQ(stage.box("bar0").top(), 102);
  EXPECT_EQ(stage.box("weakestText").top(), 160);
  EXPECT_EQ(stage.box("curveTitle").top(), 180);
  expectRect(stage.box("sparkline"), {840, 200, 320, 64});
  EXPECT_NEAR(stage.box("keyHint").bottom(), 366, 0.01);
}

TEST(SidePanel, LabelsFiveBandsFromEdgeToEdge) {
  Stage stage;
  const char* const texts[] = {"40", "250", "1k", "4k", "16k"};
  inBothPalettes(stage, [&](const Picture& picture, const Hues& hues) {
    std::vector<QRectF> boxes;
    for (int i = 0; i < 5; ++i) {
      QQuickItem* label = stage.item("bandLabel" + QString::number(i));
      expectText(label, picture, {texts[i], "JetBrains Mono", regular, 8, 0, hues.faint, hues.bg});
      boxes.push_back(Stage::box(label));
      EXPECT_EQ(boxes.back().top(), 140);
    }
    EXPECT_NEAR(boxes.front().left(), 840, 0.01);
    EXPECT_NEAR(boxes.back().right(), 1160, 0.01);
    const double gap = boxes[1].left() - boxes[0].right();
    for (std::size_t i = 1; i < boxes.size(); ++i)
      EXPECT_NEAR(boxes[i].left() - boxes[i - 1].right(), gap, 0.01);
  });
}

TEST(SidePanel, RaisesAndReddensTheBarsOfWeakBands) {
  Practised stage([](Profile& profile) {
    answer(profile, 40, 0, 1);     // no error: good
    answer(profile, 100, 0.3, 1);  // half way to warn
    answer(profile, 200, 0.6, 1);  // warn
    answer(profile, 400, 0.9, 1);  // half way to bad
    answer(profile, 1000, 1.2, 1); // bad
    answer(profile, 8000, 2.5, 1); // no worse than bad
  });
  const auto between = [](const QColor& a, const QColor& b) { return over(at(b, 0.5), a); };
  inBothPalettes(stage, [&](const Picture& picture, const Hues& hues) {
    expectBar(stage, picture, hues.bg, 0, 12, hues.good);
    expectBar(stage, picture, hues.bg, 4, 17.5, between(hues.good, hues.warn));
    expectBar(stage, picture, hues.bg, 7, 23, hues.warn);
    expectBar(stage, picture, hues.bg, 10, 28.5, between(hues.warn, hues.bad));
    expectBar(stage, picture, hues.bg, 14, 34, hues.bad);
    expectBar(stage, picture, hues.bg, 23, 34, hues.bad);
    expectBar(stage, picture, hues.bg, 1, 6, hues.track);
    EXPECT_EQ(stage.item("weakestText")->property("text").toString(),
              "needs 3 answers in a band before it names a weak spot");
  });
}

// All 26 gaps between the bars are empty and two points wide, rounded to whole pixels. The bars'
// widths differ by one pixel at most.
TEST(SidePanel, LeavesEqualGapsBetweenTheBars) {
  Stage stage;
  const Picture picture(stage.picture());
  const double s = picture.scale();
  const int y = static_cast<int>(133 * s);
  int gap = 0, bar = 0;
  std::vector<int> gaps, bars; // without the outermost bars
  for (int x = static_cast<int>(842 * s); x < 1158 * s; ++x)
    if (picture.pixel(x, y) == darkHues.bg) {
      ++gap;
      if (bar > 0 && !gaps.empty())
        bars.push_back(bar);
      bar = 0;
    } else {
      ++bar;
      expectColor(picture.pixel(x, y), darkHues.track, "a bar");
      if (gap > 0)
        gaps.push_back(gap);
      gap = 0;
    }
  EXPECT_EQ(gaps, std::vector<int>(26, static_cast<int>(std::round(2 * s))));
  const auto [narrowest, widest] = std::minmax_element(bars.begin(), bars.end());
  EXPECT_EQ(bars.size(), 25U);
  EXPECT_LE(*widest - *narrowest, 1);
}

TEST(SidePanel, OutlinesAndNamesTheWeakestBand) {
  Practised stage([](Profile& profile) {
    answer(profile, 3150, 0.42, 7);
    answer(profile, 100, 2, 2); // worse, but too few
  });
  inBothPalettes(stage, [&](const Picture& picture, const Hues& hues) {
    expectText(stage.item("weakestText"), picture,
               {"weakest · 3.15k Hz — 0.42 oct mean error over 7", "Inter", regular, 9, 0,
                hues.muted, hues.bg});
    for (int band = 0; band < 27; ++band) {
      QQuickItem* bar = stage.item("bar" + QString::number(band));
      EXPECT_EQ(bar->property("strokeColor").value<QColor>().alpha() > 0, band == 19);
      EXPECT_NEAR(bar->property("strokeWidth").toDouble(), 1.5, 1e-9);
    }
    const QRectF box = stage.box("bar19");
    const double s = picture.scale();
    const double t = 0.42 / 1.2;
    const QColor fill = over(at(hues.warn, 2 * t), hues.good);
    EXPECT_NEAR(
        picture.thickness({static_cast<int>(std::round(box.left() * s)), static_cast<int>(126 * s)},
                          {1, 0}, static_cast<int>(std::ceil(1.5 * s)) + 1, fill, hues.ink),
        1.5 * s, 0.2);
  });
}

TEST(SidePanel, DrawsTheCurveOfTheCurrentDrill) {
  Practised stage([](Profile& profile) { answer(profile, 1000, 0, 3); });
  inBothPalettes(stage, [&](const Picture& picture, const Hues& hues) {
    EXPECT_EQ(stage.find("curveHint"), nullptr);
    expectBox(stage.item("curveFrame"), picture,
              {.radius = 6,
               .fill = Qt::transparent,
               .stroke = hues.line,
               .ground = hues.bg,
               .probe = {60, 8}});
    for (int i = 0; i < 3; ++i) {
      const QRectF box = stage.box("hairline" + QString::number(i));
      expectRect(box, {840, 200 + 16.0 * (i + 1), 320, 1});
      expectColor(picture.colorAt({1000, box.top() + 0.1}), over(hues.line, hues.bg), "a hairline");
    }
    QQuickItem* curve = stage.item("curve");
    EXPECT_NEAR(curve->property("lineWidth").toDouble(), 1.6, 1e-9);
    EXPECT_EQ(curve->property("color").value<QColor>(), hues.control);
    // All three answers were given at difficulty 40: a horizontal line 60 % down.
    const double scale = picture.scale();
    EXPECT_NEAR(picture.thickness({static_cast<int>(1000 * scale), static_cast<int>(235 * scale)},
                                  {0, 1}, static_cast<int>(8 * scale), hues.bg, hues.control),
                1.6 * scale, 0.15);
    expectColor(picture.colorAt({1000, 238.4}), hues.control, "the curve");
  });
  stage.session.setDrill(Drill::level);
  EXPECT_EQ(stage.item("curveTitle")->property("text").toString(), "progress · level");
  EXPECT_NE(stage.find("curveHint"), nullptr);
}

// A curve along the upper edge, at difficulty 100, and one along the lower edge.
TEST(SidePanel, ClipsTheCurveToItsFrame) {
  for (const double difficulty : {100.0, 0.0}) {
    Practised stage([difficulty](Profile& profile) {
      for (int i = 0; i < 3; ++i) {
        const Trial trial{.drill = Drill::frequency, .difficulty = difficulty, .targetFreq = 1000};
        profile.record(trial, Drills::grade(1000, trial));
      }
    });
    inBothPalettes(stage, [&](const Picture& picture, const Hues& hues) {
      const QRectF frame = stage.box("curveFrame");
      const double s = picture.scale();
      const bool atTop = difficulty == 100;
      const int left = static_cast<int>(std::round(frame.left() * s));
      const int right = static_cast<int>(std::round(frame.right() * s));
      const int top = static_cast<int>(std::round(frame.top() * s));
      const int bottom = static_cast<int>(std::round(frame.bottom() * s));
      // Half of the line's width lies inside.
      const QPoint edge(static_cast<int>(1000 * s), atTop ? top : bottom - 1);
      EXPECT_GE(Picture::share(picture.pixel(edge.x(), edge.y()), hues.bg, hues.control),
                std::min(0.8 * s, 1.0) - 0.05);
      for (int x = left - 4; x < right + 4; ++x)
        for (const int y : {top - 2, top - 1, bottom, bottom + 1})
          ASSERT_EQ(picture.pixel(x, y), hues.bg) << "above or below the frame";
      for (int y = top - 4; y < bottom + 4; ++y)
        for (const int x : {left - 2, left - 1, right, right + 1})
          ASSERT_EQ(picture.pixel(x, y), hues.bg) << "beside the frame";
      for (const int x : {left, right - 1})
        ASSERT_EQ(picture.pixel(x, atTop ? top : bottom - 1), hues.bg) << "in a round corner";
    });
  }
}

TEST(SidePanel, FollowsAnAnswerAtOnce) {
  Stage stage;
  stage.grade(true);
  EXPECT_EQ(stage.item("statValueSTREAK")->property("text").toString(), "1d");
  EXPECT_EQ(stage.item("statValueTODAY")->property("text").toString(), "1");
  EXPECT_EQ(stage.item("statValueACC")->property("text").toString(), "100%");
  EXPECT_NE(stage.find("curveHint"), nullptr) << "one point is no curve";
  stage.session.newTrial();
  stage.grade(false);
  EXPECT_EQ(stage.item("statValueACC")->property("text").toString(), "50%");
  EXPECT_EQ(stage.find("curveHint"), nullptr);
}

TEST(BrandType, WordmarkAndFiguresUseTheFaceOnceItIsRegistered) {
  BrandType::registerFace();
  ASSERT_TRUE(BrandType::registered());
  Stage stage;
  inBothPalettes(stage, [&](const Picture& picture, const Hues& hues) {
    expectText(stage.item("wordmark"), picture,
               {"MORLA Velto", "MORLA Display", regular, 22, 0, hues.ink, hues.bg});
    expectStat(stage, picture, hues, "TODAY", "0", 950);
  });
}
