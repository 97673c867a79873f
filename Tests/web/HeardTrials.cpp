// Compares a recording of the practice page with the trials as rendered here.
//
//   velto_heard_trials RECORDING TRIAL...
//
// RECORDING holds 32-bit floats, stereo, at 48000 Hz. A TRIAL is
// DRILL,MATERIAL,SEED,DIFFICULTY,fair|standard:SLOT,SLOT..., with indices, and the slots that were
// chosen one after the other. Fails unless each slot is heard at half its level, sample by sample
// and at the phase of all, each switch is the straight line of a switch, and each trial but the
// last fades out and the next one rises as the mixer does it. Ignores how the first one starts, and
// how the last one ends.
#include "Drill.h"
#include "Mixer.h"
#include "Rendering.h"
#include "Session.h"
#include "Slot.h"
#include "Trial.h"
#include "kit/Alignment.h"
#include "web/RecordingFile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <numbers>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace velto;
using kit::Recording;

constexpr std::size_t startFrames = 24000;     // the start is over
constexpr std::size_t leastFrames = 24000;     // of each slot
constexpr std::size_t mostSilentFrames = 4800; // of a slot's beginning
constexpr std::size_t mostDelayFrames = 5760;  // from a change to the next trial: 0.12 s
constexpr std::size_t blockFrames = 128;
// Half a unit in the last place of what is recorded, doubled, below an amplitude of 4.
constexpr double rounding = 0x1p-23;

bool alike(const Slot& a, const Slot& b) {
  return std::ranges::equal(*a.l, *b.l) && std::ranges::equal(*a.r, *b.r);
}

struct Expected {
  std::vector<Slot> slots;
  std::vector<std::size_t> chosen;
  bool throughSilence = false;
};

// DRILL,MATERIAL,SEED,DIFFICULTY,fair|standard:SLOT,SLOT...
Expected parse(const std::string& text) {
  std::istringstream stream(text);
  const auto field = [&](char end) {
    std::string part;
    std::getline(stream, part, end);
    return part;
  };
  const Drill drill = Drill::allCases.at(std::stoul(field(',')));
  const Material material = Material::allCases.at(std::stoul(field(',')));
  const std::uint64_t seed = std::stoull(field(','));
  const double difficulty = std::stod(field(','));
  const bool isFair = field(':') == "fair";
  const Trial trial = Drills::makeTrial(difficulty, material, seed, drill);
  Expected expected{.slots = Drills::render(trial, Session::trialSeconds,
                                            isFair ? Noise::audible : Noise::asDrawn),
                    .chosen = {},
                    .throughSilence = isFair && drill == Drill::polarity};
  for (std::string slot = field(','); !slot.empty(); slot = field(',')) {
    const std::size_t index = std::stoul(slot);
    // Two slots of a polarity trial are alike: a crossfade between them changes nothing.
    if (expected.chosen.empty() || expected.throughSilence ||
        !alike(expected.slots.at(expected.chosen.back()), expected.slots.at(index)))
      expected.chosen.push_back(index);
  }
  return expected;
}

class Heard {
public:
  explicit Heard(Recording recording) : recording_(std::move(recording)) {}

  void check(const std::vector<Expected>& trials) {
    std::size_t frame = start(trials.front());
    for (std::size_t i = 0; i < trials.size(); ++i) {
      frame = checkSlots(trials[i], frame);
      if (i + 1 < trials.size())
        frame = change(frame, trials[i].slots.at(trials[i].chosen.back()), trials[i + 1]);
    }
  }

private:
  std::size_t position(std::size_t frame, const Slot& slot) const {
    return (frame - origin_) % slot.l->size();
  }

  bool equals(std::size_t begin, std::size_t frames, const Slot& slot) const {
    return begin + frames <= recording_.frames() &&
           firstDifference(recording_, begin, begin + frames, slot, position(begin, slot)) ==
               begin + frames;
  }

  // The largest distance of `frames` recorded samples from slots times their gains, which
  // `gains(i)` returns for the i-th.
  template <typename Gains>
  double distance(std::size_t begin, std::size_t frames, const Slot& a, const Slot& b,
                  const Gains& gains) const {
    double worst = 0;
    for (std::size_t i = 0; i < frames && worst <= rounding; ++i) {
      const std::size_t at = position(begin + i, a);
      const auto [gainA, gainB] = gains(i);
      const auto of = [&](float heard, float sampleA, float sampleB) {
        return std::abs(static_cast<double>(heard) - gainA * static_cast<double>(sampleA) -
                        gainB * static_cast<double>(sampleB));
      };
      worst = std::max({worst, of(recording_.l[begin + i], (*a.l)[at], (*b.l)[at]),
                        of(recording_.r[begin + i], (*a.r)[at], (*b.r)[at])});
    }
    return worst;
  }

  // Finds the frame at which all slots of the first trial start. Returns one at which the chosen
  // slot is at its full level.
  std::size_t start(const Expected& trial) {
    const std::size_t sound = firstSound(recording_, 0), frame = sound + startFrames;
    for (origin_ = sound; origin_ + mostSilentFrames > sound && origin_ > 0; --origin_)
      if (equals(frame, leastFrames, trial.slots.at(trial.chosen.front())))
        return frame;
    throw std::runtime_error("the first slot is not heard");
  }

  // Returns the first frame that is not one of the slot chosen last.
  std::size_t checkSlots(const Expected& trial, std::size_t frame) const {
    for (std::size_t k = 0;; ++k) {
      const Slot& slot = trial.slots.at(trial.chosen[k]);
      const std::size_t end =
          firstDifference(recording_, frame, recording_.frames(), slot, position(frame, slot));
      std::printf("  slot %zu: %zu frames\n", trial.chosen[k] + 1, end - frame);
      if (end - frame < leastFrames)
        throw std::runtime_error("another sample at frame " + std::to_string(end));
      if (k + 1 == trial.chosen.size())
        return end;
      frame = switchEnd(end, slot, trial.slots.at(trial.chosen[k + 1]), trial.throughSilence);
    }
  }

  // The end of a switch whose first different frame is `different`. The switch began earlier if the
  // slots are alike there, as in the silence of the drum loop, where several beginnings fit.
  std::size_t switchEnd(std::size_t different, const Slot& from, const Slot& to,
                        bool throughSilence) const {
    const auto gains = [&](std::size_t i) -> std::pair<double, double> {
      const double part = static_cast<double>(i) / double{Mixer::rampFrames};
      if (!throughSilence)
        return {1 - part, part};
      return {std::max(1 - 2 * part, 0.0), std::max(2 * part - 1, 0.0)};
    };
    for (std::size_t begin = different; begin + Mixer::rampFrames >= different; --begin) {
      const std::size_t end = begin + Mixer::rampFrames;
      if (!equals(end, leastFrames, to))
        continue;
      const double worst = distance(begin, Mixer::rampFrames, from, to, gains);
      if (worst > rounding)
        continue;
      std::printf("  switch at frame %zu: at most %.1e from the line\n", begin, worst);
      return end;
    }
    throw std::runtime_error("no straight line at frame " + std::to_string(different));
  }

  // The change from the slot `last`, from which frame `different` differs, to the next trial.
  // Returns a frame at which its first slot is at its full level.
  std::size_t change(std::size_t different, const Slot& last, const Expected& next) {
    const Slot& first = next.slots.at(next.chosen.front());
    const std::size_t former = origin_;
    for (std::size_t fade = different; fade + Mixer::tailFrames >= different; --fade)
      // The trial may arrive some blocks after the order to fade out.
      for (std::size_t load = fade; load <= fade + mostDelayFrames; load += blockFrames)
        for (std::size_t delay = 0; delay <= mostDelayFrames; ++delay)
          if (isChange({fade, load, load + delay, former}, last, first)) {
            origin_ = load + delay;
            const std::size_t end = load + Mixer::rampFrames;
            if (!equals(end, leastFrames, first))
              continue;
            std::printf("  change at frame %zu: loaded after %zu frames, sounds after %zu\n", fade,
                        load - fade, origin_ - fade);
            return end;
          }
    throw std::runtime_error("no change of the trial at frame " + std::to_string(different));
  }

  struct Change {
    std::size_t fade, load, origin, formerOrigin;
  };

  // Whether `last` fades out within 5 ms and `first` rises: along the line of a switch that began
  // when it was loaded, which it reaches after a step.
  bool isChange(const Change& change, const Slot& last, const Slot& first) const {
    const auto line = [&](std::size_t frame) {
      return static_cast<double>(frame - change.load) / double{Mixer::rampFrames};
    };
    const std::size_t end = change.load + Mixer::rampFrames;
    if (end > recording_.frames())
      return false;
    for (std::size_t frame = change.fade; frame < end; ++frame) {
      double l = 0, r = 0;
      const auto add = [&](const Slot& slot, std::size_t from, double gain) {
        const std::size_t at = (frame - from) % slot.l->size();
        l += gain * static_cast<double>((*slot.l)[at]);
        r += gain * static_cast<double>((*slot.r)[at]);
      };
      const std::size_t faded = frame - change.fade, risen = frame - change.origin;
      if (faded < Mixer::tailFrames)
        add(last, change.formerOrigin,
            0.5 + 0.5 * std::cos(std::numbers::pi * static_cast<double>(faded) /
                                 double{Mixer::tailFrames}));
      if (frame >= change.origin)
        add(first, change.origin,
            risen < Mixer::stepFrames ? static_cast<double>(risen) / double{Mixer::stepFrames} *
                                            line(change.origin + Mixer::stepFrames)
                                      : line(frame));
      if (std::abs(static_cast<double>(recording_.l[frame]) - l) > rounding ||
          std::abs(static_cast<double>(recording_.r[frame]) - r) > rounding)
        return false;
    }
    return true;
  }

  Recording recording_;
  std::size_t origin_ = 0;
};

} // namespace

int main(int count, char** arguments) {
  if (count < 3) {
    std::fprintf(stderr, "usage: velto_heard_trials RECORDING TRIAL...\n");
    return 2;
  }
  try {
    std::vector<Expected> trials;
    for (int i = 2; i < count; ++i)
      trials.push_back(parse(arguments[i]));
    Heard(kit::asRendered(kit::readRecording(arguments[1]))).check(trials);
  } catch (const std::exception& error) {
    std::printf("  %s\n", error.what());
    return 1;
  }
  return 0;
}
