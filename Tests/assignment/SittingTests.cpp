#include "Sitting.h"

#include "Lists.h"
#include "kit/Answers.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <vector>

using namespace velto;

namespace {

// A listener who gives the same answers to the same list.
std::vector<Trial> trialsWith(const TrialList& list, const std::vector<bool>& hits) {
  Sitting sitting(list);
  std::vector<Trial> trials;
  while (const auto trial = sitting.next()) {
    trials.push_back(*trial);
    sitting.take(hits[trials.size() % hits.size()] ? kit::truthOf(*trial) : kit::missOf(*trial));
  }
  return trials;
}

} // namespace

TEST(Sitting, PlaysAFixedListAsItStands) {
  const TrialList list{.difficulty = TrialList::Difficulty::fixed,
                       .trials = {{Drill::level, Material::drums, 12.5, 0},
                                  {Drill::polarity, Material::pinkNoise, 100, 77}}};
  Sitting sitting(list);
  EXPECT_EQ(sitting.next(), Drills::makeTrial(12.5, Material::drums, 0, Drill::level));
  EXPECT_EQ(sitting.next()->seed, 0U) << "asking does not go on";
  sitting.take(2);
  EXPECT_EQ(sitting.next(), Drills::makeTrial(100, Material::pinkNoise, 77, Drill::polarity));
  sitting.take(1);
  EXPECT_EQ(sitting.next(), std::nullopt);
  EXPECT_EQ(sitting.answered(), 2U);
}

// Two hits raise it by 12, a miss lowers it by 12: Levitt's rule from the start in the list.
TEST(Sitting, MovesEachDrillsStaircaseOnItsOwn) {
  TrialList list{.difficulty = TrialList::Difficulty::staircase, .trials = {}};
  for (std::uint64_t seed = 0; seed < 4; ++seed) {
    list.trials.push_back({Drill::level, Material::pinkNoise, 30, seed});
    list.trials.push_back({Drill::polarity, Material::pad, 50, seed});
  }
  Sitting sitting(list);
  std::map<Drill::Case, std::vector<double>> difficulties;
  while (const auto trial = sitting.next()) {
    difficulties[trial->drill].push_back(trial->difficulty);
    sitting.take(trial->drill == Drill::level ? kit::truthOf(*trial) : kit::missOf(*trial));
  }
  EXPECT_EQ(difficulties[Drill::level], (std::vector<double>{30, 30, 42, 42}));
  EXPECT_EQ(difficulties[Drill::polarity], (std::vector<double>{50, 38, 26, 14}));
}

// The same list and answers give the same trials.
RC_GTEST_PROP(SittingLaw, IsDeterministic, ()) {
  const TrialList list = *velto::testing::trialLists();
  const auto hits = *rc::gen::nonEmpty<std::vector<bool>>();
  const auto first = trialsWith(list, hits);
  RC_ASSERT(first == trialsWith(list, hits));
  RC_ASSERT(first.size() == list.trials.size());
  for (std::size_t i = 0; i < first.size(); ++i)
    RC_ASSERT(first[i].seed == list.trials[i].seed);
  if (const auto fixed = fixedTrials(list))
    RC_ASSERT(first == *fixed);
}

TEST(Sitting, TakesOnlyWhatGradingCan) {
  const double infinity = std::numeric_limits<double>::infinity();
  const Trial frequency = Drills::makeTrial(20, Material::pinkNoise, 1, Drill::frequency);
  const Trial level = Drills::makeTrial(20, Material::pinkNoise, 1, Drill::level);
  const Trial polarity = Drills::makeTrial(20, Material::pad, 1, Drill::polarity);
  EXPECT_TRUE(Sitting::isPossible(1000, frequency));
  EXPECT_TRUE(Sitting::isPossible(0, level));
  EXPECT_TRUE(Sitting::isPossible(2, polarity));
  for (const double answer : {0.0, -1.0, infinity, std::nan("")})
    EXPECT_FALSE(Sitting::isPossible(answer, frequency)) << answer;
  for (const double answer : {infinity, std::nan("")})
    EXPECT_FALSE(Sitting::isPossible(answer, level)) << answer;
  for (const double answer : {-1.0, 0.5, 3.0, 1e300, infinity, std::nan("")})
    EXPECT_FALSE(Sitting::isPossible(answer, polarity)) << answer;
}
