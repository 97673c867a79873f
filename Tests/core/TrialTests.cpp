#include "Drills.h"

#include "CoreSupport.h"
#include "Signals.h"

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

constexpr std::uint64_t zeroSeedReplacement = 0x9E3779B97F4A7C15;

// Drill, Material

TEST(Drill, HasFourCasesInTheirOrder) {
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

TEST(Drill, NoOtherStringIsADrill) {
  for (const char* name : {"", "Frequency", "level ", " level", "dynamic", "polarity2", "0"})
    EXPECT_FALSE(Drill::fromRawValue(name).has_value()) << name;
}

TEST(Material, HasThreeCasesInTheirOrder) {
  std::vector<std::string> names;
  for (const Material material : Material::allCases)
    names.emplace_back(material.rawValue());
  EXPECT_EQ(names, (std::vector<std::string>{"Pink noise", "Drum loop", "Synth pad"}));
}

TEST(Material, IsMadeFromItsExactNameOnly) {
  for (const Material material : Material::allCases)
    EXPECT_EQ(Material::fromRawValue(material.rawValue()), material);
  for (const char* name : {"", "pink noise", "Pink Noise", "pinkNoise", "Drums", "Synth pad "})
    EXPECT_FALSE(Material::fromRawValue(name).has_value()) << name;
}

TEST(Material, HashesByCase) {
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

TEST(Bands, LabelsAreShort) {
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

RC_GTEST_PROP(BandsLaw, LabelsAreAsTheModelPrintsThem, ()) {
  const double frequency =
      *rc::gen::weightedOneOf<double>({{3, between(20, 20000)},
                                       {2, between(990, 1010)},
                                       {1, between(-1e6, 1e6)},
                                       {1, rc::gen::elementOf(Bands::centres)}});
  RC_ASSERT(Bands::label(frequency) == reference::bandLabel(frequency));
}

RC_GTEST_PROP(BandsLaw, NoOtherCentreIsNearerThanTheNearest, ()) {
  const double frequency = *rc::gen::oneOf(between(20, 20000), between(30, 200));
  const double nearest = Bands::centres[Bands::nearestIndex(frequency)];
  const auto ratio = [frequency](double centre) {
    return std::max(frequency / centre, centre / frequency);
  };
  for (const double centre : Bands::centres)
    RC_ASSERT(ratio(nearest) <= ratio(centre) * (1 + 1e-12));
}

TEST(Bands, TheNearestOfACentreIsItself) {
  for (std::size_t i = 0; i < Bands::centres.size(); ++i)
    EXPECT_EQ(Bands::nearestIndex(Bands::centres[i]), i);
}

TEST(Bands, NearestIsMeasuredInOctaves) {
  // 44.8 is nearer to 40 than to 50 in hertz, and lies past their geometric mean, 44.72.
  EXPECT_EQ(Bands::nearestIndex(44.8), 1u);
  EXPECT_EQ(Bands::nearestIndex(44.7), 0u);
  EXPECT_EQ(Bands::nearestIndex(14200), 26u); // sqrt(12500 * 16000) = 14142
  EXPECT_EQ(Bands::nearestIndex(14100), 25u);
  EXPECT_EQ(Bands::nearestIndex(1), 0u);
  EXPECT_EQ(Bands::nearestIndex(96000), 26u);
}

TEST(Bands, EquallyFarIsTheLower) {
  EXPECT_EQ(Bands::nearestIndex(0), 0u);
  EXPECT_EQ(Bands::nearestIndex(std::numeric_limits<double>::infinity()), 0u);
}

// makeTrial

TEST(Trial, FieldsThatAreNotTheDrillsKeepTheirDefaults) {
  for (const Drill drill : Drill::allCases) {
    const Trial t = Drills::makeTrial(50, Material::pad, zeroSeedReplacement, drill);
    EXPECT_EQ(t.drill, drill);
    EXPECT_EQ(t.seed, zeroSeedReplacement);
    EXPECT_EQ(t.material, Material::pad);
    EXPECT_EQ(t.difficulty, 50);
    EXPECT_EQ(t.slots, drill == Drill::polarity ? 3 : 2);
    if (drill != Drill::frequency) {
      EXPECT_EQ(t.targetFreq, 0);
      EXPECT_EQ(t.boostDB, 0);
      EXPECT_EQ(t.boostQ, 0);
    }
    if (drill != Drill::level) {
      EXPECT_EQ(t.targetLevelDB, 0);
    }
    if (drill != Drill::dynamics) {
      EXPECT_EQ(t.targetGRdB, 0);
    }
    if (drill != Drill::polarity) {
      EXPECT_EQ(t.oddSlot, 0);
      EXPECT_EQ(t.correlation, 1);
    }
  }
}

// The states after one step, and what follows from them, were worked out with integers elsewhere:
//   seed                  state               mod 27  mod 3  fraction
//   0                     dc1b77ae0bf34dad    12      0      0.8597941
//   1                     0000000040822041    6       0      5.9e-11
//   17                    000000448a0245..    20      2
//   34                                        13      1
//   8000000000000000      8100000000000000    3       0      0.50390625
//   895ebbb1d038278b      ffffa2741368d504    12      0      0.9999944
TEST(Trial, FrequencyHasItsBandFromTheState) {
  const struct {
    std::uint64_t seed;
    double targetFreq;
  } rows[] = {
      {0, 630}, {1, 160},  {17, 4000},   {34, 800},   {0x8000000000000000, 80},  {27, 16000},
      {9, 40},  {19, 125}, {5150, 2500}, {5151, 800}, {0xFFFFFFFFFFFFFFFF, 1250}};
  for (const auto& row : rows)
    for (const double difficulty : {0.0, 37.0, 100.0})
      EXPECT_EQ(
          Drills::makeTrial(difficulty, Material::drums, row.seed, Drill::frequency).targetFreq,
          row.targetFreq)
          << row.seed;
}

TEST(Trial, FrequencyBoostGetsSmallerAndNarrower) {
  const struct {
    double difficulty, boostDB, boostQ;
  } rows[] = {{0, 12, 2}, {20, 10.2, 2.6}, {50, 7.5, 3.5}, {75, 5.25, 4.25}, {100, 3, 5}};
  for (const auto& row : rows) {
    const Trial t = Drills::makeTrial(row.difficulty, Material::drums, 1, Drill::frequency);
    EXPECT_NEAR(t.boostDB, row.boostDB, 1e-14);
    EXPECT_NEAR(t.boostQ, row.boostQ, 1e-14);
  }
}

TEST(Trial, LevelAndDynamicsTargetsAreRoundedToTheirSteps) {
  const struct {
    std::uint64_t seed;
    double difficulty, targetLevelDB, targetGRdB;
  } rows[] = {
      {0, 0, 5.55, 11.0},
      {0, 50, 2.95, 6.4},
      {0, 100, 0.35, 1.8},
      {1, 0, 2.7, 4.8},
      {1, 100, 0.2, 0.8},
      {0x8000000000000000, 0, 4.35, 8.4},
      {0x895ebbb1d038278b, 0, 6.0, 12.0},
      {0x895ebbb1d038278b, 100, 0.4, 2.0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(
        Drills::makeTrial(row.difficulty, Material::pad, row.seed, Drill::level).targetLevelDB,
        row.targetLevelDB)
        << row.seed << " at " << row.difficulty;
    EXPECT_EQ(
        Drills::makeTrial(row.difficulty, Material::pad, row.seed, Drill::dynamics).targetGRdB,
        row.targetGRdB)
        << row.seed << " at " << row.difficulty;
  }
}

// The state after this seed is 1, and the fraction of it 0: the targets are the lowest ones.
TEST(Trial, HalvesAreRoundedAwayFromZero) {
  constexpr std::uint64_t seed = 13721891023265367629U;
  const auto level = Drills::makeTrial(62.5, Material::pad, seed, Drill::level);
  EXPECT_EQ(level.targetLevelDB, 1.15); // 22.5 steps
  const auto dynamics = Drills::makeTrial(3.75, Material::pad, seed, Drill::dynamics);
  EXPECT_EQ(dynamics.targetGRdB, 4.7); // 46.5 steps
}

TEST(Trial, PolarityHasItsOddSlotFromTheState) {
  const struct {
    std::uint64_t seed;
    std::int64_t oddSlot;
  } rows[] = {{0, 0}, {1, 0}, {17, 2}, {19, 2}, {34, 1}, {42, 1}, {5151, 1}};
  for (const auto& row : rows) {
    const Trial t = Drills::makeTrial(100, Material::pad, row.seed, Drill::polarity);
    EXPECT_EQ(t.oddSlot, row.oddSlot) << row.seed;
    EXPECT_EQ(t.slots, 3);
  }
}

TEST(Trial, PolarityCorrelationFallsWithDifficulty) {
  const auto correlation = [](double difficulty) {
    return Drills::makeTrial(difficulty, Material::pad, 1, Drill::polarity).correlation;
  };
  EXPECT_EQ(correlation(0), 1.0);
  EXPECT_NEAR(correlation(50), 0.675, 1e-15);
  EXPECT_EQ(correlation(100), 1 - 0.65);
}

TEST(Trial, SeedZeroActsAsItsReplacementButIsKept) {
  for (const Drill drill : Drill::allCases) {
    const Trial zero = Drills::makeTrial(30, Material::drums, 0, drill);
    Trial replaced = Drills::makeTrial(30, Material::drums, zeroSeedReplacement, drill);
    EXPECT_EQ(zero.seed, 0u);
    EXPECT_EQ(replaced.seed, zeroSeedReplacement);
    EXPECT_NE(zero, replaced);
    replaced.seed = 0;
    EXPECT_EQ(zero, replaced);
  }
}

TEST(Trial, DifficultyOutsideTheRangeActsAsTheNearestEndButIsKept) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const struct {
    double outside, end;
  } rows[] = {{-5, 0}, {-infinity, 0}, {250, 100}, {100.5, 100}, {infinity, 100}};
  for (const Drill drill : Drill::allCases) {
    for (const auto& row : rows) {
      Trial outside = Drills::makeTrial(row.outside, Material::drums, 34, drill);
      EXPECT_EQ(outside.difficulty, row.outside);
      outside.difficulty = row.end;
      EXPECT_EQ(outside, Drills::makeTrial(row.end, Material::drums, 34, drill));
    }
  }
}

RC_GTEST_PROP(TrialLaw, IsTheModelsToTheLastBit, ()) {
  const double difficulty = *anyDifficulty();
  const Material material = *anyMaterial();
  const std::uint64_t seed = *anySeed();
  const Drill drill = *anyDrill();
  require(sameBits(
      Drills::makeTrial(difficulty, material, seed, drill),
      reference::makeTrial(difficulty, referenceMaterial(material), seed, referenceDrill(drill))));
}

RC_GTEST_PROP(TrialLaw, TheMaterialChangesOnlyTheMaterial, ()) {
  const double difficulty = *anyDifficulty();
  const std::uint64_t seed = *anySeed();
  const Drill drill = *anyDrill();
  Trial a = Drills::makeTrial(difficulty, *anyMaterial(), seed, drill);
  const Trial b = Drills::makeTrial(difficulty, *anyMaterial(), seed, drill);
  a.material = b.material;
  RC_ASSERT(a == b);
}

RC_GTEST_PROP(TrialLaw, TheTargetBandIsOfTheGridWhateverTheDifficulty, ()) {
  const std::uint64_t seed = *anySeed();
  const Trial t = Drills::makeTrial(*anyDifficulty(), *anyMaterial(), seed, Drill::frequency);
  RC_ASSERT(std::count(Bands::centres.begin(), Bands::centres.end(), t.targetFreq) == 1);
  RC_ASSERT(t.targetFreq == Drills::makeTrial(0, Material::pad, seed, Drill::frequency).targetFreq);
  RC_ASSERT(t.boostDB >= 3 && t.boostDB <= 12);
  RC_ASSERT(t.boostQ >= 2 && t.boostQ <= 5);
}

// The double nearest to a multiple of 1 / steps, as written in decimals.
bool isMultiple(double value, double steps) {
  return value == std::round(value * steps) / steps;
}

RC_GTEST_PROP(TrialLaw, LevelsAreMultiplesOfATwentiethWithinTheirRange, ()) {
  const double difficulty = *nominalDifficulty();
  const double target =
      Drills::makeTrial(difficulty, *anyMaterial(), *anySeed(), Drill::level).targetLevelDB;
  const double hi = 6 - 5.6 * (difficulty / 100);
  RC_ASSERT(isMultiple(target, 20));
  RC_ASSERT(target >= std::round(0.45 * hi * 20) / 20);
  RC_ASSERT(target <= std::round(hi * 20) / 20);
}

RC_GTEST_PROP(TrialLaw, ReductionsAreMultiplesOfATenthWithinTheirRange, ()) {
  const double difficulty = *nominalDifficulty();
  const double target =
      Drills::makeTrial(difficulty, *anyMaterial(), *anySeed(), Drill::dynamics).targetGRdB;
  const double hi = 12 - 10 * (difficulty / 100);
  RC_ASSERT(isMultiple(target, 10));
  RC_ASSERT(target >= std::round(0.4 * hi * 10) / 10);
  RC_ASSERT(target <= std::round(hi * 10) / 10);
}

RC_GTEST_PROP(TrialLaw, TheOddSlotIsOneOfThree, ()) {
  const Trial t = Drills::makeTrial(*anyDifficulty(), *anyMaterial(), *anySeed(), Drill::polarity);
  RC_ASSERT(t.oddSlot >= 0 && t.oddSlot < 3);
  RC_ASSERT(t.correlation >= 0.35 && t.correlation <= 1);
}

} // namespace
} // namespace velto
