#include "Drills.h"

#include "CoreSupport.h"
#include "Signals.h"

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

std::span<const float> left(const std::vector<Slot>& slots, std::size_t slot) {
  return *slots.at(slot).l;
}
std::span<const float> right(const std::vector<Slot>& slots, std::size_t slot) {
  return *slots.at(slot).r;
}

Samples sum(std::span<const float> a, std::span<const float> b) {
  Samples result(a.size());
  std::transform(a.begin(), a.end(), b.begin(), result.begin(), std::plus<>());
  return result;
}

// Any trial that makeTrial or a hand can make.
rc::Gen<Trial> anyTrial() {
  return rc::gen::map(rc::gen::tuple(anyDifficulty(), anyMaterial(), anySeed(), anyDrill()),
                      [](const std::tuple<double, Material, std::uint64_t, Drill>& arguments) {
                        return std::apply(Drills::makeTrial, arguments);
                      });
}

// All drills

RC_GTEST_PROP(RenderLaw, IsTheModelsToTheLastBit, ()) {
  const Trial trial = *anyTrial();
  const double seconds = *anyDuration();
  require(
      sameBits(Drills::render(trial, seconds), reference::render(referenceTrial(trial), seconds)));
}

RC_GTEST_PROP(RenderLaw, WithAudibleNoiseIsTheModelsToTheLastBit, ()) {
  const Trial trial = *anyTrial();
  const double seconds = *anyDuration();
  require(sameBits(Drills::render(trial, seconds, Noise::audible),
                   reference::render(referenceTrial(trial), seconds, true)));
}

RC_GTEST_PROP(RenderLaw, FieldsSetByHandAreTheModelsToTheLastBit, ()) {
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

TEST(Render, IsTheModelsToTheLastBitOverATrialsLength) {
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

RC_GTEST_PROP(RenderLaw, TheSameTrialGivesTheSameSamples, ()) {
  const Trial trial = *anyTrial();
  const double seconds = *anyDuration();
  const std::vector<Slot> first = Drills::render(trial, seconds);
  const std::vector<Slot> second = Drills::render(trial, seconds);
  RC_ASSERT(first.size() == second.size());
  for (std::size_t s = 0; s < first.size(); ++s) {
    require(sameBits(left(first, s), left(second, s)));
    require(sameBits(right(first, s), right(second, s)));
  }
}

// The first renders of the process too, when this runs alone: what is made once is made then.
TEST(RenderThreads, EightAtOnceRenderWhatOneRenders) {
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

RC_GTEST_PROP(RenderLaw, EverySlotHasTheTruncatedLength, ()) {
  const Trial trial = *anyTrial();
  const double seconds = *anyDuration();
  const std::vector<Slot> slots = Drills::render(trial, seconds);
  RC_ASSERT(slots.size() == (trial.drill == Drill::polarity ? 3u : 2u));
  for (const Slot& slot : slots) {
    RC_ASSERT(slot.l->size() == static_cast<std::size_t>(seconds * 48000));
    RC_ASSERT(slot.r->size() == slot.l->size());
  }
}

RC_GTEST_PROP(RenderLaw, TheFirstSlotsLeftIsTheSource, ()) {
  const Trial trial = *anyTrial();
  const double seconds = *anyDuration();
  require(sameBits(left(Drills::render(trial, seconds), 0),
                   source(trial.material, seconds, trial.seed)));
}

TEST(Render, ADurationOfZeroIsEmptyInEverySlot) {
  for (const Drill drill : Drill::allCases) {
    for (const Material material : Material::allCases) {
      const auto slots = Drills::render(Drills::makeTrial(20, material, 5, drill), 0);
      EXPECT_EQ(slots.size(), drill == Drill::polarity ? 3u : 2u);
      for (const Slot& slot : slots) {
        EXPECT_TRUE(slot.l->empty());
        EXPECT_TRUE(slot.r->empty());
      }
    }
  }
}

TEST(RenderDeathTest, ANegativeDurationStops) {
  EXPECT_DEATH((void)Drills::render(Trial{}, -1), "Velto: a duration is negative");
}

TEST(Render, AnotherSeedGivesOtherAudio) {
  Trial trial{.drill = Drill::frequency,
              .seed = 5150,
              .material = Material::drums,
              .difficulty = 40,
              .targetFreq = 1000,
              .boostDB = 9,
              .boostQ = 3.2};
  const auto first = Drills::render(trial, 1);
  trial.seed = 5151;
  const auto second = Drills::render(trial, 1);
  EXPECT_FALSE(sameBits(left(first, 0), left(second, 0)));
  EXPECT_FALSE(sameBits(left(first, 1), left(second, 1)));
}

RC_GTEST_PROP(RenderLaw, BothChannelsAreTheSameExceptInPolarity, ()) {
  const Trial trial = *anyTrial();
  RC_PRE(trial.drill != Drill::polarity);
  for (const Slot& slot : Drills::render(trial, *anyDuration()))
    require(sameBits(*slot.l, *slot.r));
}

// Frequency

Trial frequencyTrial(Material material, double targetFreq, double boostDB) {
  return {.drill = Drill::frequency,
          .seed = 4242,
          .material = material,
          .targetFreq = targetFreq,
          .boostDB = boostDB,
          .boostQ = 3};
}

double liftDB(const std::vector<Slot>& slots, double freq) {
  return 20 * std::log10(Measure::magnitudeAt(left(slots, 1), freq, rate) /
                         Measure::magnitudeAt(left(slots, 0), freq, rate));
}

TEST(Render, FrequencyLiftIsTheDesignsResponse) {
  const auto slots = Drills::render(frequencyTrial(Material::pinkNoise, 1000, 9), 2);
  const Biquad design = Biquad::peaking(1000, 9, 3, rate);
  EXPECT_NEAR(design.responseDB(1000, rate), 9, 1e-9);
  EXPECT_NEAR(liftDB(slots, 1000) - liftDB(slots, 125),
              design.responseDB(1000, rate) - design.responseDB(125, rate), 0.25);
}

TEST(Render, FrequencyBoostOfZeroIsFlat) {
  const auto slots = Drills::render(frequencyTrial(Material::pinkNoise, 1000, 0), 2);
  EXPECT_NEAR(liftDB(slots, 1000) - liftDB(slots, 125), 0, 0.1);
}

TEST(Render, FrequencyLiftsItsOwnBandMost) {
  const auto slots = Drills::render(frequencyTrial(Material::pinkNoise, 3150, 9), 2);
  const auto bandDB = [](std::span<const float> slot, double centre) {
    Samples x(slot.begin(), slot.end());
    Biquad band = Biquad::bandpass(centre, 4, rate);
    for (float& sample : x)
      sample = band.process(sample);
    return Measure::rmsDB(x);
  };
  double mostDB = -100, most = 0;
  for (const double centre : Bands::centres) {
    const double lift = bandDB(left(slots, 1), centre) - bandDB(left(slots, 0), centre);
    if (lift > mostDB) {
      mostDB = lift;
      most = centre;
    }
  }
  EXPECT_EQ(most, 3150);
}

TEST(Render, FrequencyBoostSurvivesLoudnessMatchingOnEveryMaterial) {
  for (const Material material : Material::allCases) {
    const auto slots = Drills::render(frequencyTrial(material, 2000, 10), 2);
    EXPECT_NEAR(liftDB(slots, 2000) - liftDB(slots, 250), 10, 0.5) << material;
  }
}

RC_GTEST_PROP(RenderLaw, FrequencyAndDynamicsSlotsAreEquallyLoud, ()) {
  Trial trial = *anyTrial();
  trial.drill = *rc::gen::element<Drill::Case>(Drill::frequency, Drill::dynamics);
  trial = Drills::makeTrial(trial.difficulty, trial.material, trial.seed, trial.drill);
  const auto slots = Drills::render(trial, *between(0.05, maxSeconds()));
  RC_ASSERT(std::abs(Measure::rmsDB(left(slots, 1)) - Measure::rmsDB(left(slots, 0))) < 1e-5);
}

// Level

TEST(Render, LevelRaisesBByTheTarget) {
  const struct {
    double targetLevelDB, tolerance;
  } rows[] = {{3.0, 1e-5}, {0.4, 1e-5}, {0, 0}, {-6, 1e-5}};
  for (const auto& row : rows) {
    const Trial trial{.drill = Drill::level,
                      .seed = 7,
                      .material = Material::drums,
                      .targetLevelDB = row.targetLevelDB};
    const auto slots = Drills::render(trial, 2);
    EXPECT_NEAR(Measure::rmsDB(left(slots, 1)) - Measure::rmsDB(left(slots, 0)), row.targetLevelDB,
                row.tolerance);
  }
}

TEST(Render, LevelMultipliesBySingleGainRoundedToAFloat) {
  const Trial trial{.drill = Drill::level, .seed = 7, .targetLevelDB = 3};
  const auto slots = Drills::render(trial, 0.1);
  const float gain = 1.41253757f; // 10^(3 / 20)
  for (std::size_t i = 0; i < left(slots, 0).size(); ++i)
    ASSERT_EQ(left(slots, 1)[i], left(slots, 0)[i] * gain) << i;
}

// Dynamics

// The population standard deviation of the levels of 20 ms windows above -60 dB.
double loudnessSpreadDB(std::span<const float> x) {
  std::vector<double> levels;
  for (std::size_t begin = 0; begin + 960 <= x.size(); begin += 960) {
    const double level = Measure::rmsDB(x.subspan(begin, 960));
    if (level > -60)
      levels.push_back(level);
  }
  double mean = 0, deviation = 0;
  for (const double level : levels)
    mean += level / static_cast<double>(levels.size());
  for (const double level : levels)
    deviation += (level - mean) * (level - mean) / static_cast<double>(levels.size());
  return std::sqrt(deviation);
}

double crestDB(std::span<const float> x) {
  return Measure::peakDB(x) - Measure::rmsDB(x);
}

Trial dynamicsTrial(double targetGRdB) {
  return {.drill = Drill::dynamics,
          .seed = 11,
          .material = Material::drums,
          .difficulty = 30,
          .targetGRdB = targetGRdB};
}

TEST(Render, DynamicsShrinksTheSpreadAndKeepsTheOnsets) {
  const auto slots = Drills::render(dynamicsTrial(8), 3);
  EXPECT_NEAR(Measure::rmsDB(left(slots, 1)), Measure::rmsDB(left(slots, 0)), 1e-5);
  EXPECT_GT(loudnessSpreadDB(left(slots, 0)) - loudnessSpreadDB(left(slots, 1)), 1);
  EXPECT_GT(crestDB(left(slots, 1)), crestDB(left(slots, 0)));
}

TEST(Render, DynamicsOfZeroLeavesTheSpread) {
  const auto slots = Drills::render(dynamicsTrial(0), 3);
  EXPECT_NEAR(loudnessSpreadDB(left(slots, 1)), loudnessSpreadDB(left(slots, 0)), 0.2);
}

// Polarity

Trial polarityTrial(std::int64_t oddSlot, double correlation) {
  return {.drill = Drill::polarity,
          .seed = 21,
          .material = Material::drums,
          .slots = 3,
          .oddSlot = oddSlot,
          .correlation = correlation};
}

TEST(Render, PolarityFlipsTheRightChannelOfTheOddSlotOnly) {
  for (const std::int64_t oddSlot : {0, 1, 2}) {
    const auto slots = Drills::render(polarityTrial(oddSlot, 0.7), 0.3);
    ASSERT_EQ(slots.size(), 3u);
    const auto odd = static_cast<std::size_t>(oddSlot);
    const std::size_t even = (odd + 1) % 3;
    const std::size_t other = (odd + 2) % 3;
    EXPECT_TRUE(sameBits(left(slots, odd), left(slots, even)));
    EXPECT_TRUE(sameBits(left(slots, odd), left(slots, other)));
    EXPECT_TRUE(sameBits(right(slots, even), right(slots, other)));
    Samples negated(right(slots, even).begin(), right(slots, even).end());
    for (float& sample : negated)
      sample = -sample;
    EXPECT_TRUE(sameBits(right(slots, odd), negated));
    EXPECT_FALSE(sameBits(right(slots, even), left(slots, even)));
  }
}

TEST(Render, PolarityOddAndEvenCancelAndTwoEvenAdd) {
  const auto slots = Drills::render(polarityTrial(1, 1), 2);
  const double evenDB = Measure::rmsDB(right(slots, 0));
  EXPECT_LT(Measure::rmsDB(sum(right(slots, 1), right(slots, 0))) - evenDB, -80);
  EXPECT_NEAR(Measure::rmsDB(sum(right(slots, 0), right(slots, 2))) - evenDB, 6.0206, 1e-4);
}

TEST(Render, PolarityCorrelationFallsWithTheTrials) {
  const auto correlation = [](std::span<const float> l, std::span<const float> r) {
    double lr = 0, ll = 0, rr = 0;
    for (std::size_t i = 0; i < l.size(); ++i) {
      const double a = static_cast<double>(l[i]);
      const double b = static_cast<double>(r[i]);
      lr += a * b;
      ll += a * a;
      rr += b * b;
    }
    return lr / std::sqrt(ll * rr);
  };
  const auto hard = Drills::render(polarityTrial(1, 0.35), 2);
  const auto easy = Drills::render(polarityTrial(1, 1), 2);
  EXPECT_LT(correlation(left(hard, 0), right(hard, 0)), 0.6);
  EXPECT_GT(correlation(left(hard, 0), right(hard, 0)), 0.3);
  EXPECT_NEAR(correlation(left(easy, 0), right(easy, 0)), 1, 1e-9);
}

// Compressor

RC_GTEST_PROP(CompressorLaw, IsTheModelsToTheLastBit, ()) {
  const Samples x = *anyBuffer(2000);
  const double target = *rc::gen::oneOf(between(-1, 40), rc::gen::element(0.0, 8.0, 1000.0));
  const Drills::Compressed actual = Drills::compressorHitting(target, x);
  const reference::Compressed expected = reference::compressorHitting(target, x);
  require(sameBits(actual.out, expected.out));
  require(sameBits(actual.grDB, expected.grDB));
}

void expectTheModels(double target, const Samples& x) {
  const Drills::Compressed actual = Drills::compressorHitting(target, x);
  const reference::Compressed expected = reference::compressorHitting(target, x);
  EXPECT_TRUE(sameBits(actual.out, expected.out)) << x.size() << " frames, " << target << " dB";
  EXPECT_TRUE(sameBits(actual.grDB, expected.grDB)) << x.size() << " frames, " << target << " dB";
}

TEST(Compressor, IsTheModelsToTheLastBitOverATrialsLength) {
  for (const Material material : Material::allCases) {
    const Samples x = source(material, 3.2, 1234);
    for (const double target : {0.8, 4.8, 12.0}) {
      SCOPED_TRACE(material);
      expectTheModels(target, x);
    }
  }
}

TEST(Compressor, IsTheModelsToTheLastBitWhateverTheSamples) {
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
      expectTheModels(target, x);
    }
  }
}

// Where the knee passes the detector's floor of -180 dB, samples below the floor count as the
// floor: whether they are reduced changes there. The targets bring the threshold to all of it.
TEST(Compressor, IsTheModelsAroundTheDetectorsFloor) {
  for (const float peak : {3e-9f, 1e-8f, 5e-8f}) {
    Samples x(400);
    x[0] = peak;
    x[200] = -peak;
    x[201] = 1e-9f;
    for (int i = 0; i < 60; ++i) {
      expectTheModels(1e-4 * i, x);
      expectTheModels(0.02 * i, x);
    }
    for (int i = 0; i < 60; ++i)
      expectTheModels(0.5 * i, Samples(300, peak));
  }
}

// Samples on both sides of the knee of each threshold that the search ends at when nothing hits
// the target: one step below the peak, and 40 dB below it.
TEST(Compressor, IsTheModelsAroundTheKnee) {
  for (const double thresholdDB : {-40.0 / 4096, 40.0 / 4096 - 40}) {
    Samples x;
    for (const double kneeDB : {-3.0, 3.0})
      for (int i = -200; i <= 200; ++i)
        x.push_back(static_cast<float>(std::pow(10.0, (thresholdDB + kneeDB + 0.001 * i) / 20)));
    for (float& sample : x)
      sample = std::min(sample, 1.0f);
    x.push_back(1);
    expectTheModels(thresholdDB > -20 ? 0 : 1000, x);
    std::ranges::reverse(x);
    expectTheModels(thresholdDB > -20 ? 0 : 1000, x);
  }
}

// A reduction that equals the target to the bit has hit it: the threshold does not go lower.
TEST(Compressor, AReductionThatEqualsTheTargetHitsIt) {
  const Samples x(1000, 1.0f);
  const double attack = std::exp(-1 / (0.005 * rate));
  // At the first threshold, -20 dB, a full-scale sample is to be reduced by 15 dB.
  double reached = 0;
  for (std::size_t i = 0; i < x.size(); ++i)
    reached = 15 + attack * (reached - 15);
  expectTheModels(reached, x);
  expectTheModels(std::nextafter(reached, 100.0), x);
  EXPECT_NE(Drills::compressorHitting(reached, x).grDB,
            Drills::compressorHitting(std::nextafter(reached, 100.0), x).grDB);
}

// The output is computed in blocks of 512 frames, attenuated in blocks of 256.
TEST(Compressor, IsTheModelsAtEveryBlockEdge) {
  const Samples x = source(Material::drums, 0.04, 5);
  for (const std::size_t frames : {1U, 2U, 255U, 256U, 257U, 511U, 512U, 513U, 1024U, 1025U})
    expectTheModels(6, Samples(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(frames)));
}

TEST(Compressor, OfNothingIsNothing) {
  const Drills::Compressed result = Drills::compressorHitting(8, {});
  EXPECT_TRUE(result.out.empty());
  EXPECT_EQ(result.grDB, 0);
}

TEST(Compressor, LandsOnEightDecibelsOfTheDrumLoop) {
  EXPECT_NEAR(Drills::compressorHitting(8, Signals::drums(3, 11)).grDB, 8, 0.05);
}

// A full-scale square wave is a level of 0 dB throughout: the reduction settles at the static
// curve.
Samples square(std::size_t frames) {
  Samples x(frames, 1);
  for (std::size_t i = 1; i < frames; i += 2)
    x[i] = -1;
  return x;
}

TEST(Compressor, UsesTheThresholdProbedInTheTwelfthRound) {
  // Above the knee 0.75 dB a decibel: the target of 6 dB lies at -8 dB. The halvings probe -20,
  // -10, -5, -7.5, -8.75, -8.125, -7.8125, -7.96875, -8.046875, -8.0078125, -7.98828125 and
  // -7.998046875.
  EXPECT_NEAR(Drills::compressorHitting(6, square(48000)).grDB, 0.75 * 7.998046875, 1e-9);
}

TEST(Compressor, SearchEndsAtTheEndsOfItsRange) {
  // A target of 0 raises the threshold twelve times, to 40 / 4096 dB below the peak: inside the
  // knee. One out of reach lowers it as often.
  const double step = 40.0 / 4096;
  EXPECT_NEAR(Drills::compressorHitting(0, square(48000)).grDB, 0.75 * (step + 3) * (step + 3) / 12,
              1e-9);
  EXPECT_NEAR(Drills::compressorHitting(1000, square(48000)).grDB, 0.75 * (40 - step), 1e-9);
}

TEST(Compressor, SearchStartsFromThePeak) {
  Samples quiet = square(48000);
  for (float& sample : quiet)
    sample *= 0.125f;
  EXPECT_NEAR(Drills::compressorHitting(6, quiet).grDB, 0.75 * 7.998046875, 1e-9);
}

TEST(Compressor, AttackAndReleaseAreOnePole) {
  // 100 ms at full scale, then 100 ms far below the threshold.
  Samples x = square(9600);
  for (std::size_t i = 4800; i < x.size(); ++i)
    x[i] *= 1e-6f;
  const Drills::Compressed result = Drills::compressorHitting(1000, x);
  const double settled = 0.75 * (40 - 40.0 / 4096);
  const double attack = 0.99584200184511;
  const double release = 0.9998264039584257;
  for (const int i : {0, 1, 239, 1000, 4799}) {
    const double reduction = settled * (1 - std::pow(attack, i + 1));
    const auto index = static_cast<std::size_t>(i);
    EXPECT_NEAR(result.out[index] / x[index], std::pow(10, -reduction / 20), 1e-6) << i;
  }
  const double peak = settled * (1 - std::pow(attack, 4800));
  EXPECT_NEAR(result.grDB, peak, 1e-9);
  for (const int i : {0, 1, 2400, 4799}) {
    const double reduction = peak * std::pow(release, i + 1);
    const auto index = 4800 + static_cast<std::size_t>(i);
    EXPECT_NEAR(result.out[index] / x[index], std::pow(10, -reduction / 20), 1e-6) << i;
  }
}

TEST(Compressor, SilenceIsMeasuredAtTheDetectorsFloor) {
  // The peak of silence is -240 dB, the detector's floor -180 dB: 60 dB above any threshold.
  const Drills::Compressed result = Drills::compressorHitting(8, Samples(48000));
  EXPECT_TRUE(sameBits(result.out, Samples(48000)));
  EXPECT_NEAR(result.grDB, 0.75 * (60 + 40.0 / 4096), 1e-9);
}

} // namespace
} // namespace velto
