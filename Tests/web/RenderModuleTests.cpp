#include "Interface.h"

#include "RenderHash.h"
#include "Rendering.h"
#include "Trial.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace velto;

TEST(RenderModule, RendersWhatTheWindowPlays) {
  std::uint64_t seed = 1;
  for (const Drill drill : Drill::allCases)
    for (const Material material : Material::allCases)
      for (const bool fair : {false, true}) {
        seed = Drills::mixedSeed(seed);
        const Trial trial = Drills::makeTrial(37.5, material, seed, drill);
        const auto slots = Drills::render(trial, 3.2, fair ? Noise::audible : Noise::asDrawn);
        EXPECT_EQ(velto_render(static_cast<int>(Drill::Case(drill)),
                               static_cast<int>(Material::Case(material)), seed, 37.5, fair),
                  trial.slots);
        EXPECT_EQ(velto_render_frames(), 153600U);
        EXPECT_EQ(std::string(velto_render_hash(), 16), RenderHash::of(trial, slots).text());
        EXPECT_EQ(velto_render_samples(1, 1)[1000], (*slots[1].r)[1000]);
      }
}

TEST(RenderModule, RendersNothingOfWhatDoesNotExist) {
  EXPECT_EQ(velto_render(4, 0, 1, 20, false), 0);
  EXPECT_EQ(velto_render(0, 3, 1, 20, false), 0);
  EXPECT_EQ(velto_render(-1, 0, 1, 20, false), 0);
  EXPECT_EQ(velto_render(0, 0, 1, 20, false), 2);
  EXPECT_EQ(velto_render_samples(2, 0), nullptr);
  EXPECT_EQ(velto_render_samples(-1, 0), nullptr);
}
