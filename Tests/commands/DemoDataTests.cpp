#include "DemoData.h"

#include "Bands.h"
#include "Profile.h"
#include "Staircase.h"
#include "Xorshift64.h"
#include "kit/ScratchProfile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

using namespace velto;

namespace {

// One answer of the expected history.
struct Row {
  int drill;
  int band; // -1: none
  bool hit;
  double error;
  double difficulty;
};

struct History {
  std::vector<Row> rows;
  Staircase staircases[4];
};

History expectedHistory() {
  // The probability of a hit at a frequency in Hz.
  const auto skill = [](double f) {
    return f >= 10000 ? 0.35 : f >= 4000 ? 0.55 : f >= 400 ? 0.8 : f >= 160 ? 0.3 : 0.45;
  };
  Xorshift64 generator(20260918);
  History history;
  for (int i = 0; i < 160; ++i) {
    const auto drill = static_cast<int>(generator.next() % 4);
    const auto band = static_cast<std::size_t>(generator.next() % 27);
    const bool hit = generator.nextUnit() < (drill == 0 ? skill(Bands::centres[band]) : 0.68);
    const double v = generator.nextUnit();
    const double missError = drill == 0 ? 1.1 * v + 0.4 : 2 * v + 0.8;
    const double hitError = drill == 0 ? 0.3 * v : 0.6 * v;
    history.rows.push_back({drill, drill == 0 ? static_cast<int>(band) : -1, hit,
                            hit ? hitError : missError, history.staircases[drill].difficulty});
    history.staircases[drill].record(hit);
  }
  return history;
}

const char* const drillNames[] = {"frequency", "level", "dynamics", "polarity"};

} // namespace

// Checks the history to which the other tests compare the program's.
TEST(DemoData, TheExpectedHistoryMatchesKnownFigures) {
  const History history = expectedHistory();
  EXPECT_EQ(history.rows.front().drill, 2);
  EXPECT_FALSE(history.rows.front().hit);
  EXPECT_DOUBLE_EQ(history.rows.front().error, 2.694540975451396);
  EXPECT_EQ(history.rows[157].band, 14);
  EXPECT_DOUBLE_EQ(history.rows[157].error, 0.25382983752826516);
  const double final[] = {11, 58, 3, 20};
  const int counts[] = {40, 50, 40, 30};
  for (int drill = 0; drill < 4; ++drill) {
    EXPECT_EQ(history.staircases[drill].difficulty, final[drill]);
    EXPECT_EQ(std::count_if(history.rows.begin(), history.rows.end(),
                            [drill](const Row& row) { return row.drill == drill; }),
              counts[drill]);
  }
}

TEST(DemoData, WritesTheSame160AnswersEachTime) {
  const kit::ScratchProfile scratch;
  const History expected = expectedHistory();
  std::vector<UUID> ids;
  for (int run = 0; run < 2; ++run) {
    DemoData::seed();
    const Profile profile;
    ASSERT_EQ(profile.attempts().size(), 160U);
    for (std::size_t i = 0; i < 160; ++i) {
      const Attempt& attempt = profile.attempts()[i];
      const Row& row = expected.rows[i];
      EXPECT_EQ(attempt.drill.rawValue(), drillNames[row.drill]);
      EXPECT_EQ(attempt.material, Material::pinkNoise);
      EXPECT_EQ(attempt.correct, row.hit);
      EXPECT_EQ(attempt.error, row.error) << i;
      EXPECT_EQ(attempt.difficulty, row.difficulty) << i;
      EXPECT_EQ(attempt.bandIndex.value_or(-1), row.band);
    }
    ids.push_back(profile.attempts().front().id);
  }
  EXPECT_NE(ids[0], ids[1]);
}

TEST(DemoData, TheStaircasesFollowFromTheAnswers) {
  const kit::ScratchProfile scratch;
  DemoData::seed();
  const Profile profile;
  const History expected = expectedHistory();
  ASSERT_EQ(profile.staircases().size(), 4U);
  for (int drill = 0; drill < 4; ++drill)
    EXPECT_EQ(profile.staircases().at(drillNames[drill]), expected.staircases[drill]);
}

TEST(DemoData, SpacesTheAnswers260SecondsApartAndEnds260SecondsAgo) {
  const kit::ScratchProfile scratch;
  const double before = Date::now().secondsSinceReferenceDate;
  DemoData::seed();
  const double after = Date::now().secondsSinceReferenceDate;
  const Profile profile;
  const auto& attempts = profile.attempts();
  const double newest = attempts.back().date.secondsSinceReferenceDate + 260;
  EXPECT_GE(newest, before - 1e-6);
  EXPECT_LE(newest, after + 1e-6);
  for (std::size_t i = 1; i < attempts.size(); ++i)
    EXPECT_NEAR(attempts[i].date.secondsSinceReferenceDate -
                    attempts[i - 1].date.secondsSinceReferenceDate,
                260, 1e-6);
  EXPECT_TRUE(profile.stats().streak == 1 || profile.stats().streak == 2);
}

TEST(DemoData, ReplacesAnEarlierHistoryButKeepsItsRollUp) {
  const kit::ScratchProfile scratch;
  {
    Profile profile;
    const Trial trial{.drill = Drill::frequency, .targetFreq = 125};
    Attempt old;
    old.bandIndex = 5;
    profile.replace(std::vector<Attempt>(5000, old), {});
    profile.record(trial, Drills::grade(125, trial));
  }
  DemoData::seed();
  const Profile profile;
  EXPECT_EQ(profile.attempts().size(), 160U);
  ASSERT_EQ(profile.lifetime().size(), 1U);
  EXPECT_EQ(profile.lifetime().at(5).attempts, 1);
}

TEST(DemoData, RefusesWithoutAnExplicitFolder) {
  const kit::ScratchProfile scratch;
  ::unsetenv("VELTO_PROFILE_DIR");
  ::setenv("XDG_DATA_HOME", scratch.folder().c_str(), 1);
  testing::internal::CaptureStderr();
  DemoData::seed();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "refusing to seed demo data without VELTO_PROFILE_DIR set\n");
  EXPECT_TRUE(std::filesystem::is_empty(scratch.folder()));
  ::unsetenv("XDG_DATA_HOME");
}

TEST(DemoData, ReportsTheNumberOfAnswers) {
  const kit::ScratchProfile scratch;
  testing::internal::CaptureStderr();
  DemoData::seed();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "seeded 160 demo attempts\n");
}
