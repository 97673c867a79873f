// Comparison of the program with the reference model to the last bit, and generators for laws.
#pragma once

#include "DSP.h"
#include "Drill.h"
#include "Slot.h"
#include "Staircase.h"
#include "Trial.h"
#include "kit/Materials.h"
#include "reference/ReferenceModel.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstdint>
#include <iosfwd>
#include <span>
#include <vector>

namespace velto {

// For messages of failed tests.
std::ostream& operator<<(std::ostream& out, Drill drill);
std::ostream& operator<<(std::ostream& out, Material material);
std::ostream& operator<<(std::ostream& out, const Staircase& staircase);

namespace tests {

// Success where both hold the same 64 bits: tells 0 from -0 and takes two NaN of one kind as equal.
::testing::AssertionResult sameBits(double actual, double expected);

// Success where both have the same length and the same 32 bits in every sample.
::testing::AssertionResult sameBits(std::span<const float> actual, std::span<const float> expected);

// Success where every field is the same, to the last bit.
::testing::AssertionResult sameBits(const Trial& actual, const reference::Trial& expected);
::testing::AssertionResult sameBits(const std::vector<Slot>& actual,
                                    const std::vector<reference::Pair>& expected);

// Fails the current RapidCheck property unless `result` is a success.
void require(const ::testing::AssertionResult& result);

reference::Drill referenceDrill(Drill drill);
reference::Material referenceMaterial(Material material);
reference::Trial referenceTrial(const Trial& trial);

// The reference model's buffer of a material.
reference::Samples referenceSource(Material material, double seconds, std::uint64_t seed);
using kit::source;

// Any seed, special cases included.
rc::Gen<std::uint64_t> anySeed();
rc::Gen<Drill> anyDrill();
rc::Gen<Material> anyMaterial();

// Uniform over [low, high].
rc::Gen<double> between(double low, double high);

// A difficulty within 0 to 100, both ends often.
rc::Gen<double> nominalDifficulty();
// A difficulty within 0 to 100 or outside, infinities included.
rc::Gen<double> anyDifficulty();

// A duration in seconds: often 0 or a few samples, at most maxSeconds().
rc::Gen<double> anyDuration();
// 0.4, or what VELTO_TEST_MAX_SECONDS says.
double maxSeconds();

// A buffer of any samples between -1 and 1, silence and single samples among them.
rc::Gen<Samples> anyBuffer(int maxFrames);

} // namespace tests

} // namespace velto
