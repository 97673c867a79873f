#include "FolderLock.h"

#include "Descriptors.h"
#include "Folders.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

namespace velto {

FolderLock::FolderLock(const std::filesystem::path& file, Use use,
                       std::chrono::milliseconds patience) {
  using namespace std::chrono_literals;
  folder_ = Descriptors::open(Folders::of(file), O_RDONLY | O_DIRECTORY);
  if (folder_ < 0)
    return;
  const int kind = (use == Use::reading ? LOCK_SH : LOCK_EX) | LOCK_NB;
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (::flock(folder_, kind) != 0) {
    // The file system does not support locks: continue without one.
    if (errno != EWOULDBLOCK && errno != EINTR)
      return;
    if (std::chrono::steady_clock::now() >= deadline) {
      refused_ = true;
      return;
    }
    std::this_thread::sleep_for(1ms);
  }
}

// Closing the descriptor releases the lock.
FolderLock::~FolderLock() {
  if (folder_ >= 0)
    ::close(folder_);
}

} // namespace velto
