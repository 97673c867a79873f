#include "Browser.h"

#include "Coding.h"
#include "Rendering.h"
#include "Scales.h"
#include "Session.h"
#include "Signals.h"
#include "Trial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <string_view>

using namespace velto;
using kit::Browser;
using nlohmann::json;

namespace {

enum Focus { elsewhere, drills, answer, slots, materials };
enum Flags { modified = 1, capsLock = 2, repeated = 4 };

// A page whose trial is rendered and plays.
Browser& playing(int drill = 0, bool fair = false, std::string_view record = {}) {
  Browser& browser = Browser::start(drill, fair, record);
  browser.renderLatest();
  velto_page_soundOpened(0);
  return browser;
}

Trial trialOf(const Browser::Job& job) {
  return Drills::makeTrial(job.difficulty,
                           Material::allCases[static_cast<std::size_t>(job.material)], job.seed,
                           Drill::allCases[static_cast<std::size_t>(job.drill)]);
}

std::vector<bool> chosen(const json& list) {
  std::vector<bool> flags;
  for (const json& choice : list)
    flags.push_back(choice["chosen"]);
  return flags;
}

// Submits the answer and says that the record is kept.
void submit() {
  velto_page_advance();
  velto_page_recordKept();
}

// The right answer, given by the command that the page has for it.
void answerRight(const Browser& browser) {
  const Trial trial = trialOf(browser.jobs.back());
  if (trial.drill == Drill::polarity)
    velto_page_answerSlot(static_cast<int>(trial.oddSlot));
  else
    velto_page_answerNearest(Drills::truth(trial));
}

} // namespace

TEST(PageStart, AsksForARenderOfEachDrillsTrial) {
  const int material[] = {0, 0, 1, 2}; // pink noise, pink noise, drums, pad
  for (int drill = 0; drill < 4; ++drill) {
    const Browser& browser = Browser::start(drill);
    ASSERT_EQ(browser.jobs.size(), 2U);
    const Browser::Job& job = browser.jobs.back();
    EXPECT_EQ(job.drill, drill);
    EXPECT_EQ(job.material, material[drill]);
    EXPECT_EQ(job.seed, 1'700'000'000U + 2 * 40503U);
    EXPECT_EQ(job.difficulty, 20);
    EXPECT_FALSE(job.fair);
    const json state = Browser::state();
    EXPECT_EQ(state["drill"], drill);
    EXPECT_EQ(state["rendering"], true);
    EXPECT_EQ(state["status"], "rendering…");
    EXPECT_EQ(state["canAdvance"], false);
  }
}

TEST(PageStart, OfAnUnknownDrillIsThatOfTheFirst) {
  for (const int drill : {-1, 4, std::numeric_limits<int>::max()}) {
    Browser::start(drill);
    EXPECT_EQ(Browser::state()["drill"], 0);
  }
}

TEST(PageStart, FairTrialsHaveMixedSeedsAndAudibleNoise) {
  const Browser& browser = Browser::start(3, true);
  EXPECT_TRUE(browser.jobs.back().fair);
  EXPECT_EQ(browser.jobs.back().seed, Drills::mixedSeed(1'700'000'000 + 2 * 40503));
}

// Polarity has three slots with channels of their own.
TEST(PageSound, PlaysTheSamplesOfTheTrialAsSoonAsTheOutputIsOpen) {
  for (const int drill : {0, 3}) {
    Browser& browser = Browser::start(drill);
    EXPECT_EQ(browser.openings, 0);
    browser.renderLatest();
    EXPECT_EQ(browser.openings, 1);
    EXPECT_TRUE(browser.plays.empty());
    velto_page_soundOpened(0.02);
    ASSERT_EQ(browser.plays.size(), 1U);
    const Browser::Play& play = browser.plays.back();
    EXPECT_EQ(play.chosen, 0);
    EXPECT_EQ(play.delayFrames, 4800); // 0.12 s less the latency
    EXPECT_FALSE(play.throughSilence);
    const auto wanted = Drills::render(trialOf(browser.jobs.back()), 3.2);
    ASSERT_EQ(play.samples.size(), 2 * wanted.size());
    for (std::size_t i = 0; i < play.samples.size(); ++i) {
      const auto& samples = *(i % 2 == 0 ? wanted[i / 2].l : wanted[i / 2].r);
      EXPECT_TRUE(std::equal(samples.begin(), samples.end(), play.samples[i].begin(),
                             play.samples[i].end()))
          << drill << ' ' << i;
    }
  }
}

TEST(PageSound, StartsAtOnceWhereTheLatencyIsLongerThanTheDelay) {
  Browser& browser = Browser::start();
  browser.renderLatest();
  velto_page_soundOpened(0.5);
  EXPECT_EQ(browser.plays.back().delayFrames, 0);
}

TEST(PageSound, FairPolarityTrialsSwitchThroughSilence) {
  EXPECT_TRUE(playing(3, true).plays.back().throughSilence);
  EXPECT_FALSE(playing(3, false).plays.back().throughSilence);
  EXPECT_FALSE(playing(0, true).plays.back().throughSilence);
}

TEST(PageSound, DropsARenderOfATrialThatWasReplaced) {
  Browser& browser = Browser::start();
  const Browser::Job first = browser.jobs.back();
  EXPECT_TRUE(Browser::press("n"));
  velto_page_beginRender(2, 10);
  velto_page_takeRender(first.seed);
  EXPECT_EQ(Browser::state()["rendering"], true);
  browser.renderLatest();
  EXPECT_EQ(Browser::state()["rendering"], false);
}

TEST(PageSound, IsSilentWhileSuspendedAndResumesAtTheSlot) {
  Browser& browser = playing();
  velto_page_chooseSlot(1);
  EXPECT_EQ(browser.switches, std::vector{1});
  const int silences = browser.silences;
  velto_page_suspend();
  EXPECT_EQ(browser.silences, silences + 1);
  EXPECT_TRUE(Browser::press("n"));
  browser.renderLatest();
  EXPECT_EQ(browser.plays.size(), 1U);
  velto_page_chooseSlot(1);
  velto_page_resume();
  ASSERT_EQ(browser.plays.size(), 2U);
  EXPECT_EQ(browser.plays.back().chosen, 1);
}

TEST(PageSound, IsAskedForAgainWithTheNextTrialAfterAFailure) {
  Browser& browser = playing();
  velto_page_input(0);
  velto_page_soundFailed(0);
  const int openings = browser.openings;
  EXPECT_TRUE(Browser::press("n"));
  browser.renderLatest();
  EXPECT_GT(browser.openings, openings);
}

TEST(Page, ShowsAFreshTrialOfEachDrill) {
  const char* prompts[] = {"One band is boosted. Point at it.", "B is louder than A. By how much?",
                           "B is compressed, loudness-matched. How much gain reduction?",
                           "One of the three has a flipped channel. Which?"};
  const char* texts[] = {"1k Hz", "2.00 dB", "5.00 dB"};
  const double highest[] = {16000, 7, 14};
  for (int drill = 0; drill < 4; ++drill) {
    playing(drill);
    const json state = Browser::state();
    EXPECT_EQ(state["prompt"], prompts[drill]);
    EXPECT_EQ(state["prompts"].size(), 4U);
    EXPECT_EQ(state["difficulty"], "20");
    EXPECT_EQ(state["spokenDifficulty"], "Difficulty, 20");
    EXPECT_EQ(state["difficultyShare"], 0.2);
    EXPECT_EQ(state["status"], "listen, then answer");
    EXPECT_EQ(state["primary"], "Submit");
    EXPECT_EQ(state["canAdvance"], drill < 3);
    EXPECT_FALSE(state.contains("verdict"));
    EXPECT_EQ(state["answer"]["answerable"], true);
    std::vector<bool> drillFlags(4);
    drillFlags[static_cast<std::size_t>(drill)] = true;
    EXPECT_EQ(chosen(state["drills"]), drillFlags);
    if (drill < 3) {
      EXPECT_EQ(state["answer"]["text"], texts[drill]);
      EXPECT_EQ(state["answer"]["highest"], highest[drill]);
      EXPECT_EQ(state["answer"]["truthText"], "");
      EXPECT_EQ(state["slots"].size(), 2U);
      EXPECT_EQ(state["slots"][1]["title"], "B");
      EXPECT_EQ(state["slots"][1]["name"], "Play B");
    } else {
      EXPECT_EQ(state["slots"].size(), 3U);
      EXPECT_EQ(chosen(state["answer"]["choices"]), (std::vector{false, false, false}));
      EXPECT_EQ(state["answer"]["choices"][2]["title"], "3");
      EXPECT_EQ(state["answer"]["choices"][2]["name"], "Slot 3");
      EXPECT_EQ(state["answer"]["choices"][2]["caption"], "?");
      EXPECT_EQ(state["answer"]["choices"][2]["description"], "");
    }
  }
}

TEST(Page, GradesARightAnswerInEachDrillAndKeepsIt) {
  for (int drill = 0; drill < 4; ++drill) {
    Browser& browser = playing(drill);
    EXPECT_FALSE(browser.kept);
    answerRight(browser);
    submit();
    const json state = Browser::state();
    ASSERT_TRUE(state.contains("verdict")) << drill;
    EXPECT_EQ(state["verdict"]["correct"], true);
    EXPECT_EQ(state["verdict"]["word"], "HIT");
    EXPECT_EQ(state["primary"], "Next");
    EXPECT_EQ(state["canAdvance"], true);
    EXPECT_EQ(state["answer"]["answerable"], false);
    EXPECT_EQ(state["progress"]["today"], "1");
    EXPECT_EQ(state["progress"]["accuracy"], "100%");
    if (drill < 3) {
      EXPECT_NE(state["answer"]["truthText"], "");
      EXPECT_NE(state["answer"]["spoken"].get<std::string>().find(", actual "), std::string::npos);
    }
    ASSERT_TRUE(browser.kept);
    const auto stored = Coding::decodeStored(*browser.kept);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->attempts.size(), 1U);

    const std::size_t jobs = browser.jobs.size();
    velto_page_advance();
    EXPECT_EQ(browser.jobs.size(), jobs + 1);
    EXPECT_FALSE(Browser::state().contains("verdict"));
  }
}

TEST(Page, ShowsTheFlippedSlotAndTheChosenOneOfAMiss) {
  const Browser& browser = playing(3);
  const auto odd = static_cast<std::size_t>(trialOf(browser.jobs.back()).oddSlot);
  const std::size_t wrong = (odd + 1) % 3;
  velto_page_answerSlot(static_cast<int>(wrong));
  submit();
  const json state = Browser::state();
  EXPECT_EQ(state["verdict"]["word"], "MISS");
  for (std::size_t i = 0; i < 3; ++i) {
    const json& choice = state["answer"]["choices"][i];
    EXPECT_EQ(choice["caption"], i == odd ? "FLIPPED" : "in phase");
    EXPECT_EQ(choice["description"], choice["caption"]);
    EXPECT_EQ(choice["flipped"], i == odd);
    EXPECT_EQ(choice["chosen"], i == wrong);
    EXPECT_EQ(choice["dot"], i == wrong);
  }
}

TEST(Page, TakesNoAnswerAfterTheVerdict) {
  for (int drill = 0; drill < 4; ++drill) {
    const Browser& browser = playing(drill);
    answerRight(browser);
    submit();
    const json before = Browser::state();
    velto_page_answerAt(1, 100);
    velto_page_answerSlot(0);
    velto_page_answerSlot(1);
    velto_page_answerNearest(3);
    for (const char* key : {"ArrowLeft", "ArrowRight", "Home", "End"})
      EXPECT_TRUE(Browser::press(key, answer));
    EXPECT_EQ(Browser::state(), before) << drill;
  }
}

TEST(Page, RestoresTheRecordItStartsWith) {
  const Browser& first = playing(1);
  answerRight(first);
  submit();
  const std::string record = first.kept.value();
  playing(1, false, record);
  const json state = Browser::state();
  EXPECT_EQ(state["progress"]["today"], "1");
  EXPECT_EQ(state["progress"]["accuracy"], "100%");
}

TEST(Page, StartsEmptyWithARecordThatCannotBeRead) {
  for (const char* record : {"", "{", "null", "\xff"}) {
    playing(0, false, record);
    EXPECT_EQ(Browser::state()["progress"]["today"], "0");
  }
}

TEST(Page, IgnoresIndicesThatAreOutOfRange) {
  const Browser& browser = playing(3);
  const json before = Browser::state();
  const std::size_t jobs = browser.jobs.size();
  for (const int index :
       {-1, 4, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    velto_page_chooseDrill(index);
    velto_page_chooseMaterial(index);
    velto_page_chooseSlot(index);
    velto_page_answerSlot(index);
  }
  velto_page_answerSlot(3);
  velto_page_chooseSlot(3);
  EXPECT_EQ(Browser::state(), before);
  EXPECT_EQ(browser.jobs.size(), jobs);
}

TEST(PageKeys, DriveATrialOfEachDrill) {
  for (int drill = 0; drill < 4; ++drill) {
    Browser& browser = playing(drill);
    EXPECT_TRUE(Browser::press(" "));
    EXPECT_EQ(browser.switches.back(), 1);
    EXPECT_TRUE(Browser::press("1"));
    EXPECT_EQ(browser.switches.back(), 0);
    EXPECT_TRUE(Browser::press("ArrowRight", answer));
    EXPECT_TRUE(Browser::press("Enter"));
    velto_page_recordKept();
    EXPECT_TRUE(Browser::state().contains("verdict"));
    EXPECT_TRUE(Browser::press("Enter"));
    EXPECT_FALSE(Browser::state().contains("verdict"));
  }
}

TEST(PageKeys, MoveTheAnswerAlongTheScale) {
  playing(0);
  const auto value = [] { return Browser::state()["answer"]["value"].get<double>(); };
  const std::array<std::pair<const char*, double>, 8> moves{{{"ArrowRight", 1250},
                                                             {"ArrowUp", 1600},
                                                             {"ArrowLeft", 1250},
                                                             {"ArrowDown", 1000},
                                                             {"PageUp", 2000},
                                                             {"PageDown", 1000},
                                                             {"Home", 40},
                                                             {"End", 16000}}};
  for (const auto& [key, wanted] : moves) {
    EXPECT_TRUE(Browser::press(key, answer));
    EXPECT_EQ(value(), wanted) << key;
  }
  EXPECT_FALSE(Browser::press("ArrowLeft", elsewhere));
  EXPECT_FALSE(Browser::press("ArrowLeft", answer, modified));
  EXPECT_EQ(value(), 16000);
}

TEST(PageKeys, MoveTheChoiceOfAGroup) {
  Browser& browser = playing(0);
  EXPECT_TRUE(Browser::press("ArrowLeft", drills));
  EXPECT_EQ(Browser::state()["drill"], 3);
  browser.renderLatest();
  EXPECT_TRUE(Browser::press("Home", drills));
  EXPECT_EQ(Browser::state()["drill"], 0);
  EXPECT_TRUE(Browser::press("End", materials));
  EXPECT_EQ(chosen(Browser::state()["materials"]), (std::vector{false, false, true}));
  EXPECT_TRUE(Browser::press("ArrowRight", slots));
  EXPECT_EQ(chosen(Browser::state()["slots"]), (std::vector{false, true}));
  EXPECT_TRUE(Browser::press("ArrowRight", slots));
  EXPECT_EQ(chosen(Browser::state()["slots"]), (std::vector{true, false}));
}

TEST(PageKeys, StartNoTrialIfTheChoiceStaysTheSame) {
  const Browser& browser = playing(0);
  const std::size_t jobs = browser.jobs.size();
  EXPECT_TRUE(Browser::press("Home", drills));
  EXPECT_TRUE(Browser::press("PageUp", materials));
  EXPECT_EQ(browser.jobs.size(), jobs);
}

TEST(PageKeys, AreInertWithModifiersAndWithCapsLock) {
  Browser& browser = playing(0);
  const std::size_t jobs = browser.jobs.size();
  for (const int flags : {+modified, +capsLock})
    for (const char* key : {" ", "1", "2", "n"})
      EXPECT_FALSE(Browser::press(key, elsewhere, flags));
  EXPECT_FALSE(Browser::press("N"));
  EXPECT_TRUE(browser.switches.empty());
  EXPECT_EQ(browser.jobs.size(), jobs);
  EXPECT_FALSE(Browser::press("Enter", elsewhere, modified));
  EXPECT_FALSE(Browser::state().contains("verdict"));
  EXPECT_TRUE(Browser::press("Enter", elsewhere, capsLock));
  velto_page_recordKept();
  EXPECT_TRUE(Browser::state().contains("verdict"));
}

TEST(PageKeys, AHeldReturnSubmitsOnce) {
  playing(0);
  EXPECT_TRUE(Browser::press("Enter"));
  velto_page_recordKept();
  EXPECT_TRUE(Browser::press("Enter", elsewhere, repeated));
  EXPECT_TRUE(Browser::state().contains("verdict"));
}

TEST(PageLayout, PlacesTicksMarkersAndChips) {
  const Browser& browser = playing(0);
  velto_page_answerAt(0, 738);
  json strip = Browser::parsed(velto_page_strip(738, 60, 100, 1));
  EXPECT_EQ(strip["ticks"].size(), 27U);
  EXPECT_EQ(strip["ticks"][4]["label"], "100");
  EXPECT_EQ(strip["ticks"][4]["height"], 22);
  EXPECT_EQ(strip["ticks"][0]["left"], 0);
  EXPECT_EQ(strip["ticks"][26]["left"], 737);
  EXPECT_EQ(strip["markerWidth"], 2);
  EXPECT_EQ(strip["answer"]["bar"], -1);
  EXPECT_EQ(strip["answer"]["chipX"], 6);
  EXPECT_EQ(strip["answer"]["chipY"], 6);
  EXPECT_FALSE(strip.contains("truth"));
  submit();
  strip = Browser::parsed(velto_page_strip(738, 60, 100, 1));
  const double x = frequencyScale.position(trialOf(browser.jobs.back()).targetFreq, 738);
  EXPECT_NEAR(strip["truth"]["bar"].get<double>(), x - 1, 0.5);
}

TEST(PageLayout, HasNoStripForSlots) {
  playing(3);
  EXPECT_TRUE(Browser::parsed(velto_page_strip(738, 60, 100, 1)).is_null());
  const json shares = Browser::parsed(velto_page_slotShares(740, 1));
  ASSERT_EQ(shares.size(), 3U);
  EXPECT_EQ(shares[0], (json{{"left", 0}, {"width", 240}}));
  EXPECT_EQ(shares[2], (json{{"left", 500}, {"width", 240}}));
}

TEST(PageLayout, HasBarsAndACurve) {
  playing(1);
  EXPECT_EQ(Browser::parsed(velto_page_mapShares(320, 1)).size(), 27U);
  EXPECT_TRUE(Browser::parsed(velto_page_curve(320, 64)).empty());
  for (int i = 0; i < 2; ++i) {
    Browser& browser = Browser::ofPage();
    answerRight(browser);
    submit();
    velto_page_advance();
    browser.renderLatest();
  }
  const json curve = Browser::parsed(velto_page_curve(320, 64));
  ASSERT_EQ(curve.size(), 2U);
  EXPECT_EQ(curve[0][0], 0);
  EXPECT_EQ(curve[1][0], 320);
  EXPECT_EQ(Browser::state()["progress"]["hasCurve"], true);
}

TEST(PageLayout, SurvivesWidthsThatMakeNoSense) {
  playing(0);
  for (const double width : {0.0, -5.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
    velto_page_answerAt(10, width);
    EXPECT_NO_FATAL_FAILURE((void)Browser::parsed(velto_page_strip(width, 60, 60, 1)));
    (void)Browser::parsed(velto_page_mapShares(width, 1));
    (void)Browser::parsed(velto_page_curve(width, 64));
  }
  EXPECT_GE(Browser::state()["answer"]["value"].get<double>(), 40);
}

TEST(PageOutline, IsAPolygonThatFitsAnyElement) {
  const json outline = Browser::parsed(velto_page_outline(10, 2));
  const std::string fill = outline["fill"], frame = outline["frame"];
  EXPECT_TRUE(fill.starts_with("polygon(0px 14.197px, ")) << fill.substr(0, 60);
  EXPECT_NE(fill.find(", 14.197px 0px, calc(100% - 14.197px) 0px, "), std::string::npos);
  EXPECT_NE(fill.find(", calc(100% - 0px) 14.197px, calc(100% - 0px) calc(100% - 14.197px), "),
            std::string::npos);
  EXPECT_NE(fill.find(", calc(100% - 14.197px) calc(100% - 0px), 14.197px calc(100% - 0px), "),
            std::string::npos);
  EXPECT_TRUE(fill.ends_with(", 0px 14.197px)"));
  EXPECT_EQ(std::count(fill.begin(), fill.end(), ','), 4 * 25);
  // The outline, and that of a box 2 points smaller on each side.
  EXPECT_TRUE(frame.starts_with("polygon(evenodd, 0px 14.197px, "));
  EXPECT_NE(frame.find(", 0px 14.197px, 2px 13.358px, "), std::string::npos);
  EXPECT_TRUE(frame.ends_with(", 2px 13.358px)"));
}

TEST(PageWords, AreThoseOfTheWindow) {
  const json words = Browser::parsed(velto_page_words());
  EXPECT_EQ(words["wordmark"], "MORLA Velto");
  EXPECT_EQ(words["subtitle"],
            "VELTO GYM ·\u00a0FREQUENCY ·\u00a0LEVEL ·\u00a0DYNAMICS ·\u00a0POLARITY");
  EXPECT_EQ(words["switchHint"], "space = switch");
  EXPECT_EQ(words["keyHint"], "1/2/3 pick · space switch · ↩ submit");
  EXPECT_EQ(words["primary"], (json{"Submit", "Next"}));
  EXPECT_EQ(words.size(), 16U);
}

TEST(PageColours, AreThoseOfTheWindowAsCss) {
  const json palettes = Browser::parsed(velto_page_palettes());
  EXPECT_EQ(palettes["dark"]["bg"], "rgb(11 12 15)");
  EXPECT_EQ(palettes["dark"]["line"], "rgb(38 39 46)");
  EXPECT_EQ(palettes["light"]["line"], "rgb(27 29 34 / 0.12)");
  EXPECT_EQ(palettes["light"]["bad"], "rgb(192 57 43)");
  EXPECT_EQ(palettes["dark"].size(), 16U);
}

TEST(PageColours, TellBandsApartByTheirError) {
  playing(0);
  const json bars = Browser::state()["progress"]["bars"];
  ASSERT_EQ(bars.size(), 27U);
  EXPECT_EQ(bars[0],
            (json{{"height", 6}, {"dark", "rgb(31 33 41)"}, {"light", "rgb(232 221 212)"}}));
  const double target = trialOf(Browser::ofPage().jobs.back()).targetFreq;
  velto_page_answerAt(target > 800 ? 0 : 100, 100); // more than 1.2 octaves off
  submit();
  const json after = Browser::state()["progress"]["bars"];
  const json& missed = after[Bands::nearestIndex(target)];
  EXPECT_EQ(missed,
            (json{{"height", 34}, {"dark", "rgb(231 76 60)"}, {"light", "rgb(192 57 43)"}}));
}

namespace {

bool merge(const std::string& record) {
  std::copy(record.begin(), record.end(), velto_page_input(record.size()));
  return velto_page_mergeRecord(record.size());
}

// The record of a page on which `answers` answers were given.
std::string recordOf(int answers) {
  Browser& browser = playing(1);
  for (int i = 0; i < answers; ++i) {
    submit();
    velto_page_advance();
    browser.renderLatest();
  }
  return browser.kept.value();
}

std::size_t rows(const std::string& record) {
  return Coding::decodeStored(record).value().attempts.size();
}

} // namespace

TEST(PageRecord, IsKeptBeforeTheVerdictShows) {
  for (int drill = 0; drill < 4; ++drill) {
    Browser& browser = playing(drill, false, recordOf(1));
    answerRight(browser);
    const json before = Browser::state();
    velto_page_advance();
    EXPECT_EQ(rows(browser.kept.value()), 2U);
    json state = Browser::state();
    EXPECT_FALSE(state.contains("verdict"));
    EXPECT_EQ(state["status"], "saving…");
    EXPECT_EQ(state["canAdvance"], false);
    EXPECT_EQ(state["answer"]["answerable"], false);
    EXPECT_EQ(state["progress"], before["progress"]) << "figures give nothing away";
    EXPECT_EQ(Browser::parsed(velto_page_curve(320, 64)).size(), 0U);

    // The trial can neither be left nor answered again.
    browser.kept.reset();
    const std::size_t jobs = browser.jobs.size();
    for (const char* key : {"Enter", "n"})
      EXPECT_TRUE(Browser::press(key));
    EXPECT_TRUE(Browser::press("Home", answer));
    velto_page_advance();
    velto_page_chooseDrill((drill + 1) % 4);
    velto_page_chooseMaterial(1);
    velto_page_answerSlot(0);
    velto_page_answerAt(1, 100);
    EXPECT_EQ(Browser::state(), state);
    EXPECT_EQ(browser.jobs.size(), jobs);
    EXPECT_FALSE(browser.kept);

    velto_page_recordKept();
    state = Browser::state();
    EXPECT_EQ(state["verdict"]["word"], "HIT");
    EXPECT_EQ(state["progress"]["today"], "2");
    EXPECT_FALSE(browser.kept) << "it is kept once";
    EXPECT_TRUE(Browser::press("n"));
    EXPECT_EQ(browser.jobs.size(), jobs + 1);
  }
}

TEST(PageRecord, LetsPracticeGoOnWhereItCannotBeKept) {
  const std::string other = recordOf(2);
  Browser& browser = playing(1);
  velto_page_advance();
  velto_page_recordFailed();
  EXPECT_TRUE(Browser::state().contains("verdict"));
  EXPECT_EQ(Browser::state()["progress"]["today"], "1");
  velto_page_recordFailed();
  velto_page_recordKept();
  EXPECT_EQ(Browser::state()["progress"]["today"], "1");
  velto_page_advance();
  browser.renderLatest();
  velto_page_advance();
  EXPECT_EQ(rows(browser.kept.value()), 2U) << "the next save has both";
  velto_page_recordFailed();
  EXPECT_TRUE(merge(other));
  EXPECT_EQ(rows(browser.kept.value()), 4U) << "so has a merge";
}

TEST(PageRecord, ShowsTheVerdictAfterAMerge) {
  const std::string other = recordOf(2);
  Browser& browser = playing(1);
  velto_page_advance();
  EXPECT_TRUE(merge(other));
  EXPECT_FALSE(Browser::state().contains("verdict"));
  EXPECT_EQ(rows(browser.kept.value()), 3U);
  velto_page_recordKept();
  EXPECT_TRUE(Browser::state().contains("verdict"));
  velto_page_advance();
  browser.renderLatest();
  submit();
  EXPECT_EQ(rows(browser.kept.value()), 4U);
  EXPECT_EQ(Browser::state()["progress"]["today"], "4");
}

TEST(PageRecord, MergesWhatAnotherPageHasKept) {
  const std::string other = recordOf(2);
  Browser& browser = playing(1);
  velto_page_advance();
  ASSERT_EQ(rows(browser.kept.value()), 1U);
  EXPECT_TRUE(merge(other));
  EXPECT_EQ(rows(browser.kept.value()), 3U);
  EXPECT_TRUE(merge(other)) << "each answer counts once";
  EXPECT_EQ(rows(browser.kept.value()), 3U);
  velto_page_recordKept();
  velto_page_advance();
  browser.renderLatest();
  submit();
  EXPECT_EQ(rows(browser.kept.value()), 4U);
  EXPECT_EQ(Browser::state()["progress"]["today"], "4");
}

TEST(PageRecord, KeepsWhatItStartedWithInAMerge) {
  const std::string first = recordOf(2);
  const std::string other = recordOf(3);
  Browser& browser = playing(1, false, first);
  EXPECT_TRUE(merge(other));
  EXPECT_EQ(rows(browser.kept.value()), 5U);
}

TEST(PageRecord, RefusesToMergeWhatIsNoRecord) {
  const Browser& browser = playing(1);
  for (const char* text : {"", "{", "[]", "\xff"}) {
    EXPECT_FALSE(merge(text));
    EXPECT_FALSE(browser.kept);
  }
}

TEST(PageRecord, TellsRecordsFromOtherTexts) {
  const auto isRecord = [](const std::string& text) {
    std::copy(text.begin(), text.end(), velto_page_input(text.size()));
    return velto_page_isRecord(text.size());
  };
  EXPECT_TRUE(isRecord(recordOf(1)));
  EXPECT_FALSE(isRecord(""));
  EXPECT_FALSE(isRecord("{}x"));
}
