#include "Bands.h"

#include "kit/Listener.h"

#include "kit/Highpass.h"
#include "kit/Slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

namespace velto::kit {
namespace {

using Listener::Part;

constexpr std::size_t loopFrames = 153600;

// `frames` frames of a loop from frame `begin` of a recording that started with the loop.
Part part(const Slot& slot, std::size_t number, std::size_t begin, std::size_t frames) {
  Part part{.slot = number, .begin = begin, .sound = {}};
  for (std::size_t i = 0; i < frames; ++i) {
    const std::size_t place = (begin + i) % slot.l->size();
    part.sound.l.push_back((*slot.l)[place]);
    part.sound.r.push_back((*slot.r)[place]);
  }
  return part;
}

Recording scaled(Recording recording, double gain) {
  for (auto* channel : {&recording.l, &recording.r})
    for (float& sample : *channel)
      sample = static_cast<float>(static_cast<double>(sample) * gain);
  return recording;
}

Slot inverted(const Slot& slot) {
  Samples r(slot.r->begin(), slot.r->end());
  for (float& sample : r)
    sample = -sample;
  return {slot.l, SharedSamples(std::move(r))};
}

// Noise with one band lifted, in both channels.
Recording lifted(const Recording& noise, double hz, double gainDB, double q) {
  Recording result = noise;
  Biquad filter = Biquad::peaking(hz, gainDB, q, sampleRateHz);
  for (std::size_t i = 0; i < noise.frames(); ++i)
    result.l[i] = result.r[i] = filter.process(noise.l[i]);
  return result;
}

TEST(Listener, FindsTheLongestCommonStretchOfTwoParts) {
  const Slot slot = noiseSlot(loopFrames, 1);
  const auto a = part(slot, 0, 1000, 5000), b = part(slot, 1, 2 * loopFrames + 4000, 9000);
  const auto [x, y] = Listener::samePlace(a, b, loopFrames);
  EXPECT_EQ(x.frames(), 2000U);
  EXPECT_EQ(x.l, y.l);
  const auto [v, w] = Listener::samePlace(b, a, loopFrames);
  EXPECT_EQ(v.frames(), 2000U);
  EXPECT_EQ(v.l, w.l);
  const auto whole = part(slot, 1, 160000, loopFrames);
  EXPECT_EQ(Listener::samePlace(part(slot, 0, 3, loopFrames), whole, loopFrames).first.frames(),
            loopFrames - 6397);
  const auto [l, r] = Listener::everyPlace(part(slot, 0, 3, loopFrames), whole, loopFrames);
  EXPECT_EQ(l.frames(), loopFrames);
  EXPECT_EQ(l.l, r.l);
  const auto far = part(slot, 1, loopFrames + 20000, 9000);
  EXPECT_EQ(Listener::samePlace(a, far, loopFrames).first.frames(), 0U);
}

TEST(Listener, FindsTheBoostedBandAtAnyOverallLevel) {
  const Recording a = part(noiseSlot(loopFrames, 1), 0, 0, Listener::spectrumFrames).sound;
  for (std::size_t band = 0; band < Bands::centres.size(); ++band) {
    const double hz = Bands::centres[band];
    EXPECT_EQ(Listener::boostedBand(a, scaled(lifted(a, hz, 12, 2), 0.3)), band) << hz;
    EXPECT_EQ(Listener::boostedBand(a, scaled(lifted(a, hz, 3, 5), 3)), band) << hz;
  }
}

TEST(Listener, MeasuresTheLevelDifference) {
  const Recording a = part(noiseSlot(loopFrames, 1), 0, 0, 30000).sound;
  EXPECT_NEAR(Listener::levelDifferenceDB(a, scaled(a, std::pow(10, 0.0125))), 0.25, 1e-5);
  EXPECT_NEAR(Listener::levelDifferenceDB(a, scaled(a, 0.5)), -6.0206, 1e-4);
}

TEST(Listener, MeasuresTheRangeOfAGainCurveDespiteMakeUpGain) {
  const Recording a = part(noiseSlot(loopFrames, 1), 0, 0, 48000).sound;
  Recording b = a;
  for (std::size_t i = 0; i < b.frames(); ++i) {
    // 0 dB, down to -7.3 dB and back, with 2 dB of make-up gain.
    const double ramp = 1 - std::abs(static_cast<double>(i) / 24000 - 1);
    const double gain = std::pow(10, (2 - 7.3 * ramp) / 20);
    b.l[i] = static_cast<float>(static_cast<double>(b.l[i]) * gain);
  }
  EXPECT_NEAR(Listener::gainReductionDB(a, b), 7.3, 0.01);
  EXPECT_NEAR(Listener::gainReductionDB(a, scaled(a, 2)), 0, 1e-6);
}

// The gain curve of a compressor: attack of 5 ms at each of many hits, release of 120 ms.
TEST(Listener, MeasuresTheRangeOfAGainCurveAbove20Hz) {
  const Slot slot = noiseSlot(loopFrames, 1);
  for (const double deepest : {1.0, 4.0, 12.0}) {
    Recording a = part(slot, 0, 0, loopFrames).sound, b = a;
    double reduction = 0;
    for (std::size_t i = 0; i < b.frames(); ++i) {
      const bool hit = i % 24000 > 12000 && i % 24000 < 14400;
      reduction += ((hit ? deepest : 0) - reduction) / (hit ? 240.0 : 5760.0);
      const double low = 0.2 * std::sin(twoPi * 5 * static_cast<double>(i) / 48000);
      a.l[i] = static_cast<float>(static_cast<double>(a.l[i]) + low);
      b.l[i] = static_cast<float>(static_cast<double>(a.l[i]) * std::pow(10, -reduction / 20));
    }
    const Recording x = highpassed(a, 20), y = highpassed(b, 20);
    EXPECT_NEAR(Listener::gainReductionByPiecesDB(x, y), deepest, 0.25);
    EXPECT_NEAR(Listener::gainReductionByPiecesDB(x, scaled(y, 2)), deepest, 0.25);
    EXPECT_EQ(Listener::gainReductionByPiecesDB(x, x), 0);
  }
}

TEST(Highpass, AttenuatesBelowItsCorner) {
  const auto levelAfter = [](double hz, double corner) {
    std::vector<float> tone(96000);
    for (std::size_t i = 0; i < tone.size(); ++i)
      tone[i] = static_cast<float>(0.5 + std::sin(twoPi * hz * static_cast<double>(i) / 48000));
    const std::vector<float> out = highpassed(tone, corner);
    return Measure::rmsDB(std::span(out).last(48000)) + 3.0103;
  };
  EXPECT_NEAR(levelAfter(20, 20), -3.0103, 0.001);
  EXPECT_NEAR(levelAfter(10, 20), -24.1, 0.05); // 10 lg (1 + 2^8)
  EXPECT_NEAR(levelAfter(1000, 20), 0, 0.001);
  EXPECT_NEAR(levelAfter(5000, 5000), -3.0103, 0.001);
  // A constant leaves nothing.
  const std::vector<float> rest = highpassed(std::vector<float>(96000, 0.05F), 20);
  EXPECT_LT(Measure::rmsDB(std::span(rest).last(48000)), -200);
}

TEST(Listener, FindsTheFlippedSlotFromPairsOfOverlappingParts) {
  const Slot plain = noiseSlot(loopFrames, 1), odd = inverted(plain);
  for (std::size_t flipped = 0; flipped < 3; ++flipped) {
    const auto slot = [&](std::size_t number) { return number == flipped ? odd : plain; };
    // Slots 1 and 3, and 2 and 1, share a place of the loop; 2 and 3 never do.
    const std::vector<Part> parts{part(slot(0), 0, 0, 60000), part(slot(1), 1, 80000, 40000),
                                  part(slot(2), 2, 150000, 30000), part(slot(0), 0, 230000, 40000)};
    EXPECT_EQ(Listener::flippedSlot(parts, loopFrames), flipped);
    EXPECT_EQ(Listener::flippedSlot(std::span(parts).first(3), loopFrames), std::nullopt);
  }
}

TEST(Listener, FindsNoDifferenceBetweenIdenticalSlots) {
  const Slot slot = noiseSlot(loopFrames, 1);
  const Recording a = part(slot, 0, 0, loopFrames).sound;
  EXPECT_EQ(Listener::boostedBand(a, a), std::nullopt);
  EXPECT_EQ(Listener::boostedBand(a, scaled(a, 2)), std::nullopt);
  EXPECT_EQ(Listener::levelDifferenceDB(a, a), 0);
  EXPECT_EQ(Listener::gainReductionDB(a, a), 0);
  const std::vector<Part> parts{part(slot, 0, 0, 60000), part(slot, 1, 153600, 60000),
                                part(slot, 2, 2 * 153600, 60000)};
  EXPECT_EQ(Listener::flippedSlot(parts, loopFrames), std::nullopt);
}

} // namespace
} // namespace velto::kit
