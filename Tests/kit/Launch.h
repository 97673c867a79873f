// Predicts the trials of the program from its start time.
#pragma once

#include "Drill.h"
#include "Trial.h"

#include <chrono>
#include <cstdint>
#include <vector>

namespace velto::kit {

inline constexpr std::uint64_t seedStep = 40503; // between the seeds of successive trials

// The second in which the program starts determines its trials. Create just before the start.
class Launch {
public:
  // Call once the program has made its first trial.
  void hasHappened() { latest_ = secondsNow(); }

  // Candidates for trial `number` (from 0) of a listener without a record: one for each second in
  // which the program may have started.
  [[nodiscard]] std::vector<Trial> trials(Drill drill, Material material,
                                          std::size_t number = 0) const {
    std::vector<Trial> trials;
    for (auto second = earliest_; second <= latest_; ++second)
      // The program makes two trials at the start and plays the second.
      trials.push_back(Drills::makeTrial(
          20, material, static_cast<std::uint64_t>(second) + (2 + number) * seedStep, drill));
    return trials;
  }
  [[nodiscard]] std::vector<Trial> trials(Drill drill, std::size_t number = 0) const {
    return trials(drill, Drills::defaultMaterial(drill), number);
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
