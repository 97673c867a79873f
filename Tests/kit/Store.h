// How far ahead the desk lets programs play.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace velto::kit {

// What the sound server has in store of a program at the most, in frames: the longest way of a
// change to the sink.
[[nodiscard]] inline std::size_t framesInStore() {
  const char* milliseconds = std::getenv("PULSE_LATENCY_MSEC");
  return milliseconds == nullptr ? 12000 : 48 * static_cast<std::size_t>(std::atoi(milliseconds));
}

} // namespace velto::kit
