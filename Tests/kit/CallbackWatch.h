// Watches the program's device callback for what it must never do. A test program that links
// CallbackWatch.cpp gets its own cubeb_stream_init, which runs each stream's callback under watch,
// and its own allocation, lock and system call functions, which pass through to the C library and
// count only the calls of a watched callback. What the sound library does around the callback does
// not count.
//
// - Allocations: malloc, calloc, realloc, free and the aligned ones, and so new and delete.
// - Locks: mutexes, read-write and spin locks, condition variables, semaphores.
// - System calls: all, whoever makes them, if the kernel can dispatch a thread's system calls to
//   the thread itself (x86-64, Linux 5.11 and later). Otherwise only the usual functions of the C
//   library; see `seesEverySystemCall`.
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
