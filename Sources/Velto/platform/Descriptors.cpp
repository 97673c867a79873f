#include "Descriptors.h"

#include <fcntl.h>

#include <cerrno>

namespace velto {

int Descriptors::open(const std::filesystem::path& path, int flags, mode_t mode) {
  int descriptor = -1;
  do
    descriptor = ::open(path.c_str(), flags | O_CLOEXEC, mode);
  while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

} // namespace velto
