// Locates rendered loops in a recording, to the frame and to the bit.
#pragma once

#include "Recording.h"
#include "Slot.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace velto::kit {

// The phase p for which frame `begin` + i of `recording` equals frame (p + i) mod length of `slot`,
// bit for bit in both channels, for all i below `count`. nullopt if there is no such phase or more
// than one (the slot is too regular).
[[nodiscard]] std::optional<std::size_t> loopPhase(const Recording& recording, std::size_t begin,
                                                   std::size_t count, const Slot& slot);

// The first frame in [begin, end) at which `recording` differs from the loop of `slot` whose frame
// `phase` is recorded at `begin`; `end` if none differs. Compares samples exactly, in both
// channels; a zero's sign does not count, because a mix turns negative zeros into positive ones.
[[nodiscard]] std::size_t firstDifference(const Recording& recording, std::size_t begin,
                                          std::size_t end, const Slot& slot, std::size_t phase);

// The first frame at or after `begin` with a non-zero sample; the end if there is none.
[[nodiscard]] std::size_t firstSound(const Recording& recording, std::size_t begin);

// The first frame at or after `begin` that starts `count` zero frames; the end if there is none.
[[nodiscard]] std::size_t firstSilence(const Recording& recording, std::size_t begin,
                                       std::size_t count);

} // namespace velto::kit
