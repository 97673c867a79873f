// A disk that can lose power at any moment of its past.
#pragma once

#include "kit/LoopDevice.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace velto::kit {

// What a disk did, in order.
struct DiskEvent {
  std::chrono::steady_clock::time_point time; // when it was done, before the kernel was told
  std::uint64_t offset = 0;                   // bytes
  std::string written;                        // empty: a flush of the disk's write cache
};

// What becomes of writes that no flush had forced out of the disk's write cache when power was
// lost.
enum class CachedWrites {
  kept, // all are on the disk, as in a copy of it made at that moment
  lost, // none is on the disk
  torn, // some are on the disk, in any order, each 4096 bytes whole or not at all
};

// A block device whose content is the file `image`, and that logs every write and flush. A thread
// of this process serves it: the kernel's loop driver uses a file whose requests FUSE sends here.
// Needs root, /dev/fuse and mounts of its own; throws std::runtime_error otherwise. Its file system
// must be unmounted before the destructor.
class LoggedDisk {
public:
  // `flushTime`: how long each flush takes.
  LoggedDisk(std::filesystem::path image, std::chrono::milliseconds flushTime);
  LoggedDisk(const LoggedDisk&) = delete;
  LoggedDisk& operator=(const LoggedDisk&) = delete;
  ~LoggedDisk();

  // The block device's path.
  [[nodiscard]] const std::string& device() const { return loop_->path(); }

  // All events so far. Any thread.
  [[nodiscard]] std::vector<DiskEvent> log() const;

private:
  void serve();
  void answer(std::uint64_t request, int error, const void* bytes, std::size_t size) const;

  std::filesystem::path image_;
  std::filesystem::path file_; // the file behind the loop device
  std::chrono::milliseconds flushTime_;
  int imageFile_ = -1;
  int channel_ = -1; // to the kernel
  mutable std::mutex mutex_;
  std::vector<DiskEvent> log_;
  std::thread thread_;
  std::optional<LoopDevice> loop_;
};

// Turns `image`, a copy of the file from which a LoggedDisk started, into the disk after a loss of
// power at `moment`.
void cutPower(const std::filesystem::path& image, const std::vector<DiskEvent>& log,
              std::chrono::steady_clock::time_point moment, CachedWrites cached,
              std::minstd_rand& random);

} // namespace velto::kit
