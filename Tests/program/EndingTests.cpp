// What ends the program from outside: signals, and clients that destroy its window. Run on a
// private desk with a display and a sound server.
#include "kit/Alignment.h"
#include "kit/Desktop.h"
#include "kit/Eventually.h"
#include "kit/ProfileReader.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <string>
#include <thread>

namespace velto::kit {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t silentFrames = 4800;

// The program while it plays noise, whose level is constant.
struct Playing {
  explicit Playing(std::vector<std::string> arguments = {"--fair", "--drill", "level"})
      : program(VELTO_PROGRAM, std::move(arguments)),
        window(desktop.waitForWindow("MORLA Velto", program.pid())) {
    desktop.waitForActive(window);
    waitUntil(
        [this] {
          recorder.waitForMore(2400);
          const Recording sound = recorder.recording();
          return firstSound(sound, 0) + 24000 < sound.frames();
        },
        "the program plays");
  }

  // The frames from the beginning of the fade to the first silent frame. Without a fade, the last
  // sound is as loud as any.
  void expectFade() {
    Recording sound;
    std::size_t silence = 0;
    ASSERT_TRUE(eventually([&] {
      recorder.waitForMore(2400);
      sound = recorder.recording();
      silence = firstSilence(sound, firstSound(sound, 0) + 24000, silentFrames);
      return silence + silentFrames <= sound.frames();
    }));
    const auto loudest = [&](std::size_t begin, std::size_t end) {
      float peak = 0;
      for (std::size_t i = begin; i < end; ++i)
        peak = std::max({peak, std::abs(sound.l[i]), std::abs(sound.r[i])});
      return peak;
    };
    // The last tenth of the fade has at most a tenth of the level.
    const float before = loudest(silence - 4800, silence - 240);
    EXPECT_GT(before, 0.01F);
    EXPECT_LT(loudest(silence - 24, silence), 0.15F * before);
  }

  Recorder recorder;
  Desktop desktop;
  ProgramRunner program;
  WindowId window;
};

class EndingSignal : public ::testing::TestWithParam<int> {};

TEST_P(EndingSignal, EndsTheProgramAsClosingDoes) {
  Playing playing;
  playing.desktop.press(Keys::returnKey);
  EXPECT_EQ(waitForAttempts(playing.program.profileFile(), 1).attempts.size(), 1U);
  playing.desktop.press(Keys::n);
  std::this_thread::sleep_for(1s);
  ::kill(playing.program.pid(), GetParam());
  std::this_thread::sleep_for(20ms);
  ::kill(playing.program.pid(), GetParam()); // a terminal and its shell both send a hang-up
  EXPECT_EQ(playing.program.waitForExit(), 128 + GetParam());
  EXPECT_EQ(playing.program.errors() + playing.program.output(), "");
  playing.expectFade();
}

TEST_P(EndingSignal, EndsTheProgramSoonAfterItsStart) {
  for (const auto pause : {0ms, 30ms, 100ms, 300ms}) {
    Desktop desktop;
    ProgramRunner program(VELTO_PROGRAM);
    std::this_thread::sleep_for(pause);
    ::kill(program.pid(), GetParam());
    EXPECT_EQ(program.waitForExit(), 128 + GetParam()) << pause.count();
    EXPECT_EQ(program.errors(), "") << pause.count();
  }
}

INSTANTIATE_TEST_SUITE_P(Signals, EndingSignal, ::testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const auto& signal) {
                           return std::string(signal.param == SIGTERM  ? "SIGTERM"
                                              : signal.param == SIGINT ? "SIGINT"
                                                                       : "SIGHUP");
                         });

TEST(Ending, AnIgnoredHangUpIsIgnored) {
  std::signal(SIGHUP, SIG_IGN); // as nohup does
  Playing playing;
  std::signal(SIGHUP, SIG_DFL);
  ::kill(playing.program.pid(), SIGHUP);
  std::this_thread::sleep_for(1s);
  EXPECT_TRUE(playing.program.isRunning());
  playing.desktop.close(playing.window);
  EXPECT_EQ(playing.program.waitForExit(), 0);
}

TEST(Ending, AWindowThatAnotherClientDestroysEndsTheProgram) {
  Playing playing;
  playing.desktop.closeWindow(playing.window); // destroys it
  EXPECT_EQ(playing.program.waitForExit(), 0);
  EXPECT_EQ(playing.program.errors() + playing.program.output(), "");
  playing.expectFade();
}

} // namespace
} // namespace velto::kit
