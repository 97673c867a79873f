// The two queues that a session posts work to.
#pragma once

#include <functional>

namespace velto {

// Any thread.
struct WorkQueues {
  using Work = std::function<void()>;
  std::function<void(Work)> background; // runs work on another thread
  std::function<void(Work)> main;       // runs work on the main thread, in the order of the calls
};

} // namespace velto
