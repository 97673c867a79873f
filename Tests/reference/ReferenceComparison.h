// Bit-exact comparison of the program with the reference model, and RapidCheck generators.
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

// Success if both have the same 64 bits: distinguishes 0 from -0; identical NaNs are equal.
::testing::AssertionResult sameBits(double actual, double expected);

// Success if both have the same length and every sample has the same 32 bits.
::testing::AssertionResult sameBits(std::span<const float> actual, std::span<const float> expected);

// Success if every field has the same bits.
::testing::AssertionResult sameBits(const Trial& actual, const reference::Trial& expected);
::testing::AssertionResult sameBits(const std::vector<Slot>& actual,
                                    const std::vector<reference::Pair>& expected);

// Fails the current RapidCheck property unless `result` is a success.
void require(const ::testing::AssertionResult& result);

reference::Drill referenceDrill(Drill drill);
reference::Material referenceMaterial(Material material);
reference::Trial referenceTrial(const Trial& trial);

// The samples that the reference model makes of a material.
reference::Samples referenceSource(Material material, double seconds, std::uint64_t seed);
using kit::source;

// Any seed, including special cases.
rc::Gen<std::uint64_t> anySeed();
rc::Gen<Drill> anyDrill();
rc::Gen<Material> anyMaterial();

// Uniform over [low, high].
rc::Gen<double> between(double low, double high);

// A difficulty from 0 to 100, at times exactly 0, 20, 50 or 100.
rc::Gen<double> nominalDifficulty();
// Any difficulty, including values outside 0 to 100 and infinities.
rc::Gen<double> anyDifficulty();

// A duration in seconds: often 0 or a few samples, at most maxSeconds().
rc::Gen<double> anyDuration();
// The value of VELTO_TEST_MAX_SECONDS; 0.4 by default.
double maxSeconds();

// A buffer of samples from -1 to 1; may be empty, silent or a single sample.
rc::Gen<Samples> anyBuffer(int maxFrames);

} // namespace tests

} // namespace velto
