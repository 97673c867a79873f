// The trials that the real program makes, as far as they are known from outside.
#pragma once

#include "Drills.h"

#include <chrono>
#include <cstdint>
#include <vector>

namespace velto::kit {

inline constexpr std::uint64_t seedStep = 40503; // from one trial's seed to the next

// What the program plays a drill on unless it is told otherwise.
[[nodiscard]] inline Material usualMaterial(Drill drill) {
  switch (drill) {
  case Drill::frequency:
  case Drill::level:
    break;
  case Drill::dynamics:
    return Material::drums;
  case Drill::polarity:
    return Material::pad;
  }
  return Material::pinkNoise;
}

// Trials follow from the second in which the program started. To be made just before that.
class Launch {
public:
  // The program has made its first trial by now.
  void hasHappened() { latest_ = secondsNow(); }

  // What a listener without a record may get as trial `number`, from 0: one for each second in
  // which the start may have been.
  [[nodiscard]] std::vector<Trial> trials(Drill drill, Material material,
                                          std::size_t number = 0) const {
    std::vector<Trial> trials;
    for (auto second = earliest_; second <= latest_; ++second)
      // The program makes two trials at once and plays the second.
      trials.push_back(Drills::makeTrial(
          20, material, static_cast<std::uint64_t>(second) + (2 + number) * seedStep, drill));
    return trials;
  }
  [[nodiscard]] std::vector<Trial> trials(Drill drill, std::size_t number = 0) const {
    return trials(drill, usualMaterial(drill), number);
  }

private:
  static std::int64_t secondsNow() {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
  }

  std::int64_t earliest_ = secondsNow();
  std::int64_t latest_ = earliest_;
};

} // namespace velto::kit
