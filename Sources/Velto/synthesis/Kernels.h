// The longest loops of the synthesis, compiled for every processor and once more for those with
// AVX2. Both give the same bits: AVX2 computes more values at once, each as in scalar code.
//
// Any thread.
#pragma once

#include <cstdint>
#include <span>

namespace velto {

struct Kernels {
  // Fills `out` with pink noise: the white noise of `seed` through Paul Kellet's refined filter,
  // rounded. Returns the sum of the squares, added from the first to the last.
  double (*pinkNoise)(std::span<float> out, std::uint64_t seed);

  // Same, but removes the mean of the white noise first, and ends with a fourth-order high-pass at
  // 20 Hz.
  double (*audiblePinkNoise)(std::span<float> out, std::uint64_t seed);

  // Fills `out` with an A major chord: the mean of twelve sawtooth oscillators whose phases come
  // from `seed`, through a low-pass filter.
  void (*pad)(std::span<float> out, std::uint64_t seed);

  // For any processor.
  [[nodiscard]] static const Kernels& baseline();
  // nullptr if the processor lacks AVX2, or is of another kind.
  [[nodiscard]] static const Kernels* avx2();
  // The fastest that the processor can run.
  [[nodiscard]] static const Kernels& best();
};

} // namespace velto
