// The practice view by mouse and by Return.

#include "kit/Seen.h"

#include <QSignalSpy>
#include <QStyleHints>

using namespace velto;
using namespace velto::kit;

namespace {

struct Hands : Stage {
  using Stage::Stage;

  [[nodiscard]] QPoint centre(const QString& name) const { return box(name).center().toPoint(); }
  void click(QPoint point) { QTest::mouseClick(&view, Qt::LeftButton, {}, point); }
  void click(const QString& name) { click(centre(name)); }
  void press(QPoint point) { QTest::mousePress(&view, Qt::LeftButton, {}, point); }
  void move(QPoint point) { QTest::mouseMove(&view, point); }
  void release(QPoint point) { QTest::mouseRelease(&view, Qt::LeftButton, {}, point); }
  void key(int key, Qt::KeyboardModifiers modifiers = {}, bool repeated = false) {
    ::qt_handleKeyEvent(&view, QEvent::KeyPress, key, modifiers, {}, repeated);
    ::qt_handleKeyEvent(&view, QEvent::KeyRelease, key, modifiers, {}, repeated);
    QCoreApplication::processEvents();
  }
  [[nodiscard]] std::uint64_t trials() const { return session.counter(); }
};

constexpr QPoint onStrip(double x) {
  return {40 + static_cast<int>(x), 160};
}

} // namespace

TEST(DrillChips, SetTheDrill) {
  Hands hands;
  for (const int i : {1, 3, 2, 0, 0}) {
    const auto before = hands.trials();
    hands.click(QStringLiteral("drill%1").arg(i));
    EXPECT_EQ(hands.session.drill(), Drill::allCases[static_cast<std::size_t>(i)]);
    EXPECT_NE(hands.trials(), before);
  }
}

TEST(MaterialButtons, SetTheMaterial) {
  Hands hands;
  for (const int i : {1, 2, 0}) {
    const auto before = hands.trials();
    hands.click(QStringLiteral("material%1").arg(i));
    EXPECT_EQ(hands.session.material(), Material::allCases[static_cast<std::size_t>(i)]);
    EXPECT_NE(hands.trials(), before);
  }
}

TEST(SlotButtons, SelectTheirSlot) {
  Hands hands(Drill::polarity);
  hands.settle();
  for (const int i : {2, 0, 1}) {
    hands.click(QStringLiteral("slot%1").arg(i));
    EXPECT_EQ(hands.session.currentSlot(), i);
    EXPECT_EQ(hands.session.player().current(), i);
  }
}

TEST(SlotChoice, StartsEmptyAndFollowsClicks) {
  Hands hands(Drill::polarity);
  hands.settle();
  EXPECT_EQ(hands.session.answer(), -1);
  EXPECT_FALSE(hands.item("primaryButton")->property("available").toBool());
  for (const int i : {2, 0, 1}) {
    hands.click(QStringLiteral("slotChoice%1").arg(i));
    EXPECT_EQ(hands.session.answer(), i);
    EXPECT_TRUE(hands.item("primaryButton")->property("available").toBool());
    hands.move({600, 372}); // a control under the pointer is tinted
    const Picture picture(hands.picture());
    for (int j = 0; j < 3; ++j)
      expectColor(picture.colorAt(hands.box(QStringLiteral("slotChoice%1").arg(j)).topLeft() +
                                  QPointF(20, 40)),
                  i == j ? darkHues.selectedFill : darkHues.surface, "the choice");
  }
}

TEST(Strip, SetsTheAnswerOnAClick) {
  const struct {
    Drill drill;
    double share;
    double answer;
  } cases[] = {{Drill::frequency, 0, 40},    {Drill::frequency, 1, 16000},
               {Drill::frequency, 0.5, 800}, {Drill::level, 0.43, 3.0},
               {Drill::level, 0, 0},         {Drill::level, 1, 7},
               {Drill::dynamics, 0.43, 6},   {Drill::dynamics, 1, 14}};
  for (const auto& c : cases) {
    Hands hands(c.drill);
    // Clicks are at whole points, so the last one on the strip is a point short of its end.
    hands.click(onStrip(std::min(c.share * 739, 738.0)));
    EXPECT_NEAR(hands.session.answer(), c.answer, 1e-9) << c.share;
    EXPECT_FALSE(hands.session.grade());
  }
}

TEST(Strip, FollowsADragAndClampsItToTheEnds) {
  Hands hands;
  hands.press(onStrip(300));
  EXPECT_EQ(hands.session.answer(), 500); // 40 * 400^(300/739) = 455 Hz
  hands.move(onStrip(600));
  EXPECT_EQ(hands.session.answer(), 5000); // 5184 Hz
  hands.move({2, 300});
  EXPECT_EQ(hands.session.answer(), 40);
  hands.move({1100, 5});
  EXPECT_EQ(hands.session.answer(), 16000);
  hands.move(onStrip(370));
  EXPECT_EQ(hands.session.answer(), 800);
  hands.release(onStrip(370));
  hands.move(onStrip(100));
  EXPECT_EQ(hands.session.answer(), 800);
}

TEST(Strip, FollowsADragOnADecibelScale) {
  Hands hands(Drill::dynamics);
  hands.press(onStrip(100));
  EXPECT_EQ(hands.session.answer(), 2.0); // 1.89 dB
  hands.move({5, 170});
  EXPECT_EQ(hands.session.answer(), 0);
  hands.move({900, 170});
  EXPECT_EQ(hands.session.answer(), 14);
  hands.release({900, 170});
}

TEST(Pickers, ChangeNothingAfterGrading) {
  for (const Drill drill : Drill::allCases) {
    Hands hands(drill);
    hands.grade(false);
    const double answer = hands.session.answer();
    for (const double x : {20.0, 360.0, 700.0}) {
      hands.click(onStrip(x));
      EXPECT_EQ(hands.session.answer(), answer);
    }
    hands.press(onStrip(20));
    hands.move(onStrip(500));
    hands.release(onStrip(500));
    EXPECT_EQ(hands.session.answer(), answer);
  }
}

TEST(PrimaryButton, SubmitsThenStartsTheNextTrial) {
  Hands hands;
  hands.click(QStringLiteral("primaryButton"));
  EXPECT_FALSE(hands.session.grade()) << "disabled while rendering";
  hands.settle();
  hands.click(QStringLiteral("primaryButton"));
  EXPECT_TRUE(hands.session.grade());
  EXPECT_FALSE(hands.session.canSubmit());
  EXPECT_TRUE(hands.item("primaryButton")->property("available").toBool());
  const auto before = hands.trials();
  hands.click(QStringLiteral("primaryButton"));
  EXPECT_FALSE(hands.session.grade());
  EXPECT_NE(hands.trials(), before);
}

TEST(PrimaryButton, ShowsThatItIsPressedAndActsOnlyWhenReleasedInside) {
  for (const bool dark : {true, false}) {
    Hands hands(Drill::frequency, dark);
    const Hues& hues = dark ? darkHues : lightHues;
    hands.settle();
    const QPoint inside = hands.centre(QStringLiteral("primaryButton"));
    const QPointF probe = hands.box("primaryButton").topLeft() + QPointF(12, 12);
    const auto seen = [&] { return Picture(hands.picture()).colorAt(probe); };
    expectColor(seen(), hues.ink, "at rest");
    hands.press(inside);
    expectColor(seen(), over(at(hues.ink, 0.7), hues.surface), "pressed");
    hands.move({300, 300});
    expectColor(seen(), hues.ink, "pressed, the pointer outside");
    hands.release({300, 300});
    EXPECT_FALSE(hands.session.grade());
    expectColor(seen(), hues.ink, "released");
    hands.press(inside);
    hands.release(inside);
    EXPECT_TRUE(hands.session.grade());
  }
}

TEST(Return, ActivatesThePrimaryButtonWhileEnabled) {
  Hands hands;
  hands.key(Qt::Key_Return);
  EXPECT_FALSE(hands.session.grade()) << "disabled while rendering";
  hands.settle();
  hands.key(Qt::Key_Return);
  ASSERT_TRUE(hands.session.grade());
  const auto before = hands.trials();
  hands.key(Qt::Key_Return);
  EXPECT_FALSE(hands.session.grade());
  EXPECT_NE(hands.trials(), before);
}

TEST(Return, DoesNothingUntilASlotIsSelected) {
  Hands hands(Drill::polarity);
  hands.settle();
  hands.key(Qt::Key_Return);
  EXPECT_FALSE(hands.session.grade());
  hands.click(QStringLiteral("slotChoice1"));
  hands.key(Qt::Key_Return);
  EXPECT_TRUE(hands.session.grade());
}

TEST(Return, IgnoresAutoRepeatAndModifiers) {
  Hands hands;
  hands.settle();
  for (const auto modifier : {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier})
    hands.key(Qt::Key_Return, modifier);
  hands.key(Qt::Key_Return, {}, true);
  EXPECT_FALSE(hands.session.grade());
  hands.key(Qt::Key_Return);
  ASSERT_TRUE(hands.session.grade());
  const auto before = hands.trials();
  hands.key(Qt::Key_Return, {}, true);
  EXPECT_TRUE(hands.session.grade());
  EXPECT_EQ(hands.trials(), before);
}

TEST(Background, RequestsAMoveOnlyBeyondTheDragThreshold) {
  Hands hands;
  QSignalSpy asked(hands.root(), SIGNAL(moveRequested()));
  const int threshold = QGuiApplication::styleHints()->startDragDistance();
  ASSERT_GT(threshold, 1);
  for (const QPoint start : {QPoint(10, 370), QPoint(1000, 200), QPoint(500, 310)}) {
    asked.clear();
    hands.click(start);
    hands.press(start);
    hands.move(start + QPoint(threshold - 1, 0));
    hands.move(start);
    hands.release(start);
    EXPECT_EQ(asked.count(), 0);
    hands.press(start);
    hands.move(start + QPoint(0, -threshold - 1));
    EXPECT_EQ(asked.count(), 1);
    hands.move(start + QPoint(0, -3 * threshold));
    EXPECT_EQ(asked.count(), 1) << "once per press";
    hands.release(start + QPoint(0, -3 * threshold));
    hands.move(start);
    EXPECT_EQ(asked.count(), 1);
  }
}

TEST(Background, IgnoresDragsThatStartOnAStripOrAButton) {
  for (const bool graded : {false, true})
    for (const Drill drill : {Drill::frequency, Drill::level, Drill::polarity}) {
      Hands hands(drill);
      if (graded)
        hands.grade(false);
      QSignalSpy asked(hands.root(), SIGNAL(moveRequested()));
      // Before grading, nothing is rendered, so the primary button is disabled.
      std::vector<QPoint> starts{onStrip(100), onStrip(500)};
      for (const char* name : {"drill1", "slot0", "material2", "primaryButton"})
        starts.push_back(hands.centre(QString::fromLatin1(name)));
      for (const QPoint start : starts) {
        hands.press(start);
        hands.move(start + QPoint(15, 0));
        hands.move({10, 370});
        hands.release({10, 370});
        EXPECT_EQ(asked.count(), 0) << start.x() << ',' << start.y() << (graded ? " graded" : "");
      }
    }
}

TEST(Motion, FadesTheAnswerAreaUnlessItIsReduced) {
  for (const bool reduced : {false, true}) {
    Hands hands;
    hands.settle();
    (void)hands.picture(); // at rest
    hands.root()->setProperty("reducedMotion", reduced);
    const auto* veil = hands.root()->findChild<QQuickItem*>(QStringLiteral("veil"));
    EXPECT_EQ(veil->opacity(), 0);
    hands.session.newTrial();
    EXPECT_EQ(veil->opacity(), reduced ? 0.6 : 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return std::abs(veil->opacity() - 0.6) < 1e-9; }));
  }
}
