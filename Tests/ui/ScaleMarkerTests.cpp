// The markers of the scales, for every pair of answers.

#include "kit/Snippet.h"

#include "Bands.h"

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
        // Half of a bar, and its shift to a whole pixel.
        const double beyond = 1 + 0.5 / snippet.view.effectiveDevicePixelRatio();
        const QRectF reach = strip.adjusted(-beyond, 0, beyond, 0);
        ASSERT_TRUE(strip.contains(a) && strip.contains(t)) << answer << ' ' << truth;
        ASSERT_FALSE(a.intersects(t)) << answer << ' ' << truth;
        for (const QRectF& bar : {aBar, tBar}) {
          ASSERT_FALSE(bar.intersects(a)) << answer << ' ' << truth;
          ASSERT_FALSE(bar.intersects(t)) << answer << ' ' << truth;
          ASSERT_TRUE(reach.contains(bar));
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

// Also at the ends of the scale, where one half stands outside the strip.
TEST(Markers, AreTwoPointsWideAndCentredOnTheirValueOnWholePixels) {
  const struct {
    const char* qml;
    double value;
    double x; // on the strip
  } cases[] = {{"FrequencyPicker", 40, 0},
               {"FrequencyPicker", 800, 360},
               {"FrequencyPicker", 16000, 720},
               {"DecibelPicker { scaleModel: Scales.level }", 0, 0},
               {"DecibelPicker { scaleModel: Scales.level }", 7, 720},
               {"DecibelPicker { scaleModel: Scales.dynamics }", 7, 360},
               {"DecibelPicker { scaleModel: Scales.dynamics }", 14, 720}};
  for (const char* role : {"answer", "truth"})
    for (const auto& c : cases) {
      SCOPED_TRACE(testing::Message() << role << ' ' << c.value << " on " << c.qml);
      Snippet snippet(
          QByteArray("Item { width: 800; height: 120; Loader { x: 40; y: 8; width: 720; "
                     "sourceComponent: Component { ") +
          c.qml + (QByteArray(c.qml).contains('{') ? "" : " {}") + " } } }");
      auto* picker = snippet.root->findChild<QQuickItem*>(QStringLiteral("handle"))->parentItem();
      const Picture bare = snippet.picture();
      picker->setProperty(QByteArray(role) == "answer" ? "value" : "truth", c.value);
      const Picture picture = snippet.picture();
      const double s = picture.scale();
      const QRectF bar = Stage::box(snippet.item(QString::fromLatin1(role) + "MarkerBar"));
      EXPECT_DOUBLE_EQ(bar.width(), 2);
      EXPECT_NEAR(bar.center().x(), 40 + c.x, 0.5 / s + 1e-6);
      // The bar's pixels have its full colour; those beside it are unchanged.
      const int left = static_cast<int>(std::round(bar.left() * s));
      EXPECT_NEAR(bar.left() * s, left, 1e-3);
      const int y = static_cast<int>(40 * s);
      int width = 0;
      while (picture.pixel(left + width, y) ==
             QColor(role[0] == 'a' ? darkHues.signal : darkHues.ink))
        ++width;
      EXPECT_NEAR(width, 2 * s, 0.5);
      for (const int beside : {left - 1, left + width})
        EXPECT_EQ(picture.pixel(beside, y), bare.pixel(beside, y));
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
