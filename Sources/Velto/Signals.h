// The seeded generator and the source materials that trials are played on.
//
// Everything is computed from a duration and a 64-bit seed, bit for bit the same on every call, and
// leaves with an RMS level of -20 dB. All functions are pure and may run on any thread.
#pragma once

#include "DSP.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace velto {

// George Marsaglia's xorshift64 with the shifts 13, 7, 17 ("Xorshift RNGs", Journal of Statistical
// Software 8, 2003). A state of zero would never leave zero, so a seed of 0 is replaced.
class Xorshift64 {
public:
  static constexpr std::uint64_t zeroSeedReplacement = 0x9E3779B97F4A7C15;

  explicit constexpr Xorshift64(std::uint64_t seed)
      : state_(seed == 0 ? zeroSeedReplacement : seed) {}

  // Advances the state and returns it.
  constexpr std::uint64_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return state_;
  }

  // The top 53 bits of `x` as a fraction in [0, 1).
  static constexpr double unit(std::uint64_t x) { return static_cast<double>(x >> 11) * 0x1p-53; }

  // The next value in [0, 1).
  constexpr double nextUnit() { return unit(next()); }

  // The next noise value. It lies in [-1, 3) with a mean of +1: twice the usual scale, kept because
  // every material's sound depends on it.
  constexpr double nextNoise() {
    // 53 bits fit into a signed integer, which every processor converts at once.
    return static_cast<double>(static_cast<std::int64_t>(next() >> 11)) * 0x1p-51 - 1;
  }

private:
  std::uint64_t state_;
};

namespace Signals {

// The number of frames that `seconds` take at 48000 Hz, truncated. A negative or non-finite
// duration is a programming error: the process stops.
[[nodiscard]] std::size_t frameCount(double seconds);

// Pink noise: Paul Kellet's refined filter over the generator's noise.
[[nodiscard]] Samples pink(double seconds, std::uint64_t seed);

// A bar of eighth notes at 100 beats per minute (kick, snare, hi-hat) that repeats.
[[nodiscard]] Samples drums(double seconds, std::uint64_t seed);

// A sustained A major chord of twelve sawtooth oscillators through a low-pass filter, faded over
// 10 ms at both ends.
[[nodiscard]] Samples pad(double seconds, std::uint64_t seed);

// A stereo pair (left, right) made from `mono`: left is `mono` itself, right is mixed with
// low-passed noise down to about the given `correlation` (1 = identical) at the level of `mono`.
[[nodiscard]] std::pair<Samples, Samples> stereoise(std::span<const float> mono, double correlation,
                                                    std::uint64_t seed);

// The same materials before their level is set, in a buffer that the caller provides: each fills
// all of `out` and returns the gain that takes it to -20 dB.
[[nodiscard]] float fillPink(std::span<float> out, std::uint64_t seed);
[[nodiscard]] float fillDrums(std::span<float> out, std::uint64_t seed);
[[nodiscard]] float fillPad(std::span<float> out, std::uint64_t seed);

// The right channel of stereoise() before its level is set: fills `out`, as long as `mono`, and
// returns the gain that takes it to the level of `mono`, which is `levelDB`.
[[nodiscard]] float fillDecorrelated(std::span<float> out, std::span<const float> mono,
                                     double levelDB, double correlation, std::uint64_t seed);

} // namespace Signals

} // namespace velto
