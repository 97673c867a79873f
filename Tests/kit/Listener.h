// Judges sound as a trained ear would. These functions see recorded samples and the loop's length,
// but nothing of the trial: no seed, no difficulty, no rendered slot.
#pragma once

#include "Recording.h"

#include <cstddef>
#include <optional>
#include <span>
#include <utility>

namespace velto::kit::Listener {

// A settled part of a recording, in which only one slot is heard.
struct Part {
  std::size_t slot = 0;
  std::size_t begin = 0; // first frame in the recording
  Recording sound;
};

// The longest stretch of `a` and `b` at the same place of a loop of `loopFrames`: two recordings of
// equal length, empty if the parts share no place.
[[nodiscard]] std::pair<Recording, Recording> samePlace(const Part& a, const Part& b,
                                                        std::size_t loopFrames);

// All such stretches, concatenated.
[[nodiscard]] std::pair<Recording, Recording> everyPlace(const Part& a, const Part& b,
                                                         std::size_t loopFrames);

// Index of the third-octave band (27 bands, 40 Hz to 16 kHz) with the largest lift from `a` to `b`,
// which are the same stretch. nullopt unless the lift exceeds the median of all bands by 1 dB, or
// with fewer than `spectrumFrames` frames.
inline constexpr std::size_t spectrumFrames = 32768;
[[nodiscard]] std::optional<std::size_t> boostedBand(const Recording& a, const Recording& b);

// RMS level of `b` over that of `a`, in dB. Both are the same stretch.
[[nodiscard]] double levelDifferenceDB(const Recording& a, const Recording& b);

// Range in dB of the gain from `a` to `b` (the same stretch), sample by sample where `a` exceeds
// -60 dB. A constant gain does not count.
[[nodiscard]] double gainReductionDB(const Recording& a, const Recording& b);

// The same for high-passed recordings, in which a single sample does not show the gain: measures
// the gain of pieces of 5 ms, each without its linear trend.
[[nodiscard]] double gainReductionByPiecesDB(const Recording& a, const Recording& b);

// Index of the slot, of three, whose right channel is inverted against the other two. nullopt if
// all are alike, or if the parts do not relate all slots to each other.
[[nodiscard]] std::optional<std::size_t> flippedSlot(std::span<const Part> parts,
                                                     std::size_t loopFrames);

} // namespace velto::kit::Listener
