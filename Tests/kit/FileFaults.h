// Lets chosen file operations of this very process go wrong. A test program that links
// FileFaults.cpp has its own open, write, close, rename, unlink and flock, which pass through to
// the system until faults are armed.
#pragma once

#include <cstddef>
#include <map>

namespace velto::kit {

enum class FileFault {
  inputOutputError,
  noSpace,
  notPermitted,
  interrupted,  // fails with EINTR
  half,         // a write takes half of its bytes; others are done as they are
  halfAndError, // a write takes half of its bytes and fails with EIO; others fail
  death,        // the process is killed instead of the operation
  halfAndDeath, // a write takes half of its bytes and the process is killed; others as above
  lateDeath,    // the process is killed right after the operation
};

// While it lives, this thread's file operations are counted, and those with the numbers given (the
// first is 0) go wrong. One at a time.
class FileFaults {
public:
  explicit FileFaults(std::map<std::size_t, FileFault> faults = {});
  FileFaults(const FileFaults&) = delete;
  FileFaults& operator=(const FileFaults&) = delete;
  ~FileFaults();

  [[nodiscard]] static std::size_t operationsSoFar();
};

} // namespace velto::kit
