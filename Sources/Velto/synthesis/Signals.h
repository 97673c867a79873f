// The source materials of trials.
//
// Materials are computed from a duration and a 64-bit seed, bit-identical on every call. Their RMS
// level is -20 dB; peaks may exceed full scale. Pure functions. Any thread but the audio thread:
// functions that return samples allocate, and the first drum loop builds tables (DrumVoices).
#pragma once

#include "DSP.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace velto {

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
