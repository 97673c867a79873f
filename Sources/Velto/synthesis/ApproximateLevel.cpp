#include "ApproximateLevel.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace velto {

namespace {

constexpr double octaveDB = 6.020599913279624; // 20 * log10(2)
constexpr double neperDB = 8.685889638065035;  // 20 * log10(e)
constexpr int indexBits = 8;
constexpr std::size_t intervals = 1 << indexBits;

// The middles of equal intervals between 1 and 2.
struct Middle {
  double inverse, levelDB;
};

std::array<Middle, intervals> middles() {
  std::array<Middle, intervals> all{};
  for (std::size_t i = 0; i < intervals; ++i) {
    const double middle = 1 + (static_cast<double>(i) + 0.5) / intervals;
    all[i] = {1 / middle, 20 * std::log10(middle)};
  }
  return all;
}

} // namespace

// Amplitude = 2^octaves * middle * (1 + r) with |r| < 1/512, and the first terms of ln(1 + r).
double approximateLevelDB(double amplitude) {
  static const std::array<Middle, intervals> table = middles();
  constexpr int mantissaBits = 52, bias = 1023;
  const auto bits = std::bit_cast<std::uint64_t>(amplitude);
  const auto octaves = static_cast<double>(static_cast<int>(bits >> mantissaBits) - bias);
  const Middle& nearest = table[(bits >> (mantissaBits - indexBits)) % intervals];
  constexpr std::uint64_t one = std::uint64_t{bias} << mantissaBits;
  const auto mantissa =
      std::bit_cast<double>(one | (bits & ((std::uint64_t{1} << mantissaBits) - 1)));
  const double r = mantissa * nearest.inverse - 1;
  return octaves * octaveDB + nearest.levelDB + neperDB * (r - r * r * (0.5 - r / 3));
}

} // namespace velto
