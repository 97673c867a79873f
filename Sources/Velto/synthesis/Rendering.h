// Renders the audio of a trial.
#pragma once

#include "Signals.h"
#include "Slot.h"
#include "Trial.h"

#include <vector>

namespace velto::Drills {

// The slots of `trial` in slot order: three for polarity, two for the others, each of
// Signals::frameCount(seconds) frames at 48000 Hz. All channels are at -20 dB RMS, except slot B of
// a level trial, which is `targetLevelDB` louder. Samples may exceed full scale. `noise` applies to
// pink noise and to the right channel of polarity trials. Aborts if `seconds` is negative or not
// finite; 0 gives empty buffers.
[[nodiscard]] std::vector<Slot> render(const Trial& trial, double seconds,
                                       Noise noise = Noise::asDrawn);

} // namespace velto::Drills
