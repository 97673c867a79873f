// A robot practises with the program and answers by analysing its sound above 20 Hz, with and
// without --fair. Run on a private desk. VELTO_ROBOT_TRIALS sets the number of trials per drill.
#include "kit/Alignment.h"
#include "kit/Desktop.h"
#include "kit/Highpass.h"
#include "kit/Listener.h"
#include "kit/PlaybackBuffer.h"
#include "kit/ProfileReader.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"
#include "kit/TrialMode.h"

#include "Numbers.h"
#include "Scales.h"
#include "Staircase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velto::kit {
namespace {

constexpr std::size_t loopFrames = 153600; // a trial lasts 3.2 s

// From a key press until the slot is heard alone: the latency of the sink, a switch of 150 ms, and
// 0.2 s for the high-pass filter to settle.
const std::size_t settleFrames = bufferedFrames() + 16800;

// From "n" until the next trial's first slot is heard alone.
const std::size_t nextTrialFrames = bufferedFrames() + 36000;

// The answer area of a window 1180 points wide.
constexpr int stripLeft = 40, stripWidth = 739, stripMiddle = 172;

std::size_t trialsPerDrill(std::size_t usual) {
  const char* text = std::getenv("VELTO_ROBOT_TRIALS");
  return text == nullptr ? usual : static_cast<std::size_t>(std::atoi(text));
}

// The last pixel of the strip represents its end.
int pixelAt(double share) {
  return stripLeft + std::min(static_cast<int>(std::lround(share * stripWidth)), stripWidth - 1);
}

// A listener that practises one drill with the program.
class Robot {
public:
  Robot(const std::string& drill, TrialMode mode)
      : recorder_(std::make_unique<Recorder>()),
        program_(VELTO_PROGRAM, arguments({"--drill", drill}, mode)),
        window_(desktop_.waitForWindow("MORLA Velto", program_.pid())) {
    const WindowGeometry geometry = desktop_.geometry(window_);
    if (geometry.width != 1180 || geometry.height != 386)
      throw std::runtime_error("the window has another size");
    desktop_.waitForActive(window_);
    waitForSound();
  }

  // Starts the next trial, whether or not the current one was answered. Throws if no pause of 50 ms
  // ends within `nextTrialFrames`.
  void nextTrial() {
    recorder_ = std::make_unique<Recorder>();
    desktop_.press(Keys::n);
    slot_ = 0;
    settled_ = nextTrialFrames;
    recorder_->waitForMore(settled_);
    constexpr std::size_t pause = 2400;
    if (firstSilence(recorder_->recording(), 0, pause) > settled_ - pause)
      throw std::runtime_error("the next trial does not start");
  }

  // Switches to a slot and waits for the crossfade.
  void switchTo(std::size_t slot) {
    desktop_.press(Keys::one + static_cast<std::uint32_t>(slot));
    slot_ = slot;
    settled_ = recorder_->frames() + settleFrames;
  }

  // Records the slot until `frame` of the recording.
  [[nodiscard]] Listener::Part listenUntil(std::size_t frame) {
    const std::size_t now = recorder_->frames();
    if (frame > now)
      recorder_->waitForMore(frame - now);
    return {.slot = slot_,
            .begin = settled_,
            .sound = highpassed(recorder_->recording(), 20).part(settled_, frame - settled_)};
  }

  [[nodiscard]] Listener::Part listenFor(std::size_t frames) {
    return listenUntil(settled_ + frames);
  }

  void point(int x) { desktop_.click(window_, x, stripMiddle); }

  [[nodiscard]] ReadProfile submit(std::size_t attempts) {
    desktop_.press(Keys::returnKey);
    return waitForAttempts(program_.profileFile(), attempts);
  }

  [[nodiscard]] std::string errors() const { return program_.errors(); }

private:
  void waitForSound() {
    for (;;) {
      recorder_->waitForMore(480);
      const Recording soFar = recorder_->recording();
      const std::size_t sound = firstSound(soFar, 0);
      slot_ = 0;
      settled_ = sound + 16800;
      if (sound < soFar.frames())
        return;
      if (soFar.frames() > 480000)
        throw std::runtime_error("the program stays silent");
    }
  }

  std::unique_ptr<Recorder> recorder_;
  Desktop desktop_;
  ProgramRunner program_;
  WindowId window_ = 0;
  std::size_t slot_ = 0;
  std::size_t settled_ = 0; // first frame in which the slot is heard alone
};

// `frames` frames of A and of B at the same place of the loop. The whole loop comes in two pieces.
std::pair<Recording, Recording> hearBoth(Robot& robot, std::size_t frames) {
  const Listener::Part a = robot.listenFor(frames);
  robot.switchTo(1);
  if (frames == loopFrames)
    return Listener::everyPlace(a, robot.listenFor(frames), loopFrames);
  return Listener::samePlace(a, robot.listenUntil(a.begin + loopFrames + frames), loopFrames);
}

// A practice session, checked after each answer.
class Practice {
public:
  Practice(std::string drill, TrialMode mode) : drill_(std::move(drill)), robot_(drill_, mode) {}

  Robot& robot() { return robot_; }

  // Submits the current answer. Checks that the profile has one more attempt, made at the
  // staircase's difficulty, and that the staircase has moved by its rule.
  ReadAttempt submit() {
    const double difficulty = staircase_.difficulty;
    const ReadProfile profile = robot_.submit(++attempts_);
    EXPECT_EQ(profile.attempts.size(), attempts_);
    const ReadAttempt attempt = profile.attempts.back();
    EXPECT_EQ(attempt.drill, drill_);
    EXPECT_EQ(attempt.difficulty, difficulty);
    staircase_.record(attempt.correct);
    EXPECT_EQ(profile.staircases.size(), 1U);
    const ReadStaircase staircase = profile.staircases.at(drill_);
    EXPECT_EQ(staircase.difficulty, staircase_.difficulty);
    EXPECT_EQ(staircase.consecutiveCorrect, staircase_.consecutiveCorrect);
    EXPECT_EQ(staircase.reversals, staircase_.reversals);
    EXPECT_EQ(staircase.lastDirection, staircase_.lastDirection);
    EXPECT_EQ(robot_.errors(), "");
    return attempt;
  }

private:
  std::string drill_;
  Robot robot_;
  Staircase staircase_;
  std::size_t attempts_ = 0;
};

void report(const std::string& drill, std::vector<double> misses) {
  const double worst = *std::max_element(misses.begin(), misses.end());
  std::cout << "  " << drill << ": " << misses.size() << " trials, farthest from the truth by "
            << Numbers::fixed(worst, 4) << " dB\n";
}

// The target nearest to `heard` that is `error` above or below the answer, on the grid of targets.
double truthNearest(double heard, double answer, double error, double grid) {
  double best = 1e9;
  for (const double candidate : {answer - error, answer + error})
    if (std::abs(candidate / grid - std::round(candidate / grid)) < 1e-6 &&
        std::abs(candidate - heard) < std::abs(best - heard))
      best = candidate;
  return best;
}

class RobotListener : public ::testing::TestWithParam<TrialMode> {
protected:
  // The share of `trials` for this mode; fair trials get the larger half.
  [[nodiscard]] static std::size_t usual(std::size_t trials) {
    return GetParam() == TrialMode::fair ? (trials + 1) / 2 : trials / 2;
  }
};

INSTANTIATE_TEST_SUITE_P(Modes, RobotListener,
                         ::testing::Values(TrialMode::standard, TrialMode::fair),
                         [](const auto& mode) { return nameOf(mode.param); });

TEST_P(RobotListener, HearsTheBoostedBand) {
  Practice practice("frequency", GetParam());
  for (std::size_t trial = 0; trial < trialsPerDrill(usual(3)); ++trial) {
    if (trial > 0)
      practice.robot().nextTrial();
    const auto [a, b] = hearBoth(practice.robot(), Listener::spectrumFrames + 480);
    const auto band = Listener::boostedBand(a, b);
    EXPECT_EQ(Listener::boostedBand(a, a), std::nullopt);
    ASSERT_TRUE(band);
    practice.robot().point(pixelAt(frequencyScale.position(Bands::centres[*band], 1)));
    const ReadAttempt attempt = practice.submit();
    EXPECT_EQ(attempt.bandIndex, static_cast<std::int64_t>(*band));
    EXPECT_EQ(attempt.error, 0);
    EXPECT_TRUE(attempt.correct);
  }
}

TEST_P(RobotListener, HearsTheLevelDifference) {
  Practice practice("level", GetParam());
  std::vector<double> misses;
  for (std::size_t trial = 0; trial < trialsPerDrill(usual(3)); ++trial) {
    if (trial > 0)
      practice.robot().nextTrial();
    const auto [a, b] = hearBoth(practice.robot(), 24000);
    ASSERT_GE(a.frames(), 20000U);
    const double heard = Listener::levelDifferenceDB(a, b);
    EXPECT_EQ(Listener::levelDifferenceDB(a, a), 0);
    const int x = pixelAt(heard / 7);
    practice.robot().point(x);
    const ReadAttempt attempt = practice.submit();
    const double answer = std::round((x - stripLeft + 0.0) / stripWidth * 7 / 0.05) * 0.05;
    EXPECT_NEAR(answer, heard, 0.035);
    const double truth = truthNearest(heard, answer, attempt.error, 0.05);
    EXPECT_NEAR(heard, truth, 0.05);
    EXPECT_LE(attempt.error, 0.05 + 1e-9);
    EXPECT_TRUE(attempt.correct);
    misses.push_back(std::abs(heard - truth));
  }
  report("level", misses);
}

TEST_P(RobotListener, HearsTheGainReduction) {
  Practice practice("dynamics", GetParam());
  std::vector<double> misses;
  for (std::size_t trial = 0; trial < trialsPerDrill(usual(2)); ++trial) {
    if (trial > 0)
      practice.robot().nextTrial();
    const auto [a, b] = hearBoth(practice.robot(), loopFrames);
    ASSERT_EQ(a.frames(), loopFrames);
    const double heard = Listener::gainReductionByPiecesDB(a, b);
    EXPECT_EQ(Listener::gainReductionByPiecesDB(a, a), 0);
    const int x = pixelAt(heard / 14);
    practice.robot().point(x);
    const ReadAttempt attempt = practice.submit();
    const double answer = std::round((x - stripLeft + 0.0) / stripWidth * 14 / 0.5) * 0.5;
    EXPECT_NEAR(answer, heard, 0.26);
    const double truth = truthNearest(heard, answer, attempt.error, 0.1);
    EXPECT_NEAR(heard, truth, 0.5);
    EXPECT_LE(attempt.error, 0.75);
    EXPECT_TRUE(attempt.correct);
    misses.push_back(std::abs(heard - truth));
  }
  report("dynamics", misses);
}

TEST_P(RobotListener, HearsTheFlippedSlot) {
  Practice practice("polarity", GetParam());
  Robot& robot = practice.robot();
  // Slots 1, 2, 3, 1, each played so long that 2 and 3 each share a place of the loop with 1.
  constexpr std::size_t listening = 38400;
  const std::size_t dwell = settleFrames + listening;
  for (std::size_t trial = 0; trial < trialsPerDrill(usual(3)); ++trial) {
    if (trial > 0)
      robot.nextTrial();
    std::vector<Listener::Part> parts{robot.listenFor(dwell)};
    for (const std::size_t slot : {1U, 2U, 0U}) {
      robot.switchTo(slot);
      parts.push_back(robot.listenFor(listening));
    }
    const auto slot = Listener::flippedSlot(parts, loopFrames);
    std::vector<Listener::Part> deaf(parts.size(), parts[0]);
    for (std::size_t i = 0; i < deaf.size(); ++i)
      deaf[i].slot = parts[i].slot;
    EXPECT_EQ(Listener::flippedSlot(deaf, loopFrames), std::nullopt);
    ASSERT_TRUE(slot);
    robot.point(pixelAt((static_cast<double>(*slot) + 0.5) / 3));
    const ReadAttempt attempt = practice.submit();
    EXPECT_TRUE(attempt.correct);
    EXPECT_EQ(attempt.error, 0);
  }
}

} // namespace
} // namespace velto::kit
