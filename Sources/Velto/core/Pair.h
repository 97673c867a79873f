// Two 64-bit floats that are computed with at once: each operation is that of double, on both.
//
// Every 64-bit processor has registers of this width and every compiler of this project knows them,
// so that sums whose order is fixed run two to an instruction without a rounding changed.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>

namespace velto {

using Pair = double __attribute__((vector_size(16)));

[[nodiscard]] inline Pair both(double value) {
  return Pair{value, value};
}

// Two 32-bit floats, for instance two successive samples.
using SamplePair = float __attribute__((vector_size(8)));

// Rounds to 32 bits, and back, which is exact.
[[nodiscard]] inline SamplePair rounded(Pair a) {
  return __builtin_convertvector(a, SamplePair);
}
[[nodiscard]] inline float rounded(double a) {
  return static_cast<float>(a);
}
[[nodiscard]] inline Pair widened(SamplePair a) {
  return __builtin_convertvector(a, Pair);
}
[[nodiscard]] inline double widened(float a) {
  return static_cast<double>(a);
}

// The samples i and i + 1 of a buffer, which has both.
[[nodiscard]] inline SamplePair pairAt(std::span<const float> x, std::size_t i) {
  SamplePair samples;
  std::memcpy(&samples, &x[i], sizeof samples);
  return samples;
}
inline void setPair(std::span<float> x, std::size_t i, SamplePair samples) {
  std::memcpy(&x[i], &samples, sizeof samples);
}

// The first, or second, of two values each, for instance of two successive frames.
[[nodiscard]] inline Pair firstOfEach(Pair a, Pair b) {
  return __builtin_shufflevector(a, b, 0, 2);
}
[[nodiscard]] inline Pair secondOfEach(Pair a, Pair b) {
  return __builtin_shufflevector(a, b, 1, 3);
}

// The second of `a` and the first of `b`.
[[nodiscard]] inline Pair straddling(Pair a, Pair b) {
  return __builtin_shufflevector(a, b, 1, 2);
}

} // namespace velto
