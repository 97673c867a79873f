// What a trained ear tells from the sound alone. These functions see recorded samples and the
// length of the loop, nothing of the trial: no seed, no difficulty, no rendered slot.
#pragma once

#include "Recording.h"

#include <cstddef>
#include <optional>
#include <span>
#include <utility>

namespace velto::kit::Listener {

// A settled part of a recording, in which one slot alone was heard.
struct Part {
  std::size_t slot = 0;
  std::size_t begin = 0; // the frame of the recording at which it starts
  Recording sound;
};

// The longest stretch of `a` and of `b` that lies at the same place of a loop of `loopFrames`: two
// recordings of equal length, empty if the parts share no place.
[[nodiscard]] std::pair<Recording, Recording> samePlace(const Part& a, const Part& b,
                                                        std::size_t loopFrames);

// All such stretches, joined.
[[nodiscard]] std::pair<Recording, Recording> everyPlace(const Part& a, const Part& b,
                                                         std::size_t loopFrames);

// Which of the 27 third-octave bands from 40 Hz to 16 kHz is lifted most in `b` over `a` (the same
// stretch of both): its index. None unless it stands out from the bands' median by 1 dB. Needs
// `spectrumFrames` frames.
inline constexpr std::size_t spectrumFrames = 32768;
[[nodiscard]] std::optional<std::size_t> boostedBand(const Recording& a, const Recording& b);

// By how many dB the RMS level of `b` (the same stretch as `a`) exceeds that of `a`.
[[nodiscard]] double levelDifferenceDB(const Recording& a, const Recording& b);

// The range in dB of the gain that turns `a` into `b` (the same stretch of both), sample by sample
// where `a` is louder than -60 dB. A constant gain does not count.
[[nodiscard]] double gainReductionDB(const Recording& a, const Recording& b);

// The same for recordings that have passed a high-pass filter, which leaves no sample its own gain:
// from piece to piece of 5 ms, apart from what is slower than the piece.
[[nodiscard]] double gainReductionByPiecesDB(const Recording& a, const Recording& b);

// Which of three slots has its right channel inverted against the other two; none if all are alike,
// or if not every slot was heard at a place of the loop where another was.
[[nodiscard]] std::optional<std::size_t> flippedSlot(std::span<const Part> parts,
                                                     std::size_t loopFrames);

} // namespace velto::kit::Listener
