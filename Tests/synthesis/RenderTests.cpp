#include "Compressor.h"
#include "DSP.h"
#include "Drill.h"
#include "Rendering.h"
#include "Slot.h"
#include "Trial.h"

#include "Signals.h"
#include "reference/ReferenceComparison.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <thread>
#include <vector>

namespace velto {
namespace {

using namespace tests;

constexpr double rate = sampleRateHz;

// Any trial that makeTrial returns.
rc::Gen<Trial> anyTrial() {
  return rc::gen::map(rc::gen::tuple(anyDifficulty(), anyMaterial(), anySeed(), anyDrill()),
                      [](const std::tuple<double, Material, std::uint64_t, Drill>& arguments) {
                        return std::apply(Drills::makeTrial, arguments);
                      });
}

// All drills

RC_GTEST_PROP(RenderLaw, MatchesTheModelBitForBit, ()) {
  const Trial trial = *anyTrial();
  const double seconds = *anyDuration();
  require(
      sameBits(Drills::render(trial, seconds), reference::render(referenceTrial(trial), seconds)));
}

RC_GTEST_PROP(RenderLaw, MatchesTheModelWithAudibleNoise, ()) {
  const Trial trial = *anyTrial();
  const double seconds = *anyDuration();
  require(sameBits(Drills::render(trial, seconds, Noise::audible),
                   reference::render(referenceTrial(trial), seconds, true)));
}

RC_GTEST_PROP(RenderLaw, MatchesTheModelForFieldsSetByHand, ()) {
  Trial trial = *anyTrial();
  trial.targetFreq = *between(20, 20000);
  trial.boostDB = *rc::gen::oneOf(between(-18, 18), rc::gen::just(0.0));
  trial.boostQ = *between(0.3, 10);
  trial.targetLevelDB = *rc::gen::oneOf(between(-12, 12), rc::gen::just(0.0));
  trial.targetGRdB = *rc::gen::oneOf(between(-1, 40), rc::gen::just(0.0));
  trial.oddSlot = *rc::gen::inRange(-1, 5);
  trial.correlation = *rc::gen::oneOf(between(-1, 2), rc::gen::element(0.0, 0.35, 1.0));
  const double seconds = *anyDuration();
  require(
      sameBits(Drills::render(trial, seconds), reference::render(referenceTrial(trial), seconds)));
}

TEST(Render, MatchesTheModelForTheLengthOfATrial) {
  const struct {
    std::uint64_t seed;
    double difficulty;
  } rows[] = {{0, 20}, {40503, 0}, {0x9E3779B97F4A7C15 + 40503, 63}, {~0ULL, 100}};
  for (const Drill drill : Drill::allCases) {
    for (const Material material : Material::allCases) {
      for (const auto& row : rows) {
        const Trial trial = Drills::makeTrial(row.difficulty, material, row.seed, drill);
        EXPECT_TRUE(
            sameBits(Drills::render(trial, 3.2), reference::render(referenceTrial(trial), 3.2)))
            << drill << ", " << material << ", seed " << row.seed;
        EXPECT_TRUE(sameBits(Drills::render(trial, 3.2, Noise::audible),
                             reference::render(referenceTrial(trial), 3.2, true)))
            << drill << ", " << material << ", audible noise, seed " << row.seed;
      }
    }
  }
}

// If this test runs alone, its threads make the first renders of the process and build the shared
// tables.
TEST(RenderThreads, EightConcurrentThreadsMatchTheModel) {
  constexpr std::size_t threadCount = 8;
  const auto trialOf = [](std::size_t i) {
    return Drills::makeTrial(50, Material::allCases[(i + 1) % 3], 4242 + i / 4,
                             Drill::allCases[i % 4]);
  };
  std::vector<std::vector<std::vector<Slot>>> rendered(threadCount);
  {
    std::vector<std::jthread> threads;
    for (std::size_t t = 0; t < threadCount; ++t)
      threads.emplace_back([&trialOf, &mine = rendered[t]] {
        for (std::size_t i = 0; i < 12; ++i)
          mine.push_back(Drills::render(trialOf(i), 0.5));
      });
  }
  for (std::size_t i = 0; i < 12; ++i) {
    const auto expected = reference::render(referenceTrial(trialOf(i)), 0.5);
    for (std::size_t t = 0; t < threadCount; ++t)
      EXPECT_TRUE(sameBits(rendered[t].at(i), expected)) << t << ", " << i;
  }
}

TEST(RenderDeathTest, DiesIfTheDurationIsNegative) {
  EXPECT_DEATH((void)Drills::render(Trial{}, -1), "Velto: a duration is negative");
}

// Compressor

RC_GTEST_PROP(CompressorLaw, MatchesTheModelBitForBit, ()) {
  const Samples x = *anyBuffer(2000);
  const double target = *rc::gen::oneOf(between(-1, 40), rc::gen::element(0.0, 8.0, 1000.0));
  const Drills::Compressed actual = Drills::compressorHitting(target, x);
  const reference::Compressed expected = reference::compressorHitting(target, x);
  require(sameBits(actual.out, expected.out));
  require(sameBits(actual.grDB, expected.grDB));
}

void expectMatchesModel(double target, const Samples& x) {
  const Drills::Compressed actual = Drills::compressorHitting(target, x);
  const reference::Compressed expected = reference::compressorHitting(target, x);
  EXPECT_TRUE(sameBits(actual.out, expected.out)) << x.size() << " frames, " << target << " dB";
  EXPECT_TRUE(sameBits(actual.grDB, expected.grDB)) << x.size() << " frames, " << target << " dB";
}

TEST(Compressor, MatchesTheModelForTheLengthOfATrial) {
  for (const Material material : Material::allCases) {
    const Samples x = source(material, 3.2, 1234);
    for (const double target : {0.8, 4.8, 12.0}) {
      SCOPED_TRACE(material);
      expectMatchesModel(target, x);
    }
  }
}

TEST(Compressor, MatchesTheModelForNonFiniteAndTinySamples) {
  const float infinity = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const double noNumber = std::numeric_limits<double>::quiet_NaN();
  const std::vector<Samples> buffers{{0.5f, nan, 0.25f, -0.5f},
                                     {0.5f, infinity, 0.25f, nan, -infinity},
                                     {nan, nan},
                                     {1e-9f, -1e-9f, 1e-10f, 0.0f, -0.0f, 1e-45f, nan},
                                     {1e-7f, 1e-9f, 3e-9f, 2e-9f, 0.0f},
                                     {3e38f, -1.0f, 1e-38f, 0.0f, 1.0f}};
  for (const Samples& x : buffers) {
    for (const double target : {-1.0, 0.0, 1e-3, 6.0, 50.0, HUGE_VAL, -HUGE_VAL, noNumber}) {
      SCOPED_TRACE(x[0]);
      expectMatchesModel(target, x);
    }
  }
}

// Samples below the detector's floor of -180 dB count as the floor, so the knee reduces either all
// or none of them. The targets move the threshold across that point.
TEST(Compressor, MatchesTheModelAroundTheDetectorFloor) {
  for (const float peak : {3e-9f, 1e-8f, 5e-8f}) {
    Samples x(400);
    x[0] = peak;
    x[200] = -peak;
    x[201] = 1e-9f;
    for (int i = 0; i < 60; ++i) {
      expectMatchesModel(1e-4 * i, x);
      expectMatchesModel(0.02 * i, x);
    }
    for (int i = 0; i < 60; ++i)
      expectMatchesModel(0.5 * i, Samples(300, peak));
  }
}

// An unsuccessful search ends one step below the peak, or one step above its lowest threshold,
// which is 40 dB below the peak. The samples lie around the knee at these two thresholds.
TEST(Compressor, MatchesTheModelAroundTheKnee) {
  for (const double thresholdDB : {-40.0 / 4096, 40.0 / 4096 - 40}) {
    Samples x;
    for (const double kneeDB : {-3.0, 3.0})
      for (int i = -200; i <= 200; ++i)
        x.push_back(static_cast<float>(std::pow(10.0, (thresholdDB + kneeDB + 0.001 * i) / 20)));
    for (float& sample : x)
      sample = std::min(sample, 1.0f);
    x.push_back(1);
    expectMatchesModel(thresholdDB > -20 ? 0 : 1000, x);
    std::ranges::reverse(x);
    expectMatchesModel(thresholdDB > -20 ? 0 : 1000, x);
  }
}

// A reduction equal to the target, bit for bit, counts as reached: the threshold is not lowered
// further.
TEST(Compressor, AReductionEqualToTheTargetReachesIt) {
  const Samples x(1000, 1.0f);
  const double attack = std::exp(-1 / (0.005 * rate));
  // At the first threshold, -20 dB, the static reduction of a full-scale sample is 15 dB.
  double reached = 0;
  for (std::size_t i = 0; i < x.size(); ++i)
    reached = 15 + attack * (reached - 15);
  expectMatchesModel(reached, x);
  expectMatchesModel(std::nextafter(reached, 100.0), x);
}

// The search passes over blocks of idle samples at once. One sample is above the knee, at any place
// of a block, of the last one too, or alone after seconds of silence.
TEST(Compressor, MatchesTheModelWhereverALoudSampleIs) {
  for (const std::size_t frames : {64U, 67U}) {
    for (std::size_t place = 0; place < frames; ++place) {
      Samples x(frames, 1e-4f);
      x[place] = -0.5f;
      expectMatchesModel(0.02, x);
    }
  }
  Samples x(100000, 1e-4f);
  for (const std::size_t place : {0U, 1U, 1023U, 2047U, 50000U, 52046U, 99999U})
    x[place] = 0.5f;
  for (const double target : {0.01, 0.05, 0.1, 0.15})
    expectMatchesModel(target, x);
}

// The largest smoothed reduction at the first threshold of the search, 20 dB below the peak.
double reachedAtFirst(const Samples& x) {
  const double attack = std::exp(-1 / (0.005 * rate)), release = std::exp(-1 / (0.12 * rate));
  const double peakDB = reference::peakDB(x);
  const double thresholdDB = (peakDB + (peakDB - 40)) / 2;
  double envelope = 0, largest = 0;
  for (const float sample : x) {
    const double levelDB = 20 * std::log10(std::max(1e-9, std::abs(static_cast<double>(sample))));
    const double reduction = reference::gainReduction(levelDB, thresholdDB);
    const double decay = envelope < reduction ? attack : release;
    envelope = reduction + decay * (envelope - reduction);
    largest = std::max(largest, envelope);
  }
  return largest;
}

// The search approximates reductions. Targets that differ from one by less than the error, and by
// a little more.
TEST(Compressor, MatchesTheModelWhereTheReductionComesCloseToTheTarget) {
  std::vector<Samples> sounds;
  for (int i = 0; i < 40; ++i)
    sounds.emplace_back(500, 0.3f + 0.011f * static_cast<float>(i));
  // Middles of the intervals of approximateLevelDB(), where only rounding makes a difference.
  for (int i = 0; i < 40; ++i)
    sounds.emplace_back(500, 0.5f + (static_cast<float>(i) + 0.5f) / 512);
  // Two bursts, the second one louder, with thousands of idle samples between them.
  Samples bursts(2000, 0.5f);
  bursts.resize(7000, 1e-3f);
  bursts.resize(7300, 1.0f);
  sounds.push_back(bursts);
  for (const Samples& x : sounds) {
    const double reached = reachedAtFirst(x);
    for (const double offDB : {-1e-4, -3e-6, -1e-9, 0.0, 1e-9, 3e-6, 1e-4})
      expectMatchesModel(reached + offDB, x);
    expectMatchesModel(std::nextafter(reached, 0.0), x);
    expectMatchesModel(std::nextafter(reached, 100.0), x);
  }
}

// The output is computed in blocks of 512 frames, attenuated in blocks of 256.
TEST(Compressor, MatchesTheModelAtEveryBlockEdge) {
  const Samples x = source(Material::drums, 0.04, 5);
  for (const std::size_t frames : {1U, 2U, 255U, 256U, 257U, 511U, 512U, 513U, 1024U, 1025U})
    expectMatchesModel(6, Samples(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(frames)));
}

} // namespace
} // namespace velto
