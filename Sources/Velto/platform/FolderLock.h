// Inter-process lock on a folder.
#pragma once

#include <chrono>
#include <filesystem>

namespace velto {

// Advisory lock on the folder of a file: shared for reading, exclusive for writing. Best effort:
// nothing is locked if the folder cannot be opened or its file system does not support locks. Any
// thread; locks of one process exclude each other as well.
class FolderLock {
public:
  enum class Use { reading, writing };

  // Waits for at most `patience`; 0 does not wait at all.
  FolderLock(const std::filesystem::path& file, Use use, std::chrono::milliseconds patience);
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  ~FolderLock();

  // True if others held the lock for the whole wait.
  [[nodiscard]] bool isRefused() const { return refused_; }

private:
  int folder_ = -1;
  bool refused_ = false;
};

} // namespace velto
