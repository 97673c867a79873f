// A thread that waits for the disk, so that no other one has to.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

namespace velto {

// Runs the latest piece of work on a thread of its own. One object belongs to one thread, its
// owner; the work must not use the object. On a system without threads the work runs inside post().
//
// Work that is kept waiting by earlier work has a detour: something short that does the most urgent
// part of it, on a further thread, beside the earlier work. Let each piece of work, and each
// detour, store what was known when it was posted, within a time F of its start. Then what is
// posted at any time t is stored at t + detourAfter + F, whatever F is, up to mostDetours *
// detourAfter:
//  - The latest start of work or of a detour before t was at most t. Detours start detourAfter
//  after
//    the latest start, so the next start is at most at t + detourAfter. What starts then was posted
//    at t or later.
//  - A thread is free to start: starts are detourAfter apart, so at most F / detourAfter detours
//  run
//    at a time.
class BackgroundWriter {
public:
  static constexpr std::chrono::milliseconds detourAfter{800};
  static constexpr std::size_t mostDetours = 16;

  using Finish = std::function<void()>;
  struct Outcome {
    Finish finish;      // runs on the owner's thread, in collect(); may be empty
    bool again = false; // run the same work again soon, unless newer work has been posted
  };
  using Work = std::function<Outcome()>;
  using Detour = std::function<void()>; // may run beside any other work and detour

  BackgroundWriter() : BackgroundWriter(detourAfter) {}
  // With another time in place of detourAfter. `whenDone` is called after work that has a finish,
  // by the thread that did it, as the cue for collect(). It must not wait nor use this object, and
  // is not called any more once the destructor has returned.
  explicit BackgroundWriter(std::chrono::milliseconds patience,
                            std::function<void()> whenDone = {});
  BackgroundWriter(const BackgroundWriter&) = delete;
  BackgroundWriter& operator=(const BackgroundWriter&) = delete;
  // Does not wait for work in progress: that goes on until it ends or the process does. Work not
  // begun and finishes not collected are dropped.
  ~BackgroundWriter();

  // Runs `work` next. It replaces work that has not begun, and its detour. If earlier work lasts,
  // runs `detour` meanwhile, and `work` afterwards all the same. Does not wait.
  void post(Work work, Detour detour = {});
  // Runs the finishes of the work done so far, in order. Does not wait.
  void collect();
  // Waits until all work and all detours are done. False if that takes longer than `most`.
  [[nodiscard]] bool wait(std::chrono::milliseconds most);

private:
  class Threads;
  std::shared_ptr<Threads> threads_; // shared with the threads, which may outlive this object
};

} // namespace velto
