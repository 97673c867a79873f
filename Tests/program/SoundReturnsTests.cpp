// The program while sound servers come and go. Run on a private desk with a display; each test
// starts and ends its own sound servers.
#include "kit/Alignment.h"
#include "kit/Desktop.h"
#include "kit/Eventually.h"
#include "kit/Footprint.h"
#include "kit/Launch.h"
#include "kit/ProfileReader.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"
#include "kit/SoundServer.h"

#include "DSP.h"
#include "Drill.h"
#include "Rendering.h"
#include "Trial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <optional>
#include <string>
#include <thread>

namespace velto::kit {
namespace {

using namespace std::chrono_literals;

constexpr const char* refused = "the sound output cannot be opened (cubeb error -1)";
constexpr const char* silent = "the sound server does not answer";

std::string line(const std::string& reason) {
  return "Velto: engine start failed - " + reason + "\n";
}

// The program in the level drill, with its window in front.
class Practice {
public:
  Practice()
      : program(VELTO_PROGRAM, {"--drill", "level"}),
        window(desktop.waitForWindow("MORLA Velto", program.pid())) {
    launch_.hasHappened();
    desktop.waitForActive(window);
  }

  // True once slot `slot` of trial `number` (from 0) is heard, bit for bit; false on a timeout.
  [[nodiscard]] bool hears(Recorder& recorder, std::size_t slot, std::size_t number = 0) const {
    for (int round = 0; round < 200; ++round) {
      recorder.waitForMore(4800);
      const Recording sound = asRendered(recorder.recording());
      if (sound.frames() < 2400)
        continue;
      for (const Trial& trial : launch_.trials(Drill::level, number))
        if (loopPhase(sound, sound.frames() - 2400, 2400, Drills::render(trial, 3.2)[slot]))
          return true;
    }
    return false;
  }

  // True once standard error is exactly `text`; false on a timeout.
  [[nodiscard]] bool says(const std::string& text) const {
    return eventually([&] { return program.errors() == text; });
  }

  // True if the window accepts an answer.
  [[nodiscard]] bool reacts(std::size_t attempts) {
    desktop.press(Keys::returnKey);
    return waitForAttempts(program.profileFile(), attempts).attempts.size() == attempts;
  }

  // True if the program exits with 0 when its window is closed.
  [[nodiscard]] bool ends() {
    desktop.close(window);
    return program.waitForExit() == 0;
  }

private:
  Launch launch_;

public:
  Desktop desktop;
  ProgramRunner program;
  WindowId window;
};

std::string streams() {
  return pactl("list short sink-inputs");
}

// True if no stream appears for longer than the interval between two attempts.
bool staysSilent() {
  const auto end = std::chrono::steady_clock::now() + 2200ms;
  while (std::chrono::steady_clock::now() < end) {
    if (!streams().empty())
      return false;
    std::this_thread::sleep_for(100ms);
  }
  return true;
}

TEST(SoundReturns, WhenAServerStartsAfterTheProgram) {
  Practice practice;
  ASSERT_TRUE(practice.says(line(refused)));
  practice.desktop.press(Keys::two);
  const pid_t pid = practice.program.pid();
  const double before = Footprint::of(pid).processorSeconds;
  std::this_thread::sleep_for(5s);
  const double used = Footprint::of(pid).processorSeconds - before;
  std::cout << "  processor use in an outage: " << used / 5 * 100 << " % of a core\n";
  EXPECT_LT(used, 0.25) << "of 5 s";
  EXPECT_TRUE(practice.reacts(1));
  const SoundServer server;
  Recorder recorder;
  EXPECT_TRUE(practice.hears(recorder, 1));
  EXPECT_EQ(practice.program.errors(), line(refused));
  EXPECT_TRUE(practice.ends()) << practice.program.errors();
}

TEST(SoundReturns, EachTimeTheServerDiesAndComesBack) {
  std::optional<SoundServer> server(std::in_place);
  Practice practice;
  std::string said;
  for (int round = 0; round < 2; ++round) {
    server->kill();
    said += line(refused);
    ASSERT_TRUE(practice.says(said));
    practice.desktop.press(round == 0 ? Keys::two : Keys::one);
    server.emplace();
    Recorder recorder;
    EXPECT_TRUE(practice.hears(recorder, round == 0 ? 1 : 0));
  }
  // A new trial retries at once.
  server->kill();
  said += line(refused);
  ASSERT_TRUE(practice.says(said));
  std::this_thread::sleep_for(1100ms);
  server.emplace();
  practice.desktop.press(Keys::n);
  Recorder recorder;
  EXPECT_TRUE(practice.hears(recorder, 0, 1));
  EXPECT_EQ(practice.program.errors(), said);
}

TEST(SoundReturns, OnlyOnceAMinimisedWindowIsRestored) {
  std::optional<SoundServer> server(std::in_place);
  Practice practice;
  ASSERT_TRUE(eventually([] { return !streams().empty(); }));
  practice.desktop.press(Keys::two);
  server->kill();
  ASSERT_TRUE(practice.says(line(refused)));
  practice.desktop.minimise(practice.window);
  practice.desktop.waitUntil([&] { return !practice.desktop.isViewable(practice.window); },
                             "the window is away");
  server.emplace();
  EXPECT_TRUE(staysSilent());
  practice.desktop.activate(practice.window);
  Recorder recorder;
  EXPECT_TRUE(practice.hears(recorder, 1));
  EXPECT_EQ(practice.program.errors(), line(refused));
}

TEST(SoundReturns, WhenTheLastSinkIsReplaced) {
  const SoundServer server;
  Practice practice;
  ASSERT_TRUE(eventually([] { return !streams().empty(); }));
  practice.desktop.press(Keys::two);
  pactl("unload-module module-null-sink");
  ASSERT_TRUE(practice.says(line(refused)));
  EXPECT_TRUE(practice.reacts(1));
  pactl("load-module module-null-sink sink_name=new norewinds=1 format=float32le");
  Recorder recorder("new.monitor");
  EXPECT_TRUE(practice.hears(recorder, 1));
  EXPECT_EQ(practice.program.errors(), line(refused));
}

TEST(SoundReturns, OnANewDefaultSinkAndOnTheRemainingOne) {
  const SoundServer server;
  Practice practice;
  ASSERT_TRUE(eventually([] { return !streams().empty(); }));
  practice.desktop.press(Keys::two);
  pactl("load-module module-null-sink sink_name=new norewinds=1 format=float32le");
  {
    Recorder recorder("new.monitor");
    pactl("set-default-sink new");
    EXPECT_TRUE(practice.hears(recorder, 1));
  }
  practice.desktop.press(Keys::one);
  Recorder recorder("velto_sink.monitor");
  pactl("unload-module $(pactl list short modules | grep sink_name=new | cut -f1)");
  EXPECT_TRUE(practice.hears(recorder, 0));
  EXPECT_EQ(practice.program.errors(), "");
}

// The server resamples and mixes down, so check the level, and that there is no gap.
TEST(SoundReturns, OnSinksOfAnotherRateAndOfOneChannel) {
  const SoundServer server;
  std::optional<Practice> practice;
  for (const std::string format : {"rate=44100", "channels=1", "rate=44100 channels=1"}) {
    const std::string name = "odd" + std::to_string(format.size());
    pactl("load-module module-null-sink norewinds=1 sink_name=" + name + " " + format);
    pactl("set-default-sink " + name);
    if (!practice) // it opens the first sink; the server moves it to the others
      practice.emplace();
    ASSERT_TRUE(eventually([] { return !streams().empty(); }));
    Recorder recorder(name + ".monitor");
    recorder.waitForMore(28800);
    const Recording sound = recorder.stop();
    const std::size_t begin = sound.frames() - 14400;
    const double level = Measure::rmsDB(std::span(sound.l).subspan(begin));
    EXPECT_NEAR(level, -26, 2) << format; // pink noise at -20 dB, minus the headroom
    EXPECT_EQ(firstSilence(sound, begin, 48), sound.frames()) << format;
  }
  EXPECT_EQ(practice->program.errors(), "");
  EXPECT_TRUE(practice->ends()) << practice->program.errors();
}

TEST(SoundReturns, WhenAFrozenServerAnswersAgain) {
  SoundServer server;
  server.freeze();
  Practice practice;
  practice.desktop.press(Keys::two);
  EXPECT_TRUE(practice.reacts(1));
  ASSERT_TRUE(practice.says(line(silent)));
  server.thaw();
  Recorder recorder;
  EXPECT_TRUE(practice.hears(recorder, 1));
  EXPECT_EQ(practice.program.errors(), line(silent));
}

TEST(SoundReturns, WithoutEverBlockingTheWindowWhileAServerIsFrozen) {
  SoundServer server;
  Practice practice;
  ASSERT_TRUE(eventually([] { return !streams().empty(); }));
  server.freeze();
  EXPECT_TRUE(practice.reacts(1));
  practice.desktop.press(Keys::n);
  practice.desktop.minimise(practice.window);
  std::this_thread::sleep_for(300ms); // the program tries to close the output and cannot
  practice.desktop.activate(practice.window);
  practice.desktop.waitForActive(practice.window);
  EXPECT_TRUE(practice.reacts(2));
  EXPECT_TRUE(practice.ends()) << practice.program.errors();
}

} // namespace
} // namespace velto::kit
