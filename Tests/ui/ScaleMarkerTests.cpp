// The markers of the scales, for every pair of answers.

#include "kit/Snippet.h"

#include "Drills.h"

using namespace velto;
using namespace velto::kit;

TEST(Markers, KeepTheirChipsInsideClearOfBarsAndApartForAllBands) {
  for (const double width : {560.0, 739.0, 1559.0}) {
    Snippet snippet("FrequencyPicker {}", {{"width", width}});
    for (const double answer : Bands::centres)
      for (const double truth : Bands::centres) {
        snippet.root->setProperty("value", answer);
        snippet.root->setProperty("truth", truth);
        const QRectF a = Stage::box(snippet.item("answerMarkerChip"));
        const QRectF t = Stage::box(snippet.item("truthMarkerChip"));
        const QRectF aBar = Stage::box(snippet.item("answerMarkerBar"));
        const QRectF tBar = Stage::box(snippet.item("truthMarkerBar"));
        const QRectF strip(0, 0, width, 76);
        ASSERT_TRUE(strip.contains(a) && strip.contains(t)) << answer << ' ' << truth;
        ASSERT_FALSE(a.intersects(t)) << answer << ' ' << truth;
        for (const QRectF& bar : {aBar, tBar}) {
          ASSERT_FALSE(bar.intersects(a)) << answer << ' ' << truth;
          ASSERT_FALSE(bar.intersects(t)) << answer << ' ' << truth;
          ASSERT_TRUE(strip.contains(bar));
        }
      }
  }
}

TEST(Markers, KeepTheirChipsInsideClearOfBarsAndApartForAllDecibels) {
  for (const bool level : {true, false}) {
    const double upper = level ? 7 : 14;
    Snippet snippet(level ? "DecibelPicker { width: 739; scaleModel: Scales.level }"
                          : "DecibelPicker { width: 739; scaleModel: Scales.dynamics }");
    for (int i = 0; i <= 56; ++i)
      for (int j = 1; j <= 56; ++j) {
        snippet.root->setProperty("value", upper * i / 56);
        snippet.root->setProperty("truth", upper * j / 56);
        const QRectF a = Stage::box(snippet.item("answerMarkerChip"));
        const QRectF t = Stage::box(snippet.item("truthMarkerChip"));
        const QRectF strip(0, 0, 739, 76);
        ASSERT_TRUE(strip.contains(a) && strip.contains(t)) << i << ' ' << j;
        ASSERT_FALSE(a.intersects(t)) << i << ' ' << j;
        for (const char* name : {"answerMarkerBar", "truthMarkerBar"}) {
          const QRectF bar = Stage::box(snippet.item(name));
          ASSERT_FALSE(bar.intersects(a) || bar.intersects(t)) << i << ' ' << j;
        }
      }
  }
}

TEST(Markers, AreAbsentWithoutAValue) {
  Snippet snippet("FrequencyPicker { width: 739 }");
  EXPECT_EQ(Stage::find(snippet.root, "answerMarker"), nullptr);
  EXPECT_EQ(Stage::find(snippet.root, "truthMarker"), nullptr);
  snippet.root->setProperty("value", 1000.0);
  EXPECT_NE(Stage::find(snippet.root, "answerMarker"), nullptr);
  snippet.root->setProperty("truth", 1000.0);
  EXPECT_NE(Stage::find(snippet.root, "truthMarker"), nullptr);
}
