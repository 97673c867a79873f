#include "RenderHash.h"

#include "Rendering.h"

#include <gtest/gtest.h>

#include <vector>

namespace velto {
namespace {

TEST(RenderHash, IsFNV1aOfTheBytes) {
  RenderHash hash;
  EXPECT_EQ(hash.text(), "cbf29ce484222325");
  hash.add(std::uint64_t{0x0807060504030201});
  EXPECT_EQ(hash.text(), "7eb5108b368a78ed");
  hash.add(-0.5);
  EXPECT_EQ(hash.text(), "f868f00b34424720");
  hash.add(std::vector<float>{1.0F, -0.0F});
  EXPECT_EQ(hash.text(), "1c5b0916d76f963b");
}

TEST(RenderHash, TellsSlotsAndTargetsApart) {
  Trial trial = Drills::makeTrial(20, Material::pad, 1, Drill::polarity);
  const auto slots = Drills::render(trial, 0.05);
  const std::string whole = RenderHash::of(trial, slots).text();
  const auto odd = static_cast<std::size_t>(trial.oddSlot);
  EXPECT_NE(RenderHash::of(slots[odd]).text(), RenderHash::of(slots[(odd + 1) % 3]).text());
  EXPECT_EQ(RenderHash::of(slots[(odd + 1) % 3]).text(),
            RenderHash::of(slots[(odd + 2) % 3]).text());
  for (double Trial::*const field :
       {&Trial::difficulty, &Trial::targetFreq, &Trial::boostDB, &Trial::boostQ,
        &Trial::targetLevelDB, &Trial::targetGRdB, &Trial::correlation}) {
    Trial other = trial;
    other.*field += 1;
    EXPECT_NE(RenderHash::of(other, slots).text(), whole);
  }
  trial.oddSlot = (trial.oddSlot + 1) % 3;
  EXPECT_NE(RenderHash::of(trial, slots).text(), whole);
}

} // namespace
} // namespace velto
