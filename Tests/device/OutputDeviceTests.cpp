#include "OutputDevice.h"

#include "DSP.h"
#include "Drill.h"
#include "Rendering.h"
#include "Slot.h"
#include "Trial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace velto;

// The loudest targets of the level and dynamics drills, and trials across the range of every drill.
TEST(OutputHeadroom, KeepsEveryDrillOnEveryMaterialBelowFullScale) {
  const double headroomDB = 20 * std::log10(static_cast<double>(outputHeadroom));
  double loudest = -240;
  for (const Drill drill : Drill::allCases)
    for (const Material material : Material::allCases)
      for (const double difficulty : {0.0, 50.0, 100.0})
        for (std::uint64_t seed = 1; seed <= 3; ++seed) {
          Trial trial = Drills::makeTrial(difficulty, material, seed * 1'700'000'333, drill);
          if (difficulty == 0 && drill == Drill::level)
            trial.targetLevelDB = 6;
          if (difficulty == 0 && drill == Drill::dynamics)
            trial.targetGRdB = 12;
          for (const Slot& slot : Drills::render(trial, 3.2)) {
            loudest = std::max({loudest, Measure::peakDB(*slot.l), Measure::peakDB(*slot.r)});
            EXPECT_LT(Measure::peakDB(*slot.l) + headroomDB, 0) << drill.rawValue();
            EXPECT_LT(Measure::peakDB(*slot.r) + headroomDB, 0) << drill.rawValue();
          }
        }
  EXPECT_GT(loudest, 0) << "without the headroom the loudest trial would clip";
}
