#include "Alignment.h"

#include <algorithm>

namespace velto::kit {

namespace {

bool isSilent(const Recording& recording, std::size_t frame) {
  return recording.l[frame] == 0 && recording.r[frame] == 0;
}

} // namespace

std::optional<std::size_t> loopPhase(const Recording& recording, std::size_t begin,
                                     std::size_t count, const Slot& slot) {
  if (count == 0 || begin + count > recording.frames())
    return std::nullopt;
  std::optional<std::size_t> found;
  for (std::size_t phase = 0; phase < slot.l->size(); ++phase) {
    if (firstDifference(recording, begin, begin + count, slot, phase) != begin + count)
      continue;
    if (found)
      return std::nullopt;
    found = phase;
  }
  return found;
}

std::size_t firstDifference(const Recording& recording, std::size_t begin, std::size_t end,
                            const Slot& slot, std::size_t phase) {
  for (std::size_t frame = begin; frame < end; ++frame) {
    const std::size_t position = (phase + frame - begin) % slot.l->size();
    if (recording.l[frame] != (*slot.l)[position] || recording.r[frame] != (*slot.r)[position])
      return frame;
  }
  return end;
}

std::size_t firstSound(const Recording& recording, std::size_t begin) {
  while (begin < recording.frames() && isSilent(recording, begin))
    ++begin;
  return std::min(begin, recording.frames());
}

std::size_t firstSilence(const Recording& recording, std::size_t begin, std::size_t count) {
  std::size_t silent = 0;
  for (std::size_t frame = begin; frame < recording.frames(); ++frame) {
    silent = isSilent(recording, frame) ? silent + 1 : 0;
    if (silent == count)
      return frame + 1 - count;
  }
  return recording.frames();
}

} // namespace velto::kit
