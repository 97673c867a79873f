// Standard streams tell neither why a file could not be opened nor can they keep other programs
// away, so this file alone uses the system's own calls.
#include "SafeFile.h"

#include "Descriptors.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <ios>

namespace velto {

namespace {

namespace fs = std::filesystem;

fs::path withSuffix(fs::path file, const char* suffix) {
  file += suffix;
  return file;
}

bool writeAll(int descriptor, std::string_view bytes) {
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

// Some file systems report a failed write only here. Interrupted, the descriptor is closed all the
// same.
bool closed(int descriptor) {
  return ::close(descriptor) == 0 || errno == EINTR;
}

bool writeAndClose(int descriptor, std::string_view bytes) {
  const bool written = writeAll(descriptor, bytes);
  return closed(descriptor) && written;
}

// Whether the operation that just failed could not be carried out for want of a sound disk or of
// room on it, rather than because it is not allowed here.
bool diskFailed() {
  return errno == ENOSPC || errno == EDQUOT || errno == EIO;
}

// Whether the save may go on: with a whole backup, or without one where the folder takes none.
bool makeBackup(const fs::path& file, std::string_view bytes) {
  const fs::path part = SafeFile::backupPart(file);
  ::unlink(part.c_str()); // what a save that died left
  const int descriptor = Descriptors::open(part, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
  if (descriptor < 0)
    return !diskFailed();

  bool goesOn = writeAndClose(descriptor, bytes);
  if (goesOn) {
    if (::rename(part.c_str(), SafeFile::backup(file).c_str()) == 0)
      return true;
    goesOn = !diskFailed();
  }
  ::unlink(part.c_str());
  return goesOn;
}

// Cut off first, so that what a writer that dies leaves is never a mixture that might be valid.
bool writePlainly(const fs::path& file, std::string_view bytes) {
  constexpr mode_t everyone = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  // A pipe without a reader refuses instead of waiting for one.
  const int descriptor =
      Descriptors::open(file, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK, everyone);
  return descriptor >= 0 && writeAndClose(descriptor, bytes);
}

} // namespace

fs::path SafeFile::backup(const fs::path& file) {
  return withSuffix(file, ".saving");
}

fs::path SafeFile::backupPart(const fs::path& file) {
  return withSuffix(file, ".saving.part");
}

bool SafeFile::write(const fs::path& file, std::string_view bytes) {
  const FolderLock lock(file, FolderLock::Use::writing);
  if (lock.isRefused() || !makeBackup(file, bytes) || !writePlainly(file, bytes))
    return false;
  ::unlink(backup(file).c_str());
  return true;
}

// Reading anything but a regular file, a pipe or a device, might never end.
std::optional<std::string> SafeFile::contents(const fs::path& file) {
  std::error_code error;
  if (!fs::is_regular_file(file, error))
    return std::nullopt;
  const auto size = fs::file_size(file, error);
  std::ifstream stream(file, std::ios::binary);
  if (error || size > mostBytes || !stream)
    return std::nullopt;
  std::string bytes(static_cast<std::size_t>(size), '\0');
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (static_cast<std::size_t>(stream.gcount()) != bytes.size())
    return std::nullopt;
  return bytes;
}

} // namespace velto
