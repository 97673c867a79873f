// The input of the mixer.
#pragma once

#include "FrameRing.h"
#include "Slot.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace velto {

// How a switch moves from one slot to another. Takes 150 ms.
enum class Switching : std::uint8_t {
  crossfade,     // both slots are audible during the switch
  throughSilence // fades out, then in: the level dips in the same way for any two slots
};

// One state of playback and everything needed to render it. Immutable once published: each change
// is a new scene, which shares samples and tap with the previous one.
struct Scene {
  // How many slots can play at once.
  static constexpr std::size_t maxSlots = 3;

  std::array<Slot, maxSlots> slots;   // without buffers if unused
  std::uint64_t startDelayFrames = 0; // from adoption to the first frame of all slots
  Switching switching = Switching::crossfade;
  std::int64_t chosen = 0; // the slot audible after the switch; none if out of range

  std::uint32_t stream = 0; // changes with each output stream; nothing carries over to a new one
  std::uint32_t load = 0;   // changes whenever slots start anew, and with `stream`
  std::uint32_t ramp = 0;   // changes with each switch within a load

  std::shared_ptr<FrameRing> tap; // receives a copy of every frame; may be null
};

} // namespace velto
