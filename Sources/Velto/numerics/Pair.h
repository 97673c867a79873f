// Two 64-bit floats in one vector register. Arithmetic is element by element.
//
// Uses the vector types of GCC and Clang. Each element is rounded as in scalar code, so two
// independent sums can run at once with unchanged results.
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

// Rounding to 32 bits, and the exact conversion back.
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

// Samples i and i + 1 of `x`. Both must exist.
[[nodiscard]] inline SamplePair pairAt(std::span<const float> x, std::size_t i) {
  SamplePair samples;
  std::memcpy(&samples, &x[i], sizeof samples);
  return samples;
}
inline void setPair(std::span<float> x, std::size_t i, SamplePair samples) {
  std::memcpy(&x[i], &samples, sizeof samples);
}

// The first, or second, elements of `a` and `b`, for instance of two successive frames.
[[nodiscard]] inline Pair firstOfEach(Pair a, Pair b) {
  return __builtin_shufflevector(a, b, 0, 2);
}
[[nodiscard]] inline Pair secondOfEach(Pair a, Pair b) {
  return __builtin_shufflevector(a, b, 1, 3);
}

// The second element of `a` and the first of `b`.
[[nodiscard]] inline Pair straddling(Pair a, Pair b) {
  return __builtin_shufflevector(a, b, 1, 2);
}

} // namespace velto
