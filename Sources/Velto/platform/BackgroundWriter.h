// A thread that waits for the disk, so that no other one has to.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace velto {

// Runs the latest piece of work on a thread of its own. One object belongs to one thread, its
// owner; the work must not use the object. On a system without threads the work runs inside post().
class BackgroundWriter {
public:
  using Finish = std::function<void()>;
  struct Outcome {
    Finish finish;      // runs on the owner's thread, in collect(); may be empty
    bool again = false; // run the same work again soon, unless newer work has been posted
  };
  using Work = std::function<Outcome()>;

  // `whenDone` is called after work that has a finish, by the thread that did it, as the cue for
  // collect(). It must not wait nor use this object, and is not called any more once the destructor
  // has returned.
  explicit BackgroundWriter(std::function<void()> whenDone = {});
  BackgroundWriter(const BackgroundWriter&) = delete;
  BackgroundWriter& operator=(const BackgroundWriter&) = delete;
  // Does not wait for work in progress: that goes on until it ends or the process does. Work not
  // begun and finishes not collected are dropped.
  ~BackgroundWriter();

  // Runs `work` next. It replaces work that has not begun. Does not wait.
  void post(Work work);
  // Runs the finishes of the work done so far, in order. Does not wait.
  void collect();
  // Waits until all work is done. False if that takes longer than `most`.
  [[nodiscard]] bool wait(std::chrono::milliseconds most);

private:
  class Thread;
  std::shared_ptr<Thread> thread_; // shared with the thread itself, which may outlive this object
};

} // namespace velto
