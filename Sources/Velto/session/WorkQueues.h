// What a session has done elsewhere than in its own calls.
#pragma once

#include "Signals.h"
#include "Slot.h"
#include "Trial.h"

#include <functional>
#include <vector>

namespace velto {

// Any thread, except `render`.
struct WorkQueues {
  using Work = std::function<void()>;
  std::function<void(Work)> background; // runs work on another thread
  std::function<void(Work)> main;       // runs work on the main thread, in the order of the calls

  // Where work cannot be handed to a thread: renders Session::trialSeconds of a trial elsewhere and
  // calls `rendered` on the main thread, after this call has returned. Jobs that have not begun
  // when a newer one arrives may be dropped. Empty: `background` renders.
  using Rendered = std::function<void(std::vector<Slot>)>;
  std::function<void(const Trial& trial, Noise noise, Rendered rendered)> render = {};
};

} // namespace velto
