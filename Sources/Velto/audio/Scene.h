// What the mixer plays.
#pragma once

#include "FrameRing.h"
#include "Slot.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace velto {

// How a switch gets from one slot to another, in 150 ms.
enum class Switching : std::uint8_t {
  crossfade,     // both slots are heard meanwhile
  throughSilence // down to silence, then up again: the level takes the same course for any two
                 // slots
};

// One state of playback, with all that it takes. Never written once it is published; each change is
// a new scene, which shares its samples and its tap with the one before.
struct Scene {
  // How many slots can play at once.
  static constexpr std::size_t maxSlots = 3;

  std::array<Slot, maxSlots> slots;   // without buffers where nothing plays
  std::uint64_t startDelayFrames = 0; // from adoption to the first frame of all slots
  Switching switching = Switching::crossfade;
  std::int64_t chosen = 0; // the slot that is heard once the switch is over; none if out of range

  std::uint32_t stream = 0; // changes with each output stream: nothing goes on from the one before
  std::uint32_t load = 0;   // changes whenever slots start anew, and with `stream`
  std::uint32_t ramp = 0;   // changes with each switch within a load

  std::shared_ptr<FrameRing> tap; // gets a copy of every frame, unless null
};

} // namespace velto
