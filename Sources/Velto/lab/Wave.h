// WAV files.
#pragma once

#include "Slot.h"

#include <string>

namespace velto::Lab {

// The bytes of a stereo WAV file of 32-bit floats at 48000 Hz, with the samples as they are: they
// may exceed full scale. The same slot gives the same bytes. Throws Failure if the library fails.
// Any thread.
[[nodiscard]] std::string waveFile(const Slot& slot);

} // namespace velto::Lab
