// The loops for each instruction set, beside code that computes one sample at a time.
#include "Kernels.h"

#include "DSP.h"
#include "Xorshift64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

using namespace velto;

namespace {

// Of this processor.
std::vector<const Kernels*> allKernels() {
  std::vector<const Kernels*> all{&Kernels::baseline()};
  if (const Kernels* const avx2 = Kernels::avx2())
    all.push_back(avx2);
  return all;
}

struct Pink {
  std::vector<float> samples;
  double sumOfSquares = 0;
};

Pink pinkOneByOne(std::size_t frames, std::uint64_t seed, bool audible) {
  const double removed = audible ? 1 : 0;
  Biquad first = Biquad::highpass(20, 0.5412, sampleRateHz);
  Biquad second = Biquad::highpass(20, 1.3066, sampleRateHz);
  Xorshift64 generator(seed);
  double b0 = 0, b1 = 0, b2 = 0, b3 = 0, b4 = 0, b5 = 0, b6 = 0;
  Pink pink;
  for (std::size_t i = 0; i < frames; ++i) {
    const double w = generator.nextNoise() - removed;
    b0 = 0.99886 * b0 + w * 0.0555179;
    b1 = 0.99332 * b1 + w * 0.0750759;
    b2 = 0.96900 * b2 + w * 0.1538520;
    b3 = 0.86650 * b3 + w * 0.3104856;
    b4 = 0.55000 * b4 + w * 0.5329522;
    b5 = -0.7616 * b5 - w * 0.0168980;
    auto sample = static_cast<float>(0.11 * (b0 + b1 + b2 + b3 + b4 + b5 + b6 + w * 0.5362));
    b6 = w * 0.115926;
    if (audible)
      sample = second.process(first.process(sample));
    pink.samples.push_back(sample);
    pink.sumOfSquares += static_cast<double>(sample) * static_cast<double>(sample);
  }
  return pink;
}

std::vector<float> padOneByOne(std::size_t frames, std::uint64_t seed) {
  constexpr double rootsHz[] = {110, 164.81, 220, 277.18}, detunings[] = {0.994, 1, 1.007};
  Xorshift64 generator(seed);
  std::vector<double> phases, increments;
  for (const double root : rootsHz)
    for (const double detuning : detunings) {
      phases.push_back(generator.nextUnit());
      increments.push_back(root * detuning / sampleRateHz);
    }
  Biquad filter = Biquad::lowpass(5200, 0.6, sampleRateHz);
  std::vector<float> pad;
  for (std::size_t i = 0; i < frames; ++i) {
    double sum = 0;
    for (std::size_t voice = 0; voice < phases.size(); ++voice) {
      phases[voice] += increments[voice];
      if (phases[voice] >= 1)
        phases[voice] -= 1;
      sum += 2 * phases[voice] - 1;
    }
    pad.push_back(filter.process(static_cast<float>(sum / static_cast<double>(phases.size()))));
  }
  return pad;
}

} // namespace

// Lengths around those of a block and of a group of four frames. Audible noise comes out twelve
// frames late.
TEST(Kernels, PinkNoiseOfAnyLengthIsThatOfOneSampleAtATime) {
  constexpr float untouched = 7;
  for (const Kernels* const kernels : allKernels())
    for (const std::size_t frames :
         {0U, 1U, 2U, 3U, 4U, 5U, 243U, 244U, 245U, 255U, 256U, 257U, 512U, 5000U})
      for (const bool audible : {false, true})
        for (const std::uint64_t seed : {0U, 1U, 12345U}) {
          const Pink wanted = pinkOneByOne(frames, seed, audible);
          std::vector<float> made(frames + 1, untouched);
          const auto fill = audible ? kernels->audiblePinkNoise : kernels->pinkNoise;
          const double sum = fill(std::span(made).first(frames), seed);
          EXPECT_TRUE(std::equal(wanted.samples.begin(), wanted.samples.end(), made.begin()))
              << frames << " frames of seed " << seed;
          EXPECT_EQ(sum, wanted.sumOfSquares) << frames << " frames of seed " << seed;
          EXPECT_EQ(made.back(), untouched);
        }
}

TEST(Kernels, PadOfAnyLengthIsThatOfOneSampleAtATime) {
  constexpr float untouched = 7;
  for (const Kernels* const kernels : allKernels())
    for (const std::size_t frames : {0U, 1U, 7U, 8U, 9U, 15U, 16U, 50000U})
      for (const std::uint64_t seed : {0U, 1U, 12345U}) {
        const std::vector<float> wanted = padOneByOne(frames, seed);
        std::vector<float> made(frames + 1, untouched);
        kernels->pad(std::span(made).first(frames), seed);
        EXPECT_TRUE(std::equal(wanted.begin(), wanted.end(), made.begin()))
            << frames << " frames of seed " << seed;
        EXPECT_EQ(made.back(), untouched);
      }
}

TEST(Kernels, TheBestAreThoseForAVX2WhereTheProcessorHasIt) {
  EXPECT_EQ(&Kernels::best(), allKernels().back());
}
