#include "Results.h"

#include "Lists.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>

using namespace velto;

namespace {

const TrialList list{.difficulty = TrialList::Difficulty::fixed,
                     .trials = {{Drill::frequency, Material::pinkNoise, 40, 0x9e3779b97f4a7c15},
                                {Drill::polarity, Material::pad, 40, 0x3c6ef372fe94f82a},
                                {Drill::level, Material::pinkNoise, 40, 0xdaa66d2c7ddf743f}}};

// Answered in the window, except that seconds are round.
const std::string header =
    "list,trial,drill,difficulty,truth,answer,error,hit,seconds,switches\r\n";
const std::string first = "L108f660aeefbc810,1,frequency,40,630,1000,0.6666,0,1.600,0\r\n";
const std::string second = "L108f660aeefbc810,2,polarity,40,2,2,0.0000,1,12.000,31\r\n";

std::string complaint(std::string_view text) {
  const auto result = Results::read(list, text);
  const auto* wrong = std::get_if<std::string>(&result);
  return wrong == nullptr ? "" : *wrong;
}

Results::Reading readingOf(const TrialList& of, std::string_view text) {
  return std::get<Results::Reading>(Results::read(of, text));
}

std::string with(std::string text, std::string_view old, std::string_view replacement) {
  return text.replace(text.find(old), old.size(), replacement);
}

} // namespace

TEST(Results, AreReadBackFromTheirLines) {
  const auto reading = readingOf(list, header + first + second);
  ASSERT_EQ(reading.rows.size(), 2U);
  EXPECT_EQ(reading.rows[0].given, (Results::Given{.answer = 1000, .seconds = 1.6, .switches = 0}));
  EXPECT_EQ(reading.rows[1].given, (Results::Given{.answer = 2, .seconds = 12, .switches = 31}));
  EXPECT_FALSE(reading.rows[0].grade.correct);
  EXPECT_TRUE(reading.rows[1].grade.correct);
  EXPECT_EQ(reading.sitting.answered(), 2U);
  EXPECT_EQ(reading.held, (header + first + second).size());
  EXPECT_EQ(reading.changedLine, std::nullopt);
  EXPECT_EQ(Results::header(), header);
  EXPECT_EQ(Results::line(list.id(), 2, reading.rows[1]), second);
}

TEST(Results, DropALineThatWasCut) {
  const std::string whole = header + first + second;
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const auto reading = readingOf(list, whole.substr(0, size));
    const std::size_t rows = size >= header.size() + first.size() ? 1 : 0;
    EXPECT_EQ(reading.rows.size(), rows) << size;
    EXPECT_EQ(reading.held, size < header.size() ? 0 : header.size() + rows * first.size()) << size;
  }
  EXPECT_EQ(readingOf(list, header + first + std::string(40, '\0')).rows.size(), 1U);
}

TEST(Results, NameTheLineThatIsWrong) {
  EXPECT_EQ(complaint("Name,Points\r\n"), "line 1: not a results file");
  EXPECT_EQ(complaint("list,trial,name"), "line 1: not a results file");
  EXPECT_EQ(complaint(header + first + first), "line 3: not trial 2");
  EXPECT_EQ(complaint(header + second), "line 2: not trial 1");
  EXPECT_EQ(complaint(header + with(first, "L1", "L2")), "line 2: belongs to another list");
  EXPECT_EQ(complaint(header + with(first, ",0\r", "\r")), "line 2: not 10 fields");
  EXPECT_EQ(complaint(header + with(first, ",0\r", ",0,\r")), "line 2: not 10 fields");
  for (const auto& [old, changed] : {std::pair{"1000", "-5"},
                                     {"1000", "1e3"},
                                     {"1.600", "1.6"},
                                     {"1.600", "-1.600"},
                                     {",0\r", ",-1\r"},
                                     {",0\r", ",x\r"}})
    EXPECT_EQ(complaint(header + with(first, old, changed)),
              "line 2: answer, seconds or switches are not numbers as this file has them")
        << changed;
  TrialList shorter = list;
  shorter.trials.resize(1);
  const std::string row = Results::line(shorter.id(), 1, readingOf(list, header + first).rows[0]);
  const auto result = Results::read(shorter, header + row + with(row, ",1,", ",2,"));
  EXPECT_EQ(std::get<std::string>(result), "line 3: the list has only 1 trials");
}

TEST(Results, AreGradedFromTheListAndTellWhatWasChanged) {
  const auto reading = readingOf(list, header + with(first, "0.6666,0", "0.0000,1") + second);
  EXPECT_EQ(reading.changedLine, 2U);
  EXPECT_FALSE(reading.rows[0].grade.correct);
  EXPECT_NEAR(reading.rows[0].grade.error, 0.6666, 1e-4);
  EXPECT_EQ(readingOf(list, header + first + with(second, ",2,2,", ",1,2,")).changedLine, 3U);
}

// read(line(x) ...) equals x, whatever the list and the answers.
RC_GTEST_PROP(ResultsLaw, AreReadAsTheyWereWritten, ()) {
  const TrialList any = *velto::testing::trialLists();
  const auto count =
      static_cast<std::size_t>(*rc::gen::inRange<int>(0, static_cast<int>(any.trials.size()) + 1));
  Sitting sitting(any);
  std::vector<Results::Row> rows;
  std::string text(Results::header());
  while (rows.size() < count) {
    const Trial trial = *sitting.next();
    const Results::Given given{.answer = *velto::testing::answersTo(trial.drill),
                               .seconds = *rc::gen::inRange(0, 1 << 20) / 8.0,
                               .switches = *rc::gen::inRange(0, 1000)};
    rows.push_back({.trial = trial, .given = given, .grade = sitting.take(given.answer)});
    text += Results::line(any.id(), rows.size(), rows.back());
  }
  const auto reading = readingOf(any, text);
  RC_ASSERT(reading.rows == rows);
  RC_ASSERT(reading.held == text.size());
  RC_ASSERT(reading.changedLine == std::nullopt);
  RC_ASSERT(reading.sitting.next() == sitting.next());
}
