#include "AssignedCourse.h"
#include "Rendering.h"
#include "Session.h"

#include "kit/Answers.h"
#include "kit/FakeOutput.h"
#include "kit/Files.h"
#include "kit/TestPlayer.h"
#include "kit/WorkerQueues.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

using namespace velto;

namespace {

namespace fs = std::filesystem;

const TrialList threeTrials{
    .difficulty = TrialList::Difficulty::fixed,
    .trials = {{Drill::polarity, Material::pinkNoise, 40, 0x9e3779b97f4a7c15},
               {Drill::level, Material::drums, 60, 0},
               {Drill::frequency, Material::pad, 12.5, 0x9e3779b97f4a7c15}}};

// A folder with a list, its results, and a place for a record that must not come to be.
struct Desk {
  explicit Desk(const TrialList& list = threeTrials) {
    kit::put(listFile(), list.text());
    ::setenv("VELTO_PROFILE_DIR", record().c_str(), 1);
  }
  ~Desk() { ::unsetenv("VELTO_PROFILE_DIR"); }
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  [[nodiscard]] fs::path folder() const { return scratch_.path() / "files"; }
  [[nodiscard]] fs::path listFile() const { return folder() / "test.velto"; }
  [[nodiscard]] fs::path results() const { return folder() / "mine.csv"; }
  [[nodiscard]] fs::path record() const { return scratch_.path() / "record"; }
  [[nodiscard]] std::size_t answersOnDisk() const {
    const std::string text = kit::contentOf(results());
    const auto lines = std::count(text.begin(), text.end(), '\n');
    return lines == 0 ? 0 : static_cast<std::size_t>(lines) - 1;
  }

private:
  kit::ScratchFolder scratch_;
};

// One run of the program on a desk.
struct Playing {
  kit::WorkerQueues work;
  kit::FakeOutput output;
  Session session;

  explicit Playing(const Desk& desk)
      : session(std::make_unique<AssignedCourse>(
                    std::get<Assignment>(Assignment::open(desk.listFile(), desk.results())),
                    work.queues()),
                Drill::frequency, work.queues(), kit::makePlayer(output.factory()), 0,
                Session::Trials::fair) {}

  Session* operator->() { return &session; }

  void render() {
    work.runUntil([this] { return !session.rendering(); });
  }
  // Renders, answers, and waits for the verdict or an error.
  void answer(double value) {
    render();
    session.setAnswer(value);
    session.submit();
    work.runUntil([this] { return !session.keeping().isPending; });
  }
};

} // namespace

TEST(AssignedSession, PlaysTheListWithItsSeedsAndWithFairSound) {
  const Desk desk;
  Playing run(desk);
  EXPECT_FALSE(run->isFree());
  for (std::size_t i = 0; i < threeTrials.trials.size(); ++i) {
    const ListedTrial& listed = threeTrials.trials[i];
    run.render();
    const Trial expected =
        Drills::makeTrial(listed.difficulty, listed.material, listed.seed, listed.drill);
    EXPECT_EQ(run->trial(), expected);
    EXPECT_EQ(run->drill(), listed.drill);
    EXPECT_EQ(run->material(), listed.material);
    ASSERT_TRUE(run->place());
    EXPECT_EQ(run->place()->number, i + 1);
    EXPECT_EQ(run->place()->count, 3U);
    const auto slots = Drills::render(expected, Session::trialSeconds, Noise::audible);
    ASSERT_EQ(run->slots().size(), slots.size());
    for (std::size_t slot = 0; slot < slots.size(); ++slot) {
      EXPECT_TRUE(std::ranges::equal(*run->slots()[slot].l, *slots[slot].l)) << i;
      EXPECT_TRUE(std::ranges::equal(*run->slots()[slot].r, *slots[slot].r)) << i;
    }
    EXPECT_FALSE(run->isOver());
    run.answer(kit::truthOf(expected));
    ASSERT_TRUE(run->grade());
    EXPECT_TRUE(run->grade()->correct);
    EXPECT_EQ(run->isOver(), i == 2);
    run->newTrial();
  }
  EXPECT_TRUE(run->grade()) << "the last verdict stays";
  EXPECT_EQ(run->place()->number, 3U);
}

TEST(AssignedSession, SkipsAndRepeatsNothing) {
  const Desk desk;
  Playing run(desk);
  const auto first = run->trial();
  run->newTrial();
  run->setDrill(Drill::dynamics);
  run->setMaterial(Material::pad);
  EXPECT_EQ(run->trial(), first);
  EXPECT_EQ(run->drill(), Drill::polarity);
  EXPECT_EQ(run->material(), Material::pinkNoise);
  run.render();
  run->newTrial();
  EXPECT_EQ(run->trial(), first);
  EXPECT_FALSE(run->rendering()) << "nothing is rendered anew";
  run.answer(1);
  run->submit();
  EXPECT_FALSE(run->keeping().isPending) << "a graded trial";
  EXPECT_EQ(desk.answersOnDisk(), 1U);
  run->newTrial();
  run->newTrial();
  EXPECT_EQ(run->place()->number, 2U);
}

TEST(AssignedSession, ShowsNoVerdictBeforeTheAnswerIsInTheFile) {
  const Desk desk;
  Playing run(desk);
  std::size_t onDisk = 0;
  const auto token = run->objectWillChange.subscribe([&](Session::Field field) {
    if (field == Session::Field::grade)
      onDisk = desk.answersOnDisk();
  });
  run.render();
  run->setAnswer(2);
  run->submit();
  EXPECT_TRUE(run->keeping().isPending);
  EXPECT_FALSE(run->grade());
  EXPECT_FALSE(run->canSubmit());
  run->submit();
  run->newTrial();
  run->setAnswer(0);
  EXPECT_EQ(run->answer(), 2) << "the answer that is being kept";
  EXPECT_EQ(run->place()->number, 1U);
  run.work.runUntil([&] { return run->grade().has_value(); });
  EXPECT_EQ(onDisk, 1U);
  EXPECT_EQ(desk.answersOnDisk(), 1U);
  run->objectWillChange.unsubscribe(token);
}

TEST(AssignedSession, TakesTheAnswerAgainIfItCannotBeKept) {
  const Desk desk;
  Playing run(desk);
  const fs::path away = desk.folder().string() + ".away";
  fs::rename(desk.folder(), away);
  run.answer(0);
  EXPECT_EQ(run->keeping().error, "No such file or directory");
  EXPECT_FALSE(run->grade());
  EXPECT_TRUE(run->canSubmit());
  run->newTrial();
  EXPECT_EQ(run->place()->number, 1U);
  fs::rename(away, desk.folder());
  run.answer(1);
  EXPECT_EQ(run->keeping().error, std::nullopt);
  ASSERT_TRUE(run->grade());
  EXPECT_EQ(run->grade()->answerText, "slot 2");
  EXPECT_EQ(desk.answersOnDisk(), 1U);
}

TEST(AssignedSession, RefusesWhatIsNoAnswer) {
  const Desk desk;
  Playing run(desk);
  run.answer(7);
  EXPECT_EQ(run->keeping().error, "it is no answer to this trial");
  EXPECT_EQ(desk.answersOnDisk(), 0U);
}

// Between answer and verdict the program ends: the outcome never reaches the main thread.
TEST(AssignedSession, GoesOnAfterTheLastAnswerOnTheDisk) {
  const Desk desk;
  {
    Playing run(desk);
    run.render();
    run->setAnswer(0);
    run->submit();
  }
  EXPECT_EQ(desk.answersOnDisk(), 1U) << "the end waits for the disk";
  {
    Playing run(desk);
    EXPECT_EQ(run->place()->number, 2U);
    EXPECT_EQ(run->trial()->drill, Drill::level);
    EXPECT_FALSE(run->grade());
    EXPECT_EQ(run->profile().attempts().size(), 1U);
    run.answer(1);
    EXPECT_EQ(run->profile().attempts().size(), 2U);
  }
  const std::string whole = kit::contentOf(desk.results());
  kit::put(desk.results(), whole.substr(0, whole.size() - 5));
  Playing run(desk);
  EXPECT_EQ(run->place()->number, 2U) << "a cut line is asked again";
  run.answer(2);
  EXPECT_EQ(desk.answersOnDisk(), 2U);
  EXPECT_TRUE(kit::contentOf(desk.results()).starts_with(whole.substr(0, whole.find('\n', 100))));
}

// Again and again: the end comes before the writer's thread has begun, but sometimes it does not.
TEST(AssignedSession, EndsOnceTheLastAnswerIsInTheFile) {
  for (int times = 0; times < 20; ++times) {
    const Desk desk;
    kit::WorkerQueues work;
    {
      AssignedCourse course(std::get<Assignment>(Assignment::open(desk.listFile(), desk.results())),
                            work.queues());
      ASSERT_TRUE(course.next(Drill::frequency, Material::pinkNoise, 0));
      EXPECT_FALSE(course.keep({.answer = 1}, [](const auto&) {}));
    }
    EXPECT_EQ(desk.answersOnDisk(), 1U);
  }
}

TEST(AssignedSession, AdaptsByTheAnswersAcrossAnInterruption) {
  TrialList list{.difficulty = TrialList::Difficulty::staircase, .trials = {}};
  for (std::uint64_t seed = 1; seed <= 4; ++seed)
    list.trials.push_back({Drill::level, Material::pinkNoise, 20, seed});
  const Desk desk(list);
  {
    Playing run(desk);
    run.answer(run->trial()->targetLevelDB);
    run->newTrial();
    run.answer(run->trial()->targetLevelDB);
    run->newTrial();
    EXPECT_EQ(run->trial()->difficulty, 32);
  }
  Playing run(desk);
  EXPECT_EQ(run->trial(), Drills::makeTrial(32, Material::pinkNoise, 3, Drill::level));
}

TEST(AssignedSession, LeavesThePracticeRecordAlone) {
  const Desk desk;
  {
    Playing run(desk);
    run.answer(1);
    EXPECT_EQ(run->profile().attempts().size(), 1U) << "for the side panel";
    EXPECT_TRUE(run->profile().url().empty());
  }
  EXPECT_FALSE(fs::exists(desk.record()));
}

TEST(AssignedSession, CountsSwitchesToAnotherSlot) {
  const Desk desk;
  Playing run(desk);
  run->select(1);
  run.render();
  for (const int slot : {1, 1, 2, 0, 5})
    run->select(slot);
  run->cycleSlot();
  run.answer(1);
  run->newTrial();
  run.answer(1);
  const auto reading =
      std::get<Results::Reading>(Results::read(threeTrials, kit::contentOf(desk.results())));
  ASSERT_EQ(reading.rows.size(), 2U);
  EXPECT_EQ(reading.rows[0].given.switches, 4);
  EXPECT_EQ(reading.rows[1].given.switches, 0);
  EXPECT_GE(reading.rows[0].given.seconds, 0);
  EXPECT_LT(reading.rows[0].given.seconds, 60);
}
