// Practises without listening, with fair trials and without. Run on a private desk. Each counted
// trial is the first after a launch, with a record that sets its difficulty.
//
// Three listeners ignore what differs between the versions:
// - one always gives the answer that is correct for most of a difficulty's targets;
// - one has seen a verdict at that difficulty and always gives the answer that was correct then (in
//   level and dynamics; in the other drills nothing is better than the first listener's answer);
// - one names the version at whose switches the right ear hears less than the left one (in
//   polarity; in the other drills both ears hear the same).
//
// Each launch draws a new target, so the number of hits varies by chance. The bound printed next to
// the hits holds for 99 % of runs of 40 trials, so a few of many runs exceed it. Fair trials are
// checked against a wider bound, which all cells together keep with a probability of 99 %.
#include "kit/Alignment.h"
#include "kit/Chance.h"
#include "kit/Desktop.h"
#include "kit/Files.h"
#include "kit/PlaybackBuffer.h"
#include "kit/ProfileReader.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"
#include "kit/TrialMode.h"

#include "Drill.h"
#include "Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <iostream>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velto::kit {
namespace {

constexpr int trials = 40;
constexpr std::array difficulties{0.0, 20.0};

// Cells checked against chance, at two difficulties each: with fair trials the fixed answer in four
// drills, the remembered one in two and the right ear in one; without them the fixed answer in the
// frequency drill.
constexpr int cellsHeldToChance = 2 * (4 + 2 + 1) + 2;
constexpr double confidenceOfACell = 1 - 0.01 / cellsHeldToChance;

// A listener in a drill at a difficulty.
struct Cell {
  std::string listener;
  Drill drill = Drill::frequency;
  double difficulty = 0;
  TrialMode mode = TrialMode::standard;
  double answer = 0;
  int hits = 0;

  [[nodiscard]] double chance() const { return bestBlindAnswer(drill, difficulty).chance; }
  [[nodiscard]] int bound() const { return mostHitsByChance(chance(), trials); }
};

void print(const Cell& cell) {
  std::cout << "| " << cell.listener << " | " << cell.drill.rawValue() << " | "
            << Numbers::fixed(cell.difficulty, 0) << " | " << nameOf(cell.mode) << " | "
            << cell.hits << " | " << cell.bound() << " |\n";
}

void printHead() {
  std::cout << "| listener | drill | difficulty | mode | hits of " << trials << " | 99 % bound |\n";
}

void expectChance(const Cell& cell) {
  EXPECT_LE(cell.hits, mostHitsByChance(cell.chance(), trials, confidenceOfACell))
      << cell.listener << ", " << cell.drill.rawValue() << ", "
      << Numbers::fixed(cell.difficulty, 0) << ", " << nameOf(cell.mode);
}

// The program in a drill, with a record that gives the next trial this difficulty.
class PreparedProgram {
public:
  PreparedProgram(Drill drill, double difficulty, TrialMode mode, std::vector<std::string> words)
      : drill_(drill), difficulty_(difficulty),
        program_(VELTO_PROGRAM, arguments(withDrill(std::move(words)), mode), prepared()) {}

  [[nodiscard]] ProgramRunner& program() { return program_; }

  // The only answer in the record.
  [[nodiscard]] ReadAttempt attempt() {
    const ReadProfile profile = waitForAttempts(file(), 1);
    const ReadAttempt attempt = profile.attempts.at(0);
    if (profile.attempts.size() != 1 || attempt.drill != drill_.rawValue() ||
        attempt.difficulty != difficulty_)
      throw std::runtime_error("the record holds another trial");
    return attempt;
  }

private:
  [[nodiscard]] std::filesystem::path file() const { return folder_.path() / "profile.json"; }

  [[nodiscard]] std::vector<std::string> withDrill(std::vector<std::string> words) const {
    words.insert(words.begin(), {"--drill", std::string(drill_.rawValue())});
    return words;
  }

  [[nodiscard]] ProgramRunner::Environment prepared() const {
    put(file(), R"({"attempts":[],"staircases":{")" + std::string(drill_.rawValue()) +
                    R"(":{"difficulty":)" + Numbers::fixed(difficulty_, 0) +
                    R"(,"consecutiveCorrect":0,"reversals":0,"lastDirection":0}}})");
    return {{"VELTO_PROFILE_DIR", folder_.path().string()}};
  }

  ScratchFolder folder_;
  Drill drill_;
  double difficulty_;
  ProgramRunner program_;
};

// A launch with a scripted answer, which exits by itself.
class ScriptedLaunch {
public:
  ScriptedLaunch(const Cell& cell, double answer)
      : prepared_(cell.drill, cell.difficulty, cell.mode,
                  {"--shot", "/dev/null", "--answer", Numbers::fixed(answer, 2)}) {}

  [[nodiscard]] ReadAttempt attempt() {
    if (prepared_.program().waitForExit() != 0)
      throw std::runtime_error("the program fails: " + prepared_.program().errors());
    return prepared_.attempt();
  }

private:
  PreparedProgram prepared_;
};

// The target of a trial at the cell's difficulty: the error of an answer of 0 dB.
double rememberedTarget(const Cell& cell) {
  return ScriptedLaunch(cell, 0).attempt().error;
}

std::vector<Cell> cellsWithoutSound() {
  std::vector<Cell> cells;
  for (const TrialMode mode : {TrialMode::standard, TrialMode::fair})
    for (const double difficulty : difficulties) {
      for (const Drill drill : Drill::allCases)
        cells.push_back({.listener = "fixed answer",
                         .drill = drill,
                         .difficulty = difficulty,
                         .mode = mode,
                         .answer = bestBlindAnswer(drill, difficulty).answer});
      for (const Drill drill : {Drill::level, Drill::dynamics}) {
        cells.push_back({.listener = "remembered answer",
                         .drill = drill,
                         .difficulty = difficulty,
                         .mode = mode});
        cells.back().answer = rememberedTarget(cells.back());
      }
    }
  return cells;
}

// Launches overlap. Launching all other cells between two launches of a cell takes more than a
// second, so their seeds, taken from the time of launch in seconds, differ.
void practise(std::vector<Cell>& cells) {
  constexpr std::size_t sideBySide = 6;
  std::deque<std::pair<Cell*, std::unique_ptr<ScriptedLaunch>>> running;
  const auto finishOne = [&] {
    if (running.front().second->attempt().correct)
      ++running.front().first->hits;
    running.pop_front();
  };
  for (int trial = 0; trial < trials; ++trial)
    for (Cell& cell : cells) {
      if (running.size() == sideBySide)
        finishOne();
      running.emplace_back(&cell, std::make_unique<ScriptedLaunch>(cell, cell.answer));
    }
  while (!running.empty())
    finishOne();
}

TEST(DeafListeners, BeatChanceWithARememberedAnswerUnlessTrialsAreFair) {
  std::vector<Cell> cells = cellsWithoutSound();
  practise(cells);
  printHead();
  for (const Cell& cell : cells) {
    print(cell);
    if (cell.mode == TrialMode::fair || cell.drill == Drill::frequency) {
      expectChance(cell);
    } else if (cell.listener == "remembered answer") {
      EXPECT_GT(cell.hits, cell.bound())
          << cell.drill.rawValue() << ", " << Numbers::fixed(cell.difficulty, 0);
    }
  }
}

// ---- The right ear ----

// From a key press to the end of its effect: the latency of sink and recorder, and a switch.
const std::size_t switchFrames = bufferedFrames() + 14400;

// Lowest level of the right channel relative to the left one, in dB, where the left one is audible.
// At most 0.
double dip(const Recording& sound) {
  constexpr std::size_t piece = 240, step = 60; // 5 ms
  constexpr double audible = 1e-9;
  double least = 0;
  for (std::size_t i = 0; i + piece <= sound.frames(); i += step) {
    double l = 0, r = 0;
    for (std::size_t j = i; j < i + piece; ++j) {
      l += static_cast<double>(sound.l[j]) * static_cast<double>(sound.l[j]) / double{piece};
      r += static_cast<double>(sound.r[j]) * static_cast<double>(sound.r[j]) / double{piece};
    }
    if (l > audible)
      least = std::min(least, 10 * std::log10(std::max(r / l, 1e-30)));
  }
  return least;
}

// Switches once round the three slots and names the one that takes no part in the switch with the
// smallest dip: its own two switches lower the right channel most.
std::size_t slotByRightEar(Recorder& recorder, Desktop& desktop) {
  double smallest = -std::numeric_limits<double>::infinity();
  std::size_t named = 0;
  for (const std::size_t next : {1U, 2U, 0U}) {
    const std::size_t from = recorder.frames();
    desktop.press(Keys::one + static_cast<std::uint32_t>(next));
    recorder.waitForMore(switchFrames);
    const double found = dip(recorder.recording().part(from, switchFrames));
    if (found > smallest) {
      smallest = found;
      named = (next + 1) % 3; // neither this one nor the one before
    }
  }
  return named;
}

bool hitsByRightEar(double difficulty, TrialMode mode) {
  Recorder recorder;
  Desktop desktop;
  PreparedProgram prepared(Drill::polarity, difficulty, mode, {});
  const WindowId window = desktop.waitForWindow("MORLA Velto", prepared.program().pid());
  desktop.waitForActive(window);
  while (firstSound(recorder.recording(), 0) == recorder.frames())
    recorder.waitForMore(480);
  recorder.waitForMore(14400);
  const std::size_t slot = slotByRightEar(recorder, desktop);
  // The answer area of a window 1180 points wide, in three parts.
  desktop.click(window, 40 + 739 * (2 * static_cast<int>(slot) + 1) / 6, 172);
  desktop.press(Keys::returnKey);
  return prepared.attempt().correct;
}

TEST(DeafListeners, BeatChanceWithTheRightEarUnlessTrialsAreFair) {
  printHead();
  for (const TrialMode mode : {TrialMode::standard, TrialMode::fair})
    for (const double difficulty : difficulties) {
      Cell cell{.listener = "right ear",
                .drill = Drill::polarity,
                .difficulty = difficulty,
                .mode = mode};
      for (int trial = 0; trial < trials; ++trial)
        cell.hits += hitsByRightEar(difficulty, mode) ? 1 : 0;
      print(cell);
      if (mode == TrialMode::fair) {
        expectChance(cell);
      } else {
        EXPECT_GT(cell.hits, cell.bound()) << Numbers::fixed(difficulty, 0);
      }
    }
}

} // namespace
} // namespace velto::kit
