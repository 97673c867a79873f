#include "Bands.h"
#include "Drill.h"
#include "Trial.h"

#include "Signals.h"
#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace velto {
namespace {

using namespace tests;

// Drill, Material

TEST(Drill, HasFourCasesInOrder) {
  std::vector<std::string> names;
  for (const Drill drill : Drill::allCases)
    names.emplace_back(drill.rawValue());
  EXPECT_EQ(names, (std::vector<std::string>{"frequency", "level", "dynamics", "polarity"}));
  EXPECT_EQ(Drill::frequency, 0);
  EXPECT_EQ(Drill::level, 1);
  EXPECT_EQ(Drill::dynamics, 2);
  EXPECT_EQ(Drill::polarity, 3);
}

TEST(Drill, IsIdentifiedByItsRawValue) {
  for (const Drill drill : Drill::allCases) {
    EXPECT_EQ(drill.id(), drill.rawValue());
    EXPECT_EQ(Drill::fromRawValue(drill.rawValue()), drill);
    EXPECT_EQ(std::hash<Drill>{}(drill), std::hash<std::string_view>{}(drill.rawValue()));
  }
}

TEST(Drill, RejectsOtherStrings) {
  for (const char* name : {"", "Frequency", "level ", " level", "dynamic", "polarity2", "0"})
    EXPECT_FALSE(Drill::fromRawValue(name).has_value()) << name;
}

TEST(Material, HasThreeCasesInOrder) {
  std::vector<std::string> names;
  for (const Material material : Material::allCases)
    names.emplace_back(material.rawValue());
  EXPECT_EQ(names, (std::vector<std::string>{"Pink noise", "Drum loop", "Synth pad"}));
}

TEST(Material, IsParsedFromItsExactNameOnly) {
  for (const Material material : Material::allCases)
    EXPECT_EQ(Material::fromRawValue(material.rawValue()), material);
  for (const char* name : {"", "pink noise", "Pink Noise", "pinkNoise", "Drums", "Synth pad "})
    EXPECT_FALSE(Material::fromRawValue(name).has_value()) << name;
}

TEST(Material, HasDistinctHashes) {
  std::set<std::size_t> hashes;
  for (const Material material : Material::allCases)
    hashes.insert(std::hash<Material>{}(material));
  EXPECT_EQ(hashes.size(), 3u);
}

// Bands

TEST(Bands, AreTheTwentySevenNominalCentres) {
  const std::vector<double> expected{40,   50,   63,   80,   100,  125,  160,   200,   250,
                                     315,  400,  500,  630,  800,  1000, 1250,  1600,  2000,
                                     2500, 3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000};
  EXPECT_EQ(std::vector<double>(Bands::centres.begin(), Bands::centres.end()), expected);
}

TEST(Bands, LabelsMatchKnownTexts) {
  const struct {
    double frequency;
    const char* label;
  } rows[] = {{40, "40"},         {63, "63"},         {315, "315"},      {999, "999"},
              {999.4, "999"},     {999.6, "1000"},    {1000, "1k"},      {1250, "1.25k"},
              {1234.5, "1.234k"}, {1235.5, "1.236k"}, {3150, "3.15k"},   {6300, "6.3k"},
              {12500, "12.5k"},   {16000, "16k"},     {12345, "12.35k"}, {1e8, "1e+05k"},
              {0, "0"},           {-2000, "-2000"}};
  for (const auto& row : rows)
    EXPECT_EQ(Bands::label(row.frequency), row.label) << row.frequency;
}

RC_GTEST_PROP(BandsLaw, LabelsMatchTheModel, ()) {
  const double frequency =
      *rc::gen::weightedOneOf<double>({{3, between(20, 20000)},
                                       {2, between(990, 1010)},
                                       {1, between(-1e6, 1e6)},
                                       {1, rc::gen::elementOf(Bands::centres)}});
  RC_ASSERT(Bands::label(frequency) == reference::bandLabel(frequency));
}

TEST(Bands, ACentreIsNearestToItself) {
  for (std::size_t i = 0; i < Bands::centres.size(); ++i)
    EXPECT_EQ(Bands::nearestIndex(Bands::centres[i]), i);
}

TEST(Bands, NearestIsMeasuredInOctaves) {
  // 44.8 is nearer to 40 than to 50 in hertz but above their geometric mean, 44.72.
  EXPECT_EQ(Bands::nearestIndex(44.8), 1u);
  EXPECT_EQ(Bands::nearestIndex(44.7), 0u);
  EXPECT_EQ(Bands::nearestIndex(14200), 26u); // sqrt(12500 * 16000) = 14142
  EXPECT_EQ(Bands::nearestIndex(14100), 25u);
  EXPECT_EQ(Bands::nearestIndex(1), 0u);
  EXPECT_EQ(Bands::nearestIndex(96000), 26u);
}

// The upper of two bands is the nearest only if its distance is smaller, to the last bit.
TEST(Bands, TiesGoToTheLowerBand) {
  for (std::size_t i = 0; i + 1 < Bands::centres.size(); ++i) {
    const double low = Bands::centres[i], high = Bands::centres[i + 1];
    double frequency = std::sqrt(low * high) * (1 - 1e-15);
    for (int step = 0; step < 16; ++step, frequency = std::nextafter(frequency, high)) {
      const bool upper =
          std::abs(std::log2(frequency / high)) < std::abs(std::log2(frequency / low));
      EXPECT_EQ(Bands::nearestIndex(frequency), upper ? i + 1 : i) << frequency;
    }
  }
  // Infinitely far from every centre.
  EXPECT_EQ(Bands::nearestIndex(0), 0u);
  EXPECT_EQ(Bands::nearestIndex(std::numeric_limits<double>::infinity()), 0u);
}

// makeTrial

// This seed's first state is 1, which gives a fraction of 0: both targets are at their minimum.
TEST(Trial, HalvesAreRoundedAwayFromZero) {
  constexpr std::uint64_t seed = 13721891023265367629U;
  const auto level = Drills::makeTrial(62.5, Material::pad, seed, Drill::level);
  EXPECT_EQ(level.targetLevelDB, 1.15); // 22.5 steps
  const auto dynamics = Drills::makeTrial(3.75, Material::pad, seed, Drill::dynamics);
  EXPECT_EQ(dynamics.targetGRdB, 4.7); // 46.5 steps
}

RC_GTEST_PROP(TrialLaw, MatchesTheModelBitForBit, ()) {
  const double difficulty = *anyDifficulty();
  const Material material = *anyMaterial();
  const std::uint64_t seed = *anySeed();
  const Drill drill = *anyDrill();
  require(sameBits(
      Drills::makeTrial(difficulty, material, seed, drill),
      reference::makeTrial(difficulty, referenceMaterial(material), seed, referenceDrill(drill))));
}

} // namespace
} // namespace velto
