// A list of trials in the real window, by mouse and by keyboard. Run on a private desk with a
// display and a sound server.
#include "kit/Alignment.h"
#include "kit/Desktop.h"
#include "kit/Files.h"
#include "kit/Forked.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"

#include "Rendering.h"
#include "Results.h"
#include "TrialList.h"

#include <gtest/gtest.h>

#include <sys/mount.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace velto::kit {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// Points in a window 1180 points wide.
struct Point {
  int x, y;
};
constexpr Point submitButton{740, 258}, middleOfAnswers{40 + 739 / 2, 172};
constexpr Point polarityChip{745, 40}, drums{593, 258};

const TrialList mixedList{.difficulty = TrialList::Difficulty::fixed,
                          .trials = {{Drill::level, Material::pinkNoise, 40, 0x9e3779b97f4a7c15},
                                     {Drill::polarity, Material::pad, 40, 0x3c6ef372fe94f82a},
                                     {Drill::frequency, Material::drums, 40, 0}}};
const TrialList levelList{.difficulty = TrialList::Difficulty::staircase,
                          .trials = {{Drill::level, Material::pinkNoise, 20, 1},
                                     {Drill::level, Material::pinkNoise, 20, 2},
                                     {Drill::level, Material::pinkNoise, 20, 3},
                                     {Drill::level, Material::pinkNoise, 20, 4}}};

struct Files {
  explicit Files(TrialList which, const fs::path& resultsFolder = {})
      : list(std::move(which)),
        results((resultsFolder.empty() ? scratch.path() : resultsFolder) / "mine.csv") {
    put(scratch.path() / "test.velto", list.text());
  }

  // Throws if the file is not what the program must write.
  [[nodiscard]] std::vector<Results::Row> rows() const {
    const std::string text = contentOf(results);
    auto reading = std::get<Results::Reading>(Results::read(list, text));
    if (reading.changedLine || reading.held != text.size())
      throw std::runtime_error("the results are not whole: " + text);
    return std::move(reading.rows);
  }

  ScratchFolder scratch;
  TrialList list;
  fs::path results;
};

// The program with its window in front.
struct Window {
  explicit Window(const Files& files)
      : program(VELTO_PROGRAM, {"--session", (files.scratch.path() / "test.velto").string(),
                                "--results", files.results.string(), "--appearance", "dark"}),
        window(desktop.waitForWindow("MORLA Velto", program.pid())) {
    desktop.waitForActive(window);
  }

  void click(Point point) { desktop.click(window, point.x, point.y); }

  // Acts twice a second, which is no double click, until `condition` holds.
  static void repeat(const std::function<void()>& action, const std::function<bool()>& condition) {
    for (int turn = 0; turn < 60; ++turn) {
      action();
      for (int i = 0; i < 50; ++i) {
        if (condition())
          return;
        std::this_thread::sleep_for(10ms);
      }
    }
    throw std::runtime_error("the program does not go on");
  }

  // True if the verdict's row has the colour of a failure or of a miss.
  [[nodiscard]] bool showsRed() {
    for (const std::uint32_t colour : desktop.picture(window, {50, 300, 300, 24}))
      if (((colour >> 16) & 255) > 150 && ((colour >> 8) & 255) < 120)
        return true;
    return false;
  }

  void pressReturn() { desktop.press(Keys::returnKey); }

  Desktop desktop;
  ProgramRunner program;
  WindowId window;
};

// The drills and seeds of rows and list agree, each trial comes once.
void expectAllTrials(const Files& files) {
  const auto rows = files.rows();
  ASSERT_EQ(rows.size(), files.list.trials.size());
  for (std::size_t i = 0; i < rows.size(); ++i)
    EXPECT_EQ(rows[i].trial.seed, files.list.trials[i].seed);
}

} // namespace

TEST(AssignedWindow, IsAnsweredByMouse) {
  const Files files(mixedList);
  Recorder recorder;
  Window window(files);
  // The first slot of the first trial, bit for bit, with audible noise and its own seed.
  const auto slots =
      Drills::render(Drills::makeTrial(40, Material::pinkNoise, 0x9e3779b97f4a7c15, Drill::level),
                     3.2, Noise::audible);
  Window::repeat([] {},
                 [&] {
                   recorder.waitForMore(2400);
                   const Recording sound = asRendered(recorder.recording());
                   return sound.frames() > 2400 &&
                          loopPhase(sound, sound.frames() - 2400, 2400, slots[0]).has_value();
                 });
  window.click(polarityChip);
  window.click(drums);
  for (std::size_t answers = 1; answers <= 3; ++answers)
    Window::repeat(
        [&] {
          window.click(middleOfAnswers);
          window.click(submitButton);
        },
        [&] { return files.rows().size() == answers; });
  EXPECT_TRUE(window.program.isRunning()) << "the last verdict stays";
  Window::repeat([&] { window.click(submitButton); }, [&] { return !window.program.isRunning(); });
  EXPECT_EQ(window.program.waitForExit(), 0);
  EXPECT_EQ(window.program.errors(), "");
  expectAllTrials(files);
  const auto rows = files.rows();
  EXPECT_EQ(rows[0].given.answer, 3.5);
  EXPECT_EQ(rows[1].given.answer, 1);
  EXPECT_EQ(rows[2].given.answer, 800);
  EXPECT_FALSE(fs::exists(window.program.profileFile().parent_path()) &&
               !fs::is_empty(window.program.profileFile().parent_path()))
      << "the practice record";
}

TEST(AssignedWindow, IsAnsweredByKeyboard) {
  const Files files(mixedList);
  Window window(files);
  window.desktop.press(Keys::n); // skips nothing
  window.desktop.press(Keys::tab);
  window.desktop.press(Keys::end); // 7 dB
  window.desktop.press(Keys::two);
  Window::repeat([&] { window.pressReturn(); }, [&] { return files.rows().size() == 1; });
  window.pressReturn();
  // The focus is on what is hidden now; the next stop is a slot of the answer.
  for (std::size_t answers = 2; answers <= 3; ++answers)
    Window::repeat(
        [&] {
          window.desktop.press(Keys::tab);
          window.desktop.press(Keys::end);
          window.desktop.press(Keys::n);
          window.pressReturn();
        },
        [&] { return files.rows().size() == answers; });
  Window::repeat([&] { window.pressReturn(); }, [&] { return !window.program.isRunning(); });
  EXPECT_EQ(window.program.waitForExit(), 0);
  expectAllTrials(files);
  EXPECT_EQ(files.rows()[0].given.answer, 7);
  EXPECT_GE(files.rows()[0].given.switches, 1);
}

TEST(AssignedWindow, GoesOnAfterAKill) {
  const Files files(levelList);
  for (std::size_t answers = 1; answers <= 3; ++answers) {
    Window window(files);
    Window::repeat([&] { window.pressReturn(); }, [&] { return files.rows().size() == answers; });
    // Before or after the verdict; the answer is in the file.
    ::kill(window.program.pid(), SIGKILL);
    EXPECT_EQ(window.program.waitForExit(), 128 + SIGKILL);
  }
  Window window(files);
  Window::repeat([&] { window.pressReturn(); }, [&] { return !window.program.isRunning(); });
  EXPECT_EQ(window.program.waitForExit(), 0);
  expectAllTrials(files);
}

TEST(AssignedWindow, ShowsNoVerdictOnAFullDisk) {
  const bool allowed = withOwnMounts([] {
    const ScratchFolder disk;
    ASSERT_EQ(::mount("tmpfs", disk.path().c_str(), "tmpfs", 0, "size=8k"), 0);
    const Files files(levelList, disk.path());
    Window window(files);
    put(disk.path() / "large", std::string(100000, 'x'));
    EXPECT_FALSE(window.showsRed());
    Window::repeat([&] { window.pressReturn(); }, [&] { return window.showsRed(); });
    window.pressReturn();
    EXPECT_EQ(contentOf(files.results), "") << "no verdict, and no next trial";
    fs::remove(disk.path() / "large");
    Window::repeat([&] { window.pressReturn(); }, [&] { return files.rows().size() == 1; });
    Window::repeat([&] { window.pressReturn(); }, [&] { return !window.program.isRunning(); });
    EXPECT_EQ(window.program.waitForExit(), 0);
    expectAllTrials(files);
  });
  if (!allowed)
    GTEST_SKIP() << "mounting is not permitted";
}

TEST(AssignedWindow, ClosingItBeforeTheEndKeepsTheAnswers) {
  const Files files(levelList);
  Window window(files);
  Window::repeat([&] { window.pressReturn(); }, [&] { return files.rows().size() == 1; });
  window.desktop.close(window.window);
  EXPECT_EQ(window.program.waitForExit(), 0);
  EXPECT_EQ(files.rows().size(), 1U);
}

} // namespace velto::kit
