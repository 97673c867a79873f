// Waiting for what another thread or process is about to do.
#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

namespace velto::kit {

// Returns when `condition` holds, with true; after a generous while with false.
template <typename Condition>
[[nodiscard]] bool eventually(Condition condition,
                              std::chrono::seconds patience = std::chrono::seconds(20)) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end)
      return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

// Returns when `condition` holds. When it does not come to hold, a std::runtime_error says that it
// was waited in vain until `what`.
template <typename Condition>
void waitUntil(Condition condition, const std::string& what) {
  if (!eventually(condition))
    throw std::runtime_error("waited in vain until " + what);
}

} // namespace velto::kit
