// Chips, slots, materials and the primary button under the pointer.

#include "Pressable.h"

#include "kit/Seen.h"

#include <QAccessible>
#include <QRegularExpression>
#include <QStyleHints>

#include <functional>
#include <string>
#include <vector>

using namespace velto;
using namespace velto::kit;

namespace {

struct Pointer : Stage {
  using Stage::Stage;

  [[nodiscard]] QPoint centre(const QString& name) const { return box(name).center().toPoint(); }
  void press(const QString& name) { QTest::mousePress(&view, Qt::LeftButton, {}, centre(name)); }
  void release(const QString& name) {
    QTest::mouseRelease(&view, Qt::LeftButton, {}, centre(name));
  }
  void moveTo(const QString& name) { QTest::mouseMove(&view, centre(name)); }
  void moveAway() { QTest::mouseMove(&view, {600, 372}); }

  // A click `gap` ms after the previous one.
  void clickAfter(const QString& name, unsigned gap) {
    time_ += gap;
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      const bool down = type == QEvent::MouseButtonPress;
      ::qt_handleMouseEvent(&view, centre(name), view.mapToGlobal(centre(name)),
                            down ? Qt::LeftButton : Qt::NoButton, Qt::LeftButton, type,
                            Qt::NoModifier, static_cast<int>(++time_));
      QCoreApplication::processEvents();
    }
  }

  // The colour of a control's fill, away from its text.
  [[nodiscard]] QColor fill(const QString& name) {
    return Picture(picture()).colorAt(box(name).topLeft() + QPointF(9, 5));
  }

private:
  unsigned time_ = 1'000'000;
};

const int interval = 400; // of a double click, in ms: Qt's default without a desktop

struct Control {
  const char* name;
  QColor ground; // its fill at rest
};

// Controls of the polarity drill: a chosen one and another of each group.
std::vector<Control> controls(const Hues& hues) {
  return {{"drill0", hues.bg},           {"drill3", hues.selectedFill},
          {"slot0", hues.selectedFill},  {"slot1", hues.surface},
          {"material0", hues.surface},   {"material2", hues.selectedFill},
          {"slotChoice0", hues.surface}, {"slotChoice1", hues.selectedFill}};
}

} // namespace

TEST(PrimaryButton, TreatsADoubleClickAsOneClick) {
  Pointer pointer;
  pointer.settle();
  ASSERT_EQ(QGuiApplication::styleHints()->mouseDoubleClickInterval(), interval);
  const auto before = pointer.session.counter();
  pointer.clickAfter("primaryButton", interval);
  ASSERT_TRUE(pointer.session.grade());
  for (int again = 0; again < 4; ++again) {
    pointer.clickAfter("primaryButton", interval - 50);
    EXPECT_TRUE(pointer.session.grade()) << "the verdict stays";
  }
  EXPECT_EQ(pointer.session.counter(), before);
  pointer.clickAfter("primaryButton", interval + 1);
  EXPECT_FALSE(pointer.session.grade()) << "a separate click";
  EXPECT_NE(pointer.session.counter(), before);
}

TEST(PrimaryButton, AcceptsEveryReturnHoweverQuick) {
  Pointer pointer;
  pointer.settle();
  pointer.clickAfter("primaryButton", interval);
  ASSERT_TRUE(pointer.session.grade());
  QTest::keyClick(&pointer.view, Qt::Key_Return);
  EXPECT_FALSE(pointer.session.grade());
}

TEST(Choices, AcceptBothClicksOfADoubleClick) {
  Pointer pointer;
  const auto before = pointer.session.counter();
  pointer.clickAfter("drill1", interval);
  pointer.clickAfter("drill1", 50);
  EXPECT_EQ(pointer.session.counter(), before + 2 * 40503) << "a trial for each";
}

TEST(Touch, TintsAFillLightlyUnderThePointerAndMoreUnderAPress) {
  for (const bool dark : {true, false}) {
    const Hues& hues = dark ? darkHues : lightHues;
    for (const Control& control : controls(hues)) {
      SCOPED_TRACE(control.name);
      Pointer pointer(Drill::polarity, dark);
      pointer.settle();
      pointer.session.setAnswer(1);
      const QImage rest = pointer.picture();
      expectColor(pointer.fill(control.name), control.ground, "at rest");
      pointer.moveTo(control.name);
      expectColor(pointer.fill(control.name), over(at(hues.ink, 0.05), control.ground), "hovered");
      pointer.press(control.name);
      expectColor(pointer.fill(control.name), over(at(hues.ink, 0.12), control.ground), "pressed");
      pointer.moveAway();
      EXPECT_EQ(pointer.picture(), rest) << "pressed, the pointer outside";
      pointer.moveTo(control.name);
      expectColor(pointer.fill(control.name), over(at(hues.ink, 0.12), control.ground), "again");
      pointer.moveAway();
      QTest::mouseRelease(&pointer.view, Qt::LeftButton, {}, {600, 372});
      EXPECT_EQ(pointer.picture(), rest) << "released outside";
    }
  }
}

TEST(Touch, OfThePrimaryButtonFadesItsFill) {
  for (const bool dark : {true, false}) {
    const Hues& hues = dark ? darkHues : lightHues;
    Pointer pointer(Drill::polarity, dark);
    pointer.settle();
    const auto seen = [&] {
      return Picture(pointer.picture())
          .colorAt(pointer.box("primaryButton").topLeft() + QPointF(12, 12));
    };
    pointer.moveTo("primaryButton");
    expectColor(seen(), hues.soft, "disabled, hovered");
    pointer.press("primaryButton");
    expectColor(seen(), hues.soft, "disabled, pressed");
    pointer.release("primaryButton");
    pointer.session.setAnswer(1);
    expectColor(seen(), over(at(hues.ink, 0.85), hues.surface), "hovered");
    pointer.press("primaryButton");
    expectColor(seen(), over(at(hues.ink, 0.7), hues.surface), "pressed");
    pointer.release("primaryButton");
    expectColor(seen(), over(at(hues.ink, 0.85), hues.surface), "hovered again");
    pointer.moveAway();
    expectColor(seen(), hues.ink, "at rest");
  }
}

// The second press of a double click has no effect, so it shows none.
TEST(Touch, OfThePrimaryButtonShowsNoPressThatIsIgnored) {
  Pointer pointer;
  pointer.settle();
  const auto* button = qobject_cast<Pressable*>(pointer.item("primaryButton"));
  bool pressed = false;
  QObject::connect(button, &Pressable::touchChanged, button,
                   [&] { pressed = pressed || button->isPressed(); });
  pointer.clickAfter("primaryButton", interval);
  EXPECT_TRUE(pressed);
  pressed = false;
  pointer.clickAfter("primaryButton", 100);
  EXPECT_FALSE(pressed);
}

TEST(Touch, ShowsInTheSameEventAndMovesNothing) {
  Pointer pointer(Drill::polarity);
  pointer.settle();
  (void)pointer.picture();
  for (const char* name : {"drill1", "slot1", "material1", "slotChoice1"}) {
    std::vector<QRectF> before, after;
    const std::function<void(QQuickItem*, std::vector<QRectF>&)> collect =
        [&](QQuickItem* from, std::vector<QRectF>& boxes) {
          boxes.push_back(Stage::box(from));
          for (QQuickItem* child : from->childItems())
            collect(child, boxes);
        };
    collect(pointer.root(), before);
    QQuickItem* box =
        pointer.item(QString::fromLatin1(name).replace(QRegularExpression("(\\d)"), "Box\\1"));
    const auto rest = box->property("color").value<QColor>();
    pointer.press(name); // no event loop in between
    EXPECT_NE(box->property("color").value<QColor>(), rest) << name;
    (void)pointer.picture();
    collect(pointer.root(), after);
    EXPECT_EQ(before, after) << name;
    pointer.moveAway();
    QTest::mouseRelease(&pointer.view, Qt::LeftButton, {}, {600, 372});
  }
}

TEST(Touch, LeavesSlotsAloneThatCanNoLongerBeChosen) {
  Pointer pointer(Drill::polarity);
  pointer.grade(false);
  const QImage rest = pointer.picture();
  for (const char* name : {"slotChoice0", "slotChoice1", "slotChoice2"}) {
    pointer.moveTo(name);
    EXPECT_EQ(pointer.picture(), rest) << name;
    pointer.press(name);
    EXPECT_EQ(pointer.picture(), rest) << name;
    pointer.release(name);
  }
}

TEST(Touch, KeepsTextReadable) {
  for (const bool dark : {true, false}) {
    const Hues& hues = dark ? darkHues : lightHues;
    Pointer pointer(Drill::polarity, dark);
    pointer.settle();
    for (const char* name : {"drill0", "slotChoice0"})
      for (const bool pressed : {false, true}) {
        pointer.moveTo(name);
        if (pressed)
          pointer.press(name);
        const QString label =
            QString::fromLatin1(name) == "drill0" ? "drillLabel0" : "slotCaption0";
        EXPECT_EQ(pointer.item(label)->property("color").value<QColor>(), hues.ink);
        pointer.moveAway();
        if (pressed)
          QTest::mouseRelease(&pointer.view, Qt::LeftButton, {}, {600, 372});
        EXPECT_EQ(pointer.item(label)->property("color").value<QColor>(), hues.muted);
      }
  }
}

TEST(PressByAssistiveTechnology, MovesTheFocusAsAClickDoes) {
  Pointer pointer(Drill::polarity);
  pointer.settle();
  pointer.session.setAnswer(0);
  const auto act = [&](const char* name, const QString& action) {
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(pointer.item(name));
    ASSERT_NE(interface, nullptr) << name;
    interface->actionInterface()->doAction(action);
    EXPECT_EQ(pointer.view.activeFocusItem(), pointer.item(name)) << name;
    EXPECT_EQ(pointer.find("focusRing"), nullptr) << "as after a click";
  };
  for (const char* name : {"drill3", "material1", "slot2", "slotChoice1"}) {
    act(name, QAccessibleActionInterface::pressAction());
    pointer.settle();
  }
  EXPECT_EQ(pointer.session.material(), Material::drums);
  act("slotChoice2", QAccessibleActionInterface::toggleAction());
  EXPECT_EQ(pointer.session.answer(), 2);
  act("primaryButton", QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(pointer.session.grade());
}
