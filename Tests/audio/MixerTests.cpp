#include "Drill.h"
#include "Mixer.h"
#include "Rendering.h"
#include "SceneControl.h"
#include "Signals.h"
#include "Trial.h"

#include "kit/Recording.h"
#include "kit/Slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <utility>
#include <vector>

namespace velto {
namespace {

using kit::constantSlot;
using kit::noiseSlot;

constexpr std::size_t ramp = Mixer::rampFrames;
constexpr std::size_t step = Mixer::stepFrames;

// A mixer whose scenes the test changes between blocks.
class Desk {
public:
  void play(std::vector<Slot> slots, std::int64_t chosen, std::uint64_t startDelayFrames,
            Switching switching = Switching::crossfade) {
    control_.play(std::move(slots), chosen, startDelayFrames, switching);
    mixer.publish(control_.scene());
  }

  void fadeTo(std::int64_t chosen) {
    control_.switchTo(chosen);
    mixer.publish(control_.scene());
  }

  void silence() {
    control_.silence();
    mixer.publish(control_.scene());
  }

  // Closes the output and opens another one.
  void beginStream() {
    control_.beginStream();
    mixer.publish(control_.scene());
    mixer.releaseAllButLatest();
  }

  // The next frames, both channels.
  kit::Recording renderBoth(std::size_t frames, std::size_t blockFrames = 480) {
    kit::Recording out;
    while (out.frames() < frames) {
      const std::size_t count = std::min(blockFrames, frames - out.frames());
      std::vector<float> block(2 * count);
      mixer.render(block.data(), count);
      out.append(kit::Recording::fromInterleaved(block));
    }
    return out;
  }

  // The left channel of the next frames.
  std::vector<float> render(std::size_t frames, std::size_t blockFrames = 480) {
    return renderBoth(frames, blockFrames).l;
  }

  [[nodiscard]] float volume(std::size_t voice) const {
    return mixer.volume(voice, control_.scene().load);
  }

  Mixer mixer;

private:
  SceneControl control_;
};

class MixerWithBlocks : public ::testing::TestWithParam<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(blocks, MixerWithBlocks,
                         ::testing::Values(1, 7, 64, 255, 256, 257, 441, 480, 600, 1920, 4801));

TEST_P(MixerWithBlocks, StartsAfterTheDelayAndRisesWithinOneStepToTheFadeIn) {
  Desk desk;
  desk.play({constantSlot(10, 1, 1)}, 0, 3840);
  const auto out = desk.render(8000, GetParam());
  for (std::size_t i = 0; i < 3840; ++i)
    ASSERT_EQ(out[i], 0.0F) << i;
  const double reached = (3840.0 + step) / ramp;
  for (std::size_t i = 0; i < step; ++i)
    ASSERT_NEAR(out[3840 + i], reached * static_cast<double>(i) / step, 1e-7) << i;
  for (std::size_t i = 3840 + step; i < ramp; ++i)
    ASSERT_NEAR(out[i], static_cast<double>(i) / ramp, 1e-7) << i;
  for (std::size_t i = ramp; i < out.size(); ++i)
    ASSERT_EQ(out[i], 1.0F) << i;
}

TEST_P(MixerWithBlocks, ASwitchIsALinearRampOf7200Frames) {
  Desk desk;
  desk.play({constantSlot(10, 1, 1), constantSlot(10, 0, 0)}, 0, 0);
  (void)desk.render(2 * ramp);
  desk.fadeTo(1);
  const auto out = desk.render(ramp + 100, GetParam());
  for (std::size_t i = 0; i < ramp; ++i)
    ASSERT_NEAR(out[i], 1 - static_cast<double>(i) / ramp, 6e-8) << i;
  for (std::size_t i = ramp; i < out.size(); ++i)
    ASSERT_EQ(out[i], 0.0F) << i;
}

TEST_P(MixerWithBlocks, LoopsASettledSlotBitForBitOnBothChannels) {
  Desk desk;
  const Slot slot = noiseSlot(1777, 1);
  desk.play({noiseSlot(1000, 2), slot, noiseSlot(1500, 3)}, 1, 0);
  (void)desk.render(ramp);
  const kit::Recording out = desk.renderBoth(9000, GetParam());
  for (std::size_t i = 0; i < out.frames(); ++i) {
    ASSERT_EQ(out.l[i], (*slot.l)[(ramp + i) % 1777]) << i;
    ASSERT_EQ(out.r[i], (*slot.r)[(ramp + i) % 1777]) << i;
  }
}

// All voices start at the same frame, so the frame count alone determines the position in the loop.
TEST_P(MixerWithBlocks, SlotsStaySampleLockedAcrossSwitches) {
  Desk desk;
  const std::vector<Slot> slots{noiseSlot(2400, 1), noiseSlot(2400, 2), noiseSlot(2400, 3)};
  desk.play(slots, 0, 100);
  std::size_t frame = 0;
  for (const std::size_t chosen : {1U, 2U, 0U, 2U, 1U, 0U}) {
    desk.fadeTo(static_cast<std::int64_t>(chosen));
    (void)desk.render(ramp + 100, GetParam());
    frame += ramp + 100;
    const auto out = desk.render(777, GetParam());
    for (std::size_t i = 0; i < out.size(); ++i)
      ASSERT_EQ(out[i], (*slots[chosen].l)[(frame + i - 100) % 2400]) << chosen << ' ' << i;
    frame += 777;
  }
}

TEST(Mixer, ACrossfadeBetweenIdenticalSlotsChangesNoBit) {
  Desk desk;
  const Slot a = noiseSlot(4801, 1), b = kit::slotOf(*a.l, *a.r), c = a;
  desk.play({a, b, c}, 0, 0);
  (void)desk.render(ramp);
  std::size_t frame = ramp;
  // The later ones interrupt another crossfade.
  for (const auto& [chosen, frames] : {std::pair{1, 8000U},
                                       {0, 8000U},
                                       {2, 1234U},
                                       {1, 777U},
                                       {0, 3001U},
                                       {2, 1U},
                                       {1, 7199U},
                                       {0, 20000U}}) {
    desk.fadeTo(chosen);
    const auto out = desk.render(frames, 441);
    for (std::size_t i = 0; i < out.size(); ++i)
      ASSERT_EQ(out[i], (*a.l)[(frame + i) % 4801]) << chosen << ' ' << i;
    frame += frames;
  }
}

TEST(Mixer, ACrossfadeDuringAnotherStartsFromTheCurrentGains) {
  Desk desk;
  desk.play({constantSlot(10, 1, 1), constantSlot(10, 0, 0), constantSlot(10, 0, 0)}, 0, 0);
  (void)desk.render(ramp);
  desk.fadeTo(1);
  (void)desk.render(2450); // a little over 50 ms, not a multiple of a step
  desk.fadeTo(0);
  const auto out = desk.render(ramp + 1);
  const double start = 1 - 2450.0 / ramp;
  for (std::size_t i = 0; i <= ramp; ++i)
    ASSERT_NEAR(out[i], start + (1 - start) * static_cast<double>(i) / ramp, 1e-7) << i;
}

// The gain starts from its current value and joins the new crossfade at the end of the rise.
TEST(Mixer, ACrossfadeDuringTheRiseStartsWithoutAJump) {
  Desk desk;
  desk.play({constantSlot(10, 1, 1), constantSlot(10, 0, 0)}, 0, 3840);
  (void)desk.render(3840 + 300);
  desk.fadeTo(1);
  const auto out = desk.render(ramp);
  const double gain = 0.5 * (3840.0 + step) / ramp;
  const double volume = 4140.0 / ramp;
  const double joined = volume * (1 - 300.0 / ramp);
  for (std::size_t i = 0; i < 300; ++i)
    ASSERT_NEAR(out[i], gain + (joined - gain) * static_cast<double>(i) / 300, 1e-7) << i;
  for (std::size_t i = 300; i < ramp; ++i)
    ASSERT_NEAR(out[i], volume * (1 - static_cast<double>(i) / ramp), 1e-7) << i;
}

TEST(Mixer, VolumesMoveInTwelve32BitSteps) {
  Desk desk;
  desk.play({constantSlot(10, 1, 1), constantSlot(10, 0, 0)}, 0, 0);
  (void)desk.render(1);
  EXPECT_EQ(desk.volume(0), 0.0F);
  (void)desk.render(ramp - 1);
  desk.fadeTo(1);
  for (unsigned k = 0; k <= 12; ++k) {
    const float part = static_cast<float>(k) / 12.0F;
    (void)desk.render(1);
    EXPECT_EQ(desk.volume(0), 1.0F + part * -1.0F) << k;
    EXPECT_EQ(desk.volume(1), part) << k;
    EXPECT_EQ(desk.volume(2), 0.0F) << k;
    (void)desk.render(step - 2);
    EXPECT_EQ(desk.volume(1), part) << k;
    (void)desk.render(1);
  }
}

TEST(Mixer, AnEndedSceneFadesOutIn240FramesWithoutAJump) {
  Desk desk;
  desk.play({constantSlot(10, 1, -1)}, 0, 0);
  (void)desk.render(ramp);
  desk.silence();
  const auto out = desk.render(1000, 100);
  EXPECT_EQ(out[0], 1.0F);
  for (std::size_t i = 1; i < 240; ++i) {
    ASSERT_LT(out[i], out[i - 1]) << i;
    // The steepest point of half a Hann window.
    ASSERT_LT(out[i - 1] - out[i], 3.15F / 2 / 240) << i;
  }
  for (std::size_t i = 240; i < out.size(); ++i)
    ASSERT_EQ(out[i], 0.0F) << i;
}

TEST(Mixer, AnUnknownSlotIsSilent) {
  for (const std::int64_t chosen :
       {std::int64_t{-1}, std::int64_t{3}, std::numeric_limits<std::int64_t>::max(),
        std::numeric_limits<std::int64_t>::min()}) {
    Desk desk;
    desk.play({constantSlot(10, 1, 1), constantSlot(10, 1, 1), constantSlot(10, 1, 1)}, chosen, 0);
    for (const float sample : desk.render(9000))
      ASSERT_EQ(sample, 0.0F);
  }
}

TEST(Mixer, ASceneThatEndsBeforeItStartsIsNeverHeard) {
  Desk desk;
  desk.play({constantSlot(10, 1, 1)}, 0, 100);
  (void)desk.render(100);
  desk.silence();
  for (const float sample : desk.render(9000))
    ASSERT_EQ(sample, 0.0F);
}

// A slot and a weak reference that shows whether its samples are still in use.
struct WatchedSlot {
  explicit WatchedSlot(std::size_t frames = 10) {
    auto samples = std::make_shared<Samples>(frames, 1.0F);
    alive = samples;
    const SharedSamples shared(samples, *samples);
    slot = {shared, shared};
  }

  Slot slot;
  std::weak_ptr<Samples> alive;
};

TEST(Mixer, KeepsAReplacedLoadUntilABlockHasAdoptedTheNext) {
  Desk desk;
  WatchedSlot first;
  desk.play({first.slot}, 0, 0);
  first.slot = {};
  (void)desk.render(1);
  desk.silence();
  EXPECT_FALSE(first.alive.expired());
  (void)desk.render(1);
  desk.fadeTo(0); // publishing frees what is no longer played
  EXPECT_TRUE(first.alive.expired());
}

TEST(Mixer, FreesALoadThatWasNeverPlayed) {
  Desk desk;
  WatchedSlot skipped;
  desk.play({skipped.slot}, 0, 0);
  skipped.slot = {};
  desk.silence();
  (void)desk.render(1);
  desk.silence();
  EXPECT_TRUE(skipped.alive.expired());
}

TEST(Mixer, ANewStreamPlaysNothingOfTheOldOne) {
  Desk desk;
  WatchedSlot old;
  desk.play({old.slot}, 0, 0);
  old.slot = {};
  (void)desk.render(ramp);
  desk.silence();
  (void)desk.render(10); // its tail has 230 frames left
  desk.play({constantSlot(10, 1, 1)}, 0, 0);
  (void)desk.render(10);
  desk.beginStream();
  EXPECT_TRUE(old.alive.expired());
  for (const float sample : desk.render(1000))
    ASSERT_EQ(sample, 0.0F);
}

// Through silence

TEST_P(MixerWithBlocks, ASwitchThroughSilenceFallsFor75msAndRisesFor75ms) {
  Desk desk;
  desk.play({constantSlot(10, 1, 1), constantSlot(10, 0.5F, 0.5F)}, 0, 0,
            Switching::throughSilence);
  (void)desk.render(ramp);
  desk.fadeTo(1);
  const auto out = desk.render(ramp + 100, GetParam());
  constexpr std::size_t half = ramp / 2;
  for (std::size_t i = 0; i < half; ++i)
    ASSERT_NEAR(out[i], 1 - static_cast<double>(i) / half, 6e-8) << i;
  for (std::size_t i = half; i < ramp; ++i)
    ASSERT_NEAR(out[i], 0.5 * static_cast<double>(i - half) / half, 6e-8) << i;
  for (std::size_t i = ramp; i < out.size(); ++i)
    ASSERT_EQ(out[i], 0.5F) << i;
}

TEST(Mixer, ASwitchThroughSilenceDuringAnotherStartsFromTheCurrentGain) {
  for (const std::size_t interruption : {1200U, 5400U}) {
    Desk desk;
    desk.play({constantSlot(10, 1, 1), constantSlot(10, 1, 1), constantSlot(10, 1, 1)}, 0, 0,
              Switching::throughSilence);
    (void)desk.render(ramp);
    desk.fadeTo(1);
    const auto before = desk.render(interruption);
    desk.fadeTo(2);
    const auto out = desk.render(ramp + 1);
    const double gain = interruption < 3600 ? 1 - static_cast<double>(interruption) / 3600
                                            : static_cast<double>(interruption - 3600) / 3600;
    EXPECT_NEAR(out[0], gain, 6e-8);
    EXPECT_NEAR(out[1800], gain / 2, 6e-8);
    EXPECT_EQ(out[3600], 0.0F);
    EXPECT_NEAR(out[5400], 0.5, 6e-8);
    EXPECT_EQ(out[ramp], 1.0F);
  }
}

TEST(Mixer, SelectingTheCurrentSlotThroughSilenceChangesNothing) {
  Desk desk;
  desk.play({constantSlot(10, 1, 1), constantSlot(10, 0.5F, 0.5F)}, 0, 0,
            Switching::throughSilence);
  (void)desk.render(ramp);
  desk.fadeTo(0);
  for (const float sample : desk.render(ramp))
    ASSERT_EQ(sample, 1.0F);
  desk.fadeTo(1);
  (void)desk.render(1000);
  desk.fadeTo(1);
  EXPECT_NEAR(desk.render(1)[0], 1 - 1000.0 / 3600, 6e-8);
  (void)desk.render(ramp - 1001);
  EXPECT_EQ(desk.render(1)[0], 0.5F);
}

TEST(Mixer, VolumesThroughSilenceMoveSixStepsDownThenSixUp) {
  Desk desk;
  desk.play({constantSlot(10, 1, 1), constantSlot(10, 0, 0)}, 0, 0, Switching::throughSilence);
  (void)desk.render(ramp);
  desk.fadeTo(1);
  for (unsigned k = 0; k <= 12; ++k) {
    (void)desk.render(1);
    EXPECT_EQ(desk.volume(0), k < 6 ? static_cast<float>(6 - k) / 6.0F : 0.0F) << k;
    EXPECT_EQ(desk.volume(1), k > 6 ? static_cast<float>(k - 6) / 6.0F : 0.0F) << k;
    (void)desk.render(step - 1);
  }
}

// While slots are switched, the magnitudes in both channels are the same whichever slot is flipped.
RC_GTEST_PROP(Mixer, EnvelopesThroughSilenceAreTheSameForEveryFlippedSlot, ()) {
  const double correlation = *rc::gen::element(1.0, 0.35);
  const auto delay = *rc::gen::element<std::uint64_t>(0, 100, 3840);
  const auto first = *rc::gen::inRange<std::int64_t>(0, 3);
  const auto wait = *rc::gen::inRange<std::size_t>(1, 9000);
  const auto switches =
      *rc::gen::container<std::vector<std::int64_t>>(40, rc::gen::inRange<std::int64_t>(0, 3));
  const auto pauses = *rc::gen::container<std::vector<std::size_t>>(
      40, rc::gen::element<std::size_t>(240, 240, 240, 240, 1000, 3600, 7200, 9000));
  std::vector<kit::Recording> heard;
  for (std::int64_t odd = 0; odd < 3; ++odd) {
    Trial trial = Drills::makeTrial(0, Material::pad, 4242, Drill::polarity);
    trial.oddSlot = odd;
    trial.correlation = correlation;
    Desk desk;
    desk.play(Drills::render(trial, 0.5, Noise::audible), first, delay, Switching::throughSilence);
    kit::Recording out = desk.renderBoth(wait, 240);
    for (std::size_t i = 0; i < switches.size(); ++i) {
      desk.fadeTo(switches[i]);
      out.append(desk.renderBoth(pauses[i], 240));
    }
    heard.push_back(std::move(out));
  }
  for (const std::size_t odd : {1U, 2U})
    for (std::size_t i = 0; i < heard[0].frames(); ++i) {
      RC_ASSERT(heard[odd].l[i] == heard[0].l[i]);
      RC_ASSERT(std::abs(heard[odd].r[i]) == std::abs(heard[0].r[i]));
    }
}

// The gains of a scene never sum to more than 1, even when one crossfade interrupts another.
RC_GTEST_PROP(Mixer, IsNeverLouderThanTheLoudestSlot, ()) {
  Desk desk;
  desk.play({constantSlot(10, 1, 1), constantSlot(10, 1, 1), constantSlot(10, 1, 1)},
            *rc::gen::inRange<std::int64_t>(0, 3), *rc::gen::element<std::uint64_t>(0, 3840));
  const auto switches = *rc::gen::inRange(1, 10);
  for (int i = 0; i < switches; ++i) {
    for (const float sample : desk.render(*rc::gen::inRange<std::size_t>(1, 9000)))
      RC_ASSERT(sample <= 1.0F);
    desk.fadeTo(*rc::gen::inRange<std::int64_t>(0, 3));
  }
}

// A frame-by-frame model of the mixer that renders every scene so far separately.
class Model {
public:
  struct Sounding {
    std::vector<Slot> slots;
    std::int64_t chosen = 0;
    std::uint64_t rampBegin = 0;
    std::uint64_t start = 0;
    std::array<double, 3> from{};
    std::uint64_t riseBegin = 0;
    std::array<double, 3> riseFrom{};
    std::uint64_t end = std::numeric_limits<std::uint64_t>::max();

    [[nodiscard]] double line(std::size_t i, std::uint64_t frame) const {
      const double to = static_cast<std::int64_t>(i) == chosen ? 1 : 0;
      const double part = std::min(1.0, static_cast<double>(frame - rampBegin) / 7200);
      return (1 - part) * from[i] + part * to;
    }
    [[nodiscard]] double gain(std::size_t i, std::uint64_t frame) const {
      if (frame >= start + 600)
        return line(i, frame);
      const double part =
          static_cast<double>(frame - riseBegin) / static_cast<double>(start + 600 - riseBegin);
      return (1 - part) * riseFrom[i] + part * line(i, start + 600);
    }
  };

  void end() {
    if (!all_.empty() && all_.back().end > clock_)
      all_.back().end = clock_;
  }

  void play(std::vector<Slot> slots, std::int64_t chosen, std::uint64_t delay) {
    end();
    Sounding sounding;
    sounding.slots = std::move(slots);
    sounding.chosen = chosen;
    sounding.rampBegin = clock_;
    sounding.start = sounding.riseBegin = clock_ + delay;
    all_.push_back(sounding);
  }

  void fadeTo(std::int64_t chosen) {
    if (all_.empty())
      return;
    Sounding& now = all_.back();
    Sounding next = now;
    for (std::size_t i = 0; i < 3; ++i) {
      next.from[i] = now.line(i, clock_);
      if (clock_ > now.start)
        next.riseFrom[i] = now.gain(i, clock_);
    }
    if (clock_ > now.start)
      next.riseBegin = clock_;
    next.chosen = chosen;
    next.rampBegin = clock_;
    now = next;
  }

  double nextFrame() {
    double sum = 0;
    for (const Sounding& s : all_) {
      if (clock_ < s.start || (s.end <= s.start) ||
          (s.end < clock_ && clock_ - s.end >= Mixer::tailFrames))
        continue;
      double fade = 1;
      if (s.end <= clock_)
        fade = (1 + std::cos(3.14159265358979 * static_cast<double>(clock_ - s.end) / 240)) / 2;
      for (std::size_t i = 0; i < s.slots.size(); ++i)
        if (const auto x = *s.slots[i].l; !x.empty())
          sum += fade * s.gain(i, clock_) * static_cast<double>(x[(clock_ - s.start) % x.size()]);
    }
    ++clock_;
    return sum;
  }

private:
  std::vector<Sounding> all_;
  std::uint64_t clock_ = 0;
};

RC_GTEST_PROP(Mixer, MatchesTheModelForAnySequenceOfScenesAndBlocks, ()) {
  Desk desk;
  Model model;
  bool plays = false;
  const auto actions = *rc::gen::inRange(1, 25);
  for (int action = 0; action < actions; ++action) {
    const auto kind = *rc::gen::inRange(0, 6);
    const auto chosen = *rc::gen::inRange<std::int64_t>(-1, 4);
    if (kind <= 1) {
      std::vector<Slot> slots;
      const auto count = *rc::gen::inRange<std::size_t>(0, 4);
      for (std::size_t i = 0; i < count; ++i)
        slots.push_back(noiseSlot(*rc::gen::element<std::size_t>(0, 1, 2, 100, 479, 7000),
                                  *rc::gen::inRange<std::uint32_t>(1, 1000)));
      const auto delay = *rc::gen::element<std::uint64_t>(0, 1, 100, 3840, 5760);
      desk.play(slots, chosen, delay);
      model.play(slots, chosen, delay);
      plays = true;
    } else if (kind == 2) {
      desk.silence();
      model.end();
      plays = false;
    } else if (plays) {
      desk.fadeTo(chosen);
      model.fadeTo(chosen);
    }
    // At least one block, so that the mixer adopts each scene.
    const auto block = *rc::gen::element<std::size_t>(1, 64, 441, 480, 1920, 333);
    const auto frames = *rc::gen::inRange<std::size_t>(1, 4000);
    for (const float sample : desk.render(frames, block)) {
      const double expected = model.nextFrame();
      RC_ASSERT(std::abs(static_cast<double>(sample) - expected) < 2e-7);
    }
  }
}

} // namespace
} // namespace velto
