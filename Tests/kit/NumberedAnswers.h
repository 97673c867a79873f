// Answers numbered by their difficulty, so that a lost or doubled one shows.
#pragma once

#include "Profile.h"

#include <cstdint>

namespace velto::testing {

// All answers are of the frequency drill, so that the roll-up counts each of them.
inline void recordNumbered(Profile& profile, std::int64_t number) {
  profile.record({.drill = Drill::frequency,
                  .seed = 7,
                  .material = Material::drums,
                  .difficulty = static_cast<double>(number),
                  .targetFreq = 1000},
                 {number % 2 == 0, 0.25, {}, {}, {}});
}

// The number of answers in the record, rolled-up ones included; -1 unless they are numbered without
// gaps.
inline std::int64_t answersIn(const Profile& profile) {
  std::int64_t count = 0;
  for (const auto& [band, roll] : profile.lifetime())
    count += roll.attempts;
  for (const Attempt& attempt : profile.attempts())
    if (attempt.difficulty != static_cast<double>(count++))
      return -1;
  return count;
}

} // namespace velto::testing
