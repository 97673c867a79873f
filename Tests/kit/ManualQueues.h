// Work queues whose work runs when the test says so.
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

  // Runs the work that has waited as the `index`-th longest; false if there is none such.
  static bool runOne(Queue& queue, std::size_t index = 0) {
    if (index >= queue.size())
      return false;
    const auto place = queue.begin() + static_cast<std::ptrdiff_t>(index);
    const auto work = std::move(*place);
    queue.erase(place);
    work();
    return true;
  }

  // Runs all work, and what it leads to.
  void settle() {
    while (runOne(background) || runOne(main)) {
    }
  }
};

} // namespace velto::kit
