// The practice view with a list of trials.

#include "Course.h"
#include "kit/Seen.h"

#include <QAccessible>
#include <QSignalSpy>

#include <memory>
#include <utility>
#include <vector>

using namespace velto;
using namespace velto::kit;

namespace {

// Three trials, whose answers are kept when the test says so.
class HeldCourse : public Course {
public:
  explicit HeldCourse(Kept& kept) : kept_(kept) {}

  [[nodiscard]] bool isFree() const override { return false; }
  [[nodiscard]] std::optional<Trial> next(Drill, Material, std::uint64_t) override {
    if (begun_ > answered_ || answered_ == 3)
      return std::nullopt;
    ++begun_;
    constexpr Drill drills[] = {Drill::level, Drill::polarity, Drill::frequency};
    return Drills::makeTrial(40, Material::drums, begun_, drills[answered_]);
  }
  [[nodiscard]] std::optional<Place> place() const override {
    return Place{.number = begun_, .count = 3};
  }
  [[nodiscard]] bool keep(const Given&, Kept kept) override {
    kept_ = std::move(kept);
    return false;
  }
  [[nodiscard]] const Profile& profile() const override { return profile_; }
  void record(const Trial& trial, const Given&, const Drills::Grade& grade) override {
    ++answered_;
    profile_.record(trial, grade);
  }

private:
  Kept& kept_;
  std::size_t begun_ = 0, answered_ = 0;
  Profile profile_{Profile::Unsaved{}};
};

struct Hands : Stage {
  explicit Hands(bool dark = true) : Hands(std::make_unique<Course::Kept>(), dark) {}

  [[nodiscard]] QPoint centre(const QString& name) const { return box(name).center().toPoint(); }
  void click(const QString& name) { QTest::mouseClick(&view, Qt::LeftButton, {}, centre(name)); }
  // What comes of the answer.
  void keep(std::optional<std::string> error = std::nullopt) {
    std::exchange(*kept_, {})(std::move(error));
    QCoreApplication::processEvents();
  }
  [[nodiscard]] bool isKeeping() const { return *kept_ != nullptr; }
  [[nodiscard]] QString text(const QString& name) const {
    return item(name)->property("text").toString();
  }
  [[nodiscard]] bool isAvailable(const QString& name) const {
    return item(name)->property("available").toBool();
  }

private:
  explicit Hands(std::unique_ptr<Course::Kept> kept, bool dark)
      : Stage(std::make_unique<HeldCourse>(*kept), dark), kept_(std::move(kept)) {}

  std::unique_ptr<Course::Kept> kept_;
};

QStringList choicesThatAreLocked() {
  QStringList names;
  for (int i = 0; i < 4; ++i)
    names << QStringLiteral("drill%1").arg(i);
  for (int i = 0; i < 3; ++i)
    names << QStringLiteral("material%1").arg(i);
  return names;
}

QAccessible::State stateOf(QQuickItem* item) {
  return QAccessible::queryAccessibleInterface(item)->state();
}

} // namespace

TEST(AssignedView, ChangesNeitherDrillNorMaterialByMouse) {
  Hands hands;
  hands.settle();
  for (const QString& name : choicesThatAreLocked()) {
    hands.click(name);
    EXPECT_EQ(hands.session.drill(), Drill::level) << name.toStdString();
    EXPECT_EQ(hands.session.material(), Material::drums) << name.toStdString();
    EXPECT_FALSE(hands.item(name)->hasActiveFocus()) << name.toStdString();
  }
  EXPECT_EQ(hands.session.place()->number, 1U);
}

TEST(AssignedView, TabReachesAllButDrillsAndMaterials) {
  Hands hands;
  hands.settle();
  QStringList stops;
  for (int i = 0; i < 5; ++i) {
    QTest::keyClick(&hands.view, Qt::Key_Tab);
    stops << hands.view.activeFocusItem()->objectName();
  }
  EXPECT_EQ(stops.mid(0, 3), (QStringList{"handle", "slot0", "primaryButton"}));
  EXPECT_EQ(stops[3], stops[0]);
}

TEST(AssignedView, TellsAssistiveTechnologyThatDrillsAndMaterialsAreDisabled) {
  Hands hands;
  hands.settle();
  for (const QString& name : choicesThatAreLocked()) {
    const auto* access = QAccessible::queryAccessibleInterface(hands.item(name));
    ASSERT_NE(access, nullptr);
    EXPECT_TRUE(access->state().disabled) << name.toStdString();
    EXPECT_FALSE(access->state().focusable) << name.toStdString();
    EXPECT_EQ(access->role(), QAccessible::RadioButton) << name.toStdString();
    EXPECT_TRUE(access->state().checkable) << name.toStdString();
    EXPECT_EQ(access->state().checked, name == "drill1" || name == "material1")
        << name.toStdString();
    auto* actions = QAccessible::queryAccessibleInterface(hands.item(name))->actionInterface();
    ASSERT_NE(actions, nullptr);
    actions->doAction(QAccessibleActionInterface::pressAction());
  }
  EXPECT_EQ(QAccessible::queryAccessibleInterface(hands.item("drill1"))->text(QAccessible::Name),
            "Level");
  EXPECT_EQ(hands.session.drill(), Drill::level);
  EXPECT_FALSE(stateOf(hands.item("slot0")).disabled);

  Stage practice(Drill::level);
  for (const QString& name : choicesThatAreLocked())
    EXPECT_FALSE(stateOf(practice.item(name)).disabled) << name.toStdString();
}

// A choice that cannot be made is paler than in practice; the current one keeps a frame.
TEST(AssignedView, LooksDisabled) {
  for (const bool dark : {true, false}) {
    Hands hands(dark);
    hands.settle();
    const auto& palette = dark ? Palette::dark() : Palette::light();
    const auto color = [&](const char* name) {
      return hands.item(name)->property("color").value<QColor>();
    };
    EXPECT_EQ(color("drillLabel1"), palette.muted);
    EXPECT_EQ(color("drillLabel0"), palette.faint);
    EXPECT_EQ(color("materialLabel1"), palette.muted);
    EXPECT_EQ(color("materialLabel2"), palette.faint);
    EXPECT_EQ(color("drillBox1"), palette.soft);
    EXPECT_EQ(color("materialBox1"), palette.soft);
    // The pointer does not tint it.
    QTest::mouseMove(&hands.view, hands.centre("drill0"));
    EXPECT_EQ(color("drillLabel0"), palette.faint);
  }
}

TEST(AssignedView, ShowsThePlaceOfTheTrial) {
  Hands hands;
  hands.settle();
  EXPECT_EQ(hands.text("place"), "1 of 3");
  EXPECT_EQ(QAccessible::queryAccessibleInterface(hands.item("place"))->text(QAccessible::Name),
            "Trial 1 of 3");
  hands.click("primaryButton");
  hands.keep();
  EXPECT_EQ(hands.text("place"), "1 of 3");
  QTest::qWait(450); // two clicks are not a double click
  hands.click("primaryButton");
  EXPECT_EQ(hands.text("place"), "2 of 3");
  EXPECT_EQ(Stage().find("place"), nullptr) << "in practice there is none";
}

// Nothing that practice shows is elsewhere, and what is added covers nothing.
TEST(AssignedView, MovesNothing) {
  Hands hands;
  Stage practice(Drill::level);
  for (Stage* stage : std::initializer_list<Stage*>{&hands, &practice})
    stage->settle();
  for (const char* name : {"drill0", "drill3", "material0", "material2", "slot0", "primaryButton",
                           "prompt", "difficultyPill", "strip", "status", "subtitle", "card"})
    EXPECT_EQ(hands.box(name), practice.box(name)) << name;
  EXPECT_FALSE(hands.box("place").intersects(hands.box("status")));
  hands.click("primaryButton");
  hands.keep();
  practice.grade(false);
  EXPECT_EQ(hands.box("verdictBox"), practice.box("verdictBox"));
  EXPECT_EQ(hands.box("verdictWord").topLeft(), practice.box("verdictWord").topLeft());
  EXPECT_FALSE(hands.box("place").intersects(hands.box("verdictDetail")));
  EXPECT_TRUE(hands.box("verdictBox").contains(hands.box("place")));
}

TEST(AssignedView, ShowsTheVerdictOnceTheAnswerIsKept) {
  Hands hands;
  hands.settle();
  hands.click("primaryButton");
  ASSERT_TRUE(hands.isKeeping());
  EXPECT_EQ(hands.text("status"), QString::fromUtf8("saving…"));
  EXPECT_EQ(hands.find("verdictBox"), nullptr);
  EXPECT_EQ(hands.find("truthMarker"), nullptr);
  EXPECT_EQ(hands.text("primaryButton"), "Submit");
  EXPECT_FALSE(hands.isAvailable("primaryButton"));
  // Meanwhile the answer stays, by mouse and by keyboard.
  QTest::mouseClick(&hands.view, Qt::LeftButton, {}, {100, 160});
  QTest::keyClick(&hands.view, Qt::Key_End);
  QTest::keyClick(&hands.view, Qt::Key_Return);
  EXPECT_EQ(hands.session.answer(), 2);
  hands.keep();
  EXPECT_NE(hands.find("verdictBox"), nullptr);
  EXPECT_NE(hands.find("truthMarker"), nullptr);
  EXPECT_EQ(hands.text("primaryButton"), "Next");
}

TEST(AssignedView, SaysWhyThereIsNoVerdictAndTakesTheAnswerAgain) {
  Hands hands;
  hands.settle();
  EXPECT_EQ(hands.find("failure"), nullptr);
  hands.click("primaryButton");
  hands.keep("No space left on device");
  EXPECT_EQ(hands.text("failure"),
            "The answer could not be saved: No space left on device. Submit it again.");
  EXPECT_EQ(hands.find("status"), nullptr);
  EXPECT_EQ(hands.find("verdictBox"), nullptr);
  EXPECT_EQ(hands.find("truthMarker"), nullptr);
  EXPECT_FALSE(hands.box("failure").intersects(hands.box("place")));
  const auto* access = QAccessible::queryAccessibleInterface(hands.item("failure"));
  EXPECT_EQ(access->role(), QAccessible::Notification);
  EXPECT_EQ(access->text(QAccessible::Name), hands.text("failure"));

  // With another answer, by keyboard.
  hands.item("handle")->forceActiveFocus();
  QTest::keyClick(&hands.view, Qt::Key_Home);
  EXPECT_EQ(hands.session.answer(), 0);
  QTest::keyClick(&hands.view, Qt::Key_Return);
  EXPECT_TRUE(hands.isKeeping());
  EXPECT_EQ(hands.find("failure"), nullptr);
  hands.keep();
  ASSERT_TRUE(hands.session.grade());
  EXPECT_EQ(hands.session.grade()->answerText, "0.00 dB");
  EXPECT_EQ(hands.find("failure"), nullptr);
}

TEST(AssignedView, EndsWithAButtonThatCloses) {
  Hands hands;
  QSignalSpy finished(&hands.model, &PracticeModel::finished);
  for (int trial = 0; trial < 3; ++trial) {
    hands.settle();
    hands.session.setAnswer(1);
    QTest::keyClick(&hands.view, Qt::Key_Return);
    hands.keep();
    EXPECT_EQ(hands.text("primaryButton"), trial < 2 ? "Next" : "Close");
    EXPECT_EQ(finished.count(), 0);
    if (trial < 2)
      QTest::keyClick(&hands.view, Qt::Key_Return);
  }
  hands.session.newTrial();
  EXPECT_TRUE(hands.session.grade()) << "there is none";
  QTest::keyClick(&hands.view, Qt::Key_Return);
  EXPECT_EQ(finished.count(), 1);
  hands.click("primaryButton");
  EXPECT_EQ(finished.count(), 2);
}

TEST(AssignedView, ShowsFiguresOfTheListOnly) {
  Hands hands;
  hands.settle();
  EXPECT_EQ(hands.progress.today(), "0");
  hands.click("primaryButton");
  hands.keep();
  EXPECT_EQ(hands.progress.today(), "1");
}
