#include "Rendering.h"
#include "Session.h"
#include "Signals.h"

#include "kit/FakeOutput.h"
#include "kit/ManualQueues.h"
#include "kit/ScratchProfile.h"
#include "kit/TestPlayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

using namespace velto;

namespace {

constexpr double launchTime = 1'700'000'000.75;
constexpr std::uint64_t launchCounter = 1'700'000'000;

struct Rig {
  kit::ScratchProfile scratch;
  kit::ManualQueues work;
  kit::FakeOutput output;
  std::unique_ptr<Session> session;

  explicit Rig(Drill drill = Drill::frequency, double time = launchTime,
               Session::Trials trials = Session::Trials::standard)
      : session(std::make_unique<Session>(drill, work.queues(), kit::makePlayer(output.factory()),
                                          time, trials)) {}

  Session& operator*() const { return *session; }
  Session* operator->() const { return session.get(); }

  // Delivers all pending renders.
  Rig& settle() {
    work.settle();
    return *this;
  }
};

} // namespace

TEST(SessionStart, MakesTwoTrialsAndPublishesTheSecond) {
  Rig rig;
  EXPECT_EQ(rig.work.background.size(), 2U);
  EXPECT_EQ(rig->counter(), launchCounter + 81006);
  ASSERT_TRUE(rig->trial());
  EXPECT_EQ(rig->trial()->seed, launchCounter + 81006);
  EXPECT_EQ(*rig->trial(),
            Drills::makeTrial(20, Material::pinkNoise, launchCounter + 81006, Drill::frequency));
}

TEST(SessionStart, SetsEachDrillsMaterialAndAnswer) {
  const struct {
    Drill drill;
    Material material;
    double answer;
  } rows[] = {{Drill::frequency, Material::pinkNoise, 1000},
              {Drill::level, Material::pinkNoise, 2},
              {Drill::dynamics, Material::drums, 5},
              {Drill::polarity, Material::pad, -1}};
  for (const auto& row : rows) {
    Rig rig(row.drill);
    EXPECT_EQ(rig->drill(), row.drill);
    EXPECT_EQ(rig->material(), row.material);
    EXPECT_EQ(rig->trial()->material, row.material);
    EXPECT_EQ(rig->answer(), row.answer);
    EXPECT_EQ(rig->currentSlot(), 0);
    EXPECT_TRUE(rig->rendering());
    EXPECT_FALSE(rig->grade());
    EXPECT_FALSE(rig->suspended());
    EXPECT_TRUE(rig->slots().empty());
  }
}

TEST(SessionStart, DropsTheRenderOfTheFirstTrial) {
  Rig rig;
  kit::ManualQueues::runOne(rig.work.background);
  kit::ManualQueues::runOne(rig.work.main);
  EXPECT_TRUE(rig->rendering());
  EXPECT_FALSE(rig->player().isPlaying());
  rig.settle();
  EXPECT_FALSE(rig->rendering());
  EXPECT_TRUE(rig->player().isPlaying());
  EXPECT_EQ(rig->slots().size(), 2U);
  const auto expected = Drills::render(*rig->trial(), Session::trialSeconds);
  EXPECT_TRUE(std::ranges::equal(*rig->slots()[1].l, *expected[1].l));
}

TEST(SessionStartDeathTest, DiesIfTheTimeIsInvalid) {
  const double impossible[] = {-1.0, std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity(), 0x1p64};
  const kit::ScratchProfile scratch;
  kit::ManualQueues work;
  kit::FakeOutput output;
  for (const double time : impossible)
    EXPECT_DEATH(Session(Drill::frequency, work.queues(), kit::makePlayer(output.factory()), time),
                 "system time is out of range");
}

TEST(SessionChanges, TheOldTrialPlaysOnUntilTheNewOneIsRendered) {
  Rig rig;
  rig.settle();
  const auto heard = rig->slots()[0].l;
  rig->newTrial();
  EXPECT_TRUE(rig->player().isPlaying());
  EXPECT_EQ(rig->slots()[0].l, heard);
  rig.settle();
  EXPECT_NE(rig->slots()[0].l, heard);
}

// Whether the switch from the first slot to the second crossfades, judged by the volumes halfway.
Switching switchingHeard(Rig& rig) {
  rig.settle();
  (void)rig.output.pull(20000, 480);
  rig->select(1);
  (void)rig.output.pull(3600, 480);
  const auto& nodes = rig->player().nodes();
  return nodes[0].volume() == 0 && nodes[1].volume() == 0 ? Switching::throughSilence
                                                          : Switching::crossfade;
}

TEST(SessionFairTrials, MixTheSeedAndAdvanceTheCounterNormally) {
  Rig rig(Drill::level, launchTime, Session::Trials::fair);
  EXPECT_EQ(rig->counter(), launchCounter + 81006);
  EXPECT_EQ(*rig->trial(),
            Drills::makeTrial(20, Material::pinkNoise, Drills::mixedSeed(launchCounter + 81006),
                              Drill::level));
  rig->newTrial();
  EXPECT_EQ(rig->counter(), launchCounter + 81006 + 40503);
  EXPECT_EQ(rig->trial()->seed, Drills::mixedSeed(rig->counter()));
}

TEST(SessionFairTrials, PlayAudibleNoise) {
  for (const Drill drill : Drill::allCases) {
    Rig rig(drill, launchTime, Session::Trials::fair);
    rig.settle();
    const auto expected = Drills::render(*rig->trial(), Session::trialSeconds, Noise::audible);
    ASSERT_EQ(rig->slots().size(), expected.size());
    for (std::size_t s = 0; s < expected.size(); ++s) {
      EXPECT_TRUE(std::ranges::equal(*rig->slots()[s].l, *expected[s].l));
      EXPECT_TRUE(std::ranges::equal(*rig->slots()[s].r, *expected[s].r));
    }
  }
}

TEST(SessionFairTrials, SwitchThroughSilenceInPolarityOnly) {
  for (const Drill drill : Drill::allCases) {
    Rig standard(drill);
    EXPECT_EQ(switchingHeard(standard), Switching::crossfade);
    Rig fair(drill, launchTime, Session::Trials::fair);
    EXPECT_EQ(switchingHeard(fair),
              drill == Drill::polarity ? Switching::throughSilence : Switching::crossfade);
  }
}

TEST(SessionFairTrials, KeepTheSwitchingOfThePlayingSlotsAcrossASuspension) {
  Rig rig(Drill::polarity, launchTime, Session::Trials::fair);
  rig.settle();
  rig->setDrill(Drill::level); // is not rendered yet: the polarity trial plays on
  rig->suspend();
  rig->resume();
  (void)rig.output.pull(20000, 480);
  rig->select(1);
  (void)rig.output.pull(3600, 480);
  EXPECT_EQ(rig->player().nodes()[0].volume(), 0);
  EXPECT_EQ(rig->player().nodes()[1].volume(), 0);
}

TEST(SessionSubmit, GradesAndRecordsOnce) {
  Rig rig;
  rig.settle();
  rig->setAnswer(rig->trial()->targetFreq);
  rig->submit();
  ASSERT_TRUE(rig->grade());
  EXPECT_EQ(*rig->grade(), Drills::grade(rig->trial()->targetFreq, *rig->trial()));
  ASSERT_EQ(rig->profile().attempts().size(), 1U);
  EXPECT_TRUE(rig->profile().attempts()[0].correct);
  EXPECT_EQ(rig->profile().staircase(Drill::frequency).consecutiveCorrect, 1);
  EXPECT_FALSE(rig->canSubmit());
  rig->submit();
  EXPECT_EQ(rig->profile().attempts().size(), 1U);
  EXPECT_TRUE(rig->player().isPlaying());
}

TEST(SessionSuspension, ResumingWithoutASuspensionDoesNothing) {
  Rig rig;
  rig.settle();
  rig->stopPlayback();
  rig->resume();
  EXPECT_FALSE(rig->player().isPlaying());
}

TEST(SessionNotification, ComesBeforeAndAfterEachChange) {
  Rig rig;
  rig.settle();
  std::vector<double> before, after;
  rig->objectWillChange.subscribe([&](Session::Field) { before.push_back(rig->answer()); });
  rig->objectDidChange.subscribe([&](Session::Field) { after.push_back(rig->answer()); });
  rig->setAnswer(40);
  rig->setAnswer(40);
  EXPECT_EQ(before, (std::vector<double>{1000, 40}));
  EXPECT_EQ(after, (std::vector<double>{40, 40}));
}

TEST(SessionNotification, NamesEachFieldAsItIsAssigned) {
  using enum Session::Field;
  using Fields = std::vector<Session::Field>;
  Rig rig;
  Fields before, after;
  rig->objectWillChange.subscribe([&](Session::Field field) { before.push_back(field); });
  rig->objectDidChange.subscribe([&](Session::Field field) { after.push_back(field); });
  const auto expect = [&](const Fields& fields) {
    EXPECT_EQ(before, fields);
    EXPECT_EQ(after, fields);
    before.clear();
    after.clear();
  };
  rig->newTrial();
  expect({grade, trial, answer, currentSlot, rendering});
  rig.settle();
  expect({rendering, currentSlot});
  rig->select(1);
  expect({currentSlot});
  rig->cycleSlot();
  expect({currentSlot});
  rig->setAnswer(40);
  expect({answer});
  rig->submit();
  expect({grade, record});
  rig->setMaterial(Material::drums);
  expect({material, grade, trial, answer, currentSlot, rendering});
  rig->setDrill(Drill::level);
  expect({drill, material, grade, trial, answer, currentSlot, rendering});
}

TEST(SessionNotification, SubmittingNotifiesOfTheGradeAndThenOfTheRecord) {
  Rig rig;
  rig.settle();
  struct Seen {
    bool graded;
    std::size_t recorded;
    bool operator==(const Seen&) const = default;
  };
  std::vector<Seen> before, after;
  const auto look = [&] {
    return Seen{rig->grade().has_value(), rig->profile().attempts().size()};
  };
  rig->objectWillChange.subscribe([&](Session::Field) { before.push_back(look()); });
  rig->objectDidChange.subscribe([&](Session::Field) { after.push_back(look()); });
  rig->submit();
  EXPECT_EQ(before, (std::vector<Seen>{{false, 0}, {true, 1}}));
  EXPECT_EQ(after, (std::vector<Seen>{{true, 0}, {true, 1}}));
}

TEST(SessionRendering, SkipsTrialsThatWereReplaced) {
  Rig rig;
  rig.settle();
  rig->newTrial();
  rig->newTrial();
  ASSERT_TRUE(kit::ManualQueues::runOne(rig.work.background));
  EXPECT_EQ(rig.work.main.size(), 0U);
  ASSERT_TRUE(kit::ManualQueues::runOne(rig.work.background));
  EXPECT_EQ(rig.work.main.size(), 1U);
}

TEST(SessionLifetime, ARenderMayArriveAfterTheSession) {
  Rig rig;
  while (kit::ManualQueues::runOne(rig.work.background)) {
  }
  rig.session.reset();
  while (kit::ManualQueues::runOne(rig.work.main)) {
  }
}
