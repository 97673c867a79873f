#include "BackgroundWriter.h"

#include "kit/Eventually.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace velto {
namespace {

using namespace std::chrono_literals;
using Outcome = BackgroundWriter::Outcome;

// Work that waits until it is released, and tells when it has begun.
struct Gate {
  std::promise<void> begun, release;

  BackgroundWriter::Work work() {
    return [this] {
      begun.set_value();
      release.get_future().wait();
      return Outcome{};
    };
  }
};

TEST(BackgroundWriter, RunsWorkOnAnotherThreadAndFinishesOnTheOwners) {
  BackgroundWriter writer;
  const auto owner = std::this_thread::get_id();
  std::thread::id worked;
  std::thread::id finished;
  writer.post([&] {
    worked = std::this_thread::get_id();
    return Outcome{.finish = [&] { finished = std::this_thread::get_id(); }};
  });
  EXPECT_TRUE(writer.wait(10s));
  EXPECT_NE(worked, owner);
  EXPECT_EQ(finished, std::thread::id());
  writer.collect();
  EXPECT_EQ(finished, owner);
}

TEST(BackgroundWriter, TellsThatAFinishCanBeCollectedUntilItEnds) {
  std::atomic<int> told = 0, finished = 0;
  Gate gate;
  {
    BackgroundWriter writer(BackgroundWriter::detourAfter, [&] { ++told; });
    writer.post([] { return Outcome{}; });
    EXPECT_TRUE(writer.wait(10s));
    EXPECT_EQ(told, 0) << "there is nothing to collect";
    writer.post([&] { return Outcome{.finish = [&] { ++finished; }}; });
    EXPECT_TRUE(writer.wait(10s));
    EXPECT_EQ(told, 1);
    writer.collect();
    EXPECT_EQ(finished, 1);
    writer.post([&] {
      gate.work()();
      return Outcome{.finish = [&] { ++finished; }};
    });
    gate.begun.get_future().wait();
  }
  gate.release.set_value();
  std::this_thread::sleep_for(50ms); // for a call that must not come
  EXPECT_EQ(told, 1);
  EXPECT_EQ(finished, 1);
}

TEST(BackgroundWriter, RunsOnlyTheLatestWorkThatHasNotBegun) {
  Gate gate;
  BackgroundWriter writer;
  std::vector<int> done;
  writer.post(gate.work());
  gate.begun.get_future().wait();
  for (int i = 0; i < 5; ++i)
    writer.post([&done, i] {
      done.push_back(i);
      return Outcome{};
    });
  gate.release.set_value();
  EXPECT_TRUE(writer.wait(10s));
  EXPECT_EQ(done, std::vector<int>{4});
}

TEST(BackgroundWriter, RepeatsWorkThatAsksForItUntilThereIsNewerWork) {
  BackgroundWriter writer;
  std::atomic<int> runs = 0;
  writer.post([&] { return Outcome{.finish = {}, .again = ++runs < 3}; });
  EXPECT_TRUE(writer.wait(10s));
  EXPECT_EQ(runs, 3);

  writer.post([&] {
    ++runs;
    return Outcome{.finish = {}, .again = true};
  });
  EXPECT_TRUE(kit::eventually([&] { return runs >= 5; }));
  EXPECT_FALSE(writer.wait(1ms));
  writer.post([] { return Outcome{}; });
  EXPECT_TRUE(writer.wait(10s));
}

bool happens(std::promise<void>& event) {
  return event.get_future().wait_for(10s) == std::future_status::ready;
}

TEST(BackgroundWriter, WorkThatEarlierWorkKeepsWaitingTakesItsDetour) {
  Gate gate;
  Gate first;
  BackgroundWriter writer(1ms);
  writer.post(gate.work());
  gate.begun.get_future().wait();
  std::vector<int> done;
  writer.post([] { return Outcome{}; }, [&] { first.work()(); });
  EXPECT_TRUE(happens(first.begun));
  // A detour that lasts keeps nobody waiting either.
  std::promise<void> second;
  writer.post(
      [&] {
        done.push_back(1);
        return Outcome{};
      },
      [&] { second.set_value(); });
  EXPECT_TRUE(happens(second));
  EXPECT_FALSE(writer.wait(1ms));
  gate.release.set_value();
  EXPECT_FALSE(writer.wait(20ms)); // for the first detour
  first.release.set_value();
  EXPECT_TRUE(writer.wait(10s));
  EXPECT_EQ(done, std::vector<int>{1}); // the work is done all the same
}

TEST(BackgroundWriter, WorkThatNeedNotWaitTakesNoDetour) {
  Gate gate;
  BackgroundWriter writer(0ms);
  std::atomic<int> detours = 0;
  std::promise<void> detoured;
  writer.post(gate.work());
  gate.begun.get_future().wait();
  writer.post([] { return Outcome{}; }, [&] { detoured.set_value(); });
  EXPECT_TRUE(happens(detoured)); // from now on a thread looks for detours
  gate.release.set_value();
  EXPECT_TRUE(writer.wait(10s));
  for (int i = 0; i < 100; ++i) {
    writer.post(
        [] {
          std::this_thread::sleep_for(1ms);
          return Outcome{};
        },
        [&] { ++detours; });
    EXPECT_TRUE(writer.wait(10s));
  }
  EXPECT_EQ(detours, 0);
}

TEST(BackgroundWriter, WaitsForWorkOnlyInWait) {
  const auto gate = std::make_shared<Gate>();
  {
    BackgroundWriter writer;
    writer.post([gate] { return gate->work()(); });
    gate->begun.get_future().wait();
    writer.post([] { return Outcome{}; });
    writer.collect();
    EXPECT_FALSE(writer.wait(20ms));
  }
  gate->release.set_value(); // the work outlived the writer
}

} // namespace
} // namespace velto
