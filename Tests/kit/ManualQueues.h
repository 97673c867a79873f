// Work queues that the test runs.
#pragma once

#include "Session.h"

#include <cstddef>
#include <deque>
#include <utility>

namespace velto::kit {

struct ManualQueues {
  using Queue = std::deque<WorkQueues::Work>;

  Queue background, main;

  [[nodiscard]] WorkQueues queues() {
    return {.background = [this](auto work) { background.push_back(std::move(work)); },
            .main = [this](auto work) { main.push_back(std::move(work)); }};
  }

  // Runs the work at `index` in the queue, oldest first. False if there is none.
  static bool runOne(Queue& queue, std::size_t index = 0) {
    if (index >= queue.size())
      return false;
    const auto place = queue.begin() + static_cast<std::ptrdiff_t>(index);
    const auto work = std::move(*place);
    queue.erase(place);
    work();
    return true;
  }

  // Runs all work, including work that it queues.
  void settle() {
    while (runOne(background) || runOne(main)) {
    }
  }
};

} // namespace velto::kit
