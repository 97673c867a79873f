// Practises without looking at the window: from another process over the accessibility bus, and
// with the keyboard alone while a screen reader listens. Run on a private desk with a session bus.
#include "kit/Desktop.h"
#include "kit/Launch.h"
#include "kit/ProfileReader.h"
#include "kit/ProgramRunner.h"
#include "kit/ScreenReader.h"

#include "Drill.h"
#include "Grading.h"
#include "Slot.h"
#include "Trial.h"
#include "Wording.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <set>
#include <string>
#include <vector>

namespace velto::kit {
namespace {

// The sliders in dB.
const std::string howMuchLouder = "How much louder", howMuchReduction = "How much gain reduction";

// The program with a screen reader attached, and the trials that it must have made.
class Practice {
public:
  Practice()
      : program(VELTO_PROGRAM, {"--drill", "frequency"},
                {{"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}}),
        window(desktop.waitForWindow("MORLA Velto", program.pid())) {
    desktop.waitForActive(window);
    launch_.hasHappened();
    reader.read(program.pid());
    waitUntilRendered();
  }

  void waitUntilRendered() {
    reader.waitUntil([&] { return reader.shows("label", "listen, then answer"); },
                     "the trial is rendered");
  }

  // Checks that the answer just submitted is recorded, and announced as the grade of the drill's
  // trial `number` (from 0).
  void expectVerdict(Drill drill, std::size_t number, double answer) {
    SCOPED_TRACE(std::string(drill.rawValue()));
    const std::size_t row = answered_++;
    const ReadProfile profile = waitForAttempts(program.profileFile(), answered_);
    reader.waitUntil([&] { return reader.announcements().size() == answered_; },
                     "the verdict is announced");
    const std::string announced = reader.announcements().back();
    bool found = false;
    for (const Trial& trial : launch_.trials(drill, number)) {
      const auto grade = Drills::grade(answer, trial);
      if (Wording::announcement(grade) != announced)
        continue;
      found = true;
      EXPECT_EQ(profile.attempts[row].drill, drill.rawValue());
      EXPECT_EQ(profile.attempts[row].correct, grade.correct);
      EXPECT_NEAR(profile.attempts[row].error, grade.error, 1e-9);
      break;
    }
    EXPECT_TRUE(found) << "announced: " << announced;
  }

private:
  Launch launch_;
  std::size_t answered_ = 0;

public:
  ScreenReader reader;
  Desktop desktop;
  ProgramRunner program;
  WindowId window = 0;
};

// Practises over the accessibility bus alone.
class BusHands {
public:
  explicit BusHands(Practice& practice) : practice_(practice), reader_(practice.reader) {}

  void practiseFrequency() {
    AccessibleObject scale = reader_.object("slider", "Frequency");
    EXPECT_EQ(scale.value, 1000);
    EXPECT_EQ(scale.lowest, 40);
    EXPECT_EQ(scale.highest, 16000);
    EXPECT_EQ(scale.description, "1 kHz");
    reader_.act("slider", "Frequency", "Increase");
    EXPECT_EQ(value("Frequency"), 1250);
    reader_.act("slider", "Frequency", "Decrease");
    reader_.act("slider", "Frequency", "Decrease");
    EXPECT_EQ(value("Frequency"), 800);
    reader_.setValue("slider", "Frequency", 3300); // rounded to the nearest band
    scale = reader_.object("slider", "Frequency");
    EXPECT_EQ(scale.value, 3150);
    EXPECT_EQ(scale.description, "3.15 kHz");
    EXPECT_FALSE(scale.is("read-only"));
    submit();
    practice_.expectVerdict(Drill::frequency, 0, 3150);
    scale = reader_.object("slider", "Frequency");
    EXPECT_TRUE(scale.is("read-only"));
    EXPECT_TRUE(scale.description.starts_with("3.15 kHz, actual ")) << scale.description;
    reader_.act("slider", "Frequency", "Increase");
    reader_.setValue("slider", "Frequency", 40);
    EXPECT_EQ(value("Frequency"), 3150) << "graded";
  }

  void practiseLevel() {
    goTo("Level", "B is louder than A. By how much?");
    const AccessibleObject scale = reader_.object("slider", howMuchLouder);
    EXPECT_EQ(scale.highest, 7);
    EXPECT_NEAR(scale.step, 0.05, 1e-12);
    reader_.setValue("slider", howMuchLouder, 3.01);
    reader_.act("slider", howMuchLouder, "Increase");
    EXPECT_NEAR(value(howMuchLouder), 3.05, 1e-9);
    EXPECT_EQ(reader_.object("slider", howMuchLouder).description, "3.05 dB");
    submit();
    practice_.expectVerdict(Drill::level, 1, 3.05);
  }

  void practiseDynamics() {
    goTo("Dynamics", "B is compressed, loudness-matched. How much gain reduction?");
    EXPECT_EQ(reader_.object("slider", howMuchReduction).highest, 14);
    reader_.act("radio button", "Play B", "Press");
    EXPECT_TRUE(reader_.object("radio button", "Play B").is("checked"));
    EXPECT_FALSE(reader_.object("radio button", "Play A").is("checked"));
    reader_.act("slider", howMuchReduction, "Decrease");
    submit();
    practice_.expectVerdict(Drill::dynamics, 2, 4.5);
  }

  void practisePolarity() {
    goTo("Polarity", "One of the three has a flipped channel. Which?");
    EXPECT_FALSE(reader_.object("push button", "Submit").is("sensitive")) << "no answer yet";
    submit();
    reader_.act("radio button", "Slot 3", "Press");
    reader_.act("radio button", "Slot 2", "Press");
    EXPECT_TRUE(reader_.object("radio button", "Slot 2").is("checked"));
    EXPECT_FALSE(reader_.object("radio button", "Slot 2").is("read-only"));
    EXPECT_FALSE(reader_.object("radio button", "Slot 3").is("checked"));
    EXPECT_TRUE(reader_.object("push button", "Submit").is("sensitive"));
    submit();
    practice_.expectVerdict(Drill::polarity, 3, 1);
    reader_.act("radio button", "Slot 1", "Press");
    EXPECT_FALSE(reader_.object("radio button", "Slot 1").is("checked")) << "graded";
    EXPECT_TRUE(reader_.object("radio button", "Slot 1").is("read-only"));
    std::multiset<std::string> captions;
    for (const std::string slot : {"Slot 1", "Slot 2", "Slot 3"})
      captions.insert(reader_.object("radio button", slot).description);
    EXPECT_EQ(captions, (std::multiset<std::string>{"FLIPPED", "in phase", "in phase"}));
  }

private:
  [[nodiscard]] double value(const std::string& name) {
    return reader_.object("slider", name).value;
  }
  void submit() { reader_.act("push button", "Submit", "Press"); }
  void goTo(const std::string& drill, const std::string& prompt) {
    reader_.act("radio button", drill, "Press");
    reader_.waitUntil([&] { return reader_.shows("label", prompt); }, "the drill is " + drill);
    practice_.waitUntilRendered();
    EXPECT_TRUE(reader_.object("radio button", drill).is("checked"));
    EXPECT_FALSE(reader_.object("radio button", "Frequency").is("checked"));
  }

  Practice& practice_;
  ScreenReader& reader_;
};

// Practises with the keyboard alone; the screen reader reports the result.
class KeyboardHands {
public:
  explicit KeyboardHands(Practice& practice)
      : practice_(practice), desktop_(practice.desktop), reader_(practice.reader) {}

  void practiseFrequency() {
    tabTo("radio button", "Frequency");
    tabTo("slider", "Frequency");
    press({Keys::right, Keys::up, Keys::pageDown, Keys::left});
    waitForValue("630 Hz");      // 1000, 1250, 1600, 800, 630
    desktop_.press(Keys::space); // only switches
    reader_.waitUntil([&] { return reader_.object("radio button", "Play B").is("checked"); },
                      "B is played");
    desktop_.press(Keys::returnKey);
    practice_.expectVerdict(Drill::frequency, 0, 630);
    EXPECT_EQ(reader_.focus().name, "Frequency") << "the focus stays";
  }

  void practiseLevel() {
    nextDrill("Frequency", "Level");
    tabTo("slider", howMuchLouder);
    press({Keys::end, Keys::pageDown, Keys::down});
    waitForValue("5.95 dB");
    desktop_.press(Keys::returnKey);
    practice_.expectVerdict(Drill::level, 1, 5.95);
  }

  void practiseDynamics() {
    nextDrill("Level", "Dynamics");
    tabTo("slider", howMuchReduction);
    press({Keys::home, Keys::pageUp, Keys::right});
    waitForValue("2.50 dB");
    desktop_.press(Keys::returnKey);
    practice_.expectVerdict(Drill::dynamics, 2, 2.5);
  }

  void practisePolarity() {
    nextDrill("Dynamics", "Polarity");
    tabTo("radio button", "Slot 1");
    press({Keys::right, Keys::right});
    reader_.waitUntil(
        [&] { return reader_.focus().name == "Slot 2" && reader_.focus().is("checked"); },
        "slot 2 is chosen");
    desktop_.press(Keys::three); // plays the third without choosing it
    desktop_.press(Keys::returnKey);
    practice_.expectVerdict(Drill::polarity, 3, 1);
    EXPECT_TRUE(reader_.object("radio button", "Play 3").is("checked"));
  }

private:
  void press(std::initializer_list<std::uint32_t> keys) {
    for (const std::uint32_t key : keys)
      desktop_.press(key);
  }
  void waitForFocus(const std::string& role, const std::string& name) {
    reader_.waitUntil(
        [&] {
          const AccessibleObject focus = reader_.focus();
          return focus.role == role && focus.name == name;
        },
        "the focus is on the " + role + " " + name);
  }
  void tabTo(const std::string& role, const std::string& name) {
    desktop_.press(Keys::tab);
    waitForFocus(role, name);
  }
  // From the picker back to the drills, then to the next drill.
  void nextDrill(const std::string& from, const std::string& to) {
    desktop_.press(Keys::tab, {Keys::shift});
    waitForFocus("radio button", from);
    desktop_.press(Keys::right);
    waitForFocus("radio button", to);
    practice_.waitUntilRendered();
  }
  void waitForValue(const std::string& description) {
    reader_.waitUntil([&] { return reader_.focus().description == description; },
                      "the answer is " + description);
  }

  Practice& practice_;
  Desktop& desktop_;
  ScreenReader& reader_;
};

template <typename Hands>
void practiseEachDrill(Hands hands) {
  hands.practiseFrequency();
  hands.practiseLevel();
  hands.practiseDynamics();
  hands.practisePolarity();
}

} // namespace

TEST(ScreenReaderAlone, PractisesATrialOfEachDrill) {
  Practice practice;
  practiseEachDrill(BusHands(practice));
  ScreenReader& reader = practice.reader;
  reader.act("radio button", "Drums", "Press");
  reader.waitUntil([&] { return reader.object("radio button", "Drums").is("checked"); },
                   "the material is drums");
  EXPECT_GE(reader.eventCount("object:property-change:accessible-value"), 5U);
  EXPECT_GE(reader.eventCount("object:property-change:accessible-description"), 5U);
  EXPECT_GE(reader.eventCount("object:state-changed:checked"), 8U);
  EXPECT_GE(reader.eventCount("object:state-changed:sensitive"), 2U);
  EXPECT_EQ(practice.program.errors().find("qrc:"), std::string::npos);
}

TEST(ScreenReaderAlone, EveryVisibleObjectHasANameAndARole) {
  Practice practice;
  practice.reader.act("push button", "Submit", "Press");
  static_cast<void>(waitForAttempts(practice.program.profileFile(), 1));
  const std::set<std::string> controls{"radio button", "slider", "push button"};
  std::multiset<std::string> roles, groups;
  std::set<std::string> labels;
  for (const AccessibleObject& object : practice.reader.objects()) {
    if (!object.is("showing"))
      continue;
    SCOPED_TRACE(object.role + " " + object.name);
    roles.insert(object.role);
    if (object.role == "group")
      groups.insert(object.name);
    if (object.role == "label")
      labels.insert(object.name);
    EXPECT_FALSE(object.name.empty());
    if (controls.contains(object.role)) {
      EXPECT_TRUE(object.is("focusable"));
      EXPECT_TRUE(object.is("sensitive"));
      EXPECT_TRUE(object.can("SetFocus"));
      EXPECT_EQ(object.can("Press"), object.role != "slider");
      EXPECT_EQ(object.can("Increase") && object.can("Decrease"), object.role == "slider");
    }
    if (object.role == "chart") {
      EXPECT_FALSE(object.description.empty());
    }
  }
  EXPECT_EQ(roles.count("radio button"), 4U + 2U + 3U);
  EXPECT_EQ(roles.count("slider"), 1U);
  EXPECT_EQ(roles.count("push button"), 1U);
  EXPECT_EQ(groups, (std::multiset<std::string>{"Drill", "Material", "Version"}));
  EXPECT_EQ(roles.count("chart"), 2U);
  EXPECT_EQ(roles.count("notification"), 1U);
  EXPECT_GE(roles.count("label"), 11U);
  for (const char* figure : {"Streak, 1 day", "Today, 1 answer", "Difficulty, 20"})
    EXPECT_TRUE(labels.contains(figure)) << figure;
  EXPECT_TRUE(labels.contains("Accuracy, 0 percent") || labels.contains("Accuracy, 100 percent"));
  for (const char* part : {"STREAK", "1d", "TODAY", "ACC", "DIFFICULTY", "20"})
    EXPECT_FALSE(labels.contains(part)) << part << " is part of a name";
  const AccessibleObject map = practice.reader.object("chart", "Weakness map");
  EXPECT_NE(map.description.find(" oct over 1"), std::string::npos) << map.description;
}

TEST(KeyboardAlone, SpaceDigitsNAndReturnWorkAtEveryStop) {
  Practice practice;
  Desktop& desktop = practice.desktop;
  ScreenReader& reader = practice.reader;
  const auto holds = [&](const char* name) {
    return reader.object("radio button", name).is("checked");
  };
  const struct {
    const char *role, *name;
  } stops[] = {{"radio button", "Frequency"},
               {"slider", "Frequency"},
               {"radio button", "Play A"},
               {"radio button", "Pink"},
               {"push button", "Submit"}};
  std::size_t answered = 0;
  for (const auto& stop : stops) {
    SCOPED_TRACE(stop.name);
    const auto hasFocus = [&] {
      const AccessibleObject focus = reader.focus();
      return focus.role == stop.role && focus.name == stop.name;
    };
    desktop.press(Keys::tab);
    reader.waitUntil(hasFocus, std::string("the focus is on ") + stop.name);
    desktop.press(Keys::space);
    reader.waitUntil([&] { return holds("Play B"); }, "space switches");
    desktop.press(Keys::one);
    reader.waitUntil([&] { return holds("Play A"); }, "1 picks A");
    desktop.press(Keys::returnKey);
    ++answered;
    reader.waitUntil([&] { return reader.announcements().size() == answered; }, "Return submits");
    desktop.press(Keys::n);
    practice.waitUntilRendered();
    reader.waitUntil(hasFocus, "the focus is where it was");
    EXPECT_EQ(reader.object("slider", "Frequency").value, 1000);
    EXPECT_TRUE(holds("Frequency"));
    EXPECT_TRUE(holds("Pink"));
  }
}

TEST(KeyboardAlone, PractisesATrialOfEachDrill) {
  Practice practice;
  practiseEachDrill(KeyboardHands(practice));
}

} // namespace velto::kit
