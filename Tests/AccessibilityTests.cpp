// Practising without seeing the window: from another process over the accessibility bus, and by the
// keyboard alone, with a screen reader that listens. Run on a private desk with a session bus.
#include "kit/Desktop.h"
#include "kit/ProfileReader.h"
#include "kit/ProgramRunner.h"
#include "kit/ScreenReader.h"

#include "Drills.h"
#include "Wording.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace velto::kit {
namespace {

std::int64_t secondsNow() {
  return std::chrono::duration_cast<std::chrono::seconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

// The program with a screen reader at it, and the trials that it must have made: they follow from
// the second in which it started.
class Practice {
public:
  Practice()
      : startedAfter_(secondsNow()), program(VELTO_PROGRAM, {"--drill", "frequency"},
                                             {{"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}}),
        window(desktop.waitForWindow("MORLA Velto", program.pid())) {
    desktop.waitForActive(window);
    startedBefore_ = secondsNow();
    reader.read(program.pid());
    waitUntilRendered();
  }

  void waitUntilRendered() {
    reader.waitUntil([&] { return reader.shows("label", "listen, then answer"); },
                     "the trial is rendered");
  }

  // The answer that was just submitted is recorded and announced as the program's trial `number`
  // (from 0) of the drill grades it.
  void expectVerdict(Drill drill, std::size_t number, double answer) {
    SCOPED_TRACE(std::string(drill.rawValue()));
    const std::size_t row = answered_++;
    const ReadProfile profile = waitForAttempts(program.profileFile(), answered_);
    reader.waitUntil([&] { return reader.announcements().size() == answered_; },
                     "the verdict is announced");
    const std::string announced = reader.announcements().back();
    const Material material = drill == Drill::polarity   ? Material::pad
                              : drill == Drill::dynamics ? Material::drums
                                                         : Material::pinkNoise;
    bool found = false;
    for (auto second = startedAfter_; second <= startedBefore_; ++second) {
      const auto seed = static_cast<std::uint64_t>(second) + (2 + number) * 40503;
      const auto grade = Drills::grade(answer, Drills::makeTrial(20, material, seed, drill));
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
  std::int64_t startedAfter_ = 0, startedBefore_ = 0;
  std::size_t answered_ = 0;

public:
  ScreenReader reader;
  Desktop desktop;
  ProgramRunner program;
  WindowId window = 0;
};

} // namespace

TEST(ScreenReaderAlone, PractisesATrialOfEachDrill) {
  Practice practice;
  ScreenReader& reader = practice.reader;
  const auto value = [&](const std::string& name) { return reader.object("slider", name).value; };
  const auto submit = [&] { reader.act("push button", "Submit", "Press"); };
  const auto goTo = [&](const std::string& drill, const std::string& prompt) {
    reader.act("radio button", drill, "Press");
    reader.waitUntil([&] { return reader.shows("label", prompt); }, "the drill is " + drill);
    practice.waitUntilRendered();
    EXPECT_TRUE(reader.object("radio button", drill).is("checked"));
    EXPECT_FALSE(reader.object("radio button", "Frequency").is("checked"));
  };

  AccessibleObject scale = reader.object("slider", "Frequency");
  EXPECT_EQ(scale.value, 1000);
  EXPECT_EQ(scale.lowest, 40);
  EXPECT_EQ(scale.highest, 16000);
  EXPECT_EQ(scale.description, "1 kHz");
  reader.act("slider", "Frequency", "Increase");
  EXPECT_EQ(value("Frequency"), 1250);
  reader.act("slider", "Frequency", "Decrease");
  reader.act("slider", "Frequency", "Decrease");
  EXPECT_EQ(value("Frequency"), 800);
  reader.setValue("slider", "Frequency", 3300); // the nearest band answers
  scale = reader.object("slider", "Frequency");
  EXPECT_EQ(scale.value, 3150);
  EXPECT_EQ(scale.description, "3.15 kHz");
  EXPECT_FALSE(scale.is("read-only"));
  submit();
  practice.expectVerdict(Drill::frequency, 0, 3150);
  scale = reader.object("slider", "Frequency");
  EXPECT_TRUE(scale.is("read-only"));
  EXPECT_TRUE(scale.description.starts_with("3.15 kHz, actual ")) << scale.description;
  reader.act("slider", "Frequency", "Increase");
  reader.setValue("slider", "Frequency", 40);
  EXPECT_EQ(value("Frequency"), 3150) << "graded";

  goTo("Level", "B is louder than A. By how much?");
  scale = reader.object("slider", "Decibels");
  EXPECT_EQ(scale.highest, 7);
  EXPECT_NEAR(scale.step, 0.05, 1e-12);
  reader.setValue("slider", "Decibels", 3.01);
  reader.act("slider", "Decibels", "Increase");
  EXPECT_NEAR(value("Decibels"), 3.05, 1e-9);
  EXPECT_EQ(reader.object("slider", "Decibels").description, "3.05 dB");
  submit();
  practice.expectVerdict(Drill::level, 1, 3.05);

  goTo("Dynamics", "B is compressed, loudness-matched. How much gain reduction?");
  EXPECT_EQ(reader.object("slider", "Decibels").highest, 14);
  reader.act("radio button", "Play B", "Press");
  EXPECT_TRUE(reader.object("radio button", "Play B").is("checked"));
  EXPECT_FALSE(reader.object("radio button", "Play A").is("checked"));
  reader.act("slider", "Decibels", "Decrease");
  submit();
  practice.expectVerdict(Drill::dynamics, 2, 4.5);

  goTo("Polarity", "One of the three has a flipped channel. Which?");
  EXPECT_FALSE(reader.object("push button", "Submit").is("sensitive")) << "no answer yet";
  submit();
  reader.act("radio button", "Slot 3", "Press");
  reader.act("radio button", "Slot 2", "Press");
  EXPECT_TRUE(reader.object("radio button", "Slot 2").is("checked"));
  EXPECT_FALSE(reader.object("radio button", "Slot 2").is("read-only"));
  EXPECT_FALSE(reader.object("radio button", "Slot 3").is("checked"));
  EXPECT_TRUE(reader.object("push button", "Submit").is("sensitive"));
  submit();
  practice.expectVerdict(Drill::polarity, 3, 1);
  reader.act("radio button", "Slot 1", "Press");
  EXPECT_FALSE(reader.object("radio button", "Slot 1").is("checked")) << "graded";
  EXPECT_TRUE(reader.object("radio button", "Slot 1").is("read-only"));
  std::multiset<std::string> captions;
  for (const std::string slot : {"Slot 1", "Slot 2", "Slot 3"})
    captions.insert(reader.object("radio button", slot).description);
  EXPECT_EQ(captions, (std::multiset<std::string>{"FLIPPED", "in phase", "in phase"}));

  reader.act("radio button", "Drums", "Press");
  reader.waitUntil([&] { return reader.object("radio button", "Drums").is("checked"); },
                   "the material is drums");
  EXPECT_GE(reader.eventCount("object:property-change:accessible-value"), 5U);
  EXPECT_GE(reader.eventCount("object:property-change:accessible-description"), 5U);
  EXPECT_GE(reader.eventCount("object:state-changed:checked"), 8U);
  EXPECT_GE(reader.eventCount("object:state-changed:sensitive"), 2U);
  EXPECT_EQ(practice.program.errors().find("qrc:"), std::string::npos);
}

TEST(ScreenReaderAlone, FindsANameAndARoleOnWhateverShows) {
  Practice practice;
  practice.reader.act("push button", "Submit", "Press");
  static_cast<void>(waitForAttempts(practice.program.profileFile(), 1));
  const std::set<std::string> controls{"radio button", "slider", "push button"};
  std::multiset<std::string> roles, groups;
  for (const AccessibleObject& object : practice.reader.objects()) {
    if (!object.is("showing"))
      continue;
    SCOPED_TRACE(object.role + " " + object.name);
    roles.insert(object.role);
    if (object.role == "panel")
      groups.insert(object.name);
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
  EXPECT_GE(roles.count("label"), 15U);
  const AccessibleObject map = practice.reader.object("chart", "Weakness map");
  EXPECT_NE(map.description.find(" oct over 1"), std::string::npos) << map.description;
}

TEST(KeyboardAlone, FindsSpaceDigitsNAndReturnTheSameAtEveryStop) {
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
  Desktop& desktop = practice.desktop;
  ScreenReader& reader = practice.reader;
  const auto tabTo = [&](const std::string& role, const std::string& name, bool back = false) {
    if (back)
      desktop.press(Keys::tab, {Keys::shift});
    else
      desktop.press(Keys::tab);
    reader.waitUntil(
        [&] {
          const AccessibleObject focus = reader.focus();
          return focus.role == role && focus.name == name;
        },
        "the focus is on the " + role + " " + name);
  };
  const auto nextDrill = [&](const std::string& from, const std::string& to) {
    tabTo("radio button", from, true);
    desktop.press(Keys::right);
    reader.waitUntil([&] { return reader.focus().name == to; }, "the drill is " + to);
    practice.waitUntilRendered();
  };
  const auto waitForValue = [&](const std::string& description) {
    reader.waitUntil([&] { return reader.focus().description == description; },
                     "the answer is " + description);
  };

  tabTo("radio button", "Frequency");
  tabTo("slider", "Frequency");
  for (const std::uint32_t key : {Keys::right, Keys::up, Keys::pageDown, Keys::left})
    desktop.press(key);
  waitForValue("630 Hz");     // 1000, 1250, 1600, 800, 630
  desktop.press(Keys::space); // switches, and nothing else
  reader.waitUntil([&] { return reader.object("radio button", "Play B").is("checked"); },
                   "B is played");
  desktop.press(Keys::returnKey);
  practice.expectVerdict(Drill::frequency, 0, 630);
  EXPECT_EQ(reader.focus().name, "Frequency") << "the focus stays";

  nextDrill("Frequency", "Level");
  tabTo("slider", "Decibels");
  for (const std::uint32_t key : {Keys::end, Keys::pageDown, Keys::down})
    desktop.press(key);
  waitForValue("5.95 dB");
  desktop.press(Keys::returnKey);
  practice.expectVerdict(Drill::level, 1, 5.95);

  nextDrill("Level", "Dynamics");
  tabTo("slider", "Decibels");
  for (const std::uint32_t key : {Keys::home, Keys::pageUp, Keys::right})
    desktop.press(key);
  waitForValue("2.50 dB");
  desktop.press(Keys::returnKey);
  practice.expectVerdict(Drill::dynamics, 2, 2.5);

  nextDrill("Dynamics", "Polarity");
  tabTo("radio button", "Slot 1");
  desktop.press(Keys::right);
  desktop.press(Keys::right);
  reader.waitUntil([&] { return reader.focus().name == "Slot 2" && reader.focus().is("checked"); },
                   "slot 2 is chosen");
  desktop.press(Keys::three); // plays the third, and chooses nothing
  desktop.press(Keys::returnKey);
  practice.expectVerdict(Drill::polarity, 3, 1);
  EXPECT_TRUE(reader.object("radio button", "Play 3").is("checked"));
}

} // namespace velto::kit
