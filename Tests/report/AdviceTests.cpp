#include "Advice.h"

#include "ReportRecords.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

using testing::practised;
using testing::reported;

std::vector<std::string> whats(const ReportData& data) {
  std::vector<std::string> texts;
  for (const Advice& advice : Advice::from(data))
    texts.push_back(advice.what);
  return texts;
}

bool hasOne(const ReportData& data, const std::string& begin) {
  for (const std::string& what : whats(data))
    if (what.starts_with(begin))
      return true;
  return false;
}

// A record about which nothing is to be said: every day of a month, all drills, all bands alike.
ReportData even() {
  ReportData data = reported({});
  for (DrillReport& drill : data.drills) {
    drill.analysis.answers = 200;
    drill.answers.assign(1, {.day = data.today, .difficulty = 50, .hit = true});
    NewestAnswers newest;
    newest.answers = 200;
    newest.hits = 140;
    newest.hitShare = {0.63, 0.76};
    newest.blindHitRate = 0.33;
    if (drill.analysis.drill == Drill::level || drill.analysis.drill == Drill::dynamics)
      newest.error = ErrorSize{.mean = 0.3, .interval = Interval{0.2, 0.4}, .blindMean = 0.9};
    drill.analysis.newest = newest;
  }
  for (BandAnalysis& band : data.bands) {
    band.answers = 10;
    band.meanErrorOct = 0.3;
  }
  for (Calendar::Day back = 27; back >= 0; --back)
    data.practice.days.push_back({.day = *data.today - back, .answers = 30});
  return data;
}

TEST(Advice, BeginsWithTheBeginning) {
  EXPECT_EQ(whats(reported({})), std::vector<std::string>{"Start with 20 trials of each drill."});
}

TEST(Advice, SaysSoIfNothingStandsOut) {
  EXPECT_EQ(whats(even()), std::vector<std::string>{"Go on as you do."});
}

TEST(Advice, NamesTheWeakestBands) {
  ReportData data = even();
  for (std::size_t i = 7; i < 10; ++i)
    data.bands[i].meanErrorOct = 1.5;
  const auto advice = Advice::from(data);
  ASSERT_EQ(advice.size(), 1U);
  EXPECT_EQ(advice[0].what, "Learn the bands from 200 to 315\u00A0Hz.");
  EXPECT_EQ(advice[0].why, "There your answers are 1.50 octaves off on average (30\u00A0answers), "
                           "over all bands 0.43.");
  // Five answers are too few to go by.
  for (std::size_t i = 7; i < 10; ++i)
    data.bands[i].answers = i == 7 ? 1 : 2;
  EXPECT_FALSE(hasOne(data, "Learn the bands from 200"));
}

TEST(Advice, TellsWhatCanBeHadWithoutListening) {
  ReportData data = even();
  data.drills[3].analysis.newest->hitShare.lower = 0.33;
  EXPECT_EQ(whats(data),
            std::vector<std::string>{"Practise polarity, and check what you listen on."});
  data.drills[3].analysis.newest->answers = Advice::fewAnswers - 1;
  EXPECT_EQ(whats(data), std::vector<std::string>{"Go on as you do."});

  data = even();
  data.drills[1].analysis.newest->error->blindMean = 0.4;
  EXPECT_EQ(whats(data), std::vector<std::string>{"Practise level."});
  data.seeds = SeedSource::clock;
  EXPECT_EQ(whats(data), std::vector<std::string>{"Practise level with --fair."});
}

TEST(Advice, AsksForMoreAnswers) {
  ReportData data = even();
  data.drills[0].analysis.answers = Advice::fewAnswers;
  EXPECT_EQ(whats(data), std::vector<std::string>{"Go on as you do."});
  data.drills[0].analysis.answers = Advice::fewAnswers - 1;
  data.drills[2].analysis.answers = 0;
  EXPECT_EQ(whats(data), std::vector<std::string>{"Give more answers in frequency, dynamics."});
}

TEST(Advice, RemembersWhatHasBeenLeft) {
  ReportData data = even();
  data.drills[1].answers[0].day = *data.today - Advice::longAgo + 1;
  EXPECT_EQ(whats(data), std::vector<std::string>{"Go on as you do."});
  data.drills[1].answers[0].day = *data.today - Advice::longAgo;
  EXPECT_EQ(whats(data), std::vector<std::string>{"Take up level again."});
  EXPECT_EQ(Advice::from(data)[0].why, "Your last answer is 14\u00A0days old.");
}

TEST(Advice, CountsTheDaysOfTheLastWeeks) {
  ReportData data = even();
  auto& days = data.practice.days;
  days.erase(days.begin() + Advice::regularDays, days.end());
  EXPECT_EQ(whats(data), std::vector<std::string>{"Go on as you do."});
  days.front().day -= 1; // 28 days ago: outside
  EXPECT_EQ(whats(data),
            std::vector<std::string>{"Practise on more days, a quarter of an hour each."});
}

TEST(Advice, IsNeverLong) {
  const ReportData data = reported(practised(2, 60), SeedSource::clock);
  EXPECT_LE(Advice::from(data).size(), Advice::most);
  EXPECT_GE(Advice::from(data).size(), 2U);
}

} // namespace
} // namespace velto
