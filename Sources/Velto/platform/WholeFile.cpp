#include "WholeFile.h"

#include "Descriptors.h"
#include "StandardStreams.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace velto {

namespace {

namespace fs = std::filesystem;

constexpr mode_t everyone = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;

bool isSame(const struct stat& a, const struct stat& b) {
  return a.st_size == b.st_size && a.st_mtim.tv_sec == b.st_mtim.tv_sec &&
         a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

// Reads to the end. Returns 0, or errno.
int readToEnd(int descriptor, std::string& bytes) {
  std::array<char, 65536> block; // NOLINT(*-member-init): read() writes it first
  while (true) {
    const ssize_t count = ::read(descriptor, block.data(), block.size());
    if (count < 0 && errno == EINTR)
      continue;
    if (count < 0)
      return errno;
    if (count == 0)
      return 0;
    bytes.append(block.data(), static_cast<std::size_t>(count));
    if (bytes.size() > WholeFile::mostBytes)
      return EFBIG;
  }
}

int readFrom(int descriptor, std::string& bytes) {
  struct stat before {
  }, after{};
  if (::fstat(descriptor, &before) != 0)
    return errno;
  if (const int error = readToEnd(descriptor, bytes); error != 0)
    return error;
  if (!S_ISREG(before.st_mode))
    return 0;
  if (::fstat(descriptor, &after) != 0)
    return errno;
  return isSame(before, after) ? 0 : EBUSY;
}

// Writes, waits for the disk and closes. Returns 0, or errno.
int writeAndClose(int descriptor, std::string_view bytes, bool waits) {
  int error = 0;
  if (!Descriptors::writeAll(descriptor, bytes) || (waits && ::fsync(descriptor) != 0))
    error = errno;
  if (!Descriptors::close(descriptor) && error == 0)
    error = errno;
  return error;
}

int writeDirectly(const fs::path& path, std::string_view bytes) {
  const int descriptor = Descriptors::open(path, O_WRONLY);
  return descriptor < 0 ? errno : writeAndClose(descriptor, bytes, false);
}

int writeAndRename(const fs::path& path, std::string_view bytes, mode_t mode, bool keepsMode) {
  const fs::path part = path.string() + ".part-" + std::to_string(::getpid());
  const int descriptor = Descriptors::open(part, O_WRONLY | O_CREAT | O_EXCL, mode);
  if (descriptor < 0)
    return errno;
  if (keepsMode)
    static_cast<void>(::fchmod(descriptor, mode));
  int error = writeAndClose(descriptor, bytes, true);
  if (error == 0 && ::rename(part.c_str(), path.c_str()) != 0)
    error = errno;
  if (error != 0)
    ::unlink(part.c_str());
  return error;
}

} // namespace

WholeFile::Reading WholeFile::read(const fs::path& path) {
  Reading reading;
  if (path == "-") {
    reading.error = readFrom(STDIN_FILENO, reading.bytes);
    return reading;
  }
  const int descriptor = Descriptors::open(path, O_RDONLY);
  if (descriptor < 0) {
    reading.error = errno;
    return reading;
  }
  reading.error = readFrom(descriptor, reading.bytes);
  ::close(descriptor);
  return reading;
}

int WholeFile::write(const fs::path& path, std::string_view bytes) {
  if (path == "-")
    return StandardStreams::writeToOutput(bytes);
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0)
    return errno == ENOENT ? writeAndRename(path, bytes, everyone, false) : errno;
  if (S_ISDIR(status.st_mode))
    return EISDIR;
  if (!S_ISREG(status.st_mode))
    return writeDirectly(path, bytes);
  if (::access(path.c_str(), W_OK) != 0)
    return errno;
  std::error_code error;
  const fs::path target = fs::canonical(path, error);
  constexpr mode_t permissions = 07777;
  return error ? error.value() : writeAndRename(target, bytes, status.st_mode & permissions, true);
}

} // namespace velto
