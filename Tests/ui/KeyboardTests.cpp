// The practice view by keyboard: tab stops, the other keys, and the focus ring.

#include "kit/Seen.h"

#include "FocusStop.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

using namespace velto;
using namespace velto::kit;

namespace {

struct Keyboard : Stage {
  using Stage::Stage;

  void key(int key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(&view, static_cast<Qt::Key>(key), modifiers);
    QCoreApplication::processEvents();
  }
  void tab() { key(Qt::Key_Tab); }
  void backtab() { key(Qt::Key_Tab, Qt::ShiftModifier); }
  void click(const QString& name) {
    QTest::mouseClick(&view, Qt::LeftButton, {}, box(name).center().toPoint());
  }

  // The name of the tab stop that has the focus; empty if none has.
  [[nodiscard]] std::string focus() const {
    const auto* stop = qobject_cast<FocusStop*>(view.activeFocusItem());
    return stop == nullptr ? std::string() : stop->objectName().toStdString();
  }
  void focusOn(const std::string& name) {
    for (int i = 0; i < 10 && focus() != name; ++i)
      tab();
    ASSERT_EQ(focus(), name);
  }

  // The stops of Tab, from here until the first one is reached again.
  [[nodiscard]] std::vector<std::string> round() {
    std::vector<std::string> stops;
    do {
      tab();
      stops.push_back(focus());
    } while (stops.size() < 20 && (stops.size() < 2 || stops.back() != stops.front()));
    stops.pop_back();
    return stops;
  }

  [[nodiscard]] QQuickItem* ring() const { return find(QStringLiteral("focusRing")); }
};

using Stops = std::vector<std::string>;

} // namespace

TEST(Tab, StopsOnceInEachGroupInReadingOrder) {
  const std::map<Drill, Stops> wanted{
      {Drill::frequency, {"drill0", "handle", "slot0", "material0", "primaryButton"}},
      {Drill::level, {"drill1", "handle", "slot0", "material0", "primaryButton"}},
      {Drill::dynamics, {"drill2", "handle", "slot0", "material1", "primaryButton"}},
      {Drill::polarity, {"drill3", "slotChoice0", "slot0", "material2", "primaryButton"}}};
  for (const auto& [drill, stops] : wanted) {
    Keyboard keyboard(drill);
    keyboard.settle();
    if (drill == Drill::polarity)
      keyboard.session.setAnswer(0); // else the primary button is disabled
    EXPECT_EQ(keyboard.focus(), "") << "nothing has the focus at first";
    EXPECT_EQ(keyboard.round(), stops);
    EXPECT_EQ(keyboard.focus(), stops.front());
    for (std::size_t i = stops.size(); i-- > 0;) {
      keyboard.backtab();
      EXPECT_EQ(keyboard.focus(), stops[i]);
    }
    // Reading order: from top to bottom, and from left to right.
    for (std::size_t i = 1; i < stops.size(); ++i) {
      const QRectF before = keyboard.box(QString::fromStdString(stops[i - 1]));
      const QRectF after = keyboard.box(QString::fromStdString(stops[i]));
      EXPECT_TRUE(after.top() >= before.bottom() || after.left() >= before.right()) << stops[i];
    }
  }
}

TEST(Tab, SkipsADisabledButton) {
  Keyboard keyboard(Drill::polarity);
  keyboard.settle();
  EXPECT_EQ(keyboard.round(), (Stops{"drill3", "slotChoice0", "slot0", "material2"}));
}

TEST(Tab, AFocusedButtonThatBecomesDisabledKeepsTheFocusUntilTab) {
  Keyboard keyboard(Drill::polarity);
  keyboard.settle();
  keyboard.session.setAnswer(2);
  keyboard.focusOn("primaryButton");
  keyboard.key(Qt::Key_Return);
  keyboard.key(Qt::Key_Return);
  keyboard.settle();
  ASSERT_FALSE(keyboard.session.canSubmit());
  EXPECT_EQ(keyboard.focus(), "primaryButton") << "the focus stays";
  EXPECT_NE(keyboard.ring(), nullptr);
  const auto before = keyboard.session.counter();
  keyboard.key(Qt::Key_Return);
  keyboard.click("primaryButton");
  EXPECT_FALSE(keyboard.session.grade());
  EXPECT_EQ(keyboard.session.counter(), before);
  keyboard.backtab();
  EXPECT_EQ(keyboard.focus(), "material2");
  keyboard.tab();
  EXPECT_EQ(keyboard.focus(), "drill3") << "skipped";
}

TEST(Tab, StopsAtTheSelectedItemOfEachGroup) {
  Keyboard keyboard(Drill::polarity);
  keyboard.settle();
  keyboard.session.select(2);
  keyboard.session.setAnswer(1);
  EXPECT_EQ(keyboard.round(),
            (Stops{"drill3", "slotChoice1", "slot2", "material2", "primaryButton"}));
}

TEST(Tab, StopsOnceInAGroupWhoseSelectionWasMoved) {
  Keyboard keyboard(Drill::polarity);
  keyboard.focusOn("drill3");
  for (const int key : {Qt::Key_Left, Qt::Key_Home, Qt::Key_End})
    keyboard.key(key);
  keyboard.focusOn("material2");
  for (const int key : {Qt::Key_Left, Qt::Key_Left, Qt::Key_Right})
    keyboard.key(key);
  keyboard.settle();
  keyboard.focusOn("slotChoice0");
  for (const int key : {Qt::Key_Left, Qt::Key_Left})
    keyboard.key(key);
  keyboard.focusOn("slot0");
  keyboard.key(Qt::Key_Right);
  EXPECT_EQ(keyboard.round(),
            (Stops{"material1", "primaryButton", "drill3", "slotChoice1", "slot1"}));
}

TEST(Arrows, SelectDrillsAndMoveTheFocus) {
  Keyboard keyboard;
  keyboard.tab();
  const struct {
    int key;
    int drill;
  } steps[] = {{Qt::Key_Right, 1}, {Qt::Key_Down, 2}, {Qt::Key_Right, 3}, {Qt::Key_Right, 0},
               {Qt::Key_Left, 3},  {Qt::Key_Up, 2},   {Qt::Key_Home, 0},  {Qt::Key_End, 3}};
  for (const auto& step : steps) {
    const auto before = keyboard.session.counter();
    keyboard.key(step.key);
    EXPECT_EQ(static_cast<int>(keyboard.session.drill()), step.drill);
    EXPECT_EQ(keyboard.session.counter(), before + 40503) << "one new trial";
    EXPECT_EQ(keyboard.focus(), "drill" + std::to_string(step.drill));
  }
  const auto before = keyboard.session.counter();
  for (const int key : {Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageDown})
    keyboard.key(key);
  EXPECT_EQ(keyboard.session.counter(), before) << "nothing changes, no new trial";
}

TEST(Arrows, SelectMaterialsAndSlots) {
  Keyboard keyboard(Drill::polarity);
  keyboard.settle();
  keyboard.focusOn("slot0");
  keyboard.key(Qt::Key_Right);
  EXPECT_EQ(keyboard.session.currentSlot(), 1);
  EXPECT_EQ(keyboard.session.player().current(), 1) << "playback follows";
  keyboard.key(Qt::Key_End);
  EXPECT_EQ(keyboard.session.currentSlot(), 2);
  keyboard.key(Qt::Key_Right);
  EXPECT_EQ(keyboard.session.currentSlot(), 0);
  EXPECT_EQ(keyboard.focus(), "slot0");
  keyboard.session.cycleSlot(); // not by an arrow key
  EXPECT_EQ(keyboard.focus(), "slot1");

  keyboard.focusOn("material2");
  keyboard.key(Qt::Key_Left);
  EXPECT_EQ(keyboard.session.material(), Material::drums);
  EXPECT_EQ(keyboard.focus(), "material1");
}

TEST(Arrows, SelectAFlippedSlotWhenNoneIsSelected) {
  const struct {
    int key;
    int slot;
  } cases[] = {{Qt::Key_Right, 0}, {Qt::Key_Left, 2}, {Qt::Key_End, 2}, {Qt::Key_Home, 0}};
  for (const auto& c : cases) {
    Keyboard keyboard(Drill::polarity);
    keyboard.focusOn("slotChoice0");
    EXPECT_EQ(keyboard.session.answer(), -1);
    keyboard.key(c.key);
    EXPECT_EQ(keyboard.session.answer(), c.slot);
    EXPECT_EQ(keyboard.focus(), "slotChoice" + std::to_string(c.slot));
    keyboard.key(Qt::Key_Right);
    EXPECT_EQ(keyboard.session.answer(), (c.slot + 1) % 3);
    keyboard.session.newTrial();
    EXPECT_EQ(keyboard.focus(), "slotChoice0") << "a new trial has no chosen slot";
  }
}

TEST(Arrows, MoveTheAnswerOnAScale) {
  const struct {
    Drill drill;
    int key;
    double answer;
  } cases[] = {{Drill::frequency, Qt::Key_Right, 1250},  {Drill::frequency, Qt::Key_Up, 1250},
               {Drill::frequency, Qt::Key_Left, 800},    {Drill::frequency, Qt::Key_Down, 800},
               {Drill::frequency, Qt::Key_PageUp, 2000}, {Drill::frequency, Qt::Key_PageDown, 500},
               {Drill::frequency, Qt::Key_Home, 40},     {Drill::frequency, Qt::Key_End, 16000},
               {Drill::level, Qt::Key_Right, 2.05},      {Drill::level, Qt::Key_PageDown, 1},
               {Drill::level, Qt::Key_End, 7},           {Drill::dynamics, Qt::Key_Left, 4.5},
               {Drill::dynamics, Qt::Key_PageUp, 7},     {Drill::dynamics, Qt::Key_Home, 0}};
  for (const auto& c : cases) {
    Keyboard keyboard(c.drill);
    keyboard.focusOn("handle");
    keyboard.key(c.key);
    EXPECT_NEAR(keyboard.session.answer(), c.answer, 1e-9) << c.key;
    EXPECT_EQ(keyboard.focus(), "handle");
  }
}

TEST(Arrows, DoNothingWithAModifierOrWithoutFocus) {
  Keyboard keyboard;
  keyboard.settle();
  keyboard.key(Qt::Key_Right);
  EXPECT_EQ(keyboard.session.answer(), 1000);
  EXPECT_EQ(keyboard.session.drill(), Drill::frequency);
  keyboard.focusOn("handle");
  for (const auto modifier :
       {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier})
    for (const int key : {Qt::Key_Right, Qt::Key_Home, Qt::Key_PageUp})
      keyboard.key(key, modifier);
  EXPECT_EQ(keyboard.session.answer(), 1000);
}

TEST(Arrows, ChangeNeitherAnswerNorFocusAfterGrading) {
  for (const Drill drill : Drill::allCases) {
    Keyboard keyboard(drill);
    keyboard.settle();
    const std::string stop = drill == Drill::polarity ? "slotChoice0" : "handle";
    keyboard.focusOn(stop);
    keyboard.key(Qt::Key_Home);
    keyboard.key(Qt::Key_Return);
    ASSERT_TRUE(keyboard.session.grade());
    EXPECT_EQ(keyboard.focus(), stop);
    const double answer = keyboard.session.answer();
    for (const int key : {Qt::Key_Right, Qt::Key_Up, Qt::Key_PageUp, Qt::Key_End, Qt::Key_Left})
      keyboard.key(key);
    EXPECT_EQ(keyboard.session.answer(), answer);
    keyboard.key(Qt::Key_Return);
    EXPECT_FALSE(keyboard.session.grade());
    EXPECT_EQ(keyboard.focus(), stop);
  }
}

TEST(ReturnKey, ActivatesThePrimaryButtonFromEveryStop) {
  for (const std::string stop : {"drill0", "handle", "slot0", "material0", "primaryButton"}) {
    Keyboard keyboard;
    keyboard.settle();
    keyboard.focusOn(stop);
    const auto before = keyboard.session.counter();
    keyboard.key(Qt::Key_Return);
    EXPECT_TRUE(keyboard.session.grade()) << stop;
    EXPECT_EQ(keyboard.session.counter(), before) << stop;
    keyboard.key(Qt::Key_Return);
    EXPECT_FALSE(keyboard.session.grade()) << stop;
    EXPECT_EQ(keyboard.session.counter(), before + 40503) << stop;
  }
}

TEST(Focus, MovesOnAClickWithoutARing) {
  Keyboard keyboard(Drill::polarity);
  keyboard.settle();
  const QImage untouched = keyboard.picture();
  for (const char* name : {"drill3", "slotChoice2", "slot1", "material1"}) {
    keyboard.click(QString::fromLatin1(name));
    keyboard.settle();
    EXPECT_EQ(keyboard.focus(), name);
    EXPECT_EQ(keyboard.ring(), nullptr);
  }
  Keyboard other;
  QTest::mouseClick(&other.view, Qt::LeftButton, {}, {400, 160});
  EXPECT_EQ(other.focus(), "handle");
  EXPECT_EQ(other.ring(), nullptr);
  other.key(Qt::Key_Right);
  EXPECT_NE(other.ring(), nullptr) << "a key shows the ring";
  QTest::mouseClick(&other.view, Qt::LeftButton, {}, {400, 160});
  EXPECT_EQ(other.ring(), nullptr) << "a click hides the ring";
}

TEST(Focus, StaysOnAClickOnADisabledButton) {
  Keyboard keyboard(Drill::polarity);
  keyboard.settle();
  keyboard.click("slot1");
  keyboard.click("primaryButton");
  EXPECT_EQ(keyboard.focus(), "slot1");
  keyboard.session.setAnswer(0);
  keyboard.click("primaryButton");
  EXPECT_EQ(keyboard.focus(), "primaryButton");
}

TEST(FocusRing, DisappearsOnAClick) {
  for (const Drill drill : Drill::allCases) {
    Keyboard before(drill);
    before.settle();
    const QImage untouched = before.picture();
    before.tab();
    EXPECT_NE(before.picture(), untouched) << "the ring is in the picture";
    QTest::mouseClick(&before.view, Qt::LeftButton, {}, {500, 365}); // the background
    EXPECT_EQ(before.picture(), untouched);
  }
}

// The ring is two points of ink, one point away from the control, on whole pixels on all four
// sides.
TEST(FocusRing, IsSharpAroundEveryStopInBothPalettes) {
  for (const bool dark : {true, false})
    for (const Drill drill : {Drill::frequency, Drill::polarity}) {
      Keyboard keyboard(drill, dark);
      keyboard.settle();
      if (drill == Drill::polarity)
        keyboard.session.setAnswer(1);
      const Hues& hues = dark ? darkHues : lightHues;
      const Picture bare(keyboard.picture());
      for (int i = 0; i < 5; ++i) {
        keyboard.tab();
        SCOPED_TRACE(keyboard.focus());
        const Picture picture(keyboard.picture());
        ASSERT_NE(keyboard.ring(), nullptr);
        const double s = picture.scale();
        const QRectF box = keyboard.box(QString::fromStdString(keyboard.focus()));
        const auto pixels = [s](double points) {
          return static_cast<int>(std::lround(points * s));
        };
        const int width = pixels(2);
        // The ring's outermost pixels.
        const int left = pixels(box.left() - 3), right = pixels(box.right() + 3) - 1;
        const int top = pixels(box.top() - 3), bottom = pixels(box.bottom() + 3) - 1;
        const int x = pixels(box.center().x()), y = pixels(box.center().y());
        const struct {
          QPoint edge, inward;
        } sides[] = {
            {{left, y}, {1, 0}}, {{right, y}, {-1, 0}}, {{x, top}, {0, 1}}, {{x, bottom}, {0, -1}}};
        for (const auto& side : sides) {
          const auto at = [&](int depth) {
            const QPoint p = side.edge + depth * side.inward;
            return std::pair(picture.pixel(p.x(), p.y()), bare.pixel(p.x(), p.y()));
          };
          EXPECT_EQ(at(-1).first, at(-1).second) << "outside";
          for (int depth = 0; depth < width; ++depth)
            expectColor(at(depth).first, hues.ink, "the ring");
          EXPECT_EQ(at(width).first, at(width).second) << "inside";
        }
      }
    }
}

TEST(FocusRing, FollowsItsStop) {
  Keyboard keyboard;
  keyboard.settle();
  keyboard.focusOn("primaryButton");
  const QRectF before = keyboard.box("focusRing");
  keyboard.view.resize(1400, 500);
  (void)keyboard.picture();
  const QRectF button = keyboard.box("primaryButton");
  const QRectF ring = keyboard.box("focusRing");
  EXPECT_NE(ring, before);
  EXPECT_NEAR(ring.left(), button.left() - 3, 1);
  EXPECT_NEAR(ring.top(), button.top() - 3, 1);
  keyboard.setDark(false);
  EXPECT_EQ(keyboard.ring()->property("color").value<QColor>(), lightHues.ink);
}
