// A record with a curve and a weakness map.
#pragma once

#include "Bands.h"
#include "Grading.h"
#include "Profile.h"
#include "Trial.h"

#include <cmath>
#include <cstddef>

namespace velto {

// Answers of all sizes of error, at difficulties from one end to the other. More than 80 name a
// weakest band.
inline void practise(Profile& profile, int answers) {
  for (int i = 0; i < answers; ++i) {
    const double target = Bands::centres[static_cast<std::size_t>(i * 7) % Bands::centres.size()];
    const double difficulty = i < 5 ? 100 : i < 10 ? 0 : 50 + 50 * std::sin(i * 0.7);
    const Trial trial{.drill = Drill::frequency, .difficulty = difficulty, .targetFreq = target};
    profile.record(trial, Drills::grade(target * std::exp2(0.05 * (i * 7 % 27)), trial));
  }
}

} // namespace velto
