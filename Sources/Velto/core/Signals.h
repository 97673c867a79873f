// The seeded generator and the source materials that trials are played on.
//
// Everything is computed from a duration and a 64-bit seed, bit for bit the same on every call, and
// leaves with an RMS level of -20 dB; its peaks may lie above full scale. All functions are pure
// and may run on any thread. None is meant for the audio thread: those that return samples
// allocate, and the first drums make tables (DrumVoices).
#pragma once

#include "DSP.h"
#include "Pair.h"

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
  constexpr double nextNoise() { return top53Bits() * 0x1p-51 - 1; }

  // The next two.
  Pair nextNoisePair() {
    const double first = top53Bits();
    return Pair{first, top53Bits()} * 0x1p-51 - 1;
  }

private:
  // They fit into a signed integer, which every processor converts at once.
  constexpr double top53Bits() {
    return static_cast<double>(static_cast<std::int64_t>(next() >> 11));
  }

  std::uint64_t state_;
};

// What a material takes of the generator's noise.
enum class Noise : std::uint8_t {
  asDrawn, // all of it; its mean of +1 reaches pink noise and the decorrelation noise
  audible  // less its mean; pink noise then loses what lies below 20 Hz
};

namespace Signals {

// The number of frames that `seconds` take at 48000 Hz, truncated. A negative or non-finite
// duration is a programming error: the process stops. This holds for every duration below; 0 gives
// an empty buffer.
[[nodiscard]] std::size_t frameCount(double seconds);

// Pink noise, 3 dB less an octave from about 10 Hz up: Paul Kellet's refined filter, as he
// published it on the music-dsp list, over the generator's noise. Noise::asDrawn leaves it with a
// mean that carries almost all of its power; Noise::audible takes the mean off each draw and adds a
// fourth-order Butterworth high-pass at 20 Hz.
[[nodiscard]] Samples pink(double seconds, std::uint64_t seed, Noise noise = Noise::asDrawn);

// A bar of eighth notes at 100 beats per minute (kick, snare, hi-hat) that repeats: 2.4 s a bar. It
// may end anywhere in the bar.
[[nodiscard]] Samples drums(double seconds, std::uint64_t seed);

// A sustained A major chord of twelve sawtooth oscillators through a low-pass filter, faded over
// 10 ms at both ends.
[[nodiscard]] Samples pad(double seconds, std::uint64_t seed);

// A stereo pair (left, right) made from `mono`: left is `mono` itself, right is `correlation` parts
// of it mixed with 1 - `correlation` parts of noise below 6 kHz, at the level of `mono`. 0 to 1: at
// 1 both are the same but for rounding. Drums and pad then measure a correlation of
// c / sqrt(c^2 + (1 - c)^2); pink noise as drawn measures more, because its mean is that of the
// noise that it is mixed with.
[[nodiscard]] std::pair<Samples, Samples> stereoise(std::span<const float> mono, double correlation,
                                                    std::uint64_t seed,
                                                    Noise noise = Noise::asDrawn);

// The same materials before their level is set, in a buffer that the caller provides: each fills
// all of `out` and returns the factor that takes it to -20 dB.
[[nodiscard]] float fillPink(std::span<float> out, std::uint64_t seed,
                             Noise noise = Noise::asDrawn);
// As fillPink().
[[nodiscard]] float fillDrums(std::span<float> out, std::uint64_t seed);
// As fillPink().
[[nodiscard]] float fillPad(std::span<float> out, std::uint64_t seed);

// The right channel of stereoise() before its level is set: fills `out`, as long as `mono` and
// apart from it, and returns the factor that takes it to the level of `mono`, which is `levelDB`.
[[nodiscard]] float fillDecorrelated(std::span<float> out, std::span<const float> mono,
                                     double levelDB, double correlation, std::uint64_t seed,
                                     Noise noise = Noise::asDrawn);

} // namespace Signals

} // namespace velto
