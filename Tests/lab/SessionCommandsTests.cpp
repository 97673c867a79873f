// velto-lab session new and velto-lab session score.
#include "Bands.h"
#include "Coding.h"
#include "LabRunner.h"
#include "Results.h"
#include "Trial.h"
#include "TrialList.h"
#include "kit/Answers.h"
#include "kit/CapturedOutput.h"
#include "kit/Chance.h"
#include "kit/Files.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <map>
#include <string>

namespace velto {
namespace {

using testing::isOneComplaint;
using testing::LabRunner;
using testing::Words;

TrialList listOf(const kit::ChildResult& result) {
  EXPECT_EQ(result.status, 0) << result.error;
  const auto list = TrialList::parse(result.out);
  const auto* parsed = std::get_if<TrialList>(&list);
  if (parsed == nullptr)
    throw std::runtime_error(std::get<std::string>(list));
  return *parsed;
}

Words newList(Words switches) {
  switches.insert(switches.begin(), {"session", "new"});
  return switches;
}

// The results of a listener who gives answer(trial), all but the last `missing`.
template <typename Answer>
std::string resultsOf(const TrialList& list, Answer answer, std::size_t missing = 0) {
  Sitting sitting(list);
  std::string text(Results::header());
  while (sitting.answered() + missing < list.trials.size()) {
    const Trial trial = *sitting.next();
    const Results::Given given{.answer = answer(trial), .seconds = 4, .switches = 2};
    const std::size_t number = sitting.answered() + 1;
    text += Results::line(list.id(), number,
                          {.trial = trial, .given = given, .grade = sitting.take(given.answer)});
  }
  return text;
}

TEST(LabSessionNew, PrintsTheListThatWasAskedFor) {
  const LabRunner lab;
  const auto result = lab.run(newList({"--drill", "frequency", "--count", "20", "--difficulty",
                                       "40", "--random-seed", "7", "--material", "drums"}));
  const TrialList list = listOf(result);
  EXPECT_EQ(list.difficulty, TrialList::Difficulty::fixed);
  ASSERT_EQ(list.trials.size(), 20U);
  for (const ListedTrial& trial : list.trials) {
    EXPECT_EQ(trial.drill, Drill::frequency);
    EXPECT_EQ(trial.material, Material::drums);
    EXPECT_EQ(trial.difficulty, 40);
  }
  EXPECT_EQ(result.error, "velto-lab: frequency at difficulty 40: the best guess without listening "
                          "hits 11 %\n");
  EXPECT_EQ(lab.run(newList({"--drill", "frequency", "--count", "20", "--difficulty", "40",
                             "--random-seed", "7", "--material", "drums"}))
                .out,
            result.out);
}

TEST(LabSessionNew, TakesAllDrillsAndAnySeedWithoutSwitches) {
  const LabRunner lab;
  const auto first = lab.run(newList({})), second = lab.run(newList({}));
  const TrialList list = listOf(first);
  ASSERT_EQ(list.trials.size(), 20U);
  for (std::size_t i = 0; i < 20; ++i) {
    EXPECT_EQ(list.trials[i].drill, Drill::allCases[i % 4]);
    EXPECT_EQ(list.trials[i].material, Drills::defaultMaterial(list.trials[i].drill));
    EXPECT_EQ(list.trials[i].difficulty, 20);
  }
  EXPECT_NE(first.out, second.out);
}

TEST(LabSessionNew, WarnsOfGuessingAbove50Percent) {
  const LabRunner lab;
  const std::string begin = "velto-lab: level at difficulty ",
                    hits = ": the best guess without listening hits ";
  EXPECT_EQ(lab.run(newList({"--drill", "level", "--difficulty", "0"})).error,
            begin + "0" + hits + "47 %\n");
  EXPECT_EQ(lab.run(newList({"--drill", "level", "--difficulty", "40"})).error,
            begin + "40" + hits + "75 %; warning: hits prove little\n");
  EXPECT_EQ(lab.run(newList({"--drill", "level", "--difficulty", "0", "--staircase"})).error,
            begin + "0" + hits + "47 %, at difficulty 100 100 %; warning: hits prove little\n");
  EXPECT_EQ(lab.run(newList({"--drill", "polarity", "--staircase"})).error,
            "velto-lab: polarity at difficulty 20: the best guess without listening hits 33 %\n");
}

TEST(LabSessionNew, AsksMoreOftenForTheWeakBandsOfARecord) {
  const LabRunner lab;
  Stored stored;
  for (std::int64_t band = 0; band < 27; ++band)
    stored.lifetime[band] = {.attempts = 10, .hits = 10, .errorSum = band == 20 ? 10.0 : 0.0};
  stored.staircases["frequency"] = {.difficulty = 35};
  kit::put(lab.record(), Coding::encode(stored).value());
  const auto result = lab.run(newList({"--drill", "frequency", "--count", "1000", "--random-seed",
                                       "3", "--for", lab.record().string()}));
  const TrialList list = listOf(result);
  std::map<double, int> targets;
  for (const ListedTrial& trial : list.trials) {
    EXPECT_EQ(trial.difficulty, 35);
    ++targets[Drills::makeTrial(35, trial.material, trial.seed, trial.drill).targetFreq];
  }
  // One band weighs 4, the others 1: 133 of 1000, within five standard deviations.
  EXPECT_NEAR(targets[Bands::centres[20]], 1000.0 * 4 / 30, 54);
  // 4 kHz and 5 kHz are hits for one another.
  EXPECT_EQ(result.error, "velto-lab: frequency at difficulty 35: the best guess without listening "
                          "hits 17 %\n");
  kit::put(lab.folder() / "weak.velto", result.out);
  kit::put(lab.folder() / "mine.csv", resultsOf(list, kit::missOf));
  const auto scored =
      nlohmann::json::parse(lab.run({"session", "score", "--json", "weak.velto", "mine.csv"}).out);
  EXPECT_NEAR(scored["listeners"][0]["scores"][0]["guessingHitRate"].get<double>(), 5.0 / 30, 1e-3);
}

// A program that was killed while it saved leaves a copy with the record, and the file cut short.
TEST(LabSessionNew, ReadsTheCopyThatAnUncleanEndLeft) {
  const LabRunner lab;
  Stored stored;
  stored.staircases["frequency"] = {.difficulty = 35};
  kit::put(lab.record(), "{");
  kit::put(lab.record().string() + ".backup-12345678",
           Coding::encodeBackup(Coding::encode(stored).value(), {}, 0, 1).value());
  for (const char* file : {"profile.json", "./profile.json"}) {
    const auto made = lab.run(newList({"--drill", "frequency", "--for", file}));
    EXPECT_EQ(listOf(made).trials.front().difficulty, 35) << made.error;
  }
}

TEST(LabSessionNew, RefusesWrongUse) {
  const LabRunner lab;
  for (const Words& switches :
       {Words{"--drill", "loudness"}, Words{"--drill", "level", "--drill", "level"},
        Words{"--count", "0"}, Words{"--count", "1001"}, Words{"--difficulty", "101"},
        Words{"--difficulty", "-1"}, Words{"--material", "organ"}, Words{"--random-seed", "x"},
        Words{"--random-seed", "18446744073709551616"}, Words{"--staircase=1"},
        Words{"--drill", "level", "--for", "profile.json"}, Words{"more"}}) {
    const auto result = lab.run(newList(switches));
    EXPECT_EQ(result.status, 2) << switches.back();
    EXPECT_TRUE(isOneComplaint(result.error)) << result.error;
    EXPECT_EQ(result.out, "");
  }
  for (const char* file : {"none.json", "bad.json"}) {
    kit::put(lab.folder() / "bad.json", "{");
    const auto result = lab.run(newList({"--for", file}));
    EXPECT_EQ(result.status, 1) << file;
    EXPECT_TRUE(isOneComplaint(result.error)) << result.error;
  }
}

TEST(LabRender, WritesAllTrialsOfAList) {
  const LabRunner lab;
  TrialList list{.difficulty = TrialList::Difficulty::fixed,
                 .trials = {{Drill::polarity, Material::pad, 40, 2},
                            {Drill::level, Material::pinkNoise, 40, 3}}};
  kit::put(lab.folder() / "test.velto", list.text());
  EXPECT_EQ(lab.run({"render", "all", "--session", "test.velto"}).error, "");
  for (const char* name : {"1-polarity-1.wav", "1-polarity-2.wav", "1-polarity-3.wav",
                           "1-polarity.json", "2-level-A.wav", "2-level-B.wav", "2-level.json"})
    EXPECT_TRUE(std::filesystem::exists(lab.folder() / "all" / name)) << name;
  // The seed as it stands, and audible noise: unlike --fair, which mixes it.
  const std::string json = kit::contentOf(lab.folder() / "all/2-level.json");
  EXPECT_NE(json.find("\"seed\":3"), json.npos) << json;
  EXPECT_NE(json.find("\"fair\":true"), json.npos) << json;
  list.difficulty = TrialList::Difficulty::staircase;
  kit::put(lab.folder() / "test.velto", list.text());
  const auto adaptive = lab.run({"render", "all", "--session", "test.velto"});
  EXPECT_EQ(adaptive.status, 1);
  EXPECT_TRUE(isOneComplaint(adaptive.error)) << adaptive.error;
  EXPECT_EQ(lab.run({"render", "all", "--session", "test.velto", "--seed", "1"}).status, 2);
}

class LabSessionScore : public ::testing::Test {
protected:
  LabSessionScore() {
    kit::put(lab_.folder() / "test.velto", list_.text());
    put("anna.csv", resultsOf(list_, kit::truthOf));
    put("bob.csv", resultsOf(list_, kit::missOf, 2));
  }

  void put(const char* name, const std::string& text) { kit::put(lab_.folder() / name, text); }

  LabRunner lab_;
  TrialList list_{.difficulty = TrialList::Difficulty::fixed,
                  .trials = {{Drill::level, Material::pinkNoise, 40, 1},
                             {Drill::polarity, Material::pad, 40, 2},
                             {Drill::level, Material::pinkNoise, 40, 3},
                             {Drill::polarity, Material::pad, 40, 4}}};
};

TEST_F(LabSessionScore, PrintsTheTableOfTheClass) {
  const auto result = lab_.run({"session", "score", "test.velto", "anna.csv", "bob.csv"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.out, "listener  drill     answers   hits  guessing    error  guessing   chance\n"
                        "anna.csv  level      2 of 2  100 %      75 %  0.00 dB   0.52 dB   56.2 %\n"
                        "anna.csv  polarity   2 of 2  100 %      33 %     0.00      0.67   11.1 %\n"
                        "bob.csv   level      1 of 2    0 %      75 %  2.00 dB   0.52 dB  100.0 %\n"
                        "bob.csv   polarity   1 of 2    0 %      33 %     1.00      0.67  100.0 %\n"
                        "all       level      3 of 4   67 %      75 %  0.67 dB   0.52 dB\n"
                        "all       polarity   3 of 4   67 %      33 %     0.33      0.67\n");
}

TEST_F(LabSessionScore, PrintsJSON) {
  const auto result = lab_.run({"session", "score", "--json", "test.velto", "bob.csv"});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.out.starts_with(
      "{\"list\":\"" + list_.id() +
      "\",\"listeners\":[{\"file\":\"bob.csv\",\"scores\":[{\"drill\":\"level\",\"trials\":2,"
      "\"answers\":1,\"hits\":0,\"meanError\":2,"))
      << result.out;
  EXPECT_TRUE(result.out.ends_with("\"meanSeconds\":4,\"meanSwitches\":2}]}]}\n")) << result.out;
}

// Twenty listeners without ears give the answer that simulate names, each to 100 trials a drill of
// a list of their own. Hits are binomial: with the bounds used here, one of the 80 scores would be
// outside in 1 of 100 runs, and a sum, within four standard deviations, in 1 of 4000. The lists are
// fixed, and so is the outcome.
TEST_F(LabSessionScore, OfTwentyWhoDoNotListenIsWhatSimulatePredicts) {
  constexpr int listeners = 20, trials = 100;
  constexpr double confidence = 1 - 0.01 / (2 * 4 * listeners);
  struct Predicted {
    double answer = 0, hitRate = 0;
    int hits = 0;
  };
  std::map<std::string, Predicted> drills;
  const auto simulated =
      nlohmann::json::parse(lab_.run({"simulate", "--json", "--difficulty", "40"}).out);
  for (const nlohmann::json& row : simulated["trials"])
    drills[row["drill"]] = {.answer = row["fair"]["answer"], .hitRate = row["fair"]["hitRate"]};
  ASSERT_EQ(drills.size(), 4U);

  for (int listener = 0; listener < listeners; ++listener) {
    const auto made = lab_.run(newList({"--count", std::to_string(4 * trials), "--difficulty", "40",
                                        "--random-seed", std::to_string(listener)}));
    put("list.velto", made.out);
    put("blind.csv", resultsOf(listOf(made), [&](const Trial& trial) {
          return drills.at(std::string(trial.drill.rawValue())).answer;
        }));
    const auto scored = nlohmann::json::parse(
        lab_.run({"session", "score", "--json", "list.velto", "blind.csv"}).out);
    for (const nlohmann::json& score : scored["listeners"][0]["scores"]) {
      Predicted& drill = drills.at(score["drill"]);
      const int hits = score["hits"];
      EXPECT_EQ(score["answers"], trials);
      EXPECT_LE(hits, kit::mostHitsByChance(drill.hitRate, trials, confidence)) << score;
      EXPECT_LE(trials - hits, kit::mostHitsByChance(1 - drill.hitRate, trials, confidence))
          << score;
      EXPECT_NEAR(score["guessingHitRate"].get<double>(), drill.hitRate, 5e-4) << score;
      drill.hits += hits;
    }
  }
  for (const auto& [name, drill] : drills) {
    constexpr int all = listeners * trials;
    EXPECT_NEAR(drill.hits, drill.hitRate * all,
                4 * std::sqrt(all * drill.hitRate * (1 - drill.hitRate)))
        << name;
  }
}

TEST_F(LabSessionScore, GradesFromTheListWhateverTheFileSays) {
  std::string changed = resultsOf(list_, kit::missOf);
  const auto miss = changed.find(",0,4.000,2");
  ASSERT_NE(miss, changed.npos);
  put("bob.csv", changed.replace(miss, 2, ",1"));
  const auto result = lab_.run({"session", "score", "test.velto", "bob.csv"});
  EXPECT_NE(result.out.find("bob.csv   level      2 of 2   0 %"), result.out.npos) << result.out;
  EXPECT_TRUE(result.out.ends_with("bob.csv: line 2 was changed by hand; graded from the list\n"))
      << result.out;
}

TEST_F(LabSessionScore, RefusesWhatItCannotGrade) {
  TrialList other = list_;
  other.trials[0].seed = 9;
  put("other.csv", resultsOf(other, kit::truthOf));
  put("notes.csv", "Name,Points\n");
  for (const char* file : {"other.csv", "notes.csv", "none.csv"}) {
    const auto result = lab_.run({"session", "score", "test.velto", "anna.csv", file});
    EXPECT_EQ(result.status, 1) << file;
    EXPECT_TRUE(isOneComplaint(result.error)) << result.error;
    EXPECT_NE(result.error.find(file), result.error.npos);
    EXPECT_EQ(result.out, "");
  }
  EXPECT_EQ(lab_.run({"session", "score", "anna.csv", "anna.csv"}).status, 1);
  for (const Words& words : {Words{"session", "score"}, Words{"session", "score", "test.velto"},
                             Words{"session"}, Words{"session", "old"}})
    EXPECT_EQ(lab_.run(words).status, 2);
}

} // namespace
} // namespace velto
