// Records the player's output at a real sound server. Run on a private desk.
#include "Player.h"

#include "Numbers.h"
#include "kit/Alignment.h"
#include "kit/Command.h"
#include "kit/Eventually.h"
#include "kit/Recorder.h"
#include "kit/Slots.h"
#include "kit/SoundServer.h"
#include "kit/Spectrum.h"
#include "kit/TestPlayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace velto {
namespace {

using kit::asRendered;
using kit::constantSlot;
using kit::eventually;
using kit::firstDifference;
using kit::firstSilence;
using kit::firstSound;
using kit::noiseSlot;
using kit::Recorder;
using kit::Recording;
using kit::sineSlot;

constexpr std::size_t ramp = 7200; // 150 ms
constexpr std::size_t rise = 600;  // 12.5 ms
constexpr std::size_t second = 48000;
constexpr std::size_t loopFrames = 153600; // 3.2 s, as a trial

void report(std::string_view what, double value, int decimals, std::string_view unit) {
  std::cout << "  " << what << ": " << Numbers::fixed(value, decimals) << ' ' << unit << '\n';
}

std::string streams() {
  return kit::pactl("list short sink-inputs");
}

double processorSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double processorSecondsIn(std::chrono::milliseconds time) {
  const double before = processorSeconds();
  poll(nullptr, 0, static_cast<int>(time.count()));
  return processorSeconds() - before;
}

// The gain at frame `i` of a crossfade from `from` to `to`.
double lineAt(double from, double to, std::size_t i) {
  return from + (to - from) * std::min(1.0, static_cast<double>(i) / static_cast<double>(ramp));
}

// The gain at frame `i` of a start whose fade-in has already run for `lead` frames.
double startGain(std::size_t lead, std::size_t i) {
  if (i < rise)
    return lineAt(0, 1, lead + rise) * static_cast<double>(i) / double{rise};
  return lineAt(0, 1, lead + i);
}

constexpr std::size_t startLead = 5760 - outputLatencyFrames; // a start delay of 0.12 s

class Recorded : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_NE(std::getenv("VELTO_DESK"), nullptr) << "run on a private desk";
    ASSERT_TRUE(eventually([] { return streams().empty(); }));
  }
};

// A minute in real time. Every frame is either the current slot's, bit for bit and at the common
// phase of all slots, or part of a crossfade between two slots.
TEST_F(Recorded, AMinuteOfSwitchingLosesAndRepeatsNoFrameAndKeepsAllSlotsInPhase) {
  const std::vector<Slot> slots{noiseSlot(loopFrames, 1), noiseSlot(loopFrames, 2),
                                noiseSlot(loopFrames, 3)};
  Recorder recorder;
  kit::TestPlayer player;
  player.load(slots, 0);
  ASSERT_TRUE(player.isPlaying());
  recorder.waitForMore(second);
  // The loops' first frame has gain 0; the second is the first to be heard.
  const std::size_t start = firstSound(recorder.recording(), 0) - 1;
  ASSERT_LT(start, recorder.frames());
  const auto hears = [&](std::size_t slot) {
    const std::size_t begin = recorder.frames() - 480;
    const Recording last = asRendered(recorder.since(begin));
    return firstDifference(last, 0, last.frames(), slots[slot], (begin - start) % loopFrames) ==
           last.frames();
  };
  // Each pause begins when its slot is heard: the recording of a busy machine arrives late.
  std::vector<std::size_t> played{0}, pauses{40000};
  while (true) {
    ASSERT_TRUE(eventually([&] { return hears(played.back()); })) << "slot " << played.back();
    recorder.waitForMore(pauses.back());
    if (recorder.frames() > 62 * second)
      break;
    pauses.push_back(24000 + pauses.back() * 7919 % 90000); // 0.5 to 2.4 s
    played.push_back((played.back() + 1 + pauses.back() % 2) % 3);
    player.switchTo(static_cast<std::int64_t>(played.back()));
  }
  const Recording out = asRendered(recorder.stop());

  const auto loudness = [&](std::size_t slot, std::size_t frame) {
    return static_cast<double>((*slots[slot].l)[(frame - start) % loopFrames]);
  };
  for (std::size_t i = 0; i < ramp; ++i)
    ASSERT_NEAR(static_cast<double>(out.l[start + i]),
                startGain(startLead, i) * loudness(0, start + i), 1e-7)
        << i;

  std::size_t frame = start + ramp - startLead, compared = 0, crossfaded = 0;
  for (std::size_t k = 0; k < played.size(); ++k) {
    const Slot& slot = slots[played[k]];
    const std::size_t end = out.frames();
    const std::size_t rest = firstDifference(out, frame, end, slot, (frame - start) % loopFrames);
    ASSERT_GE(rest - frame, pauses[k]) << "slot " << played[k] << " is not in phase";
    compared += rest - frame;
    frame = rest;
    if (k + 1 == played.size())
      break;
    // The first frame of a crossfade still has the gains 1 and 0.
    const std::size_t begin = frame - 1;
    for (std::size_t i = 0; i < ramp; ++i)
      ASSERT_NEAR(static_cast<double>(out.l[begin + i]),
                  lineAt(1, 0, i) * loudness(played[k], begin + i) +
                      lineAt(0, 1, i) * loudness(played[k + 1], begin + i),
                  1e-7)
          << k << ' ' << i;
    crossfaded += ramp;
    frame = begin + ramp;
  }
  EXPECT_EQ(frame, out.frames()) << "the recording does not end with the last slot";
  EXPECT_GT(compared + crossfaded, 60 * second);
  EXPECT_EQ(player.engine().callbackCounts().missed, 0U)
      << "no frame is lost, so no callback can have been missed";
  report("frames that are the current slot's, bit for bit", static_cast<double>(compared), 0, "");
  report("frames in crossfades, each as computed", static_cast<double>(crossfaded), 0, "");
  report("switches", static_cast<double>(played.size() - 1), 0, "");
}

// On a desk whose sound server buffers no more than the program requests.
class Prompt : public Recorded {};

// The process is stopped for longer than the output's buffer lasts.
TEST_F(Prompt, AGapIsCountedAsAMissedCallback) {
  const std::vector<Slot> slots{noiseSlot(loopFrames, 1)};
  Recorder recorder;
  kit::TestPlayer player;
  player.load(slots, 0);
  recorder.waitForMore(second / 2);
  const CallbackCounts before = player.engine().callbackCounts();
  (void)kit::runCommand("kill -STOP $PPID; sleep 0.1; kill -CONT $PPID");
  recorder.waitForMore(second / 2);
  const CallbackCounts after = player.engine().callbackCounts();
  const Recording out = asRendered(recorder.stop());
  const std::size_t start = firstSound(out, 0) - 1;
  EXPECT_LT(firstDifference(out, start + ramp, out.frames(), slots[0], ramp), out.frames());
  EXPECT_GE(after.missed, before.missed + 1);
  EXPECT_GE(after.late, before.late + 1);
}

// As many busy loops as there are processors (at least two), at the player's priority.
class BusyProcessors {
public:
  BusyProcessors() {
    for (unsigned i = 0; i < std::max(2U, std::thread::hardware_concurrency()); ++i)
      loops_.emplace_back([](const std::stop_token& ending) {
        while (!ending.stop_requested()) {
        }
      });
  }

private:
  std::vector<std::jthread> loops_;
};

// All slots have the same left channel, so no switch may change a bit of it. The right channel
// shows which slot is heard.
TEST_F(Prompt, BusyProcessorsLoseNoFrameInAMinuteOfFastSwitching) {
  const Slot noise = noiseSlot(loopFrames, 1);
  std::vector<Slot> slots;
  for (const float level : {0.25F, 0.5F, -0.25F})
    slots.push_back(kit::slotOf(*noise.l, Samples(loopFrames, level)));
  Recorder recorder;
  kit::TestPlayer player;
  player.load(slots, 0);
  recorder.waitForMore(second); // a switch during the fade-in would change the left channel
  const BusyProcessors busy;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  std::size_t switches = 0;
  while (std::chrono::steady_clock::now() < end) {
    player.switchTo(static_cast<std::int64_t>(++switches % 3));
    std::this_thread::sleep_for(std::chrono::milliseconds(40 + switches * 37 % 160));
  }
  const CallbackCounts counts = player.engine().callbackCounts();
  const Recording out = asRendered(recorder.stop());
  const std::size_t start = firstSound(out, 0) - 1;
  const Recording left{out.l, out.l};
  const Slot leftTwice{noise.l, noise.l};
  const std::size_t whole = firstDifference(left, start + ramp, left.frames(), leftTwice, ramp);
  report("frames without a loss", static_cast<double>(whole - start), 0, "");
  report("switches", static_cast<double>(switches), 0, "");
  report("callbacks", static_cast<double>(counts.all), 0, "");
  report("late", static_cast<double>(counts.late), 0, "");
  report("missed", static_cast<double>(counts.missed), 0, "");
  EXPECT_EQ(whole, left.frames());
  EXPECT_GT(left.frames() - start, 59 * second);
  const auto [lowest, highest] = std::minmax_element(out.r.begin(), out.r.end());
  EXPECT_LT(*lowest, -0.2F);
  EXPECT_GT(*highest, 0.45F);
}

TEST_F(Recorded, AFadeOfASineAddsNothingAbove5kHz) {
  const std::vector<Slot> slots{sineSlot(4800, 100, 0.5), constantSlot(4800, 0, 0)}; // 1 kHz
  Recorder recorder;
  kit::TestPlayer player;
  player.load(slots, 0);
  double worst = -400, worstPeak = -400;
  std::vector<std::size_t> fades;
  for (int round = 0; round < 4; ++round) {
    recorder.waitForMore(second);
    player.switchTo(1);
    recorder.waitForMore(second);
    player.switchTo(0);
  }
  const Recording out = asRendered(recorder.stop());
  std::size_t frame = firstSound(out, 0);
  for (int round = 0; round < 4; ++round) {
    const std::size_t silence = firstSilence(out, frame, 2000);
    ASSERT_LT(silence, out.frames());
    constexpr std::size_t window = 32768;
    ASSERT_GE(silence, window);
    const std::span<const float> around(out.l.data() + silence - ramp / 2 - window / 2, window);
    worst = std::max(worst, kit::partAboveDB(around, 5000));
    worstPeak = std::max(worstPeak, kit::peakAboveDB(around, 5000));
    frame = firstSound(out, silence);
  }
  report("power above 5 kHz beside that of the fading sine", worst, 1, "dB");
  report("largest sample above 5 kHz, sine at -6 dB", worstPeak, 1, "dB");
  EXPECT_LT(worst, -80);
  EXPECT_LT(worstPeak, -80);
}

// The stream stays open between two trials: the first fades out within 5 ms, then there is silence,
// then the second starts at its first frame.
TEST_F(Recorded, ASecondLoadFadesTheFirstOutBeforeItStarts) {
  const std::vector<Slot> first{noiseSlot(loopFrames, 1)}, next{noiseSlot(loopFrames, 2)};
  Recorder recorder;
  kit::TestPlayer player;
  player.load(first, 0);
  recorder.waitForMore(second / 2);
  player.load(next, 0);
  recorder.waitForMore(second / 2);
  const Recording out = asRendered(recorder.stop());
  const std::size_t rest = firstSound(out, 0) - 1 + ramp;
  const std::size_t fade =
      firstDifference(out, rest, out.frames(), first[0], rest - (firstSound(out, 0) - 1));
  const std::size_t silence = firstSilence(out, rest, 1000);
  const std::size_t start = firstSound(out, silence) - 1;
  EXPECT_LE(silence - fade, 240U); // 5 ms
  EXPECT_EQ(start - (fade - 1), startLead);
  for (std::size_t i = 0; i < ramp; ++i)
    ASSERT_NEAR(static_cast<double>(out.l[start + i]),
                startGain(startLead, i) * static_cast<double>((*next[0].l)[i]), 1e-7)
        << i;
  EXPECT_EQ(firstDifference(out, start + ramp, out.frames(), next[0], ramp), out.frames());
  report("fade of the first", static_cast<double>(silence - fade + 1) / 48, 2, "ms");
}

TEST_F(Recorded, ARestartedEnginePlaysNothingOld) {
  Recorder recorder;
  kit::TestPlayer player;
  for (std::uint32_t round = 0; round < 5; ++round) {
    const std::vector<Slot> slots{noiseSlot(loopFrames, 10 + round)};
    const std::size_t before = recorder.frames();
    player.load(slots, 0);
    ASSERT_TRUE(player.isPlaying());
    recorder.waitForMore(second / 2);
    player.stop();
    EXPECT_FALSE(player.engine().isRunning());
    ASSERT_TRUE(eventually([] { return streams().empty(); }));
    recorder.waitForMore(9600);
    const Recording out = asRendered(recorder.recording());
    const std::size_t start = firstSound(out, before) - 1;
    for (std::size_t i = 0; i < ramp; ++i)
      ASSERT_NEAR(static_cast<double>(out.l[start + i]),
                  startGain(startLead, i) * static_cast<double>((*slots[0].l)[i]), 1e-7)
          << round << ' ' << i;
    const std::size_t fade = firstDifference(out, start + ramp, out.frames(), slots[0], ramp);
    const std::size_t silence = firstSilence(out, start + ramp, 4800);
    EXPECT_LE(silence - fade, 240U); // 5 ms
    EXPECT_EQ(firstSound(out, silence), out.frames());
  }
}

TEST_F(Recorded, AfterStopTheStreamIsGoneAndTheProcessIsIdle) {
#ifdef __SANITIZE_ADDRESS__
  constexpr double idle = 0.005; // the sanitizer's own share
#else
  constexpr double idle = 0.001;
#endif
  kit::TestPlayer player;
  const std::vector<Slot> slots{noiseSlot(loopFrames, 1), noiseSlot(loopFrames, 2)};
  player.load(slots, 0);
  ASSERT_TRUE(eventually([] { return !streams().empty(); }));
  const double playing = processorSecondsIn(std::chrono::milliseconds(1000));
  player.stop();
  EXPECT_FALSE(player.isPlaying());
  ASSERT_TRUE(eventually([] { return streams().empty(); }));
  const double stopped = processorSecondsIn(std::chrono::milliseconds(1000));
  report("processor use while playing", 100 * playing, 3, "% of a core");
  report("processor use after stop", 100 * stopped, 4, "% of a core");
  EXPECT_LT(stopped, idle);
}

// A measurement, run by hand with --gtest_also_run_disabled_tests. The figures run from the call to
// the recording and include the recorder's own latency.
TEST_F(Recorded, DISABLED_MeasuresTheLatencyOfCalls) {
  const std::vector<Slot> slots{constantSlot(4800, 0.5F, 0.5F), constantSlot(4800, 0.25F, 0.25F)};
  Recorder recorder;
  using Clock = Recorder::Clock;
  const auto milliseconds = [](Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
  };
  {
    kit::TestPlayer player;
    double slowest = 0;
    for (std::size_t round = 0; round < 10; ++round) {
      const auto before = Clock::now();
      player.load(slots, 0);
      slowest = std::max(slowest, milliseconds(Clock::now() - before));
      ASSERT_TRUE(player.isPlaying());
      player.stop();
      ASSERT_TRUE(eventually([] { return streams().empty(); }));
    }
    report("load with a stream to open, slowest of 10", slowest, 1, "ms");
  }
  kit::TestPlayer player;
  recorder.waitForMore(4800);
  const std::size_t before = recorder.frames();
  const auto loaded = Clock::now();
  player.load(slots, 0);
  recorder.waitForMore(second / 2);
  const std::size_t heard = firstSound(recorder.recording(), before);
  report("from load to the first frame at the recorder",
         milliseconds(recorder.arrival(heard) - loaded), 1, "ms");
  const std::size_t again = recorder.frames();
  const auto reloaded = Clock::now();
  player.load(slots, 0);
  recorder.waitForMore(second / 2);
  const Recording out = asRendered(recorder.recording());
  const std::size_t heardAgain = firstSound(out, firstSilence(out, again, 1000));
  report("the same on a running stream", milliseconds(recorder.arrival(heardAgain) - reloaded), 1,
         "ms");

  double sum = 0, slowest = 0;
  constexpr std::size_t rounds = 20;
  for (std::size_t round = 0; round < rounds; ++round) {
    recorder.waitForMore(16000 + 311 * round);
    const std::size_t from = recorder.frames() - 1;
    const auto switched = Clock::now();
    player.switchTo(static_cast<std::int64_t>((round + 1) % 2));
    recorder.waitForMore(12000);
    const Recording later = asRendered(recorder.recording());
    const std::size_t changed = firstDifference(later, from, later.frames(), slots[round % 2], 0);
    ASSERT_LT(changed, later.frames());
    const double time = milliseconds(recorder.arrival(changed) - switched);
    sum += time;
    slowest = std::max(slowest, time);
  }
  report("from switchTo to the first changed frame at the recorder, mean",
         sum / static_cast<double>(rounds), 1, "ms");
  report("the same, slowest of 20", slowest, 1, "ms");
}

TEST_F(Recorded, WithoutASoundServerLoadReportsItInOneLineAndStaysIdle) {
  const std::string server = std::getenv("PULSE_SERVER");
  setenv("PULSE_SERVER", "unix:/nonexistent/velto", 1);
  setenv("ALSA_CONFIG_PATH", "/dev/null", 1);
  kit::TestPlayer player;
  ::testing::internal::CaptureStderr();
  const auto before = std::chrono::steady_clock::now();
  player.load(std::vector<Slot>{noiseSlot(1000, 1)}, 0);
  const auto time = std::chrono::steady_clock::now() - before;
  const std::string said = ::testing::internal::GetCapturedStderr();
  setenv("PULSE_SERVER", server.c_str(), 1);
  unsetenv("ALSA_CONFIG_PATH");
  EXPECT_EQ(said.find("Velto: engine start failed - "), 0U) << said;
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_FALSE(player.isPlaying());
  EXPECT_FALSE(player.engine().isRunning());
  report("load without a sound server", std::chrono::duration<double, std::milli>(time).count(), 1,
         "ms");
  // With the server back, the next load plays.
  player.load(std::vector<Slot>{noiseSlot(1000, 1)}, 0);
  EXPECT_TRUE(player.isPlaying());
}

// Ends the desk's sound server, so it runs alone on its own desk.
class LastOnItsDesk : public Recorded {};

TEST_F(LastOnItsDesk, SurvivesTheEndOfTheServer) {
  const std::vector<Slot> slots{noiseSlot(loopFrames, 1), noiseSlot(loopFrames, 2)};
  std::optional<kit::TestPlayer> player(std::in_place);
  player->load(slots, 0);
  ASSERT_TRUE(eventually([] { return !streams().empty(); }));
  (void)kit::runCommand("pactl exit");
  ASSERT_TRUE(eventually([&] { return !player->engine().isRunning(); }));
  EXPECT_TRUE(player->isPlaying());
  player->switchTo(1);
  EXPECT_EQ(player->current(), 1);
  const double used = processorSecondsIn(std::chrono::milliseconds(1000));
  report("processor use after the server's end", 100 * used, 3, "% of a core");
  EXPECT_LT(used, 0.01);
  setenv("ALSA_CONFIG_PATH", "/dev/null", 1);
  ::testing::internal::CaptureStderr();
  player->load(slots, 1);
  const std::string said = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(said.find("Velto: engine start failed - "), 0U) << said;
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_FALSE(player->isPlaying());
  player.reset();
}

} // namespace
} // namespace velto
