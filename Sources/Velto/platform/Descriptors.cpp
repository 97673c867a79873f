#include "Descriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace velto {

int Descriptors::open(const std::filesystem::path& path, int flags, mode_t mode) {
  int descriptor = -1;
  do
    descriptor = ::open(path.c_str(), flags | O_CLOEXEC, mode);
  while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

bool Descriptors::writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

bool Descriptors::readAll(int descriptor, std::size_t size, std::string& bytes) {
  bytes.resize(size);
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = ::read(descriptor, bytes.data() + done, size - done);
    if (count < 0 && errno == EINTR)
      continue;
    if (count <= 0)
      return false;
    done += static_cast<std::size_t>(count);
  }
  return true;
}

// After EINTR the descriptor is closed anyway.
bool Descriptors::close(int descriptor) {
  return ::close(descriptor) == 0 || errno == EINTR;
}

bool Descriptors::isRefused() {
  return errno == EACCES || errno == EPERM || errno == EROFS;
}

} // namespace velto
