// The markers of the scales, for every pair of answer and truth.

#include "kit/Snippet.h"

#include "Bands.h"

using namespace velto;
using namespace velto::kit;

namespace {

// Expects both chips inside a strip `width` points wide, apart, and clear of both bars. Bars may
// extend beyond the strip by half of their width and by their rounding to a whole pixel.
void expectClearChips(const Snippet& snippet, double width, double answer, double truth) {
  snippet.root->setProperty("value", answer);
  snippet.root->setProperty("truth", truth);
  SCOPED_TRACE(testing::Message() << answer << ' ' << truth);
  const QRectF a = Stage::box(snippet.item("answerMarkerChip"));
  const QRectF t = Stage::box(snippet.item("truthMarkerChip"));
  const QRectF strip(0, 0, width, 76);
  const double beyond = 1 + 0.5 / snippet.view.effectiveDevicePixelRatio();
  ASSERT_TRUE(strip.contains(a) && strip.contains(t));
  ASSERT_FALSE(a.intersects(t));
  for (const char* name : {"answerMarkerBar", "truthMarkerBar"}) {
    const QRectF bar = Stage::box(snippet.item(name));
    ASSERT_FALSE(bar.intersects(a) || bar.intersects(t));
    ASSERT_TRUE(strip.adjusted(-beyond, 0, beyond, 0).contains(bar));
  }
}

} // namespace

TEST(Markers, ChipsStayInsideAndOverlapNothingForAllBands) {
  for (const double width : {560.0, 739.0, 1559.0}) {
    const Snippet snippet("FrequencyPicker {}", {{"width", width}});
    for (const double answer : Bands::centres)
      for (const double truth : Bands::centres)
        ASSERT_NO_FATAL_FAILURE(expectClearChips(snippet, width, answer, truth));
  }
}

TEST(Markers, ChipsStayInsideAndOverlapNothingForAllDecibels) {
  for (const bool level : {true, false}) {
    const double upper = level ? 7 : 14;
    const Snippet snippet(level ? "DecibelPicker { width: 739; scaleModel: Scales.level }"
                                : "DecibelPicker { width: 739; scaleModel: Scales.dynamics }");
    for (int i = 0; i <= 56; ++i)
      for (int j = 1; j <= 56; ++j)
        ASSERT_NO_FATAL_FAILURE(expectClearChips(snippet, 739, upper * i / 56, upper * j / 56));
  }
}

// Including the ends of the scale, where half of the marker extends beyond the strip.
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
