// Waiting for what another thread or process is about to do.
#pragma once

#include <chrono>
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

} // namespace velto::kit
