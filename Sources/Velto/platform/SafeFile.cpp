// Standard streams tell neither why a file could not be opened nor can they keep other programs
// away, so this file alone uses the system's own calls.
#include "SafeFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <ios>
#include <thread>

namespace velto {

namespace {

namespace fs = std::filesystem;

fs::path withSuffix(fs::path file, const char* suffix) {
  file += suffix;
  return file;
}

int openRetrying(const fs::path& path, int flags, mode_t mode = 0) {
  int descriptor = -1;
  do
    descriptor = ::open(path.c_str(), flags | O_CLOEXEC, mode);
  while (descriptor < 0 && errno == EINTR);
  return descriptor;
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

// Whether the save may go on: with a whole sibling, or without one where the folder takes none.
bool makeSibling(const fs::path& file, std::string_view bytes) {
  const fs::path part = SafeFile::siblingPart(file);
  ::unlink(part.c_str()); // what a save that died left
  const int descriptor = openRetrying(part, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
  if (descriptor < 0)
    return !diskFailed();

  bool goesOn = writeAndClose(descriptor, bytes);
  if (goesOn) {
    if (::rename(part.c_str(), SafeFile::sibling(file).c_str()) == 0)
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
  const int descriptor = openRetrying(file, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK, everyone);
  return descriptor >= 0 && writeAndClose(descriptor, bytes);
}

} // namespace

fs::path SafeFile::sibling(const fs::path& file) {
  return withSuffix(file, ".saving");
}

fs::path SafeFile::siblingPart(const fs::path& file) {
  return withSuffix(file, ".saving.part");
}

SafeFile::Turn::Turn(const fs::path& file, Use use) {
  using namespace std::chrono_literals;
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  folder_ = openRetrying(folder, O_RDONLY | O_DIRECTORY);
  if (folder_ < 0)
    return;
  const int kind = (use == Use::reading ? LOCK_SH : LOCK_EX) | LOCK_NB;
  const auto deadline = std::chrono::steady_clock::now() + 250ms;
  while (::flock(folder_, kind) != 0) {
    // Where the file system has no such locks there are no turns.
    if (errno != EWOULDBLOCK && errno != EINTR)
      return;
    if (std::chrono::steady_clock::now() >= deadline) {
      refused_ = true;
      return;
    }
    std::this_thread::sleep_for(1ms);
  }
}

// Closing gives the turn up.
SafeFile::Turn::~Turn() {
  if (folder_ >= 0)
    ::close(folder_);
}

bool SafeFile::write(const fs::path& file, std::string_view bytes) {
  const Turn turn(file, Turn::Use::writing);
  if (turn.isRefused() || !makeSibling(file, bytes) || !writePlainly(file, bytes))
    return false;
  ::unlink(sibling(file).c_str());
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
