// Injects faults into file operations of this process. A test program that links FileFaults.cpp
// gets its own open, write, close, rename, unlink and flock, which pass through to the system until
// faults are armed.
#pragma once

#include <cstddef>
#include <map>

namespace velto::kit {

enum class FileFault {
  inputOutputError,
  noSpace,
  notPermitted,
  interrupted,  // fails with EINTR
  half,         // a write takes half of its bytes; other operations succeed
  halfAndError, // a write takes half of its bytes, then EIO; others fail with EIO
  death,        // SIGKILL instead of the operation
  halfAndDeath, // a write takes half of its bytes, then SIGKILL; others as death
  lateDeath,    // SIGKILL right after the operation
};

// While it exists, counts this thread's file operations and makes those with the given numbers
// (from 0) fail. One at a time.
class FileFaults {
public:
  explicit FileFaults(std::map<std::size_t, FileFault> faults = {});
  FileFaults(const FileFaults&) = delete;
  FileFaults& operator=(const FileFaults&) = delete;
  ~FileFaults();

  [[nodiscard]] static std::size_t operationsSoFar();
};

} // namespace velto::kit
