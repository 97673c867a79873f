#include "Attenuation.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace velto {

namespace {

// 2^y for |y| < 1000 with a relative error below `exp2Error`. Splits y into an integer and a
// remainder |r| <= 1/2, and truncates the Taylor series of 2^r = e^(r ln 2) after r^10.
//
// Adding `toInteger` leaves y, rounded to an integer, in the low bits of the sum.
constexpr double exp2Error = 1e-12;

double quickExp2(double y) {
  constexpr double toInteger = 0x1.8p52;
  const double shifted = y + toInteger;
  const double r = y - (shifted - toInteger);
  double sum = 7.0549116208011233e-9;
  sum = sum * r + 1.0178086009239700e-7;
  sum = sum * r + 1.3215486790144309e-6;
  sum = sum * r + 1.5252733804059841e-5;
  sum = sum * r + 1.5403530393381608e-4;
  sum = sum * r + 1.3333558146428443e-3;
  sum = sum * r + 9.6181291076284772e-3;
  sum = sum * r + 5.5504108664821580e-2;
  sum = sum * r + 2.4022650695910071e-1;
  sum = sum * r + 6.9314718055994531e-1;
  sum = sum * r + 1.0;
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(sum) +
                               (std::bit_cast<std::uint64_t>(shifted) << 52));
}

constexpr std::size_t blockFrames = 256;

float attenuatedExactly(float x, double reductionDB) {
  return static_cast<float>(static_cast<double>(x) * std::pow(10.0, -reductionDB / 20));
}

// Rounding is monotonic: if both ends of an interval around the true product round to the same
// float, so does the product. Otherwise, about once in ten thousand samples, std::pow decides. At
// most `blockFrames` samples. Two loops, so that the compiler can vectorise the first.
void attenuateBlock(std::span<const float> x, std::span<const double> reductionDB,
                    std::span<float> out) {
  constexpr double octavesPerDB = 0.16609640474436813; // log2(10) / 20
  std::array<float, blockFrames> otherEnd; // NOLINT(*-member-init): each is written first
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double product = static_cast<double>(x[i]) * quickExp2(-octavesPerDB * reductionDB[i]);
    out[i] = static_cast<float>(product * (1 - 2 * exp2Error));
    otherEnd[i] = static_cast<float>(product * (1 + 2 * exp2Error));
  }
  for (std::size_t i = 0; i < x.size(); ++i)
    if (out[i] != otherEnd[i])
      out[i] = attenuatedExactly(x[i], reductionDB[i]);
}

} // namespace

void attenuate(std::span<const float> x, std::span<const double> reductionDB,
               std::span<float> out) {
  for (std::size_t begin = 0; begin < x.size(); begin += blockFrames) {
    const std::size_t count = std::min(blockFrames, x.size() - begin);
    attenuateBlock(x.subspan(begin, count), reductionDB.subspan(begin, count),
                   out.subspan(begin, count));
  }
}

} // namespace velto
