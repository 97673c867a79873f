// Keyboard, mouse and lifecycle of the window, checked by the sound at the sink. Run on a private
// desk. The second in which the program started determines its trials, so every recorded frame can
// be compared bit for bit with the expected slot.
#include "kit/Alignment.h"
#include "kit/Desktop.h"
#include "kit/Files.h"
#include "kit/Launch.h"
#include "kit/ProfileReader.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"

#include "Drill.h"
#include "Rendering.h"
#include "Slot.h"
#include "Trial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velto::kit {
namespace {

constexpr std::size_t provenFrames = 2400; // enough to identify a slot by its bits

// Points in a window 1180 points wide.
struct Point {
  int x, y;
};
constexpr Point slotA{66, 258}, slotB{126, 258}, drums{593, 258}, submitButton{740, 258};
constexpr Point polarityChip{745, 40}, background{400, 365};

// The program, its window, and the trials that it must play.
class Stage {
public:
  explicit Stage(Drill drill = Drill::level, std::vector<std::string> arguments = {})
      : drill_(drill), material_(Drills::defaultMaterial(drill)),
        program(VELTO_PROGRAM, withDrill(std::move(arguments))),
        window(desktop.waitForWindow("MORLA Velto", program.pid())) {
    desktop.waitForActive(window);
    launch_.hasHappened();
    const std::vector<Trial> candidates = launch_.trials(drill);
    waitUntilPlaying([&](const Recording& sound, std::size_t begin) {
      return std::any_of(candidates.begin(), candidates.end(), [&](const Trial& candidate) {
        firstSeed_ = candidate.seed;
        return loopPhase(sound, begin, provenFrames, slots(0)[0]).has_value();
      });
    });
  }

  void practise(Drill drill, Material material) {
    drill_ = drill;
    material_ = material;
  }

  [[nodiscard]] Trial trial(std::size_t number) const {
    return Drills::makeTrial(20, material_, firstSeed_ + number * seedStep, drill_);
  }

  // The slots of the program's trial `number` (from 0).
  [[nodiscard]] std::vector<Slot> slots(std::size_t number) const {
    return Drills::render(trial(number), 3.2);
  }

  // A position in a loop: frame `begin` of the recording is frame `phase` of the slot.
  struct Place {
    std::size_t begin = 0;
    std::size_t phase = 0;
  };

  // Waits until the newest frames are this slot alone. Throws on a timeout.
  Place waitFor(std::size_t trialNumber, std::size_t slot) {
    const std::vector<Slot> all = slots(trialNumber);
    Place place;
    waitUntilPlaying([&](const Recording& sound, std::size_t begin) {
      const auto phase = loopPhase(sound, begin, provenFrames, all.at(slot));
      if (phase)
        place = {begin, *phase};
      return phase.has_value();
    });
    return place;
  }

  // Waits until the first slot of a trial from `begin` up to `end` is heard. Returns its number.
  std::size_t waitForAnyTrial(std::size_t begin, std::size_t end) {
    std::vector<Slot> firsts;
    for (std::size_t number = begin; number < end; ++number)
      firsts.push_back(slots(number)[0]);
    std::size_t found = 0;
    waitUntilPlaying([&](const Recording& sound, std::size_t from) {
      for (std::size_t i = 0; i < firsts.size(); ++i)
        if (loopPhase(sound, from, provenFrames, firsts[i])) {
          found = begin + i;
          return true;
        }
      return false;
    });
    return found;
  }

  // Waits for 0.2 s of silence.
  void waitForSilence() {
    waitUntilPlaying([](const Recording& sound, std::size_t) {
      return sound.frames() > 9600 && firstSound(sound, sound.frames() - 9600) == sound.frames();
    });
  }

  // Whether the slot continues unchanged from `place` until `frames` frames from now.
  testing::AssertionResult goesOn(const Place& place, std::size_t trialNumber, std::size_t slot,
                                  std::size_t frames = 19200) {
    recorder.waitForMore(frames);
    const Recording sound = asRendered(recorder.recording());
    const std::size_t changed = firstDifference(sound, place.begin, sound.frames(),
                                                slots(trialNumber).at(slot), place.phase);
    if (changed == sound.frames())
      return testing::AssertionSuccess();
    return testing::AssertionFailure() << "changed " << changed - place.begin << " frames on";
  }

  // Whether there is silence until `frames` frames from now.
  testing::AssertionResult staysSilent(std::size_t frames = 14400) {
    const std::size_t from = recorder.frames();
    recorder.waitForMore(frames);
    const Recording sound = asRendered(recorder.recording());
    if (firstSound(sound, from) == sound.frames())
      return testing::AssertionSuccess();
    return testing::AssertionFailure() << "something is heard";
  }

  // Whether the loop at `place` started at its beginning when sound returned after `silentFrame`.
  testing::AssertionResult beganAtZero(std::size_t silentFrame, const Place& place) const {
    const std::size_t start = firstSound(asRendered(recorder.recording()), silentFrame);
    const std::size_t phase = (place.begin - start) % 153600;
    // The gain of the very first frames is almost 0.
    if (place.phase >= phase && place.phase <= phase + 4)
      return testing::AssertionSuccess();
    return testing::AssertionFailure() << "at " << place.phase << " instead of " << phase;
  }

  void click(Point point) { desktop.click(window, point.x, point.y); }

private:
  std::vector<std::string> withDrill(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--drill", std::string(drill_.rawValue())});
    return arguments;
  }

  template <typename Condition>
  void waitUntilPlaying(Condition condition) {
    const std::size_t end = recorder.frames() + 480000;
    while (recorder.frames() < end) {
      recorder.waitForMore(480);
      const Recording sound = asRendered(recorder.recording());
      if (sound.frames() > provenFrames && condition(sound, sound.frames() - provenFrames))
        return;
    }
    throw std::runtime_error("the expected sound is not heard");
  }

  Drill drill_;
  Material material_;
  Launch launch_;
  std::uint64_t firstSeed_ = 0;

public:
  Recorder recorder;
  Desktop desktop;
  ProgramRunner program;
  WindowId window = 0;
};

TEST(Keys, SpaceCyclesThroughTheSlotsAndDigitsPickOne) {
  Stage stage;
  stage.desktop.press(Keys::space);
  stage.waitFor(0, 1);
  stage.desktop.press(Keys::space);
  stage.waitFor(0, 0);
  stage.desktop.press(Keys::two);
  stage.waitFor(0, 1);
  stage.desktop.press(Keys::one);
  const auto place = stage.waitFor(0, 0);
  stage.desktop.press(Keys::three); // there are only two slots
  EXPECT_TRUE(stage.goesOn(place, 0, 0));
  EXPECT_EQ(stage.program.errors(), "");
}

TEST(Keys, ThreePicksTheThirdOfThreeSlots) {
  Stage stage(Drill::polarity);
  std::size_t number = 0;
  while (stage.trial(number).oddSlot != 2 && number < 40) {
    stage.desktop.press(Keys::n);
    ++number;
  }
  ASSERT_EQ(stage.trial(number).oddSlot, 2);
  stage.waitFor(number, 0);
  stage.desktop.press(Keys::three);
  stage.waitFor(number, 2);
  stage.desktop.press(Keys::space); // wraps around to the first
  stage.waitFor(number, 0);
}

TEST(Keys, OtherKeysAndKeysWithAModifierDoNothing) {
  Stage stage;
  const auto place = stage.waitFor(0, 0);
  for (const std::uint32_t key :
       {Keys::zero, Keys::four, Keys::x, Keys::a, Keys::left, Keys::escape, Keys::function1})
    stage.desktop.press(key);
  for (const std::uint32_t modifier : {Keys::shift, Keys::control, Keys::alt, Keys::super})
    for (const std::uint32_t key : {Keys::space, Keys::two, Keys::n})
      stage.desktop.press(key, {modifier});
  for (const std::uint32_t modifier : {Keys::shift, Keys::control, Keys::alt, Keys::super})
    stage.desktop.press(Keys::returnKey, {modifier});
  stage.desktop.setNumLock(true);
  stage.desktop.press(Keys::keypadTwo);
  EXPECT_TRUE(stage.goesOn(place, 0, 0));
  EXPECT_FALSE(readProfile(stage.program.profileFile()));
  // Num lock alone does not matter.
  stage.desktop.press(Keys::two);
  stage.waitFor(0, 1);
}

TEST(Keys, CapsLockBlocksAllButReturn) {
  Stage stage;
  const auto place = stage.waitFor(0, 0);
  stage.desktop.setCapsLock(true);
  for (const std::uint32_t key : {Keys::space, Keys::two, Keys::n})
    stage.desktop.press(key);
  stage.desktop.press(Keys::returnKey);
  EXPECT_EQ(waitForAttempts(stage.program.profileFile(), 1).attempts.size(), 1U);
  EXPECT_TRUE(stage.goesOn(place, 0, 0));
  stage.desktop.press(Keys::returnKey);
  stage.waitFor(1, 0);
  stage.desktop.setCapsLock(false);
  stage.desktop.press(Keys::two);
  stage.waitFor(1, 1);
}

TEST(Keys, NStartsTheNextTrialAndReturnSubmitsFirst) {
  Stage stage;
  stage.desktop.press(Keys::two);
  stage.waitFor(0, 1);
  stage.desktop.press(Keys::n);
  stage.waitFor(1, 0); // starts with the first slot
  EXPECT_FALSE(readProfile(stage.program.profileFile()));
  stage.desktop.press(Keys::two);
  auto place = stage.waitFor(1, 1);
  stage.desktop.press(Keys::returnKey);
  const ReadProfile profile = waitForAttempts(stage.program.profileFile(), 1);
  const double truth = stage.trial(1).targetLevelDB;
  EXPECT_NEAR(profile.attempts[0].error, std::abs(truth - 2), 1e-9);
  EXPECT_TRUE(stage.goesOn(place, 1, 1)); // grading does not stop the sound
  stage.desktop.press(Keys::returnKey);
  stage.waitFor(2, 0);
}

TEST(Keys, AHeldReturnActsOnceWhileAHeldSpaceOrNRepeats) {
  Stage stage;
  const auto place = stage.waitFor(0, 0);
  stage.desktop.keyDown(Keys::returnKey);
  EXPECT_TRUE(stage.goesOn(place, 0, 0, 62400)); // long after key repetition starts
  stage.desktop.keyUp(Keys::returnKey);
  EXPECT_EQ(waitForAttempts(stage.program.profileFile(), 1).attempts.size(), 1U);
  // While held, space keeps switching.
  stage.desktop.keyDown(Keys::space);
  stage.recorder.waitForMore(62400);
  stage.desktop.keyUp(Keys::space);
  const Recording sound = asRendered(stage.recorder.recording());
  const std::size_t late = sound.frames() - 14400; // long after a single crossfade
  EXPECT_FALSE(loopPhase(sound, late, 14400, stage.slots(0)[0]));
  EXPECT_FALSE(loopPhase(sound, late, 14400, stage.slots(0)[1]));
  // While held, n keeps starting trials.
  stage.desktop.keyDown(Keys::n);
  stage.recorder.waitForMore(62400);
  stage.desktop.keyUp(Keys::n);
  EXPECT_GE(stage.waitForAnyTrial(0, 40), 2U);
}

TEST(Mouse, ClicksReachSlotsMaterialsDrillsStripAndButton) {
  Stage stage;
  stage.click(slotB);
  stage.waitFor(0, 1);
  stage.click(slotA);
  stage.waitFor(0, 0);
  stage.click(drums);
  stage.practise(Drill::level, Material::drums);
  stage.waitFor(1, 0);
  stage.desktop.drag(stage.window, 100, 172, 40 + 739 * 3 / 7, 172);
  stage.click(submitButton);
  const ReadProfile profile = waitForAttempts(stage.program.profileFile(), 1);
  EXPECT_NEAR(profile.attempts[0].error, std::abs(stage.trial(1).targetLevelDB - 3), 1e-9);
  EXPECT_EQ(profile.attempts[0].material, "Drum loop");
  stage.click(polarityChip);
  stage.practise(Drill::polarity, Material::pad);
  const auto place = stage.waitFor(2, 0);
  stage.desktop.press(Keys::returnKey); // nothing is chosen yet
  EXPECT_TRUE(stage.goesOn(place, 2, 0));
  EXPECT_EQ(readProfile(stage.program.profileFile())->attempts.size(), 1U);
  stage.click({40 + 739 / 2, 172});
  stage.click(submitButton);
  const ReadProfile next = waitForAttempts(stage.program.profileFile(), 2);
  EXPECT_EQ(next.attempts[1].correct, stage.trial(2).oddSlot == 1);
}

TEST(Lifecycle, LosingTheFocusSilencesAndRegainingItRestartsTheLoop) {
  Stage stage;
  stage.desktop.press(Keys::two);
  stage.waitFor(0, 1);
  const WindowId other = stage.desktop.openWindow({10, 10, 200, 100}, true);
  stage.waitForSilence();
  EXPECT_TRUE(stage.staysSilent());
  const std::size_t silent = stage.recorder.frames();
  stage.desktop.activate(stage.window);
  EXPECT_TRUE(stage.beganAtZero(silent, stage.waitFor(0, 1)));
  stage.desktop.closeWindow(other);
}

TEST(Lifecycle, AMinimisedWindowIsSilentAndARestoredOneResumes) {
  Stage stage;
  stage.desktop.press(Keys::two);
  stage.waitFor(0, 1);
  stage.desktop.minimise(stage.window);
  stage.waitForSilence();
  EXPECT_TRUE(stage.staysSilent());
  const std::size_t silent = stage.recorder.frames();
  stage.desktop.activate(stage.window);
  EXPECT_TRUE(stage.beganAtZero(silent, stage.waitFor(0, 1)));
}

TEST(Lifecycle, AnotherDesktopSilencesAndComingBackResumes) {
  Stage stage;
  stage.desktop.switchToDesktop(1);
  stage.waitForSilence();
  EXPECT_TRUE(stage.staysSilent());
  const std::size_t silent = stage.recorder.frames();
  stage.desktop.switchToDesktop(0);
  EXPECT_TRUE(stage.beganAtZero(silent, stage.waitFor(0, 0)));
}

TEST(Lifecycle, BecomingVisibleResumesWithoutTheFocus) {
  Stage stage;
  const WindowId other = stage.desktop.openWindow({10, 10, 200, 100}, true, true);
  stage.waitForSilence();
  stage.desktop.switchToDesktop(1);
  stage.desktop.activate(other);
  EXPECT_TRUE(stage.staysSilent());
  stage.desktop.switchToDesktop(0);
  stage.waitFor(0, 0);
  EXPECT_EQ(stage.desktop.activeWindow(), other);
  stage.desktop.closeWindow(other);
}

TEST(Lifecycle, ACoveredWindowWithTheFocusKeepsPlaying) {
  Stage stage;
  const auto place = stage.waitFor(0, 0);
  const WindowGeometry whole = stage.desktop.geometry(stage.window);
  const WindowId cover = stage.desktop.openWindow(
      {whole.x - 20, whole.y - 40, whole.width + 40, whole.height + 80}, false);
  EXPECT_EQ(stage.desktop.activeWindow(), stage.window);
  EXPECT_TRUE(stage.goesOn(place, 0, 0));
  stage.desktop.closeWindow(cover);
}

TEST(Lifecycle, ATrialRenderedWhileSuspendedWaitsUntilResumed) {
  Stage stage;
  // Stop the program, so that it gets both events before the render can finish.
  kill(stage.program.pid(), SIGSTOP);
  stage.desktop.press(Keys::n);
  stage.desktop.minimise(stage.window);
  kill(stage.program.pid(), SIGCONT);
  stage.waitForSilence();
  EXPECT_TRUE(stage.staysSilent(24000));
  const std::size_t silent = stage.recorder.frames();
  stage.desktop.activate(stage.window);
  EXPECT_TRUE(stage.beganAtZero(silent, stage.waitFor(1, 0)));
}

TEST(Lifecycle, ClosingTheWindowEndsTheProgram) {
  Stage stage;
  stage.desktop.close(stage.window);
  EXPECT_EQ(stage.program.waitForExit(), 0);
  stage.waitForSilence();
  EXPECT_EQ(stage.program.errors(), "");
  EXPECT_EQ(stage.program.output(), "");
}

// ---- Scripted runs ----

struct Png {
  std::uint32_t width = 0, height = 0;
};

std::optional<Png> readPng(const std::filesystem::path& file) {
  const std::string bytes = contentOf(file);
  if (bytes.size() < 24 || bytes.substr(1, 3) != "PNG")
    return std::nullopt;
  const auto number = [&](std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
      value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
  };
  return Png{number(16), number(20)};
}

TEST(Scripted, AShotSubmitsItsAnswerAndEndsWithAPicture) {
  const ScratchFolder folder;
  const auto path = [&](const char* name) { return (folder.path() / name).string(); };
  ProgramRunner polarity(VELTO_PROGRAM,
                         {"--drill", "polarity", "--shot", path("polarity.png"), "--answer", "1"});
  ProgramRunner unanswered(VELTO_PROGRAM, {"--shot", path("unanswered.png")});
  ProgramRunner infinite(
      VELTO_PROGRAM, {"--drill", "polarity", "--shot", path("infinite.png"), "--answer", "inf"});
  ProgramRunner unwritable(VELTO_PROGRAM, {"--shot", path("no/such/folder.png")});

  EXPECT_EQ(polarity.waitForExit(), 0);
  EXPECT_EQ(polarity.errors(), "wrote " + path("polarity.png") + "\n");
  const auto picture = readPng(path("polarity.png"));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->width, 1180U);
  EXPECT_EQ(picture->height, 386U);
  const auto profile = readProfile(polarity.profileFile());
  ASSERT_TRUE(profile);
  ASSERT_EQ(profile->attempts.size(), 1U);
  EXPECT_EQ(profile->attempts[0].drill, "polarity");

  EXPECT_EQ(unanswered.waitForExit(), 0);
  EXPECT_EQ(unanswered.errors(), "wrote " + path("unanswered.png") + "\n");
  EXPECT_TRUE(readPng(path("unanswered.png")));
  EXPECT_FALSE(readProfile(unanswered.profileFile()));

  EXPECT_NE(infinite.waitForExit().value_or(0), 0);
  EXPECT_EQ(infinite.errors(), "Velto: --answer is not a slot\n");
  EXPECT_FALSE(std::filesystem::exists(path("infinite.png")));
  EXPECT_FALSE(std::filesystem::exists(infinite.profileFile()));

  EXPECT_EQ(unwritable.waitForExit(), 0);
  EXPECT_EQ(unwritable.errors(), "wrote " + path("no/such/folder.png") + "\n");
}

TEST(Scripted, AnAnswerFarOffTheScaleIsDrawnWithoutAWarning) {
  const ScratchFolder folder;
  const std::string shot = (folder.path() / "shot.png").string();
  for (const char* drill : {"frequency", "level", "dynamics"})
    for (const char* answer : {"inf", "-inf", "nan", "1e308"}) {
      ProgramRunner program(VELTO_PROGRAM, {"--drill", drill, "--shot", shot, "--answer", answer});
      EXPECT_EQ(program.waitForExit(), 0);
      EXPECT_EQ(program.errors(), "wrote " + shot + "\n") << drill << " " << answer;
    }
}

TEST(Scripted, OnlyTheWordLightGivesTheLightAppearance) {
  Desktop desktop;
  for (const auto& [word, colour] : {std::pair{"light", 0xFAF3EFU},
                                     {"dark", 0x0B0C0FU},
                                     {"xyz", 0x0B0C0FU},
                                     {"Light", 0x0B0C0FU}}) {
    ProgramRunner program(VELTO_PROGRAM, {"--appearance", word});
    const WindowId window = desktop.waitForWindow("MORLA Velto", program.pid());
    desktop.waitUntil(
        [&, ground = colour] {
          return desktop.picture(window, {4, 4, 1, 1}) == std::vector<std::uint32_t>{ground};
        },
        std::string("the window is painted for ") + word);
  }
}

TEST(Scripted, AnAnswerWithoutAShotAndABenchWithoutAValueOnlyOpenTheWindow) {
  Stage stage(Drill::level, {"--answer", "3", "--bench-audio"});
  const auto place = stage.waitFor(0, 0);
  EXPECT_TRUE(stage.goesOn(place, 0, 0, 110000)); // past the time of a scripted answer
  EXPECT_TRUE(stage.program.isRunning());
  EXPECT_FALSE(std::filesystem::exists(stage.program.profileFile()));
}

TEST(Scripted, WithoutADisplayTheProgramFailsWithAMessage) {
  for (const std::optional<std::string>& display :
       {std::optional<std::string>(), std::optional<std::string>(":4711")}) {
    ProgramRunner program(VELTO_PROGRAM, {}, {{"DISPLAY", display}});
    EXPECT_EQ(program.waitForExit(), 1);
    EXPECT_EQ(program.errors(), "Velto: there is no display to open a window on\n");
    EXPECT_FALSE(std::filesystem::exists(program.profileFile()));
  }
}

// On a desk without a sound server.
TEST(NoSoundServer, IsReportedOnceAndTrialsAreStillGraded) {
  Desktop desktop;
  ProgramRunner program(VELTO_PROGRAM, {"--drill", "level"});
  const WindowId window = desktop.waitForWindow("MORLA Velto", program.pid());
  desktop.waitForActive(window);
  desktop.waitUntil([&] { return program.errors().ends_with("\n"); }, "it reports the error");
  desktop.press(Keys::returnKey);
  EXPECT_EQ(waitForAttempts(program.profileFile(), 1).attempts.size(), 1U);
  const std::string line = program.errors();
  EXPECT_TRUE(line.starts_with("Velto: engine start failed - ")) << line;
  EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
  desktop.close(window);
  EXPECT_EQ(program.waitForExit(), 0);
}

} // namespace
} // namespace velto::kit
