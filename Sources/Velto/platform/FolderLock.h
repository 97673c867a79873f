// Keeps programs that use the files of one folder out of each other's way.
#pragma once

#include <filesystem>

namespace velto {

// Keeps those away that save files of the same folder, as far as the file system can do that.
class FolderLock {
public:
  enum class Use { reading, writing };

  // Waits for a quarter of a second at most.
  FolderLock(const std::filesystem::path& file, Use use);
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  ~FolderLock();

  // Whether others kept it all the time.
  [[nodiscard]] bool isRefused() const { return refused_; }

private:
  int folder_ = -1;
  bool refused_ = false;
};

} // namespace velto
