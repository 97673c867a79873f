// Waits for other threads or processes.
#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

namespace velto::kit {

// Waits until `condition` holds. Returns false after `patience`.
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

// Waits until `condition` holds. Throws std::runtime_error on a timeout; `what` names the
// condition.
template <typename Condition>
void waitUntil(Condition condition, const std::string& what) {
  if (!eventually(condition))
    throw std::runtime_error("timed out before " + what);
}

} // namespace velto::kit
