#include "SoundRecovery.h"

#include "Session.h"
#include "kit/Eventually.h"
#include "kit/FakeOutput.h"
#include "kit/ScratchProfile.h"
#include "kit/TestPlayer.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

using namespace velto;

namespace {

using namespace std::chrono_literals;
using Sound = SoundRecovery::Sound;
using Step = SoundRecovery::Step;

constexpr SoundRecovery::Time start{};
constexpr Step nothing{}, load{.load = true, .report = false},
    report{.load = false, .report = true};

} // namespace

// ---- When to retry, and when to report ----

TEST(SoundRecovery, DoesNothingWhileSoundPlays) {
  SoundRecovery recovery;
  for (int i = 0; i < 10; ++i)
    EXPECT_EQ(recovery.next(Sound::plays, start + i * 1s), nothing);
}

TEST(SoundRecovery, LoadsAnOutputThatIsOpen) {
  SoundRecovery recovery;
  EXPECT_EQ(recovery.next(Sound::opening, start), nothing);
  EXPECT_EQ(recovery.next(Sound::ready, start + 5ms), load);
}

TEST(SoundRecovery, RetriesLostSoundAtOnceAndThenAtGrowingIntervals) {
  SoundRecovery recovery;
  EXPECT_EQ(recovery.next(Sound::lost, start), load);
  EXPECT_EQ(recovery.next(Sound::refused, start + 10ms), report);
  std::vector<int> attempts;
  for (int time = 10; time < 10'000; time += 10)
    if (recovery.next(Sound::refused, start + time * 1ms).load)
      attempts.push_back(time);
  EXPECT_EQ(attempts, (std::vector{500, 1500, 2500, 3500, 4500, 5500, 6500, 7500, 8500, 9500}));
}

TEST(SoundRecovery, TheFirstFailureCountsAsAnAttempt) {
  SoundRecovery recovery;
  EXPECT_EQ(recovery.next(Sound::refused, start), report);
  EXPECT_EQ(recovery.next(Sound::refused, start + 499ms), nothing);
  EXPECT_EQ(recovery.next(Sound::refused, start + 500ms), load);
}

TEST(SoundRecovery, ReportsEachOutageOnce) {
  SoundRecovery recovery;
  EXPECT_TRUE(recovery.next(Sound::refused, start).report);
  EXPECT_FALSE(recovery.next(Sound::refused, start + 1s).report);
  recovery.rest();
  EXPECT_FALSE(recovery.next(Sound::refused, start + 2s).report);
  EXPECT_FALSE(recovery.next(Sound::opening, start + 3s).report);
  EXPECT_FALSE(recovery.next(Sound::opening, start + 9s).report);
  EXPECT_EQ(recovery.next(Sound::plays, start + 10s), nothing);
  EXPECT_EQ(recovery.next(Sound::lost, start + 11s), load); // at once again
  EXPECT_TRUE(recovery.next(Sound::refused, start + 12s).report);
}

TEST(SoundRecovery, AnOpeningThatTakesTwoSecondsIsAnOutage) {
  SoundRecovery recovery;
  EXPECT_EQ(recovery.next(Sound::opening, start), nothing);
  EXPECT_EQ(recovery.next(Sound::opening, start + 1999ms), nothing);
  EXPECT_EQ(recovery.next(Sound::opening, start + 2s), report);
  EXPECT_EQ(recovery.next(Sound::refused, start + 30s), nothing); // the same outage
}

TEST(SoundRecovery, TimeAtRestDoesNotCountAsOpening) {
  SoundRecovery recovery;
  EXPECT_EQ(recovery.next(Sound::opening, start), nothing);
  recovery.rest();
  EXPECT_EQ(recovery.next(Sound::opening, start + 10s), nothing);
  EXPECT_EQ(recovery.next(Sound::opening, start + 12s), report);
}

RC_GTEST_PROP(SoundRecoveryLaw, ReportsOncePerOutageAndWaitsBetweenAttempts, ()) {
  SoundRecovery recovery;
  SoundRecovery::Time now = start;
  bool isReported = false;
  std::optional<SoundRecovery::Time> lastAttempt;
  const auto count = *rc::gen::inRange(1, 200);
  for (int i = 0; i < count; ++i) {
    now += std::chrono::milliseconds(*rc::gen::inRange(0, 3000));
    const auto sound = *rc::gen::element(Sound::plays, Sound::opening, Sound::refused, Sound::lost);
    const Step step = recovery.next(sound, now);
    if (sound == Sound::plays) {
      RC_ASSERT(step == nothing);
      isReported = false;
      lastAttempt.reset();
    }
    RC_ASSERT(!(step.report && isReported));
    isReported = isReported || step.report;
    RC_ASSERT(sound != Sound::refused || isReported);
    if (step.load) {
      RC_ASSERT(!lastAttempt || now - *lastAttempt >= SoundRecovery::shortestWait);
      lastAttempt = now;
    } else if (lastAttempt && (sound == Sound::refused || sound == Sound::lost)) {
      RC_ASSERT(now - *lastAttempt < SoundRecovery::longestWait);
    }
  }
}

// ---- A session whose output opens in the background ----

namespace {

// Work for the main thread, collected from any thread.
class PostedWork {
public:
  void post(WorkQueues::Work work) {
    const std::lock_guard lock(mutex_);
    work_.push_back(std::move(work));
  }

  // Returns an empty function if there is none.
  [[nodiscard]] WorkQueues::Work take() {
    const std::lock_guard lock(mutex_);
    if (work_.empty())
      return {};
    auto work = std::move(work_.front());
    work_.pop_front();
    return work;
  }

  // Renders at once; the test decides when the result reaches the main thread.
  [[nodiscard]] WorkQueues queues() {
    return {.background = [](auto work) { work(); },
            .main = [this](auto work) { post(std::move(work)); }};
  }

private:
  std::mutex mutex_;
  std::deque<WorkQueues::Work> work_;
};

std::unique_ptr<Player> playerOn(kit::FakeOutput& output) {
  return kit::makePlayer(output.factory(), 1ms, Player::Opening::inBackground);
}

constexpr double launchTime = 1'700'000'000;

struct Rig {
  kit::ScratchProfile scratch;
  PostedWork main;
  kit::FakeOutput output;
  Session session{Drill::level, main.queues(), playerOn(output), launchTime};

  ~Rig() { output.letGo(); }

  void settle() {
    while (const auto work = main.take())
      work();
  }

  // Runs posted work until `condition` holds; false on a timeout.
  template <typename Condition>
  [[nodiscard]] bool eventually(Condition condition) {
    return kit::eventually([&] {
      settle();
      return condition();
    });
  }

  [[nodiscard]] bool plays() { return session.player().isPlaying(); }
};

// A time far ahead of the session's own clock.
SoundRecovery::Time later(std::chrono::milliseconds time) {
  return std::chrono::steady_clock::now() + 1h + time;
}

std::string line(const std::string& reason) {
  return "Velto: engine start failed - " + reason + "\n";
}

} // namespace

TEST(SessionSound, PlaysAsSoonAsTheOutputIsOpen) {
  Rig rig;
  rig.output.hold();
  rig.settle();
  EXPECT_FALSE(rig.session.rendering());
  EXPECT_FALSE(rig.plays());
  rig.session.select(1); // kept, although nothing plays yet
  rig.output.letGo();
  ASSERT_TRUE(rig.eventually([&] { return rig.plays(); }));
  EXPECT_EQ(rig.session.player().current(), 1);
  EXPECT_EQ(rig.output.opened(), 1);
}

TEST(SessionSound, ReturnsAtTheCurrentSlotAndReportsEachOutageOnce) {
  Rig rig;
  ASSERT_TRUE(rig.eventually([&] { return rig.plays(); }));
  for (int outage = 0; outage < 2; ++outage) {
    ::testing::internal::CaptureStderr();
    rig.output.refuse("gone");
    rig.output.fail();
    rig.session.followSound(later(0ms));
    ASSERT_TRUE(rig.eventually([&] { return rig.session.player().error() == "gone"; }));
    for (int i = 1; i <= 20; ++i) { // many attempts
      rig.session.followSound(later(i * 3s));
      ASSERT_TRUE(rig.eventually([&] { return rig.session.player().error() == "gone"; }));
    }
    EXPECT_FALSE(rig.plays());
    rig.session.select(1);
    rig.output.refuse(std::nullopt);
    rig.session.followSound(later(90s));
    ASSERT_TRUE(rig.eventually([&] { return rig.plays(); }));
    EXPECT_EQ(rig.session.player().current(), 1);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), line("gone"));
  }
}

TEST(SessionSound, ANewTrialRetriesAtOnce) {
  Rig rig;
  rig.output.refuse("gone");
  ::testing::internal::CaptureStderr();
  ASSERT_TRUE(rig.eventually([&] { return rig.session.player().error() == "gone"; }));
  rig.settle();
  rig.output.refuse(std::nullopt);
  rig.session.newTrial();
  EXPECT_TRUE(rig.eventually([&] { return rig.plays(); }));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), line("gone"));
}

TEST(SessionSound, DoesNotRetryWhileSuspendedAndPlaysOnResume) {
  Rig rig;
  ASSERT_TRUE(rig.eventually([&] { return rig.plays(); }));
  rig.session.select(1);
  rig.session.suspend();
  ASSERT_TRUE(rig.output.waitUntilClosed());
  for (int i = 0; i < 20; ++i) {
    rig.session.followSound(later(i * 1s));
    rig.settle();
  }
  EXPECT_EQ(rig.output.opened(), 1);
  rig.session.resume();
  ASSERT_TRUE(rig.eventually([&] { return rig.plays(); }));
  EXPECT_EQ(rig.session.player().current(), 1);
}

TEST(SessionSound, AnOutputThatOpensWhileSuspendedPlaysNothingAndCloses) {
  Rig rig;
  rig.output.hold();
  rig.settle();
  ASSERT_TRUE(kit::eventually([&] { return rig.output.held() == 1; }));
  rig.session.suspend();
  rig.output.letGo();
  ASSERT_TRUE(rig.eventually([&] { return rig.output.opened() == 1 && !rig.output.isOpen(); }));
  rig.session.followSound(later(0ms));
  EXPECT_FALSE(rig.plays());
}

TEST(SessionSound, AServerThatDoesNotAnswerIsReportedOnceAndBlocksNoCall) {
  Rig rig;
  ::testing::internal::CaptureStderr();
  rig.output.hold();
  rig.settle();
  for (int i = 0; i < 20; ++i)
    rig.session.followSound(later(i * 1s));
  rig.session.newTrial();
  rig.settle();
  rig.session.cycleSlot();
  rig.session.submit();
  EXPECT_TRUE(rig.session.grade());
  rig.output.letGo();
  ASSERT_TRUE(rig.eventually([&] { return rig.plays(); }));
  EXPECT_EQ(rig.session.player().current(), 1);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), line("the sound server does not answer"));
}

TEST(SessionSound, AnOpeningMayEndAfterTheSession) {
  const kit::ScratchProfile scratch;
  PostedWork main;
  kit::FakeOutput output;
  WorkQueues::Work openingEnded;
  {
    Session session(Drill::level, main.queues(), playerOn(output), launchTime);
    main.take()();
    main.take()(); // loads
    ASSERT_TRUE(kit::eventually([&] { return bool(openingEnded = main.take()); }));
  }
  openingEnded();
  EXPECT_FALSE(output.isOpen());
}
