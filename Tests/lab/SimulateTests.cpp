// velto-lab simulate.
#include "LabRunner.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace velto {
namespace {

using nlohmann::json;
using testing::isOneComplaint;
using testing::LabRunner;

json simulated(testing::Words more) {
  testing::Words words{"simulate", "--json", "--year", "2026"};
  words.insert(words.end(), more.begin(), more.end());
  return json::parse(LabRunner().run(words).out, nullptr, false);
}

TEST(LabSimulate, CoversEveryDrillAtElevenDifficulties) {
  const json result = simulated({});
  EXPECT_EQ(result["year"], 2026);
  ASSERT_EQ(result["trials"].size(), 44U);
  EXPECT_EQ(result["trials"][0]["drill"], "frequency");
  EXPECT_EQ(result["trials"][11]["drill"], "level");
  EXPECT_EQ(result["trials"][11]["difficulty"], 0);
  EXPECT_EQ(result["trials"][43]["difficulty"], 100);
}

TEST(LabSimulate, TellsTheAnswerAndHowOftenItHits) {
  const json level = simulated({"--difficulty", "40"})["trials"][1];
  EXPECT_EQ(level["difficulty"], 40);
  EXPECT_EQ(level["clock"]["hitRate"], 1);
  EXPECT_EQ(level["clock"]["answer"], 1.9);
  EXPECT_NEAR(level["fair"]["hitRate"].get<double>(), 0.75, 0.006);
  EXPECT_EQ(level["fair"]["targets"], 42);
}

TEST(LabSimulate, TellsTheSameInWords) {
  const std::string words =
      LabRunner().run({"simulate", "--year", "2026", "--difficulty", "0"}).out;
  EXPECT_NE(words.find("that of the year 2026.\n"), std::string::npos) << words;
  EXPECT_NE(words.find("\nlevel               0   100.0    3.05 dB"), std::string::npos) << words;
}

TEST(LabSimulate, RefusesOtherDifficultiesAndYears) {
  for (const testing::Words& words :
       {testing::Words{"--difficulty", "101"}, testing::Words{"--difficulty", "-1"},
        testing::Words{"--difficulty", "nan"}, testing::Words{"--year", "1969"},
        testing::Words{"--year", "10000"}, testing::Words{"--year", "2026.5"}}) {
    const auto result = LabRunner().run({"simulate", words[0], words[1]});
    EXPECT_EQ(result.status, 2) << words[1];
    EXPECT_TRUE(isOneComplaint(result.error)) << result.error;
  }
}

} // namespace
} // namespace velto
