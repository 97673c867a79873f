// velto-lab stats.
#include "Coding.h"
#include "LabRunner.h"
#include "kit/RecordTesting.h"

#include <nlohmann/json.hpp>

namespace velto {
namespace {

using nlohmann::json;
using testing::isOneComplaint;
using testing::LabRunner;
using testing::put;
using testing::row;
using testing::utc;

void keep(const LabRunner& lab, const Stored& record) {
  put(lab.record(), Coding::encode(record).value());
}

// 40 answers a drill, a minute apart: hits, but for every fourth one.
Stored practice() {
  Stored record;
  for (int i = 0; i < 160; ++i) {
    const Drill drill = Drill::allCases[static_cast<std::size_t>(i / 40)];
    const bool hit = i % 4 != 3;
    record.attempts.push_back(
        row(drill, drill == Drill::frequency ? std::optional<std::int64_t>(7) : std::nullopt, hit,
            hit ? 0.25 : 1.25, utc(2026, 5, 4, 8 + i / 60, i % 60)));
    record.attempts.back().difficulty = 30;
  }
  record.staircases["level"].difficulty = 35;
  return record;
}

json statsOf(const LabRunner& lab, testing::Words more) {
  testing::Words words{"stats", "--json"};
  words.insert(words.end(), more.begin(), more.end());
  const auto result = lab.run(words, {.environment = {{"TZ", "UTC"}}});
  EXPECT_EQ(result.status, 0) << result.error;
  return json::parse(result.out, nullptr, false);
}

TEST(LabStats, SaysSoIfThereAreNoAnswers) {
  const LabRunner lab;
  const std::string file = lab.record().string();
  const std::string expected = file + "\n\nNo answers yet.\n";
  EXPECT_TRUE(lab.run({"stats"}).out.starts_with(expected)) << lab.run({"stats"}).out;
  const json stats = statsOf(lab, {});
  EXPECT_EQ(stats["hours"], 0);
  EXPECT_EQ(stats["drills"].size(), 4U);
  EXPECT_FALSE(stats["drills"][0].contains("newest"));
}

TEST(LabStats, FailsIfTheRecordCannotBeRead) {
  const LabRunner lab;
  put(lab.record(), "{\"attempts\":[]");
  const auto result = lab.run({"stats"});
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(isOneComplaint(result.error)) << result.error;
}

// A Velto that was killed: its newest answers are in a copy only.
TEST(LabStats, CountsAnswersThatOnlyACopyHolds) {
  const LabRunner lab;
  const Stored whole = practice();
  Stored older = whole;
  older.attempts.resize(150);
  const std::vector<Attempt> unsaved(whole.attempts.begin() + 150, whole.attempts.end());
  put(lab.record().string() + ".saving-12345678",
      Coding::encodeBackup(Coding::encode(whole).value(), unsaved, 0, 1).value());
  for (const std::string& file : {Coding::encode(older).value(), std::string("{\"attempts\":[")}) {
    put(lab.record(), file);
    const auto before = lab.files();
    EXPECT_EQ(statsOf(lab, {})["days"][0]["answers"], 160) << file;
    EXPECT_EQ(lab.files(), before);
  }
}

TEST(LabStats, RefusesCountsThatNoRecordHas) {
  for (const char* count : {"0", "5001", "-1", "1.5", "x"}) {
    const auto result = LabRunner().run({"stats", "--newest", count});
    EXPECT_EQ(result.status, 2) << count;
    EXPECT_TRUE(isOneComplaint(result.error)) << result.error;
  }
}

TEST(LabStats, CountsAnswersDaysAndHours) {
  const LabRunner lab;
  keep(lab, practice());
  const json stats = statsOf(lab, {});
  EXPECT_EQ(stats["days"].size(), 1U);
  EXPECT_EQ(stats["days"][0]["day"], "2026-05-04");
  EXPECT_EQ(stats["days"][0]["answers"], 160);
  EXPECT_EQ(stats["days"][0]["hits"], 120);
  EXPECT_EQ(stats["sittings"], 1);
  EXPECT_NEAR(stats["hours"].get<double>(), 160.0 / 60, 1e-9);
  EXPECT_EQ(stats["drills"][1]["drill"], "level");
  EXPECT_EQ(stats["drills"][1]["answers"], 40);
  EXPECT_EQ(stats["drills"][1]["hits"], 30);
  EXPECT_EQ(stats["drills"][1]["difficulty"], 35);
  EXPECT_EQ(stats["bands"][7]["answers"], 40);
  EXPECT_EQ(stats["bands"][7]["centre"], 200);
  EXPECT_NEAR(stats["bands"][7]["meanError"].get<double>(), 0.5, 1e-12);
  EXPECT_EQ(stats["bands"][8]["answers"], 0);
}

TEST(LabStats, TakesTheClocksTrialsUnlessToldOtherwise) {
  const LabRunner lab;
  keep(lab, practice());
  const json byClock = statsOf(lab, {})["drills"];
  const json fair = statsOf(lab, {"--fair"})["drills"];
  EXPECT_EQ(byClock[1]["newest"]["blindHitRate"], 1);
  EXPECT_EQ(byClock[1]["newest"]["hitsShowHearing"], false);
  EXPECT_NEAR(fair[1]["newest"]["blindHitRate"].get<double>(), 1.55 / 2.376, 0.01);
  EXPECT_NEAR(fair[0]["newest"]["threshold"]["guessRate"].get<double>(), 3.0 / 27, 1e-6);
  EXPECT_EQ(fair[3]["newest"]["hitsShowHearing"], true);
}

TEST(LabStats, GivesThresholdsAndErrorsWithIntervals) {
  const LabRunner lab;
  keep(lab, practice());
  const json drills = statsOf(lab, {"--fair"})["drills"];
  for (const std::size_t drill : {0U, 3U}) {
    const json& threshold = drills[drill]["newest"]["threshold"];
    EXPECT_GT(threshold["median"], threshold["lower"]);
    EXPECT_FALSE(drills[drill]["newest"].contains("error"));
  }
  for (const std::size_t drill : {1U, 2U}) {
    const json& error = drills[drill]["newest"]["error"];
    EXPECT_NEAR(error["mean"].get<double>(), 0.5, 1e-12);
    EXPECT_LT(error["interval"]["lower"], 0.5);
    EXPECT_GT(error["interval"]["upper"], 0.5);
    EXPECT_FALSE(drills[drill]["newest"].contains("threshold"));
  }
  EXPECT_EQ(statsOf(lab, {"--newest", "10"})["drills"][0]["newest"]["answers"], 10);
}

TEST(LabStats, TellsTheSameInWords) {
  const LabRunner lab;
  keep(lab, practice());
  const std::string words = lab.run({"stats"}, {.environment = {{"TZ", "UTC"}}}).out;
  for (const char* text :
       {"160 answers; 1 day of practice from 2026-05-04 to 2026-05-04, 2.7 hours in 1 sitting.",
        "\nlevel           40  75 %          35\n", "trials without --fair", "proves nothing",
        "\nThreshold: the difficulty at which half of the trials are heard, on average over these "
        "answers\n",
        "\nMean error\n", "     200       40  75 %"})
    EXPECT_NE(words.find(text), std::string::npos) << text << "\n" << words;
}

// One miss at difficulty 0 bounds nothing from below.
TEST(LabStats, PrintsAnUnboundedEndAsOpen) {
  const LabRunner lab;
  Stored record;
  record.attempts.push_back(row(Drill::polarity, std::nullopt, false, 1, utc(2026, 5, 4)));
  record.attempts.back().difficulty = 0;
  keep(lab, record);
  EXPECT_NE(lab.run({"stats"}).out.find("open to "), std::string::npos);
  EXPECT_FALSE(statsOf(lab, {})["drills"][3]["newest"]["threshold"].contains("lower"));
}

} // namespace
} // namespace velto
