// The markers of the scales.

#include "kit/Snippet.h"

using namespace velto;
using namespace velto::kit;

// A chip that crosses the other bar is filled like the strip, so that the bar does not show.
TEST(Markers, HideTheBarThatAChipCrosses) {
  const struct {
    double answer, truth;
    const char* crossing;
    const char* other;
  } cases[] = {{40, 50, "answerMarker", "truthMarker"},
               {50, 40, "truthMarker", "answerMarker"},
               {16000, 12500, "answerMarker", "truthMarker"},
               {12500, 16000, "truthMarker", "answerMarker"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.answer << ", actual " << c.truth);
    Snippet snippet("Item { width: 800; height: 120; FrequencyPicker { objectName: \"picker\"; "
                    "x: 40; y: 8; width: 720 } }");
    snippet.item("picker")->setProperty("answerable", false);
    snippet.item("picker")->setProperty("value", c.answer);
    snippet.item("picker")->setProperty("truth", c.truth);
    const Picture picture = snippet.picture();
    const QRectF chip = Stage::box(snippet.item(QString::fromLatin1(c.crossing) + "Chip"));
    const QRectF bar = Stage::box(snippet.item(QString::fromLatin1(c.other) + "Bar"));
    ASSERT_TRUE(chip.contains(QPointF(bar.center().x(), chip.center().y())));
    const QColor ink = QByteArray(c.other) == "truthMarker"
                           ? darkHues.ink
                           : over(at(darkHues.signal, 0.45), darkHues.soft);
    const double x = bar.center().x();
    expectColor(picture.colorAt({x, chip.top() + 2.5}), darkHues.soft, "inside the chip");
    expectColor(picture.colorAt({x, chip.bottom() - 2.5}), darkHues.soft, "inside the chip");
    expectColor(picture.colorAt({x, 8 + 60}), ink, "the bar below the chip");
  }
}

TEST(Markers, OfEqualValuesAreOneBarThatBothChipsName) {
  for (const double value : {40.0, 1000.0, 16000.0}) {
    Snippet snippet("Item { width: 800; height: 120; FrequencyPicker { objectName: \"picker\"; "
                    "x: 40; y: 8; width: 720 } }");
    snippet.item("picker")->setProperty("answerable", false);
    snippet.item("picker")->setProperty("value", value);
    snippet.item("picker")->setProperty("truth", value);
    const Picture picture = snippet.picture();
    const QRectF bar = Stage::box(snippet.item("truthMarkerBar"));
    EXPECT_EQ(bar, Stage::box(snippet.item("answerMarkerBar")));
    const double s = picture.scale();
    const int left = static_cast<int>(std::round(bar.left() * s));
    int shown = 0;
    for (int x = left - 4; x < left + std::round(2 * s) + 4; ++x)
      shown += static_cast<int>(picture.pixel(x, static_cast<int>(68 * s)) == darkHues.ink);
    EXPECT_EQ(shown, std::round(2 * s));
    for (const char* name : {"answerMarker", "truthMarker"}) {
      const QRectF chip = Stage::box(snippet.item(QString::fromLatin1(name) + "Chip"));
      const double distance = std::max(bar.left() - chip.right(), chip.left() - bar.right());
      EXPECT_GE(distance, 0);
      EXPECT_LE(distance, 6);
      EXPECT_EQ(snippet.item(QString::fromLatin1(name) + "Text")->property("text"),
                snippet.item("truthMarkerText")->property("text"));
    }
  }
}

// Including the ends of the scale, where half of the marker extends beyond the strip.
TEST(Markers, AreTwoPointsWideOnWholePixelsAndCentredOnTheirValue) {
  const struct {
    const char* qml;
    double value;
    double x; // on the strip
  } cases[] = {{"FrequencyPicker", 40, 0},
               {"FrequencyPicker", 800, 360},
               {"FrequencyPicker", 16000, 720},
               {"DecibelPicker { scaleModel: Scales.level; name: \"dB\" }", 0, 0},
               {"DecibelPicker { scaleModel: Scales.level; name: \"dB\" }", 7, 720},
               {"DecibelPicker { scaleModel: Scales.dynamics; name: \"dB\" }", 7, 360},
               {"DecibelPicker { scaleModel: Scales.dynamics; name: \"dB\" }", 14, 720}};
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
      EXPECT_NEAR(bar.width() * s, std::round(2 * s), 1e-3);
      EXPECT_NEAR(bar.center().x(), 40 + c.x, 0.5 / s + 1e-3);
      // The bar's pixels have its full colour; those beside it are unchanged.
      const int left = static_cast<int>(std::round(bar.left() * s));
      EXPECT_NEAR(bar.left() * s, left, 1e-3);
      const int y = static_cast<int>(40 * s);
      int width = 0;
      while (picture.pixel(left + width, y) ==
             QColor(role[0] == 'a' ? darkHues.signal : darkHues.ink))
        ++width;
      EXPECT_EQ(width, std::round(2 * s));
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
