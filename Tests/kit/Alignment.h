// Finding what a recording plays, to the frame and to the bit.
#pragma once

#include "Drills.h"
#include "Recording.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace velto::kit {

// The phase p for which frame `begin` + i of `recording` is frame (p + i) mod length of `slot`, bit
// for bit in both channels, for all i below `count`. None if there is no such phase, or if several
// would do: then the slot is too regular to tell.
[[nodiscard]] std::optional<std::size_t> loopPhase(const Recording& recording, std::size_t begin,
                                                   std::size_t count, const Slot& slot);

// The first frame in [begin, end) at which `recording` is not the loop of `slot` whose frame
// `phase` is recorded at `begin`; `end` if there is none. Bits are compared, in both channels.
[[nodiscard]] std::size_t firstDifference(const Recording& recording, std::size_t begin,
                                          std::size_t end, const Slot& slot, std::size_t phase);

// The first frame from `begin` on in which a channel is not zero; the end if there is none.
[[nodiscard]] std::size_t firstSound(const Recording& recording, std::size_t begin);

// The first frame from `begin` on from which `count` frames are zero; the end if there is none.
[[nodiscard]] std::size_t firstSilence(const Recording& recording, std::size_t begin,
                                       std::size_t count);

} // namespace velto::kit
