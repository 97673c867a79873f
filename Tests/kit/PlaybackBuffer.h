// The playback buffer on the desk.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace velto::kit {

// Maximum number of frames that the sound server buffers for a program, and so the longest delay
// until a change reaches the sink.
[[nodiscard]] inline std::size_t bufferedFrames() {
  const char* milliseconds = std::getenv("PULSE_LATENCY_MSEC");
  return milliseconds == nullptr ? 12000 : 48 * static_cast<std::size_t>(std::atoi(milliseconds));
}

} // namespace velto::kit
