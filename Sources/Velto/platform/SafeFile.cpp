// POSIX calls instead of streams: saving depends on errno, O_NONBLOCK and fsync.
#include "SafeFile.h"

#include "Descriptors.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

namespace velto {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

std::int64_t nanoseconds(const timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * nanosecondsPerSecond + time.tv_nsec;
}

SafeFile::Stamp stampOf(const struct stat& status) {
  return {.inode = static_cast<std::int64_t>(status.st_ino),
          .size = static_cast<std::int64_t>(status.st_size),
          .modified = nanoseconds(status.st_mtim),
          .changed = nanoseconds(status.st_ctim)};
}

SafeFile::Reading::State stateOfError() {
  using enum SafeFile::Reading::State;
  switch (errno) {
  case ENOENT:
  case ENOTDIR:
    return missing;
  case EMFILE:
  case ENFILE:
  case ENOMEM:
    return exhausted;
  default:
    return unreadable;
  }
}

// An odd number of nanoseconds: a file system that rounds it makes it even.
void setTimeOfModification(int descriptor) {
  timespec times[2] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, {}};
  if (::clock_gettime(CLOCK_REALTIME, &times[1]) != 0)
    return;
  times[1].tv_nsec |= 1;
  ::futimens(descriptor, times);
}

} // namespace

std::optional<SafeFile::Stamp> SafeFile::stamp(const fs::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0)
    return std::nullopt;
  return stampOf(status);
}

SafeFile::Reading SafeFile::read(const fs::path& file) {
  using enum Reading::State;
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0)
    return {.state = stateOfError(), .bytes = {}, .stamp = std::nullopt};
  Reading reading{.state = irregular, .bytes = {}, .stamp = stampOf(status)};
  if (!S_ISREG(status.st_mode))
    return reading;
  const int descriptor = Descriptors::open(file, O_RDONLY | O_NONBLOCK);
  if (descriptor < 0) {
    reading.state = stateOfError();
    return reading;
  }
  reading.state = unreadable;
  if (static_cast<std::uintmax_t>(status.st_size) <= mostBytes &&
      Descriptors::readAll(descriptor, static_cast<std::size_t>(status.st_size), reading.bytes))
    reading.state = complete;
  ::close(descriptor);
  return reading;
}

SafeFile::Written SafeFile::overwrite(const fs::path& file, std::string_view bytes) {
  constexpr mode_t everyone = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  // O_NONBLOCK: fail on a pipe without a reader instead of waiting for one.
  const int descriptor =
      Descriptors::open(file, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK, everyone);
  if (descriptor < 0)
    return Descriptors::isRefused() ? Written::refused : Written::failed;
  const bool written = Descriptors::writeAll(descriptor, bytes);
  setTimeOfModification(descriptor);
  return Descriptors::close(descriptor) && written ? Written::done : Written::failed;
}

bool SafeFile::isExact(const Stamp& stamp) {
  return stamp.modified % 2 != 0;
}

bool SafeFile::sync(const fs::path& path) {
  const int descriptor = Descriptors::open(path, O_RDONLY | O_NONBLOCK);
  if (descriptor < 0)
    return false;
  const bool synced = ::fsync(descriptor) == 0;
  return Descriptors::close(descriptor) && synced;
}

} // namespace velto
