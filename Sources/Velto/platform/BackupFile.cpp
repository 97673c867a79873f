#include "BackupFile.h"

#include "Descriptors.h"
#include "Folders.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace velto {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view partSuffix = ".part";

fs::path partOf(fs::path path) {
  path += partSuffix;
  return path;
}

SafeFile::Written failure() {
  return Descriptors::isRefused() ? SafeFile::Written::refused : SafeFile::Written::failed;
}

} // namespace

BackupFile::BackupFile(fs::path file, std::string_view suffix) : path_(std::move(file)) {
  path_ += ".";
  path_ += suffix;
}

BackupFile::~BackupFile() {
  release();
}

// Closing the descriptor releases the lock.
void BackupFile::release() {
  if (locked_ >= 0)
    ::close(std::exchange(locked_, -1));
}

SafeFile::Written BackupFile::write(std::string_view bytes, Durability durability) {
  // Until it is locked, another program may mistake the new copy for an abandoned one and remove
  // it.
  constexpr int attempts = 3;
  SafeFile::Written result = SafeFile::Written::failed;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    result = writeOnce(bytes, durability);
    if (result != SafeFile::Written::failed || errno != ENOENT)
      break;
  }
  return result;
}

SafeFile::Written BackupFile::writeOnce(std::string_view bytes, Durability durability) {
  const bool isDurable = durability == Durability::survivePowerCut;
  const fs::path part = partOf(path_);
  ::unlink(part.c_str());
  const int descriptor = Descriptors::open(part, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
  if (descriptor < 0)
    return failure();
  ::flock(descriptor, LOCK_EX); // stateOf() in another program holds it for microseconds
  if (!Descriptors::writeAll(descriptor, bytes) || (isDurable && ::fdatasync(descriptor) != 0) ||
      ::rename(part.c_str(), path_.c_str()) != 0) {
    const SafeFile::Written result = failure();
    const int error = errno;
    Descriptors::close(descriptor);
    ::unlink(part.c_str());
    errno = error;
    return result;
  }
  release();
  locked_ = descriptor;
  if (isDurable && !SafeFile::sync(Folders::of(path_)))
    return SafeFile::Written::failed;
  return SafeFile::Written::done;
}

void BackupFile::remove() {
  if (locked_ < 0)
    return;
  ::unlink(path_.c_str());
  release();
}

std::vector<fs::path> BackupFile::all(const fs::path& file, std::string_view prefix) {
  std::vector<fs::path> found;
  const std::string start = file.filename().string() + "." + std::string(prefix);
  std::error_code error;
  for (fs::directory_iterator entry(Folders::of(file), error), end; !error && entry != end;
       entry.increment(error))
    if (entry->path().filename().string().starts_with(start))
      found.push_back(entry->path());
  return found;
}

// A program releases the lock on its copy after it has replaced or removed it: only a copy that is
// still under its name without being locked is abandoned.
BackupFile::State BackupFile::stateOf(const fs::path& copy) {
  const int descriptor = Descriptors::open(copy, O_RDONLY | O_NONBLOCK);
  if (descriptor < 0)
    return State::unknown;
  State state = State::abandoned;
  if (::flock(descriptor, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    state = State::inUse;
  } else {
    struct stat opened {};
    struct stat named {};
    if (::fstat(descriptor, &opened) != 0 || ::stat(copy.c_str(), &named) != 0)
      state = State::unknown;
    else if (opened.st_dev != named.st_dev || opened.st_ino != named.st_ino)
      state = State::inUse;
  }
  ::close(descriptor);
  return state;
}

bool BackupFile::isPartial(const fs::path& copy) {
  return copy.filename().string().ends_with(partSuffix);
}

} // namespace velto
