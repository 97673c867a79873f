// Catches the program's own device callback at what it must never do. A test program that links
// CallbackWatch.cpp has its own cubeb_stream_init, which runs each stream's callback under watch,
// and its own allocation, lock and system call functions, which pass through to the C library and
// count only what a watched callback does. What the sound library does around it does not count.
//
// - Allocations: malloc, calloc, realloc, free and the aligned ones; new and delete end there.
// - Locks: mutexes, read-write and spin locks, condition variables, semaphores.
// - System calls: each, whoever makes it, where the kernel can hand a thread's system calls to the
//   thread itself (x86-64, Linux 5.11 and later). Elsewhere only the usual functions of the C
//   library; `seesEverySystemCall` tells.
#pragma once

#include <cstdint>

namespace velto::kit {

struct CallbackOffences {
  std::uint64_t callbacks = 0; // that were watched
  std::uint64_t allocations = 0;
  std::uint64_t locks = 0;
  std::uint64_t systemCalls = 0; // at most one a callback is sure to be counted

  [[nodiscard]] bool none() const { return allocations + locks + systemCalls == 0; }
};

namespace CallbackWatch {

// From now on counts start at 0. While no stream is open.
void reset();

// Any thread.
[[nodiscard]] CallbackOffences offences();

// Whether a system call that bypasses the C library is seen too. Known once a callback has run.
[[nodiscard]] bool seesEverySystemCall();

} // namespace CallbackWatch

} // namespace velto::kit
