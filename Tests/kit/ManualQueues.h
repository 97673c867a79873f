// Work queues for a session in tests.
#pragma once

#include "Session.h"

#include <deque>
#include <utility>

namespace velto::kit {

// Queues that run their work when the test says so, on the thread that says it.
struct ManualQueues {
  std::deque<WorkQueues::Work> background, main;

  // Outlived by this.
  [[nodiscard]] WorkQueues queues() {
    return {.background = [this](auto work) { background.push_back(std::move(work)); },
            .main = [this](auto work) { main.push_back(std::move(work)); }};
  }

  // Runs the oldest piece of work; whether there was one.
  static bool runOne(std::deque<WorkQueues::Work>& queue) {
    if (queue.empty())
      return false;
    const auto work = std::move(queue.front());
    queue.pop_front();
    work();
    return true;
  }

  // Runs all work, and what comes of it.
  void settle() {
    while (runOne(background) || runOne(main)) {
    }
  }
};

} // namespace velto::kit
