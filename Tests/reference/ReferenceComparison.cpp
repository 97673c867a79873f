#include "reference/ReferenceComparison.h"

#include "Numbers.h"
#include "Xorshift64.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <ios>
#include <limits>
#include <ostream>

namespace velto {

std::ostream& operator<<(std::ostream& out, Drill drill) {
  return out << drill.rawValue();
}
std::ostream& operator<<(std::ostream& out, Material material) {
  return out << material.rawValue();
}

std::ostream& operator<<(std::ostream& out, const Staircase& s) {
  return out << "{" << s.difficulty << ", " << s.consecutiveCorrect << ", " << s.reversals << ", "
             << s.lastDirection << "}";
}

namespace tests {

using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

AssertionResult sameBits(double actual, double expected) {
  if (std::bit_cast<std::uint64_t>(actual) == std::bit_cast<std::uint64_t>(expected))
    return AssertionSuccess();
  return AssertionFailure() << std::hexfloat << actual << " is not " << expected;
}

AssertionResult sameBits(std::span<const float> actual, std::span<const float> expected) {
  if (actual.size() != expected.size())
    return AssertionFailure() << actual.size() << " samples instead of " << expected.size();
  if (actual.empty() || std::memcmp(actual.data(), expected.data(), actual.size_bytes()) == 0)
    return AssertionSuccess();
  const auto differs = [](float a, float b) {
    return std::bit_cast<std::uint32_t>(a) != std::bit_cast<std::uint32_t>(b);
  };
  std::size_t count = 0;
  std::size_t first = actual.size();
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (differs(actual[i], expected[i])) {
      ++count;
      first = std::min(first, i);
    }
  }
  return AssertionFailure() << count << " of " << actual.size() << " samples differ, first sample "
                            << first << ": " << std::hexfloat << actual[first] << " is not "
                            << expected[first];
}

AssertionResult sameBits(const Trial& actual, const reference::Trial& expected) {
  if (referenceDrill(actual.drill) != expected.drill)
    return AssertionFailure() << "drill";
  if (referenceMaterial(actual.material) != expected.material)
    return AssertionFailure() << "material";
  if (actual.seed != expected.seed)
    return AssertionFailure() << "seed: " << actual.seed << " is not " << expected.seed;
  if (actual.slots != expected.slots)
    return AssertionFailure() << "slots: " << actual.slots << " is not " << expected.slots;
  if (actual.oddSlot != expected.oddSlot)
    return AssertionFailure() << "oddSlot: " << actual.oddSlot << " is not " << expected.oddSlot;
  const struct {
    const char* name;
    double actual, expected;
  } fields[] = {{"difficulty", actual.difficulty, expected.difficulty},
                {"targetFreq", actual.targetFreq, expected.targetFreq},
                {"boostDB", actual.boostDB, expected.boostDB},
                {"boostQ", actual.boostQ, expected.boostQ},
                {"targetLevelDB", actual.targetLevelDB, expected.targetLevelDB},
                {"targetGRdB", actual.targetGRdB, expected.targetGRdB},
                {"correlation", actual.correlation, expected.correlation}};
  for (const auto& field : fields)
    if (const AssertionResult same = sameBits(field.actual, field.expected); !same)
      return AssertionFailure() << field.name << ": " << same.message();
  return AssertionSuccess();
}

AssertionResult sameBits(const std::vector<Slot>& actual,
                         const std::vector<reference::Pair>& expected) {
  if (actual.size() != expected.size())
    return AssertionFailure() << actual.size() << " slots instead of " << expected.size();
  for (std::size_t s = 0; s < actual.size(); ++s) {
    if (const AssertionResult same = sameBits(*actual[s].l, expected[s].l); !same)
      return AssertionFailure() << "slot " << s << " left: " << same.message();
    if (const AssertionResult same = sameBits(*actual[s].r, expected[s].r); !same)
      return AssertionFailure() << "slot " << s << " right: " << same.message();
  }
  return AssertionSuccess();
}

void require(const AssertionResult& result) {
  if (!result)
    RC_FAIL(result.message());
}

reference::Drill referenceDrill(Drill drill) {
  switch (drill) {
  case Drill::frequency:
    return reference::Drill::frequency;
  case Drill::level:
    return reference::Drill::level;
  case Drill::dynamics:
    return reference::Drill::dynamics;
  case Drill::polarity:
    return reference::Drill::polarity;
  }
  std::abort();
}

reference::Material referenceMaterial(Material material) {
  switch (material) {
  case Material::pinkNoise:
    return reference::Material::pinkNoise;
  case Material::drums:
    return reference::Material::drums;
  case Material::pad:
    return reference::Material::pad;
  }
  std::abort();
}

reference::Trial referenceTrial(const Trial& t) {
  return {referenceDrill(t.drill),
          t.seed,
          referenceMaterial(t.material),
          t.difficulty,
          t.slots,
          t.targetFreq,
          t.boostDB,
          t.boostQ,
          t.targetLevelDB,
          t.targetGRdB,
          t.oddSlot,
          t.correlation};
}

reference::Samples referenceSource(Material material, double seconds, std::uint64_t seed) {
  switch (material) {
  case Material::pinkNoise:
    return reference::pink(seconds, seed);
  case Material::drums:
    return reference::drums(seconds, seed);
  case Material::pad:
    return reference::pad(seconds, seed);
  }
  std::abort();
}

rc::Gen<std::uint64_t> anySeed() {
  const auto uniform = rc::gen::noShrink(rc::gen::resize(100, rc::gen::arbitrary<std::uint64_t>()));
  // 0 and its replacement; the seed whose decorrelation seed is 0; both ends of the range.
  const auto special =
      rc::gen::element<std::uint64_t>(0, 0x9E3779B97F4A7C15, 0 - 7717ULL, 1, ~0ULL, 1ULL << 63);
  return rc::gen::weightedOneOf<std::uint64_t>({{5, uniform}, {1, special}});
}

rc::Gen<Drill> anyDrill() {
  return rc::gen::elementOf(Drill::allCases);
}

rc::Gen<Material> anyMaterial() {
  return rc::gen::elementOf(Material::allCases);
}

rc::Gen<double> between(double low, double high) {
  constexpr std::int64_t steps = std::int64_t{1} << 40;
  return rc::gen::map(rc::gen::resize(100, rc::gen::inRange<std::int64_t>(0, steps + 1)),
                      [low, high](std::int64_t step) {
                        return low + (high - low) *
                                         (static_cast<double>(step) / static_cast<double>(steps));
                      });
}

rc::Gen<double> nominalDifficulty() {
  return rc::gen::weightedOneOf<double>(
      {{4, between(0, 100)}, {1, rc::gen::element(0.0, 20.0, 50.0, 100.0)}});
}

rc::Gen<double> anyDifficulty() {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  return rc::gen::weightedOneOf<double>(
      {{3, nominalDifficulty()},
       {1, between(-300, 400)},
       {1, rc::gen::element(-5.0, 250.0, -0.0, 5e-324, -5e-324, 100.00000000000001, -1e300, 1e300,
                            -infinity, infinity)}});
}

double maxSeconds() {
  const char* text = std::getenv("VELTO_TEST_MAX_SECONDS");
  return text == nullptr ? 0.4 : std::atof(text);
}

rc::Gen<double> anyDuration() {
  // Includes lengths below 960 samples, at which the pad's two fades overlap.
  return rc::gen::weightedOneOf<double>({{1, rc::gen::just(0.0)},
                                         {1, between(0, 5 / sampleRateHz)},
                                         {2, between(0, 2000 / sampleRateHz)},
                                         {4, between(0, maxSeconds())}});
}

rc::Gen<Samples> anyBuffer(int maxFrames) {
  return rc::gen::map(rc::gen::tuple(rc::gen::weightedOneOf<int>(
                                         {{4, rc::gen::resize(100, rc::gen::inRange(0, maxFrames))},
                                          {1, rc::gen::inRange(0, 3)}}),
                                     anySeed(), rc::gen::element(0.0f, 1e-7f, 0.01f, 0.5f, 1.0f)),
                      [](const std::tuple<int, std::uint64_t, float>& shape) {
                        const auto& [frames, seed, amplitude] = shape;
                        Samples x(static_cast<std::size_t>(frames));
                        Xorshift64 generator(seed);
                        for (float& sample : x)
                          sample = amplitude * static_cast<float>(2 * generator.nextUnit() - 1);
                        return x;
                      });
}

} // namespace tests

} // namespace velto
