// Measures the sound of transitions, with fair trials and without. Run on a private desk without a
// sound server; each test starts and ends its own servers.
//
// Compares the loudest 5 ms around a transition with the loudest 5 ms of what plays before and
// after it, above 20 Hz and above 5 kHz. The whole recording is filtered before it is cut, so that
// the filter's response to a step appears at its place.
#include "kit/Alignment.h"
#include "kit/Desktop.h"
#include "kit/Eventually.h"
#include "kit/Highpass.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"
#include "kit/SoundServer.h"
#include "kit/TrialMode.h"

#include "Drill.h"
#include "Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velto::kit {
namespace {

constexpr std::size_t loopFrames = 153600; // 3.2 s
constexpr std::size_t switchFrames = 7200; // 150 ms
constexpr std::size_t piece = 240;         // 5 ms
// Settling time of a filter at 20 Hz: e^-9 of a step remains.
constexpr std::size_t restFrames = 9600;
// The remainder of the filter's response changes a level by less than this.
constexpr double accuracyDB = 0.01;
// Repetitions of transitions that can occur at a loud or a quiet point of the loop.
constexpr int rounds = 3;
constexpr const char* seamName = "seam of the loop";

// Points of a window 1180 points wide, one for each drill and for each material.
struct Point {
  int x, y;
};
constexpr std::array<Point, 4> drillChips{{{500, 40}, {585, 40}, {668, 40}, {757, 40}}};
constexpr std::array<Point, 3> materialChips{{{534, 258}, {592, 258}, {650, 258}}};

// The power of a recording above a frequency, over time.
class Powers {
public:
  Powers(const Recording& recording, double hz) : sums_{0} {
    const Recording high = highpassed(recording, hz);
    for (std::size_t i = 0; i < high.frames(); ++i) {
      const auto l = static_cast<double>(high.l[i]), r = static_cast<double>(high.r[i]);
      sums_.push_back(sums_.back() + (l * l + r * r) / 2);
    }
  }

  // The loudest 5 ms that lie in [begin, end).
  [[nodiscard]] double loudest(std::size_t begin, std::size_t end) const {
    double most = 0;
    for (std::size_t i = begin; i + piece <= std::min(end, sums_.size() - 1); ++i)
      most = std::max(most, sums_[i + piece] - sums_[i]);
    return most / piece;
  }

private:
  std::vector<double> sums_; // of all powers before a frame
};

// The frames of a transition, and where one whole loop of what plays before and after it begins.
struct Transition {
  std::string name;
  std::size_t begin = 0, end = 0;
  std::optional<std::size_t> before, after;
  // True for the seam of a loop, which is compared with the rest of that loop.
  bool isInTheLoop = false;
};

// Level of a transition relative to what plays before and after it, in dB.
struct Excess {
  double above20Hz = -400, above5kHz = -400;
};

double decibels(double power) {
  return 10 * std::log10(std::max(power, 1e-40));
}

double excess(const Transition& transition, const Powers& powers) {
  double programme = 0;
  for (const auto& loop : {transition.before, transition.after}) {
    if (!loop)
      continue;
    if (transition.isInTheLoop)
      programme = std::max({programme, powers.loudest(*loop, transition.begin),
                            powers.loudest(transition.end, *loop + loopFrames)});
    else
      programme = std::max(programme, powers.loudest(*loop, *loop + loopFrames));
  }
  return decibels(powers.loudest(transition.begin, transition.end)) - decibels(programme);
}

// The worst of each kind of transition, in order of first occurrence.
class Findings {
public:
  void add(const std::string& name, const Excess& excess) {
    if (!found_.contains(name))
      order_.push_back(name);
    Excess& worst = found_[name];
    worst.above20Hz = std::max(worst.above20Hz, excess.above20Hz);
    worst.above5kHz = std::max(worst.above5kHz, excess.above5kHz);
  }

  [[nodiscard]] const std::vector<std::string>& names() const { return order_; }
  [[nodiscard]] const Excess& of(const std::string& name) const { return found_.at(name); }

private:
  std::vector<std::string> order_;
  std::map<std::string, Excess> found_;
};

// A recording and the transitions that were found in it.
class Take {
public:
  Recorder recorder;

  // Waits until sound begins: the program has started, or resumes after a silence.
  void waitForStart(const std::string& name, std::size_t from) {
    const std::size_t sound =
        waitFor([from](const Recording& r) { return firstSound(r, from); }, "sound begins");
    loopBegin_ = sound;
    note({.name = name,
          .begin = sound - std::min(sound, piece),
          .end = sound + switchFrames + restFrames,
          .before = {},
          .after = sound + switchFrames + restFrames});
  }

  // Records one whole loop of what plays, plus `more` frames to move the next change to another
  // place of the loop. Returns the frame from which a change can be detected.
  std::size_t listen(std::size_t more = 0) {
    waitUntil(programme_ + loopFrames + more);
    noteSeam();
    return recorder.frames();
  }

  // Waits for a switch of slots. Notes nothing if the switch changes no frame.
  void waitForSwitch(const std::string& name, std::size_t from) {
    waitUntil(from + 96000);
    const std::size_t change = firstChange(recorder.recording(), from);
    if (change == recorder.frames() || change >= from + 96000)
      return;
    const std::size_t end = change + switchFrames + restFrames;
    note({.name = name, .begin = change - piece, .end = end, .before = programme_, .after = end});
  }

  // Waits until another trial replaces the one that plays.
  void waitForTrial(const std::string& name, std::size_t from) {
    const std::size_t change = waitForChange(from);
    const std::size_t sound = waitFor(
        [change](const Recording& r) { return firstSound(r, change + piece + 1); }, "sound begins");
    loopBegin_ = sound;
    const std::size_t end = sound + switchFrames + restFrames;
    note({.name = name, .begin = change - piece, .end = end, .before = programme_, .after = end});
  }

  // Waits until playback ends.
  void waitForEnd(const std::string& name, std::size_t from) {
    const std::size_t change = waitForChange(from);
    note({.name = name,
          .begin = change - piece,
          .end = change + piece + restFrames,
          .before = programme_,
          .after = {}});
    waitUntil(change + piece + restFrames);
  }

  // Ends a recording whose server is gone, and appends silence.
  void breakOff(const std::string& name) {
    whole_ = recorder.stop();
    const std::size_t end = whole_.frames();
    for (auto* channel : {&whole_.l, &whole_.r})
      channel->resize(end + restFrames, 0.0F);
    transitions_.push_back({.name = name,
                            .begin = end - piece,
                            .end = end + restFrames,
                            .before = programme_,
                            .after = {}});
  }

  void judge(Findings& findings) {
    if (whole_.frames() == 0)
      whole_ = recorder.stop();
    const Powers above20Hz(whole_, 20), above5kHz(whole_, 5000);
    for (const Transition& transition : transitions_)
      findings.add(transition.name, {excess(transition, above20Hz), excess(transition, above5kHz)});
  }

private:
  void waitUntil(std::size_t frame) {
    const std::size_t now = recorder.frames();
    if (frame > now)
      recorder.waitForMore(frame - now);
  }

  // Returns the frame that `find` finds before the recording's end.
  std::size_t waitFor(const std::function<std::size_t(const Recording&)>& find,
                      const std::string& what) {
    for (int round = 0; round < 300; ++round) {
      const Recording soFar = recorder.recording();
      const std::size_t frame = find(soFar);
      if (frame < soFar.frames())
        return frame;
      recorder.waitForMore(4800);
    }
    throw std::runtime_error("timed out before " + what);
  }

  // The first frame from `from` on that differs from the frame one loop earlier.
  static std::size_t firstChange(const Recording& r, std::size_t from) {
    while (from < r.frames() && r.l[from] == r.l[from - loopFrames] &&
           r.r[from] == r.r[from - loopFrames])
      ++from;
    return from;
  }

  std::size_t waitForChange(std::size_t from) {
    return waitFor([from](const Recording& r) { return firstChange(r, from); }, "what plays ends");
  }

  void note(const Transition& transition) {
    transitions_.push_back(transition);
    programme_ = transition.after.value_or(0);
  }

  void noteSeam() {
    std::size_t seam = loopBegin_;
    while (seam < programme_)
      seam += loopFrames;
    if (seam < programme_ + 2 * piece || seam + 2 * piece > programme_ + loopFrames)
      return;
    transitions_.push_back({.name = seamName,
                            .begin = seam - piece,
                            .end = seam + piece,
                            .before = programme_,
                            .after = {},
                            .isInTheLoop = true});
  }

  std::vector<Transition> transitions_;
  std::size_t programme_ = 0; // from here on, what plays is heard alone
  std::size_t loopBegin_ = 0;
  Recording whole_;
};

// One run of the program, through every event that changes what it plays.
class Practice {
public:
  Practice(Drill drill, TrialMode mode)
      : drill_(drill), server_(std::in_place), take_(std::make_unique<Take>()),
        program_(VELTO_PROGRAM, arguments({"--drill", std::string(drill.rawValue())}, mode)),
        window_(desktop_.waitForWindow("MORLA Velto", program_.pid())) {
    desktop_.waitForActive(window_);
  }

  [[nodiscard]] Findings run() {
    take_->waitForStart("start of the program", 0);
    switchSlots();
    for (int round = 0; round < rounds; ++round) {
      const std::size_t from = take_->listen(place());
      desktop_.press(Keys::n);
      take_->waitForTrial("next trial", from);
    }
    clickThereAndBack("other material", materialChips[(material() + 1) % 3],
                      materialChips[material()]);
    clickThereAndBack("other drill", drillChips[(drill() + 1) % 4], drillChips[drill()]);
    for (int round = 0; round < rounds; ++round) {
      loseFocusAndRegain();
      minimiseAndRestore();
    }
    for (int round = 0; round < rounds; ++round)
      loseServerAndRegain();
    const std::size_t from = take_->listen();
    if (drill_ == Drill::level)
      desktop_.press(Keys::q, {Keys::control});
    else
      desktop_.close(window_);
    take_->waitForEnd("end of the program", from);
    take_->judge(findings_);
    return findings_;
  }

private:
  // The frequency and the level drill start with pink noise, the others with drums and the pad.
  [[nodiscard]] std::size_t material() const { return Drills::defaultMaterial(drill_); }

  [[nodiscard]] std::size_t drill() const { return drill_; }

  // A different offset in the loop each time, in thirds of a drum step (14400 frames).
  [[nodiscard]] std::size_t place() { return 14400 / 3 * (++places_ % 6); }

  void switchSlots() {
    const bool three = drill_ == Drill::polarity;
    const std::vector<std::uint32_t> keys =
        three ? std::vector{Keys::two, Keys::three, Keys::one, Keys::three, Keys::two, Keys::one}
              : std::vector{Keys::two, Keys::one, Keys::two, Keys::one};
    for (const std::uint32_t key : keys) {
      const std::size_t from = take_->listen();
      desktop_.press(key);
      take_->waitForSwitch("switch of versions", from);
    }
  }

  void clickThereAndBack(const std::string& name, Point there, Point back) {
    for (const Point point : {there, back}) {
      const std::size_t from = take_->listen();
      desktop_.click(window_, point.x, point.y);
      take_->waitForTrial(name, from);
    }
  }

  void loseFocusAndRegain() {
    std::size_t from = take_->listen(place());
    const WindowId other = desktop_.openWindow({10, 10, 200, 100}, true);
    take_->waitForEnd("suspension: focus lost", from);
    from = take_->recorder.frames();
    desktop_.activate(window_);
    take_->waitForStart("resumption: focus regained", from);
    desktop_.closeWindow(other);
  }

  void minimiseAndRestore() {
    std::size_t from = take_->listen(place());
    desktop_.minimise(window_);
    take_->waitForEnd("suspension: minimised", from);
    from = take_->recorder.frames();
    desktop_.activate(window_);
    take_->waitForStart("resumption: restored", from);
  }

  void loseServerAndRegain() {
    static_cast<void>(take_->listen(place()));
    server_->kill();
    take_->breakOff("sound server lost");
    take_->judge(findings_);
    server_.emplace();
    take_ = std::make_unique<Take>();
    take_->waitForStart("sound server back", 0);
  }

  Drill drill_;
  Findings findings_;
  std::size_t places_ = 0;
  std::optional<SoundServer> server_;
  std::unique_ptr<Take> take_;
  Desktop desktop_;
  ProgramRunner program_;
  WindowId window_;
};

std::string cell(double dB) {
  return dB < -99.5 ? "none" : Numbers::fixed(dB, 1);
}

class Transitions : public ::testing::TestWithParam<Drill::Case> {};

TEST_P(Transitions, AreNoLouderThanWhatSurroundsThemWithFairTrials) {
  std::map<TrialMode, Findings> findings;
  for (const TrialMode mode : {TrialMode::standard, TrialMode::fair}) {
    Practice practice(GetParam(), mode);
    findings[mode] = practice.run();
  }
  std::cout << "| " << Drill(GetParam()).rawValue() << " on "
            << Drills::defaultMaterial(GetParam()).shortName()
            << " | > 20 Hz | > 20 Hz, fair | > 5 kHz | > 5 kHz, fair |\n";
  EXPECT_EQ(findings[TrialMode::standard].names(), findings[TrialMode::fair].names());
  for (const std::string& name : findings[TrialMode::fair].names()) {
    const Excess &standard = findings[TrialMode::standard].of(name),
                 &fair = findings[TrialMode::fair].of(name);
    std::cout << "| " << name << " | " << cell(standard.above20Hz) << " | " << cell(fair.above20Hz)
              << " | " << cell(standard.above5kHz) << " | " << cell(fair.above5kHz) << " |\n";
    // The drum loop begins with a hit, which is what is heard at its seam.
    if (name == seamName && Drills::defaultMaterial(GetParam()) == Material::drums)
      continue;
    EXPECT_LE(fair.above20Hz, accuracyDB) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Drills, Transitions,
                         ::testing::Values(Drill::frequency, Drill::level, Drill::dynamics,
                                           Drill::polarity),
                         [](const auto& drill) {
                           return std::string(Drill(drill.param).rawValue());
                         });

} // namespace
} // namespace velto::kit
