// Geometry, colours, fonts and texts of the scene and of its picture. All expected values are
// literals, not computed by the program.

#include "kit/Snippet.h"

#include "desktop/Fonts.h"

#include <QQmlComponent>

#include <memory>
#include <vector>

using namespace velto;
using namespace velto::kit;

namespace {

const QString sans = QStringLiteral("Inter");
const QString mono = QStringLiteral("JetBrains Mono");

QString numbered(const char* name, int index) {
  return QString::fromLatin1(name) + QString::number(index);
}

enum class State { rendering, ungraded, hit, miss };

// Expects `item` in the centre of `outer`, where Qt puts a bare item of that size: it rounds to
// whole points, and releases of it round differently.
void expectCentred(Stage& stage, QQuickItem* item, const QRectF& outer) {
  SCOPED_TRACE(item->objectName().toStdString());
  QQmlComponent component(stage.view.engine());
  component.setData(
      "import QtQuick\n"
      "Item {\n"
      "  property size inner\n"
      "  Item { anchors.centerIn: parent; width: inner.width; height: inner.height }\n"
      "}",
      QUrl());
  const std::unique_ptr<QObject> object(
      component.createWithInitialProperties({{QStringLiteral("width"), outer.width()},
                                             {QStringLiteral("height"), outer.height()},
                                             {QStringLiteral("inner"), item->size()}}));
  auto* bare = qobject_cast<QQuickItem*>(object.get());
  ASSERT_NE(bare, nullptr) << component.errorString().toStdString();
  bare->setParentItem(stage.root());
  const QRectF box = Stage::box(item);
  EXPECT_EQ(box.topLeft() - outer.topLeft(), bare->childItems().constFirst()->position());
  EXPECT_NEAR(box.center().x(), outer.center().x(), 1);
  EXPECT_NEAR(box.center().y(), outer.center().y(), 1);
}

struct Wanted {
  Drill drill = Drill::frequency;
  int index = 0;
  State state = State::rendering;
  Hues hues;

  [[nodiscard]] bool graded() const { return state == State::hit || state == State::miss; }
};

// The header: two lines at the left, chips at the right.
void expectHeader(Stage& stage, const Picture& picture, const Wanted& wanted) {
  const Hues& hues = wanted.hues;
  expectText(stage.item("wordmark"), picture,
             {"MORLA Velto", sans, semibold, 22, 0, hues.ink, hues.bg});
  expectText(stage.item("subtitle"), picture,
             {"VELTO GYM ·\u00a0FREQUENCY ·\u00a0LEVEL ·\u00a0DYNAMICS ·\u00a0POLARITY", sans,
              medium, 9, 1.1, hues.identity, hues.bg});
  EXPECT_EQ(stage.box("wordmark").topLeft(), QPointF(20, 20));
  EXPECT_EQ(stage.box("subtitle").bottomLeft(), QPointF(20, 60));

  const char* titles[] = {"Frequency", "Level", "Dynamics", "Polarity"};
  double right = stage.box("card").right();
  for (int i = 3; i >= 0; --i) {
    const bool current = i == wanted.index;
    const QRectF chip = stage.box(numbered("drill", i));
    EXPECT_DOUBLE_EQ(chip.right(), right);
    right = chip.left() - 4;

    QQuickItem* label = stage.item(numbered("drillLabel", i));
    const QRectF title = Stage::box(label);
    const QRectF dot = stage.box(numbered("drillDot", i));
    EXPECT_EQ(dot.size(), QSizeF(6, 6));
    EXPECT_NEAR(dot.left(), chip.left() + 12, 1e-9);
    EXPECT_NEAR(dot.center().y(), chip.center().y(), 0.51);
    EXPECT_NEAR(title.left(), dot.right() + 5, 1e-9);
    EXPECT_NEAR(title.top(), chip.top() + 6, 1e-9);
    EXPECT_NEAR(title.bottom(), chip.bottom() - 6, 1e-9);
    EXPECT_GE(title.right(), chip.right() - 12 - 4) << "room for the semibold title, no more";
    EXPECT_LE(title.right(), chip.right() - 12 + 1e-9);
    EXPECT_NEAR(chip.center().y(), 40, 0.51);

    const QColor clear(0, 0, 0, 0);
    const QColor fill = current ? hues.selectedFill : clear;
    expectBox(stage.item(numbered("drillBox", i)), picture,
              {6, false, fill, current ? at(hues.ink, 0.55) : clear, 1.5, hues.bg, {9, 12}});
    expectColor(picture.colorAt(dot.center()), current ? hues.identity : hues.faint, "the dot");
    expectText(label, picture,
               {titles[i], sans, current ? semibold : regular, 12, 0,
                current ? hues.ink : hues.muted, over(fill, hues.bg)});
  }
}

void expectCard(Stage& stage, const Picture& picture, const Wanted& wanted) {
  const Hues& hues = wanted.hues;
  expectRect(stage.box("card"), {20, 76, 779, 274});
  expectBox(stage.item("card"), picture, {12, true, hues.surface, hues.line, 1, hues.bg, {18, 30}});
  const char* prompts[] = {"One band is boosted. Point at it.", "B is louder than A. By how much?",
                           "B is compressed, loudness-matched. How much gain reduction?",
                           "One of the three has a flipped channel. Which?"};
  expectText(stage.item("prompt"), picture,
             {prompts[wanted.index], sans, regular, 15, 0, hues.ink, hues.surface});
  EXPECT_DOUBLE_EQ(stage.box("prompt").left(), 40);
  EXPECT_DOUBLE_EQ(stage.box("prompt").center().y(), 106);

  const double difficulty = stage.session.trial()->difficulty;
  EXPECT_DOUBLE_EQ(difficulty, 20);
  expectText(stage.item("difficultyCaption"), picture,
             {"DIFFICULTY", sans, medium, 9, 1.2, hues.faint, hues.surface});
  expectText(stage.item("difficultyValue"), picture,
             {"20", sans, semibold, 12, 0, hues.ink, hues.surface});
  const QRectF value = stage.box("difficultyValue");
  EXPECT_DOUBLE_EQ(value.width(), 24);
  EXPECT_DOUBLE_EQ(value.right(), 779);
  EXPECT_NEAR(value.center().y(), 106, 0.51);
  const QRectF track = stage.box("difficultyTrack");
  expectRect(track, {value.left() - 8 - 90, 103, 90, 6});
  EXPECT_NEAR(stage.box("difficultyCaption").right(), track.left() - 8, 1e-9);
  expectRect(stage.box("difficultyBar"), {track.left(), 103, 18, 6});
  expectColor(picture.colorAt(track.topLeft() + QPointF(9, 3)), hues.ink, "the bar");
  expectColor(picture.colorAt(track.topLeft() + QPointF(19.5, 3)), hues.track, "the track");
  expectColor(picture.colorAt(track.topLeft() + QPointF(80, 3)), hues.track, "the track");
  expectColor(picture.colorAt(track.topLeft() + QPointF(92, 3)), hues.surface, "beside the track");
}

struct Tick {
  double value;
  double height;
  bool major;
  QString label;
};

std::vector<Tick> ticksOf(Drill drill) {
  std::vector<Tick> ticks;
  if (drill == Drill::frequency) {
    for (const double f : {40.,   50.,   63.,   80.,   100.,  125.,  160.,   200.,   250.,
                           315.,  400.,  500.,  630.,  800.,  1000., 1250.,  1600.,  2000.,
                           2500., 3150., 4000., 5000., 6300., 8000., 10000., 12500., 16000.}) {
      const bool decade = f == 100 || f == 1000 || f == 10000;
      ticks.push_back({f, decade ? 22. : 12., decade,
                       f == 100     ? "100"
                       : f == 1000  ? "1k"
                       : f == 10000 ? "10k"
                                    : ""});
    }
    return ticks;
  }
  for (int i = 0; i < 15; ++i) {
    const bool major = i % 2 == 0;
    const bool level = drill == Drill::level;
    ticks.push_back({level ? i / 2. : i, major ? 22. : 11., major,
                     major ? QString::number(level ? i / 2 : i) : QString()});
  }
  return ticks;
}

double positionOf(Drill drill, double value, double width) {
  if (drill == Drill::frequency)
    return width * std::log2(value / 40) / std::log2(400.0);
  return width * value / (drill == Drill::level ? 7 : 14);
}

QString markerText(Drill drill, double value) {
  if (drill != Drill::frequency)
    return QString::number(value, 'f', 2) + QStringLiteral(" dB");
  return (value >= 1000 ? QString::number(value / 1000, 'g', 4) + QLatin1Char('k')
                        : QString::number(value, 'f', 0)) +
         QStringLiteral(" Hz");
}

constexpr double slack = 1e-3; // of a pixel: scene transforms are 32-bit

// Expects a tick to cover whole pixels in its own colour, and nothing beside them.
void expectTick(const Picture& picture, const QRectF& box, const QColor& color,
                const QColor& ground) {
  const double s = picture.scale();
  EXPECT_NEAR(box.left() * s, std::round(box.left() * s), slack) << "not on a whole pixel";
  const int width = static_cast<int>(std::round(s));
  EXPECT_NEAR(box.width() * s, width, slack);
  const int left = static_cast<int>(std::round(box.left() * s));
  const int y = static_cast<int>((box.top() + 4) * s);
  for (int i = 0; i < width; ++i)
    expectColor(picture.pixel(left + i, y), over(color, ground), "the tick");
  for (const int beside : {left - 1, left + width})
    expectColor(picture.pixel(beside, y), ground, "beside the tick");
}

void expectMarker(Stage& stage, const Picture& picture, const QString& name, double position,
                  const QString& text, bool isTruth, const QColor& color, const Hues& hues,
                  double fade, const QColor& ground, bool hidden) {
  SCOPED_TRACE(name.toStdString());
  const double s = picture.scale();
  const QRectF bar = stage.box(name + "Bar");
  EXPECT_NEAR(bar.width() * s, std::round(2 * s), slack);
  EXPECT_DOUBLE_EQ(bar.top(), 134);
  EXPECT_DOUBLE_EQ(bar.height(), 76);
  EXPECT_NEAR(bar.center().x(), position, 0.5 / s + slack);
  EXPECT_NEAR(bar.left() * s, std::round(bar.left() * s), slack) << "not on a whole pixel";
  if (!hidden) {
    // The bar has one colour from top to bottom, also over a tick.
    const QColor seen = over(at(over(color, hues.soft), fade), hues.surface);
    for (int x = 0; x < std::round(2 * s); ++x)
      for (const double y : {134.6, 135.5, 160.0, 180.0, 195.0, 205.0, 209.0})
        expectColor(picture.pixel(static_cast<int>(std::round(bar.left() * s)) + x,
                                  static_cast<int>(y * s)),
                    seen, "the bar");
  }
  QQuickItem* chip = stage.item(name + "Chip");
  expectText(stage.item(name + "Text"), picture, {text, sans, semibold, 11, 0, color, ground});
  QQuickItem* actual = stage.find(name + "Actual");
  EXPECT_EQ(actual != nullptr, isTruth);
  if (actual != nullptr) {
    expectText(actual, picture, {"ACTUAL", mono, bold, 8, 0.8, color, ground});
    const QRectF word = Stage::box(actual);
    const QRectF value = stage.box(name + "Text");
    EXPECT_LT(word.right(), value.left());
    EXPECT_NEAR(word.top() + actual->baselineOffset(),
                value.top() + stage.item(name + "Text")->baselineOffset(), 0.01);
  }
  const QRectF box = Stage::box(chip);
  EXPECT_TRUE(QRectF(40, 134, 739, 76).contains(box));
  EXPECT_DOUBLE_EQ(box.height(), 20);
  if (fade == 1)
    expectBox(chip, picture,
              {5, false, QColor(0, 0, 0, 0), at(color, 0.35), 1, hues.soft, {5.5, 10}});
}

// The ticks and their labels. The colours of covered, faded and outermost ticks are not checked.
void expectTicks(Stage& stage, const Picture& picture, const Wanted& wanted, double answer,
                 double truth) {
  const Hues& hues = wanted.hues;
  const bool faded = wanted.state == State::rendering;
  const double minorShare = wanted.drill == Drill::frequency ? 0.55 : 0.5;
  const auto ticks = ticksOf(wanted.drill);
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    SCOPED_TRACE(i);
    const Tick& tick = ticks[i];
    const double x = positionOf(wanted.drill, tick.value, 739);
    const QRectF box = stage.box(numbered("tick", static_cast<int>(i)));
    EXPECT_DOUBLE_EQ(box.height(), tick.height);
    EXPECT_DOUBLE_EQ(box.bottom(), 210);
    // The outermost ticks stay inside the strip.
    const double inside = std::clamp(40 + x - 0.5, 40.0, 779 - box.width());
    EXPECT_NEAR(box.left(), inside, 0.5 / picture.scale() + 0.2 + slack);
    if (i + 1 == ticks.size()) {
      const double s = picture.scale();
      EXPECT_NEAR(box.right() * s, std::round(779 * s), slack) << "not on the strip's edge";
    }
    const bool covered = std::abs(x - answer) < 3 || (wanted.graded() && std::abs(x - truth) < 3);
    if (!covered && !faded && i > 0 && i + 1 < ticks.size())
      expectTick(picture, box, tick.major ? hues.muted : at(hues.faint, minorShare), hues.soft);

    QQuickItem* label = stage.find(numbered("tickLabel", static_cast<int>(i)));
    ASSERT_EQ(label != nullptr, !tick.label.isEmpty());
    if (label == nullptr)
      continue;
    const double before = wanted.drill == Drill::frequency ? 8 : 4;
    EXPECT_NEAR(Stage::box(label).left(), 40 + x - before, 1e-6);
    EXPECT_DOUBLE_EQ(Stage::box(label).top(), 134 + 80);
    EXPECT_LE(Stage::box(label).bottom(), 134 + 76 + 18);
    if (!faded)
      expectText(label, picture, {tick.label, sans, regular, 9, 0, hues.muted, hues.surface});
  }
}

void expectScale(Stage& stage, const Picture& picture, const Wanted& wanted) {
  const Hues& hues = wanted.hues;
  const double fade = wanted.state == State::rendering ? 0.4 : 1;
  expectRect(stage.box("strip"), {40, 134, 739, 76});
  if (fade == 1)
    expectBox(stage.item("strip"), picture,
              {6, false, hues.soft, hues.line, 1, hues.surface, {7, 40}});
  else
    expectColor(picture.colorAt({47, 174}), over(at(hues.soft, fade), hues.surface),
                "the faded strip");

  const double answer = positionOf(wanted.drill, stage.session.answer(), 739);
  const double truth = positionOf(wanted.drill, truthOf(*stage.session.trial()), 739);
  expectTicks(stage, picture, wanted, answer, truth);

  const bool near = std::abs(answer - truth) < 3;
  const QColor answerColor = wanted.graded() ? at(hues.signal, 0.45) : hues.signal;
  if (fade == 1) {
    expectMarker(stage, picture, "answerMarker", 40 + answer,
                 markerText(wanted.drill, stage.session.answer()), false, answerColor, hues, fade,
                 hues.soft, wanted.graded() && near);
  } else {
    // The area fades as a whole: the strip does not show through the bar.
    const QRectF bar = stage.box("answerMarkerBar");
    expectColor(picture.colorAt({bar.center().x() - 0.5, 180}),
                over(at(hues.signal, 0.4), hues.surface), "the faded bar");
  }
  EXPECT_EQ(stage.find("truthMarkerBar") != nullptr, wanted.graded());
  if (wanted.graded())
    expectMarker(stage, picture, "truthMarker", 40 + truth,
                 markerText(wanted.drill, truthOf(*stage.session.trial())), true, hues.ink, hues, 1,
                 hues.soft, false);
}

void expectSlotChoices(Stage& stage, const Picture& picture, const Wanted& wanted) {
  const Hues& hues = wanted.hues;
  const auto flippedSlot = static_cast<int>(truthOf(*stage.session.trial()));
  const auto chosenSlot = static_cast<int>(stage.session.answer());
  EXPECT_EQ(chosenSlot >= 0, wanted.graded());
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    const bool chosen = i == chosenSlot;
    const bool flipped = wanted.graded() && i == flippedSlot;
    const QRectF box = stage.box(numbered("slotChoice", i));
    const double share = (739 - 20) / 3.0;
    expectRect(box, {40 + i * (share + 10), 134, share, 76}, 1);
    const double s = picture.scale();
    EXPECT_NEAR(box.left() * s, std::round(box.left() * s), slack) << "not on a pixel";
    EXPECT_NEAR(box.width() * s, (739 * s - 2 * std::round(10 * s)) / 3, 1 + slack);
    if (i > 0) {
      EXPECT_NEAR((box.left() - stage.box(numbered("slotChoice", i - 1)).right()) * s,
                  std::round(10 * s), slack);
    }
    const QColor fill = chosen || flipped ? hues.selectedFill : hues.surface;
    const QColor stroke = flipped ? hues.good : chosen ? at(hues.ink, 0.55) : hues.line;
    const double opacity = wanted.state == State::rendering ? 0.4 : 1;
    if (opacity == 1)
      expectBox(stage.item(numbered("slotChoiceBox", i)), picture,
                {8, false, fill, stroke, flipped || chosen ? 1.5 : 1, hues.surface, {20, 40}});
    QQuickItem* number = stage.item(numbered("slotNumber", i));
    expectText(number, picture,
               {QString::number(i + 1), mono, chosen || flipped ? bold : regular, 24, 0,
                at(hues.ink, 1), fill});
    expectText(stage.item(numbered("slotCaption", i)), picture,
               {!wanted.graded() ? "?"
                : flipped        ? "FLIPPED"
                                 : "in phase",
                mono, medium, 9, 0, flipped ? hues.good : hues.muted, fill});
    EXPECT_NEAR(Stage::box(number).center().x(), box.center().x(), 1);
    EXPECT_NEAR(stage.box(numbered("slotCaption", i)).center().x(), box.center().x(), 1);
    EXPECT_LT(Stage::box(number).center().y(), stage.box(numbered("slotCaption", i)).top());
    QQuickItem* dot = stage.find(numbered("slotDot", i));
    EXPECT_EQ(dot != nullptr, wanted.graded() && chosen);
    if (dot != nullptr) {
      EXPECT_EQ(Stage::box(dot).size(), QSizeF(5, 5));
      EXPECT_GT(Stage::box(dot).left(), Stage::box(number).right());
      expectColor(picture.colorAt(Stage::box(dot).center()), hues.ink, "the dot");
    }
  }
}

// The three buttons left of the primary one, which starts at `right`.
void expectMaterials(Stage& stage, const Picture& picture, const Wanted& wanted, double right) {
  const Hues& hues = wanted.hues;
  const QColor clear(0, 0, 0, 0);
  const char* materials[] = {"Pink", "Drums", "Pad"};
  const int currentMaterial = wanted.index < 2 ? 0 : wanted.index - 1;
  for (int i = 0; i < 3; ++i) {
    const bool current = i == currentMaterial;
    expectRect(stage.box(numbered("material", i)),
               {right - 16 - 3 * 54 - 2 * 4 + i * 58, 244, 54, 28});
    const QColor fill = current ? hues.selectedFill : clear;
    expectBox(stage.item(numbered("materialBox", i)), picture,
              {5, false, fill, current ? at(hues.ink, 0.55) : clear, 1.5, hues.surface, {6, 10}});
    QQuickItem* title = stage.item(numbered("materialLabel", i));
    expectText(title, picture,
               {materials[i], sans, current ? semibold : regular, 11, 0, hues.ink,
                over(fill, hues.surface)});
    expectCentred(stage, title, stage.box(numbered("material", i)));
  }
}

void expectTransport(Stage& stage, const Picture& picture, const Wanted& wanted) {
  const Hues& hues = wanted.hues;
  const int count = wanted.drill == Drill::polarity ? 3 : 2;
  const QStringList titles = count == 3 ? QStringList{"1", "2", "3"} : QStringList{"A", "B"};
  for (int i = 0; i < count; ++i) {
    const bool current = i == stage.session.currentSlot();
    expectRect(stage.box(numbered("slot", i)), {40. + i * 60, 240, 52, 36});
    expectBox(stage.item(numbered("slotBox", i)), picture,
              {7,
               false,
               current ? hues.selectedFill : hues.surface,
               current ? at(hues.ink, 0.55) : hues.line,
               current ? 1.5 : 1,
               hues.surface,
               {10, 14}});
    QQuickItem* label = stage.item(numbered("slotLabel", i));
    expectText(label, picture,
               {titles[i], sans, current ? bold : regular, 15, 0, hues.ink,
                current ? hues.selectedFill : hues.surface});
    EXPECT_NEAR(Stage::box(label).center().x(), 66. + i * 60, 0.51);
    EXPECT_NEAR(Stage::box(label).center().y(), 258, 0.51);
  }
  EXPECT_EQ(stage.find(numbered("slot", count)), nullptr);

  expectText(stage.item("switchHint"), picture,
             {"space = switch", mono, regular, 10, 0, hues.faint, hues.surface});
  EXPECT_DOUBLE_EQ(stage.box("switchHint").left(), 40. + count * 60 - 8 + 12);
  EXPECT_NEAR(stage.box("switchHint").center().y(), 258, 0.51);

  const QRectF button = stage.box("primaryButton");
  EXPECT_DOUBLE_EQ(button.right(), 779);
  EXPECT_DOUBLE_EQ(button.top(), 240);
  EXPECT_DOUBLE_EQ(button.height(), 36);
  const bool enabled =
      wanted.graded() || (wanted.state == State::ungraded && wanted.drill != Drill::polarity);
  const QColor clear(0, 0, 0, 0);
  expectBox(stage.item("primaryButtonBox"), picture,
            {7,
             true,
             enabled ? hues.ink : hues.soft,
             enabled ? clear : hues.line,
             1,
             hues.surface,
             {12, 12}});
  QQuickItem* label = stage.item("primaryButtonLabel");
  expectText(label, picture,
             {wanted.graded() ? "Next" : "Submit", sans, semibold, 13, 0,
              enabled ? hues.bg : hues.muted, enabled ? hues.ink : hues.soft});
  expectCentred(stage, label, button);
  if (!wanted.graded()) {
    EXPECT_NEAR(button.width(), label->implicitWidth() + 40, 1.01);
  }
  expectMaterials(stage, picture, wanted, button.left());
}

void expectVerdict(Stage& stage, const Picture& picture, const Wanted& wanted) {
  const Hues& hues = wanted.hues;
  if (!wanted.graded()) {
    EXPECT_EQ(stage.find("verdictBox"), nullptr);
    expectText(stage.item("status"), picture,
               {wanted.state == State::rendering ? "rendering…" : "listen, then answer", sans,
                regular, 11, 0, hues.muted, hues.surface});
    EXPECT_DOUBLE_EQ(stage.box("status").left(), 50);
    EXPECT_DOUBLE_EQ(stage.box("status").center().y(), 312);
    return;
  }
  EXPECT_EQ(stage.find("status"), nullptr);
  const bool hit = wanted.state == State::hit;
  const QColor color = hit ? hues.good : hues.bad;
  const QColor fill = at(color, hit ? 0.1 : 0.08);
  expectRect(stage.box("verdictBox"), {40, 294, 739, 36});
  expectBox(stage.item("verdictBox"), picture,
            {8, true, fill, QColor(0, 0, 0, 0), 1, hues.surface, {700, 18}});
  const QColor ground = over(fill, hues.surface);
  const QRectF dot = stage.box("verdictDot");
  expectRect(dot, {52, 308, 8, 8});
  expectColor(picture.colorAt(dot.center()), color, "the dot");
  expectText(stage.item("verdictWord"), picture,
             {hit ? "HIT" : "MISS", sans, bold, 12, 2, color, ground});
  EXPECT_DOUBLE_EQ(stage.box("verdictWord").left(), 74);
  EXPECT_DOUBLE_EQ(stage.box("verdictWord").center().y(), 312);
  const auto& grade = *stage.session.grade();
  const QString detail =
      QStringLiteral("you %1   ·   actual %2   ·   %3")
          .arg(QString::fromStdString(grade.answerText), QString::fromStdString(grade.truthText),
               QString::fromStdString(grade.errorText));
  expectText(stage.item("verdictDetail"), picture,
             {detail, sans, regular, 12, 0, hues.ink, ground});
  EXPECT_NEAR(stage.box("verdictDetail").left(), stage.box("verdictWord").right() + 14, 1e-6);
  EXPECT_DOUBLE_EQ(stage.box("verdictDetail").center().y(), 312);
}

void expectScene(Stage& stage, Drill drill, int index, State state, bool dark) {
  SCOPED_TRACE(testing::Message() << (dark ? "dark, " : "light, ") << "state "
                                  << static_cast<int>(state));
  stage.setDark(dark);
  const Picture picture(stage.picture());
  const Wanted wanted{drill, index, state, dark ? darkHues : lightHues};
  const Hues& hues = wanted.hues;
  ASSERT_EQ(picture.pixels(), (QSizeF(1180, 386) * picture.scale()).toSize());

  expectColor(picture.colorAt({5, 200}), hues.bg, "the background");
  expectColor(picture.colorAt({5, 380}), hues.bg, "the background");
  expectColor(picture.colorAt({1000, 300}), hues.bg, "the side column's background");
  expectRect(stage.box("divider"), {819, 0, 1, 387});
  const double s = picture.scale();
  EXPECT_NEAR(picture.thickness({static_cast<int>(819 * s) - 2, static_cast<int>(200 * s)}, {1, 0},
                                7, hues.bg, over(hues.line, hues.bg)),
              s, 0.6);
  expectRect(stage.box("sideColumn"), {820, 0, 360, 386});

  expectHeader(stage, picture, wanted);
  expectCard(stage, picture, wanted);
  expectTransport(stage, picture, wanted);
  expectVerdict(stage, picture, wanted);
  if (drill != Drill::polarity)
    expectScale(stage, picture, wanted);
  else if (state != State::rendering)
    expectSlotChoices(stage, picture, wanted);
  EXPECT_EQ(stage.find("strip") != nullptr, drill != Drill::polarity);
  EXPECT_EQ(stage.find("slotChoice0") != nullptr, drill == Drill::polarity);
}

class EveryDrill : public testing::TestWithParam<int> {
protected:
  [[nodiscard]] Drill drill() const {
    return Drill::allCases[static_cast<std::size_t>(GetParam())];
  }
};

} // namespace

TEST_P(EveryDrill, MatchesItsDesignInEachStateAndPalette) {
  Stage stage(drill());
  const auto bothPalettes = [&](State state) {
    for (const bool dark : {true, false})
      expectScene(stage, drill(), GetParam(), state, dark);
  };
  bothPalettes(State::rendering);
  stage.settle();
  bothPalettes(State::ungraded);
  stage.session.select(1);
  bothPalettes(State::ungraded);
  stage.grade(false);
  bothPalettes(State::miss);
}

TEST_P(EveryDrill, MatchesItsDesignAfterAHit) {
  Stage stage(drill());
  stage.grade(true);
  for (const bool dark : {true, false})
    expectScene(stage, drill(), GetParam(), State::hit, dark);
}

INSTANTIATE_TEST_SUITE_P(Drills, EveryDrill, testing::Range(0, 4));

// At 1.25x and 1.75x the heights end within a device pixel.
TEST(Background, ReachesTheLastDevicePixel) {
  for (const bool dark : {true, false}) {
    const Hues& hues = dark ? darkHues : lightHues;
    Stage stage(Drill::frequency, dark);
    for (const QSize size : {QSize(1180, 386), QSize(1184, 390), QSize(1004, 398)}) {
      SCOPED_TRACE(testing::Message() << size.width() << 'x' << size.height());
      stage.view.resize(size);
      const Picture picture(stage.picture());
      const int right = picture.pixels().width() - 1;
      const int bottom = picture.pixels().height() - 1;
      for (int y = 0; y <= bottom; ++y)
        ASSERT_EQ(picture.pixel(right, y), hues.bg) << "row " << y;
      for (int x = 0; x <= right; ++x)
        ASSERT_EQ(picture.pixel(x, bottom), picture.pixel(x, bottom - 2)) << "column " << x;
      EXPECT_EQ(picture.pixel(0, bottom), hues.bg);
    }
  }
}

TEST(Layout, KeepsTheMainColumnsWidthInAWindowThatIsTooNarrow) {
  Stage stage;
  stage.view.resize(800, 386);
  (void)stage.picture();
  EXPECT_GE(stage.box("divider").left(), 640);
  EXPECT_NEAR(stage.box("divider").left() + 361, stage.root()->property("minimumWidth").toDouble(),
              0.01);
}

TEST(Layout, ChipsStayWhereTheyAreWhenTheDrillChanges) {
  Stage stage;
  std::vector<QRectF> before;
  for (int i = 0; i < 4; ++i)
    before.push_back(stage.box(numbered("drill", i)));
  for (const Drill drill : Drill::allCases) {
    stage.session.setDrill(drill);
    for (int i = 0; i < 4; ++i)
      expectRect(stage.box(numbered("drill", i)), before[static_cast<std::size_t>(i)]);
  }
}

namespace {

// The pixels of a dot: those that differ from its plain ground.
QRect pixelsOf(const Picture& picture, const QRectF& dot) {
  const double s = picture.scale();
  const QColor ground = picture.colorAt(dot.topLeft() - QPointF(1, 1));
  const QRect around =
      QRectF(dot.topLeft() * s, dot.size() * s).toAlignedRect().adjusted(-2, -2, 2, 2);
  QRect seen;
  for (int y = around.top(); y <= around.bottom(); ++y)
    for (int x = around.left(); x <= around.right(); ++x)
      if (picture.pixel(x, y) != ground)
        seen |= QRect(x, y, 1, 1);
  return seen;
}

// Expects a dot of `diameter` points on whole pixels that looks the same in a mirror and when
// turned by a right angle.
void expectDot(Stage& stage, const QString& name, int diameter) {
  SCOPED_TRACE(name.toStdString());
  const Picture picture(stage.picture());
  const QRect seen = pixelsOf(picture, stage.box(name));
  const int size = static_cast<int>(std::round(diameter * picture.scale()));
  ASSERT_EQ(seen.size(), QSize(size, size));
  const auto at = [&](int x, int y) { return picture.pixel(seen.left() + x, seen.top() + y); };
  for (int y = 0; y < size; ++y)
    for (int x = 0; x < size; ++x) {
      EXPECT_LE(difference(at(x, y), at(size - 1 - x, y)), 12) << x << ',' << y;
      EXPECT_LE(difference(at(x, y), at(y, x)), 12) << x << ',' << y;
    }
}

} // namespace

TEST(Dots, AreRoundAndAlike) {
  for (const Drill drill : {Drill::frequency, Drill::polarity}) {
    Stage stage(drill);
    stage.grade(false);
    for (int i = 0; i < 4; ++i)
      expectDot(stage, numbered("drillDot", i), 6);
    expectDot(stage, "verdictDot", 8);
    if (drill == Drill::polarity)
      expectDot(stage, numbered("slotDot", static_cast<int>(stage.session.answer())), 5);
  }
}

TEST(Wordmark, UsesTheSemiboldSystemFontWithoutItsFace) {
  ASSERT_FALSE(BrandType::registered());
  Stage stage;
  const auto font = stage.item("wordmark")->property("font").value<QFont>();
  EXPECT_EQ(QRawFont::fromFont(font).familyName(), sans);
  EXPECT_EQ(weightOf(QRawFont::fromFont(font)), semibold);
  EXPECT_EQ(font.pixelSize(), 22);
}

TEST(DifficultyPill, ClampsItsBarAndRoundsHalvesToEven) {
  Snippet snippet("DifficultyPill { height: 20 }");
  const struct {
    double difficulty;
    const char* text;
    double length;
  } cases[] = {{0, "0", 0},      {0.5, "0", 0.45}, {22.5, "22", 20.25}, {23.5, "24", 21.15},
               {100, "100", 90}, {250, "250", 90}, {-5, "-5", 0}};
  for (const auto& c : cases) {
    snippet.root->setProperty("difficulty", c.difficulty);
    EXPECT_EQ(snippet.item("difficultyValue")->property("text").toString(), c.text);
    const QQuickItem* bar = snippet.root->findChild<QQuickItem*>("difficultyBar");
    EXPECT_NEAR(bar->width(), c.length, 1e-9);
  }
}
