// Work queues like the program's: a worker thread renders, and the test's thread runs the main
// queue.
#pragma once

#include "Session.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace velto::kit {

class WorkerQueues {
public:
  WorkerQueues() : worker_([this] { work(); }) {}
  ~WorkerQueues() {
    {
      const std::lock_guard lock(mutex_);
      ending_ = true;
    }
    changed_.notify_all();
    worker_.join();
  }

  WorkerQueues(const WorkerQueues&) = delete;
  WorkerQueues& operator=(const WorkerQueues&) = delete;

  [[nodiscard]] WorkQueues queues() {
    return {.background = [this](auto work) { add(background_, std::move(work)); },
            .main = [this](auto work) { add(main_, std::move(work)); }};
  }

  // Runs main-queue work on this thread until `condition` holds.
  void runUntil(const std::function<bool()>& condition) {
    while (!condition())
      take(main_)();
  }

private:
  using Queue = std::deque<WorkQueues::Work>;

  void add(Queue& queue, WorkQueues::Work work) {
    {
      const std::lock_guard lock(mutex_);
      queue.push_back(std::move(work));
    }
    changed_.notify_all();
  }

  // Waits for work. Returns a no-op when the queues end.
  WorkQueues::Work take(Queue& queue) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return !queue.empty() || ending_; });
    if (queue.empty())
      return [] {};
    auto work = std::move(queue.front());
    queue.pop_front();
    return work;
  }

  void work() {
    while (true) {
      const auto next = take(background_);
      {
        const std::lock_guard lock(mutex_);
        if (ending_)
          return;
      }
      next();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  Queue background_, main_; // guarded by mutex_
  bool ending_ = false;     // guarded by mutex_
  std::thread worker_;      // last: it uses all of the above
};

} // namespace velto::kit
