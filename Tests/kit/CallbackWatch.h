// Counts what the program's device callback must never do. CallbackWatch.cpp replaces
// cubeb_stream_init, to wrap each stream's callback, and the functions for allocation, locks and
// system calls, which pass through to the C library and count calls made inside a wrapped callback.
// The sound library's own calls around the callback do not count.
//
// - Allocations: malloc, calloc, realloc, free and the aligned ones, and so new and delete.
// - Locks: mutexes, read-write and spin locks, condition variables, semaphores.
// - System calls: all of them, if the kernel can dispatch a thread's system calls to the thread
//   itself (x86-64, Linux 5.11 and later). Otherwise only common functions of the C library; see
//   `seesEverySystemCall`.
#pragma once

#include <cstdint>

namespace velto::kit {

struct CallbackOffences {
  std::uint64_t callbacks = 0; // watched callbacks
  std::uint64_t allocations = 0;
  std::uint64_t locks = 0;
  std::uint64_t systemCalls = 0; // only the first in a callback is certain to be counted

  [[nodiscard]] bool none() const { return allocations + locks + systemCalls == 0; }
};

namespace CallbackWatch {

// Resets all counts to 0. No stream may be open.
void reset();

// Any thread.
[[nodiscard]] CallbackOffences offences();

// Whether system calls that bypass the C library are counted too. Known after the first callback.
[[nodiscard]] bool seesEverySystemCall();

} // namespace CallbackWatch

} // namespace velto::kit
