#include "TrialList.h"

#include "Lists.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <string>
#include <vector>

using namespace velto;

namespace {

// Of the hash: FNV-1a of the lines before, computed with another program.
const std::string example = "velto-session 1\n"
                            "difficulty fixed\n"
                            "frequency pink 40 9e3779b97f4a7c15\n"
                            "polarity pad 40 3c6ef372fe94f82a\n"
                            "level pink 40 daa66d2c7ddf743f\n"
                            "end 3 108f660aeefbc810\n";

// What parse() says about a text; empty if it accepts it.
std::string complaint(std::string_view text) {
  const auto parsed = TrialList::parse(text);
  const auto* wrong = std::get_if<std::string>(&parsed);
  return wrong == nullptr ? "" : *wrong;
}

// The example with one line replaced.
std::string exampleWith(std::string_view line, std::string_view replacement) {
  std::string text = example;
  return text.replace(text.find(line), line.size(), replacement);
}

} // namespace

TEST(TrialList, IsWrittenAsDocumented) {
  const TrialList list{.difficulty = TrialList::Difficulty::fixed,
                       .trials = {{Drill::frequency, Material::pinkNoise, 40, 0x9e3779b97f4a7c15},
                                  {Drill::polarity, Material::pad, 40, 0x3c6ef372fe94f82a},
                                  {Drill::level, Material::pinkNoise, 40, 0xdaa66d2c7ddf743f}}};
  EXPECT_EQ(list.text(), example);
  EXPECT_EQ(list.id(), "L108f660aeefbc810");
}

TEST(TrialList, NamesTheLineThatIsWrong) {
  EXPECT_EQ(complaint(example), "");
  EXPECT_EQ(complaint(""),
            "line 1: not a list of trials: the first line is not \"velto-session 1\"");
  EXPECT_EQ(complaint("velto-session 2\n"),
            "line 1: not a list of trials: the first line is not \"velto-session 1\"");
  EXPECT_EQ(complaint(exampleWith("fixed", "fixt")),
            "line 2: neither \"difficulty fixed\" nor \"difficulty staircase\"");
  EXPECT_EQ(complaint(exampleWith("frequency", "Frequency")), "line 3: unknown drill");
  EXPECT_EQ(complaint(exampleWith("pad", "organ")), "line 4: unknown material");
  EXPECT_EQ(complaint(exampleWith("pad 40", "pad  40")),
            "line 4: the difficulty is not a number from 0 to 100 in its shortest form");
  EXPECT_EQ(complaint(exampleWith(" daa66d2c7ddf743f", "")),
            "line 5: not \"DRILL MATERIAL DIFFICULTY SEED\"");
  EXPECT_EQ(complaint(exampleWith("daa66d2c7ddf743f", "daa66d2c7ddf743")),
            "line 5: the seed is not 16 hexadecimal digits");
  EXPECT_EQ(complaint(exampleWith("end 3 108f660aeefbc810\n", "")),
            "line 6: the last line, \"end\", is missing");
  EXPECT_EQ(complaint(exampleWith("810\n", "810")), "line 6: the last line, \"end\", is missing");
  for (const char* end : {"end 2 108f660aeefbc810\n", "end 3 108f660aeefbc811\n",
                          "end 3 108F660AEEFBC810\n", "end 3 108f660aeefbc810\n\n"})
    EXPECT_EQ(complaint(exampleWith("end 3 108f660aeefbc810\n", end)),
              "line 6: the list is damaged or was changed: number of trials or hash do not fit")
        << end;
  EXPECT_EQ(complaint("velto-session 1\ndifficulty fixed\nend 0 0000000000000000\n"),
            "line 3: there is no trial");
}

TEST(TrialList, HasALineForTheWeightsOfTheBands) {
  TrialList list{.difficulty = TrialList::Difficulty::fixed,
                 .trials = {{Drill::frequency, Material::pinkNoise, 40, 1}},
                 .bandWeights = BandWeights{}};
  list.bandWeights->at(0) = 1000;
  list.bandWeights->at(26) = 250;
  const std::string text = list.text();
  const std::string line = "bands 1000 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 250\n";
  EXPECT_EQ(text.find("\n" + line), std::string("velto-session 1\ndifficulty fixed").size());
  const auto complaintWith = [&](std::string_view other) {
    std::string changed = text;
    return complaint(changed.replace(changed.find(line), line.size(), other));
  };
  EXPECT_EQ(complaintWith(line), "");
  const std::string zeros = " 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0"; // 25
  for (const std::string& other : std::vector<std::string>{
           "bands\n", "bandsman\n", "bands 1000\n", "bands 1000" + zeros + "\n",
           "bands 1000" + zeros + " 0 0\n", "bands 1000" + zeros + " 0 \n",
           "bands  1000" + zeros + " 0\n", "bands 999" + zeros + " 0\n",
           "bands 1000" + zeros + " 1001\n", "bands 1000" + zeros + " 1.5\n",
           "bands 1000" + zeros + " 01\n", "bands 1000" + zeros + " -1\n"})
    EXPECT_EQ(complaintWith(other),
              "line 3: not the weights of 27 bands: whole numbers up to 1000, "
              "which the heaviest has")
        << other;
  EXPECT_EQ(complaintWith(line + line), "line 4: unknown drill");
  list.bandWeights->at(0) = 999;
  EXPECT_DEATH(static_cast<void>(list.text()), "breaks its rules");
}

TEST(TrialList, TakesDifficultiesFrom0To100InOneSpellingOnly) {
  for (const char* number : {"-1", "-0", "100.5", "1e2", "040", "40.0", "+40", "nan", "inf", ""})
    EXPECT_EQ(complaint(exampleWith("pad 40", std::string("pad ") + number)),
              "line 4: the difficulty is not a number from 0 to 100 in its shortest form")
        << number;
}

TEST(TrialList, StartsEachStaircaseAtOneDifficulty) {
  std::string text = "velto-session 1\ndifficulty staircase\nlevel pink 20 0000000000000000\n"
                     "polarity pad 30 0000000000000000\nlevel pink 21 0000000000000000\n";
  EXPECT_EQ(complaint(text), "line 5: a staircase starts at one difficulty only");
}

TEST(TrialList, HasAtMostAThousandTrials) {
  TrialList list{.difficulty = TrialList::Difficulty::fixed,
                 .trials = std::vector<ListedTrial>(TrialList::mostTrials)};
  std::string text = list.text();
  EXPECT_EQ(complaint(text), "");
  const std::string line = "frequency pink 0 0000000000000000\n";
  text.insert(text.find(line), line);
  EXPECT_EQ(complaint(text), "line 1003: more than 1000 trials");
  list.trials.emplace_back();
  EXPECT_DEATH(static_cast<void>(list.text()), "breaks its rules");
  list.trials.clear();
  EXPECT_DEATH(static_cast<void>(list.text()), "breaks its rules");
}

// parse(text(x)) equals x
RC_GTEST_PROP(TrialListLaw, IsReadAsItWasWritten, ()) {
  const TrialList list = *velto::testing::trialLists();
  const auto parsed = TrialList::parse(list.text());
  const auto* same = std::get_if<TrialList>(&parsed);
  RC_ASSERT(same != nullptr);
  RC_ASSERT(*same == list);
  RC_ASSERT(same->text() == list.text());
  RC_ASSERT(same->id() == list.id());
}

// A text in which bytes are replaced, lost or added is refused.
RC_GTEST_PROP(TrialListLaw, RefusesDamage, ()) {
  const std::string text = (*velto::testing::trialLists()).text();
  std::string damaged = text;
  const auto at =
      static_cast<std::size_t>(*rc::gen::inRange<int>(0, static_cast<int>(text.size())));
  const char byte = *rc::gen::arbitrary<char>();
  switch (*rc::gen::inRange(0, 4)) {
  case 0:
    damaged[at] = byte;
    break;
  case 1:
    damaged.erase(at, 1);
    break;
  case 2:
    damaged.insert(at, 1, byte);
    break;
  default:
    damaged.resize(at);
  }
  if (damaged == text)
    return;
  RC_ASSERT(complaint(damaged).starts_with("line "));
}

// Every single byte of the example, replaced by every other one.
TEST(TrialList, RefusesEveryDamagedByte) {
  for (std::size_t at = 0; at < example.size(); ++at)
    for (int byte = 0; byte < 256; ++byte) {
      std::string damaged = example;
      damaged[at] = static_cast<char>(byte);
      ASSERT_EQ(complaint(damaged).empty(), damaged == example) << at << " " << byte;
    }
}

// Never crashes, and accepts nothing but what it writes.
RC_GTEST_PROP(TrialListLaw, ReadsAnyText, ()) {
  const auto words = *rc::gen::container<std::vector<std::string>>(rc::gen::oneOf(
      rc::gen::elementOf(std::vector<std::string>{
          "velto-session 1\n", "difficulty fixed\n", "difficulty staircase\n", "frequency pink 1 ",
          "0123456789abcdef\n", "bands 1000 1", "end 1 ", "end", " ", "\n"}),
      rc::gen::arbitrary<std::string>()));
  std::string text;
  for (const std::string& word : words)
    text += word;
  const auto parsed = TrialList::parse(text);
  if (const auto* list = std::get_if<TrialList>(&parsed))
    RC_ASSERT(list->text() == text);
}
