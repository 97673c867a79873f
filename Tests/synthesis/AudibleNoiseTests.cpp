// Noise::audible: noise without its mean, and pink noise high-pass filtered at 20 Hz.
#include "Drill.h"
#include "Rendering.h"
#include "Trial.h"

#include "kit/Chance.h"
#include "kit/Spectrum.h"
#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velto {
namespace {

using namespace tests;

// Noise::asDrawn, in contrast, has nearly all of its energy below 20 Hz.
TEST(AudibleNoise, HasItsLevelAbove20HzAndNoDCOffset) {
  for (const Drill drill : Drill::allCases)
    for (const double difficulty : {0.0, 100.0})
      for (const Trial& trial : kit::extremeTrials(drill, Material::pinkNoise, difficulty)) {
        const auto slots = Drills::render(trial, 3.2, Noise::audible);
        const auto a = kit::loopLevel(*slots[0].l, 20), b = kit::loopLevel(*slots[1].l, 20);
        const auto right = kit::loopLevel(*slots[0].r, 20);
        for (const auto& level : {a, b, right})
          EXPECT_LT(std::abs(level.mean), 0.0005) << drill << ' ' << difficulty;
        EXPECT_NEAR(a.fromLowUpDB, -20, 0.15) << drill << ' ' << difficulty;
        EXPECT_NEAR(right.fromLowUpDB, -20, 0.15) << drill << ' ' << difficulty;
        const double tolerance = drill == Drill::level ? 0.01 : 0.05;
        EXPECT_NEAR(b.fromLowUpDB - a.fromLowUpDB, trial.targetLevelDB, tolerance)
            << drill << ' ' << difficulty;
      }
  const auto drawn =
      Drills::render(Drills::makeTrial(20, Material::pinkNoise, 4242, Drill::level), 3.2);
  EXPECT_LT(kit::loopLevel(*drawn[0].l, 20).fromLowUpDB, -45);
}

TEST(AudibleNoise, ChangesDrumsAndPadOnlyInTheDecorrelation) {
  for (const Material material : {Material::drums, Material::pad})
    for (const Drill drill : Drill::allCases) {
      const Trial trial = Drills::makeTrial(50, material, 4242, drill);
      const auto drawn = Drills::render(trial, 0.4),
                 audible = Drills::render(trial, 0.4, Noise::audible);
      for (std::size_t s = 0; s < drawn.size(); ++s) {
        EXPECT_TRUE(sameBits(*audible[s].l, *drawn[s].l));
        EXPECT_EQ(bool(sameBits(*audible[s].r, *drawn[s].r)), drill != Drill::polarity);
      }
    }
}

} // namespace
} // namespace velto
