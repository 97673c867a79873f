// From a trial to the audio of its slots.
#pragma once

#include "Signals.h"
#include "Slot.h"
#include "Trial.h"

#include <vector>

namespace velto::Drills {

// The slots of `trial`, in slot order: three for polarity, two for the others, each of
// Signals::frameCount(seconds) frames at 48000 Hz. The first slot is the material at an RMS level
// of -20 dB; so are boosted and compressed ones, a louder one is `targetLevelDB` above. Samples may
// lie beyond full scale. `noise` is what pink noise and the right channel of a polarity trial are
// made of. `seconds` is finite and not negative, else the process stops; 0 gives empty buffers.
[[nodiscard]] std::vector<Slot> render(const Trial& trial, double seconds,
                                       Noise noise = Noise::asDrawn);

} // namespace velto::Drills
