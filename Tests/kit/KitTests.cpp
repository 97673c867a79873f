#include "Player.h"
#include "TestPlayer.h"
#include "kit/Alignment.h"
#include "kit/FakeOutput.h"
#include "kit/Footprint.h"
#include "kit/LoopWatch.h"
#include "kit/Slots.h"
#include "kit/Spectrum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace velto::kit {
namespace {

Recording loopOf(const Slot& slot, std::size_t phase, std::size_t frames) {
  Recording recording;
  for (std::size_t i = 0; i < frames; ++i) {
    recording.l.push_back((*slot.l)[(phase + i) % slot.l->size()]);
    recording.r.push_back((*slot.r)[(phase + i) % slot.r->size()]);
  }
  return recording;
}

TEST(Alignment, FindsThePhaseOfALoop) {
  const Slot slot = noiseSlot(1000, 1);
  const Recording recording = loopOf(slot, 321, 5000);
  EXPECT_EQ(loopPhase(recording, 0, 5000, slot), 321U);
  EXPECT_EQ(loopPhase(recording, 900, 100, slot), 221U);
}

TEST(Alignment, FindsNoPhaseIfAFrameIsLostRepeatedOrChanged) {
  const Slot slot = noiseSlot(1000, 1);
  Recording changed = loopOf(slot, 0, 3000);
  changed.r[1234] = std::nextafter(changed.r[1234], 1.0F);
  EXPECT_EQ(loopPhase(changed, 0, 3000, slot), std::nullopt);
  EXPECT_EQ(firstDifference(changed, 0, 3000, slot, 0), 1234U);
  Recording lost = loopOf(slot, 0, 500);
  lost.append(loopOf(slot, 501, 500));
  EXPECT_EQ(firstDifference(lost, 0, 1000, slot, 0), 500U);
  Recording doubled = loopOf(slot, 0, 500);
  doubled.append(loopOf(slot, 499, 500));
  EXPECT_EQ(firstDifference(doubled, 0, 1000, slot, 0), 500U);
}

TEST(Alignment, IgnoresTheSignOfZero) {
  const Slot slot = constantSlot(1000, 0, -0.0F);
  EXPECT_EQ(firstDifference({std::vector<float>(9, -0.0F), std::vector<float>(9)}, 0, 9, slot, 0),
            9U);
}

TEST(Alignment, FindsNoPhaseInAConstantSlot) {
  const Slot slot = constantSlot(1000, 0.5F, 0.5F);
  EXPECT_EQ(loopPhase(loopOf(slot, 0, 2000), 0, 2000, slot), std::nullopt);
}

TEST(Alignment, FindsSoundAndSilence) {
  Recording recording{std::vector<float>(100), std::vector<float>(100)};
  EXPECT_EQ(firstSound(recording, 0), 100U);
  recording.r[40] = 1e-20F;
  EXPECT_EQ(firstSound(recording, 0), 40U);
  EXPECT_EQ(firstSound(recording, 41), 100U);
  EXPECT_EQ(firstSilence(recording, 0, 40), 0U);
  EXPECT_EQ(firstSilence(recording, 0, 41), 41U);
  EXPECT_EQ(firstSilence(recording, 0, 60), 100U);
}

// A sine of amplitude 1 under a Hann window: power 1/2, times 3/8 for the window.
TEST(Spectrum, ASineIsConcentratedInItsBins) {
  const Slot slot = sineSlot(4096, 512, 1); // 6 kHz
  const auto power = powerSpectrum(*slot.l);
  ASSERT_EQ(power.size(), 2049U);
  double whole = 0;
  for (const double bin : power)
    whole += bin;
  EXPECT_NEAR(whole, 0.5 * 0.375, 1e-6);
  EXPECT_NEAR(power[511] + power[512] + power[513], whole, 1e-9);
  EXPECT_NEAR(partAboveDB(*slot.l, 5000), 0, 1e-6);
  EXPECT_LT(partAboveDB(*slot.l, 7000), -140);
  EXPECT_NEAR(peakAboveDB(*slot.l, 5000), 0, 1e-3);
}

TEST(Spectrum, MeasuresAFaintHighToneNextToALowOne) {
  const Slot low = sineSlot(16384, 341, 0.5), high = sineSlot(16384, 3413, 0.5e-4); // 1 and 10 kHz
  std::vector<float> both(16384);
  for (std::size_t i = 0; i < both.size(); ++i)
    both[i] = (*low.l)[i] + (*high.l)[i];
  EXPECT_NEAR(partAboveDB(both, 5000), -80, 0.01);
  EXPECT_NEAR(peakAboveDB(both, 5000), 20 * std::log10(0.5e-4), 0.1);
}

// A player's output over two switches, rendered in blocks of odd sizes.
struct Played {
  std::vector<Slot> slots{noiseSlot(4000, 1), noiseSlot(4000, 2), noiseSlot(4000, 3)};
  Recording recording;

  Played() {
    FakeOutput output;
    TestPlayer player(output.factory());
    player.load(slots, 0);
    for (const std::int64_t next : {2, 1, -1}) {
      recording.append(output.pull(30000, 441));
      if (next >= 0)
        player.switchTo(next);
    }
  }

  [[nodiscard]] LoopWatch watch() const {
    LoopWatch watch(slots, 0, 3840);
    watch.expectSwitch(2);
    watch.expectSwitch(1);
    std::vector<float> samples;
    for (std::size_t i = 0; i < recording.frames(); ++i)
      samples.insert(samples.end(), {recording.l[i], recording.r[i]});
    watch.take(samples);
    return watch;
  }

  Played& cut(std::size_t begin, std::size_t frames) {
    for (auto* channel : {&recording.l, &recording.r})
      channel->erase(channel->begin() + static_cast<std::ptrdiff_t>(begin),
                     channel->begin() + static_cast<std::ptrdiff_t>(begin + frames));
    return *this;
  }

  Played& insert(std::size_t begin, std::size_t frames, float value) {
    for (auto* channel : {&recording.l, &recording.r})
      channel->insert(channel->begin() + static_cast<std::ptrdiff_t>(begin), frames, value);
    return *this;
  }
};

std::string onlyBreak(const LoopWatch& watch) {
  EXPECT_EQ(watch.breaks().size(), 1U);
  EXPECT_EQ(watch.switches(), 2U);
  return watch.breaks().empty() ? "" : watch.breaks().front();
}

TEST(LoopWatch, FollowsAPlayerThroughItsSwitches) {
  const LoopWatch watch = Played().watch();
  EXPECT_TRUE(watch.breaks().empty());
  EXPECT_EQ(watch.frames(), 90000U);
  EXPECT_EQ(watch.switches(), 2U);
  EXPECT_EQ(watch.pendingSwitches(), 0U);
  // The voices start 3840 frames after the load, at gain 0; the rise ends 3360 frames later.
  EXPECT_EQ(watch.fadedFrames(), 3359U + 2 * 7200);
  EXPECT_EQ(watch.exactFrames() + watch.fadedFrames(), 90000U - 3841);
}

TEST(LoopWatch, ReportsLostRepeatedAndAlteredFrames) {
  Played played;
  EXPECT_EQ(onlyBreak(Played().cut(20000, 480).watch()), "frame 20000: 480 frames are missing");
  EXPECT_EQ(onlyBreak(Played().cut(20000, 1).watch()), "frame 20000: 1 frames are missing");
  EXPECT_EQ(onlyBreak(Played().insert(20000, 480, 0).watch()),
            "frame 20000: 480 frames are too many, silence for 480");
  EXPECT_EQ(onlyBreak(Played().cut(20000, 100).insert(20000, 100, 0).watch()),
            "frame 20000: the phase is unchanged, silence for 100");
  EXPECT_EQ(onlyBreak(Played().insert(20000, 7, 0.25F).watch()),
            "frame 20000: 7 frames are too many, unknown frames for 7");
  played.recording.r[25000] = std::nextafter(played.recording.r[25000], 2.0F);
  EXPECT_EQ(onlyBreak(played.watch()), "frame 25000: the phase is unchanged, unknown frames for 1");
}

TEST(LoopWatch, ReportsAFrameLostInACrossfade) {
  EXPECT_EQ(onlyBreak(Played().cut(33000, 1).watch()).substr(0, 33),
            "frame 33000: 1 frames are missing");
}

TEST(LoopWatch, ReportsSlotsThatAreOutOfPhase) {
  Played played;
  std::vector<float> l(played.slots[2].l->begin(), played.slots[2].l->end());
  std::vector<float> r(played.slots[2].r->begin(), played.slots[2].r->end());
  std::rotate(l.begin(), l.begin() + 1, l.end());
  std::rotate(r.begin(), r.begin() + 1, r.end());
  played.slots[2] = slotOf(l, r);
  EXPECT_FALSE(played.watch().breaks().empty());
}

TEST(LoopWatch, ReportsAnUnexpectedSwitch) {
  const Played played;
  LoopWatch watch(played.slots, 0, 3840);
  std::vector<float> samples;
  for (std::size_t i = 0; i < played.recording.frames(); ++i)
    samples.insert(samples.end(), {played.recording.l[i], played.recording.r[i]});
  watch.take(samples);
  ASSERT_EQ(watch.breaks().size(), 2U);
  EXPECT_NE(watch.breaks()[0].find("slot 2 was not requested"), std::string::npos);
}

TEST(Footprint, CountsHandlesThreadsAndMemory) {
  const Footprint before = Footprint::ofThisProcess();
  EXPECT_GT(before.residentMegabytes, 1);
  EXPECT_GE(before.handles, 3U);
  std::FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(Footprint::ofThisProcess().handles, before.handles + 1);
  std::fclose(file);
  EXPECT_EQ(Footprint::ofThisProcess().handles, before.handles);
  std::atomic<bool> ending = false;
  std::thread thread([&] { ending.wait(false); });
  EXPECT_EQ(Footprint::ofThisProcess().threads, before.threads + 1);
  ending = true;
  ending.notify_all();
  thread.join();
  const std::vector<char> ballast(32'000'000, 1);
  EXPECT_GT(Footprint::ofThisProcess().residentMegabytes, before.residentMegabytes + 30)
      << ballast[7];
}

} // namespace
} // namespace velto::kit
