// POSIX calls instead of streams: saving depends on errno, O_EXCL and O_NONBLOCK.
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

// Some file systems report a failed write only here. After EINTR the descriptor is closed anyway.
bool closed(int descriptor) {
  return ::close(descriptor) == 0 || errno == EINTR;
}

bool writeAndClose(int descriptor, std::string_view bytes) {
  const bool written = writeAll(descriptor, bytes);
  return closed(descriptor) && written;
}

// True if the last operation failed because the disk is full or faulty, rather than for lack of
// permission.
bool diskFailed() {
  return errno == ENOSPC || errno == EDQUOT || errno == EIO;
}

// True if the save may proceed: the backup is complete, or no file can be created in the folder.
bool makeBackup(const fs::path& file, std::string_view bytes) {
  const fs::path part = SafeFile::backupPart(file);
  ::unlink(part.c_str()); // left by an interrupted save
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

// Truncates first: otherwise an interrupted write could leave a mixture of old and new bytes that
// still parses.
bool writePlainly(const fs::path& file, std::string_view bytes) {
  constexpr mode_t everyone = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  // O_NONBLOCK: fail on a pipe without a reader instead of waiting for one.
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

// Regular files only: reading a pipe or a device might never end.
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
