// Injects faults into file operations of this process. A test program that links FileFaults.cpp
// gets its own open, write, close, rename, unlink, flock, fsync, fdatasync and futimens, which pass
// through to the system until faults are armed.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <map>

namespace velto::kit {

enum class FileFault {
  inputOutputError,
  noSpace,
  notPermitted,
  noDescriptors, // fails with EMFILE
  interrupted,   // fails with EINTR
  half,          // a write takes half of its bytes; other operations succeed
  halfAndError,  // a write takes half of its bytes, then EIO; others fail with EIO
  death,         // SIGKILL instead of the operation
  halfAndDeath,  // a write takes half of its bytes, then SIGKILL; others as death
  lateDeath,     // SIGKILL right after the operation
};

// While it exists, counts file operations and makes those with the given numbers (from 0) fail. One
// at a time.
class FileFaults {
public:
  enum class Where { thisThread, otherThreads };

  explicit FileFaults(std::map<std::size_t, FileFault> faults = {},
                      Where where = Where::thisThread);
  // Counts the times that any thread opens `file` only, and lets the one with this number fail.
  FileFaults(const std::filesystem::path& file, std::size_t number, FileFault fault);
  FileFaults(const FileFaults&) = delete;
  FileFaults& operator=(const FileFaults&) = delete;
  ~FileFaults();

  [[nodiscard]] static std::size_t operationsSoFar();
};

// While it exists, every fsync and fdatasync of this process takes at least this long. One at a
// time.
class SlowDisk {
public:
  explicit SlowDisk(std::chrono::milliseconds flush);
  SlowDisk(const SlowDisk&) = delete;
  SlowDisk& operator=(const SlowDisk&) = delete;
  ~SlowDisk();

  // The number of flushes by this thread.
  [[nodiscard]] static std::size_t waitsOfThisThread();
  // The number of attempts by this thread to lock a file or folder.
  [[nodiscard]] static std::size_t lockAttemptsOfThisThread();
};

// While it exists, some calls of fsync and fdatasync in this process do not return: those with the
// numbers from `first` (0 is the next one), `count` of them. One at a time.
class StuckFlushes {
public:
  StuckFlushes(std::size_t first, std::size_t count);
  StuckFlushes(const StuckFlushes&) = delete;
  StuckFlushes& operator=(const StuckFlushes&) = delete;
  ~StuckFlushes();

  // How many are stuck.
  [[nodiscard]] static std::size_t now();
};

} // namespace velto::kit
