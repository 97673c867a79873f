// The layout in the fonts of several desktops, from the smallest window to a very wide one. Run
// with a session bus.

#include "kit/FakePortal.h"
#include "kit/GuiTesting.h"
#include "kit/Snippet.h"

#include "Bands.h"

#include <QTextLayout>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace velto;
using namespace velto::kit;

namespace {

struct Face {
  const char* name;
  const char* sans;
  const char* mono;
};

constexpr Face faces[] = {{"Inter", "Inter", "JetBrains Mono"},
                          {"DejaVu", "DejaVu Sans", "DejaVu Sans Mono"},
                          {"Cantarell", "Cantarell", "DejaVu Sans Mono"}};

// The desktop's fonts are those of the parameter.
class EveryFace : public testing::TestWithParam<Face> {
protected:
  void SetUp() override {
    const QString space = QStringLiteral("org.gnome.desktop.interface");
    portal_.set(space, "font-name", QString::fromLatin1(GetParam().sans) + " 11");
    portal_.set(space, "monospace-font-name", QString::fromLatin1(GetParam().mono) + " 10");
  }

  // Expects that `text` is really drawn in it.
  static void expectFace(QQuickItem* text) {
    const auto font = text->property("font").value<QFont>();
    EXPECT_EQ(QRawFont::fromFont(font).familyName().toStdString(), GetParam().sans);
  }

private:
  FakePortal portal_;
};

std::string nameOf(const testing::TestParamInfo<Face>& info) {
  return info.param.name;
}

// Appends all visible texts below `from`.
void collectTexts(QQuickItem* from, std::vector<QQuickItem*>& texts) {
  for (QQuickItem* child : from->childItems())
    if (child->isVisible()) {
      if (child->inherits("QQuickText"))
        texts.push_back(child);
      collectTexts(child, texts);
    }
}

// The controls and texts of the main column that must not touch each other.
const char* const apart[] = {"wordmark",  "subtitle",  "drill0",    "drill1",
                             "drill2",    "drill3",    "prompt",    "difficultyPill",
                             "slot0",     "slot1",     "slot2",     "switchHint",
                             "material0", "material1", "material2", "primaryButton"};

// The box that a text covers. Its item may be wider.
QRectF inked(const QQuickItem* text) {
  QRectF box = Stage::box(text);
  box.setWidth(std::min(box.width(), text->property("contentWidth").toDouble()));
  return box;
}

void expectWholeAndApart(Stage& stage) {
  (void)stage.picture(); // lays the scene out
  std::vector<QQuickItem*> texts;
  collectTexts(stage.root(), texts);
  const double divider = stage.box("divider").left();
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const QRectF box = Stage::box(texts[i]);
    const std::string name = texts[i]->objectName().toStdString();
    EXPECT_FALSE(texts[i]->property("truncated").toBool()) << name;
    EXPECT_LE(texts[i]->property("contentWidth").toDouble(), box.width() + 0.01) << name;
    // Some items are up to 3 points lower than a line of their font, but not than its letters.
    EXPECT_LE(texts[i]->property("contentHeight").toDouble(), box.height() + 3) << name;
    const bool inMain = box.left() < divider;
    EXPECT_GE(box.left(), inMain ? 20 : divider + 1 + 20) << name;
    EXPECT_LE(box.right(), (inMain ? divider : stage.root()->width()) - 20 + 0.01) << name;
    EXPECT_LE(box.bottom(), stage.root()->height()) << name;
    for (std::size_t j = i + 1; j < texts.size(); ++j)
      if (!texts[i]->property("text").toString().isEmpty() &&
          !texts[j]->property("text").toString().isEmpty()) {
        EXPECT_FALSE(inked(texts[i]).intersects(inked(texts[j])))
            << name << " and " << texts[j]->objectName().toStdString();
      }
  }
  std::vector<QQuickItem*> items;
  for (const char* name : apart)
    if (QQuickItem* item = stage.find(QString::fromLatin1(name)))
      items.push_back(item);
  constexpr double gap = 2; // at least
  for (std::size_t i = 0; i < items.size(); ++i)
    for (std::size_t j = i + 1; j < items.size(); ++j) {
      const bool header = items[i]->objectName() == "wordmark"; // over the subtitle
      const QRectF box =
          header ? Stage::box(items[i]) : Stage::box(items[i]).adjusted(-gap, -gap, gap, gap);
      EXPECT_FALSE(box.intersects(Stage::box(items[j])))
          << items[i]->objectName().toStdString() << " and "
          << items[j]->objectName().toStdString();
    }
}

int rounded(const QQuickItem* root, const char* property) {
  return static_cast<int>(std::ceil(root->property(property).toDouble()));
}

// Widths of windows in points: the smallest one, those that fit on a screen of 1024x600, on an
// upright one of 1080x1920 and on one of 1366x768 at 1.25x, the initial one, and wide ones.
constexpr int windowWidths[] = {1001, 1016, 1072, 1084, 1180, 1600, 2560};

// Describes the first fault of a strip's two markers in the scene. Empty if there is none.
std::string faultOf(const Snippet& snippet, double stripWidth) {
  const double s = snippet.view.effectiveDevicePixelRatio();
  // Where an item is drawn: its edges are snapped to whole pixels.
  const auto box = [&](const char* name) {
    const QRectF exact = Stage::box(snippet.item(QString::fromLatin1(name)));
    const auto pixel = [s](double x) { return std::round(x * s) / s; };
    return QRectF(QPointF(pixel(exact.left()), exact.top()),
                  QPointF(pixel(exact.right()), exact.bottom()));
  };
  const QRectF answerChip = box("answerMarkerChip");
  const QRectF truthChip = box("truthMarkerChip");
  const QRectF answerBar = box("answerMarkerBar");
  const QRectF truthBar = box("truthMarkerBar");
  // A chip may end at the end of the strip, which is drawn on a whole pixel too.
  const QRectF strip(0, 0, std::round(stripWidth * s) / s + 1e-6, 76);
  if (!strip.contains(answerChip) || !strip.contains(truthChip))
    return "a chip leaves the strip";
  const double beyond = 1.5 + 0.5 / s; // half of a bar, and its shift to a whole pixel
  const QRectF reach = strip.adjusted(-beyond, 0, beyond, 0);
  if (!reach.contains(answerBar) || !reach.contains(truthBar))
    return "a bar leaves the strip";
  constexpr double slack = 1e-3;
  const auto meet = [](const QRectF& a, const QRectF& b) {
    return a.adjusted(slack, slack, -slack, -slack).intersects(b);
  };
  if (meet(answerChip, truthChip))
    return "the chips overlap";
  const auto distance = [](const QRectF& chip, const QRectF& bar) {
    return std::max(bar.left() - chip.right(), chip.left() - bar.right());
  };
  const bool equal = std::abs(answerBar.left() - truthBar.left()) < slack;
  const auto check = [&](const char* chipName, const QRectF& chip, const QRectF& own,
                         const QRectF& other) -> std::string {
    if (meet(chip, own))
      return "a chip covers its own bar";
    const bool filled =
        snippet.item(QString::fromLatin1(chipName))->property("color").value<QColor>() ==
        darkHues.soft;
    if (meet(chip, other) && !filled)
      return "the other bar shows through a chip";
    const double toOwn = distance(chip, own);
    if (toOwn > slack && !equal && toOwn >= distance(chip, other) - slack)
      return "a chip is not at its own bar";
    return {};
  };
  const std::string fault = check("answerMarkerChip", answerChip, answerBar, truthBar);
  return fault.empty() ? check("truthMarkerChip", truthChip, truthBar, answerBar) : fault;
}

} // namespace

TEST_P(EveryFace, KeepsItsTextsApartAndWholeInEveryDrillAndState) {
  for (const Drill drill : Drill::allCases) {
    Stage stage(drill);
    expectFace(stage.item("prompt"));
    EXPECT_EQ(stage.root()->property("minimumWidth").toDouble(), 640 + 361);
    for (const int width : windowWidths) {
      SCOPED_TRACE(testing::Message() << drill.rawValue() << ", " << width << " wide");
      stage.view.resize(width, 386);
      (void)stage.picture();
      stage.view.resize(width, rounded(stage.root(), "minimumHeight"));
      EXPECT_NEAR(stage.box("divider").left(), width - 361, 0.01);
      expectWholeAndApart(stage);
      stage.settle();
      expectWholeAndApart(stage);
      stage.grade(true);
      expectWholeAndApart(stage);
      stage.session.newTrial();
      stage.grade(false);
      expectWholeAndApart(stage);
      stage.session.newTrial();
    }
  }
}

TEST_P(EveryFace, HasSingleLinesAndTheSameMarginsFromTheInitialWidthOn) {
  for (const int width : {1180, 1600, 2560}) {
    Stage stage(Drill::dynamics, true, {width, 386});
    (void)stage.picture();
    EXPECT_EQ(stage.root()->property("minimumHeight").toDouble(), 370);
    EXPECT_EQ(stage.item("subtitle")->property("lineCount").toInt(), 1);
    EXPECT_EQ(stage.item("prompt")->property("lineCount").toInt(), 1);
    expectRect(stage.box("card"), {20, 76, width - 401.0, 274});
  }
}

TEST_P(EveryFace, WrapsThePromptAndTheSubtitleInTheSmallestWindow) {
  Stage stage(Drill::dynamics, true, {1001, 420});
  (void)stage.picture();
  EXPECT_EQ(stage.item("subtitle")->property("lineCount").toInt(), 2);
  EXPECT_EQ(stage.item("prompt")->property("lineCount").toInt(), 2);
  EXPECT_LE(stage.root()->property("minimumHeight").toDouble(), 400);
}

TEST_P(EveryFace, BreaksTheSubtitleBeforeADot) {
  Stage stage(Drill::dynamics, true, {1001, 420});
  (void)stage.picture();
  QQuickItem* subtitle = stage.item("subtitle");
  const QString words = subtitle->property("text").toString();
  QTextLayout layout(words, subtitle->property("font").value<QFont>());
  layout.beginLayout();
  std::vector<QString> lines;
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(subtitle->width());
    lines.push_back(words.mid(line.textStart(), line.textLength()).trimmed());
  }
  layout.endLayout();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_FALSE(lines[0].endsWith(u'·')) << lines[0].toStdString();
  EXPECT_TRUE(lines[1].startsWith(u'·')) << lines[1].toStdString();
}

TEST_P(EveryFace, StaysWhereItIsWhenTheDrillChanges) {
  for (const int width : windowWidths) {
    SCOPED_TRACE(width);
    Stage stage(Drill::frequency, true, {width, 420});
    const auto boxes = [&] {
      (void)stage.picture();
      std::vector<QRectF> all{stage.box("card"), stage.box("answerArea")};
      for (const char* name : {"drill0", "drill1", "drill2", "drill3", "difficultyPill", "slot0",
                               "material0", "material1", "material2", "primaryButton", "subtitle"})
        all.push_back(stage.box(QString::fromLatin1(name)));
      return all;
    };
    const auto before = boxes();
    for (const Drill drill : Drill::allCases) {
      stage.session.setDrill(drill);
      EXPECT_EQ(boxes(), before) << drill.rawValue();
    }
  }
}

TEST_P(EveryFace, KeepsTheChipsAtTheirOwnBarsForAllBands) {
  for (const double width : {560.0, 739.0, 2119.0}) {
    Snippet snippet("FrequencyPicker {}", {{"width", width}});
    for (const double answer : Bands::centres)
      for (const double truth : Bands::centres) {
        snippet.root->setProperty("value", answer);
        snippet.root->setProperty("truth", truth);
        ASSERT_EQ(faultOf(snippet, width), "") << answer << ", actual " << truth << ", " << width;
      }
    expectFace(snippet.item("answerMarkerText"));
  }
}

TEST_P(EveryFace, KeepsTheChipsAtTheirOwnBarsForDecibels) {
  for (const double width : {560.0, 739.0})
    for (const bool level : {true, false}) {
      const double upper = level ? 7 : 14;
      Snippet snippet(level ? "DecibelPicker { scaleModel: Scales.level; name: \"dB\" }"
                            : "DecibelPicker { scaleModel: Scales.dynamics; name: \"dB\" }",
                      {{"width", width}});
      for (int i = 0; i <= 28; ++i)
        for (int j = 1; j <= 140; ++j) {
          snippet.root->setProperty("value", upper * i / 28);
          snippet.root->setProperty("truth", upper * j / 140);
          ASSERT_EQ(faultOf(snippet, width), "")
              << upper * i / 28 << ", actual " << upper * j / 140 << ", " << width;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Fonts, EveryFace, testing::ValuesIn(faces), nameOf);

int main(int argc, char** argv) {
  const QByteArray bus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
  prepareGui();
  qputenv("DBUS_SESSION_BUS_ADDRESS", bus); // the only service on it is the test's portal
  const QGuiApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
