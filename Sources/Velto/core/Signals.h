// The seeded generator and the source materials of trials.
//
// Materials are computed from a duration and a 64-bit seed, bit-identical on every call. Their RMS
// level is -20 dB; peaks may exceed full scale. Pure functions. Any thread but the audio thread:
// functions that return samples allocate, and the first drum loop builds tables (DrumVoices).
#pragma once

#include "DSP.h"
#include "Pair.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace velto {

// George Marsaglia's xorshift64 with the shifts 13, 7, 17 ("Xorshift RNGs", Journal of Statistical
// Software 8, 2003). A state of zero would stay zero, so a seed of 0 is replaced.
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

  // The next noise value, in [-1, 3) with a mean of +1, not in the usual [-1, 1). Every material's
  // sound depends on this range.
  constexpr double nextNoise() { return top53Bits() * 0x1p-51 - 1; }

  // The next two noise values.
  Pair nextNoisePair() {
    const double first = top53Bits();
    return Pair{first, top53Bits()} * 0x1p-51 - 1;
  }

private:
  // Converted from a signed integer, which takes a single instruction.
  constexpr double top53Bits() {
    return static_cast<double>(static_cast<std::int64_t>(next() >> 11));
  }

  std::uint64_t state_;
};

// How materials use the generator's noise.
enum class Noise : std::uint8_t {
  asDrawn, // unchanged; the mean of +1 reaches pink noise and the decorrelation noise
  audible  // mean removed; pink noise is also high-passed at 20 Hz
};

namespace Signals {

// Number of frames in `seconds` at 48000 Hz, truncated. Aborts if the duration is negative or not
// finite. The functions below treat durations the same way; 0 gives an empty buffer.
[[nodiscard]] std::size_t frameCount(double seconds);

// Pink noise, -3 dB per octave from about 10 Hz up: Paul Kellet's refined filter, as published on
// the music-dsp list, applied to the generator's noise. With Noise::asDrawn its mean carries almost
// all of its power; Noise::audible removes the mean from each draw and adds a fourth-order
// Butterworth high-pass at 20 Hz.
[[nodiscard]] Samples pink(double seconds, std::uint64_t seed, Noise noise = Noise::asDrawn);

// A repeating bar of eighth notes at 100 beats per minute (kick, snare, hi-hat), 2.4 s long. The
// last bar may be incomplete.
[[nodiscard]] Samples drums(double seconds, std::uint64_t seed);

// A sustained A major chord of twelve low-passed sawtooth oscillators, with 10 ms fades at both
// ends.
[[nodiscard]] Samples pad(double seconds, std::uint64_t seed);

// A stereo pair (left, right) from `mono`: left is `mono`, right is c * mono + (1 - c) * noise,
// normalised to the level of `mono`. The noise is low-passed at 6 kHz and has the level of `mono`.
// c is `correlation`, from 0 to 1; with c = 1 both channels are equal up to rounding. The measured
// correlation of drums and pad is c / sqrt(c^2 + (1 - c)^2); that of pink noise as drawn is higher,
// because it has the same mean as the noise.
[[nodiscard]] std::pair<Samples, Samples> stereoise(std::span<const float> mono, double correlation,
                                                    std::uint64_t seed,
                                                    Noise noise = Noise::asDrawn);

// pink() without the final normalisation: fills all of `out` and returns the gain that brings it to
// -20 dB RMS.
[[nodiscard]] float fillPink(std::span<float> out, std::uint64_t seed,
                             Noise noise = Noise::asDrawn);
// Same for drums().
[[nodiscard]] float fillDrums(std::span<float> out, std::uint64_t seed);
// Same for pad().
[[nodiscard]] float fillPad(std::span<float> out, std::uint64_t seed);

// The right channel of stereoise() without the final normalisation: fills `out`, which must have
// the length of `mono` and must not overlap it, and returns the gain that brings it to `levelDB`,
// the level of `mono` in dB.
[[nodiscard]] float fillDecorrelated(std::span<float> out, std::span<const float> mono,
                                     double levelDB, double correlation, std::uint64_t seed,
                                     Noise noise = Noise::asDrawn);

} // namespace Signals

} // namespace velto
