#include "GrowingFile.h"

#include "Descriptors.h"
#include "Folders.h"
#include "SafeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace velto {

namespace {

std::string errorText() {
  return std::generic_category().message(errno);
}

// O_NONBLOCK: fail on a pipe without a reader instead of waiting for one.
int openToWrite(const std::filesystem::path& path) {
  constexpr mode_t everyone = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  return Descriptors::open(path, O_RDWR | O_CREAT | O_NONBLOCK, everyone);
}

bool isRegular(int descriptor, off_t& size) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0)
    return false;
  size = status.st_size;
  return S_ISREG(status.st_mode);
}

bool isUnfinishedLine(std::string_view text) {
  return text.find('\n') == std::string_view::npos;
}

} // namespace

GrowingFile::GrowingFile(std::filesystem::path path, std::string held)
    : path_(std::move(path)), held_(std::move(held)) {}

std::optional<std::string> GrowingFile::refusal() const {
  const int descriptor = openToWrite(path_);
  if (descriptor < 0)
    return errorText();
  off_t size = 0;
  const bool regular = isRegular(descriptor, size);
  Descriptors::close(descriptor);
  if (!regular)
    return "Not a regular file";
  return std::nullopt;
}

std::optional<std::string> GrowingFile::append(std::string_view lines) {
  const int descriptor = openToWrite(path_);
  if (descriptor < 0)
    return errorText();
  std::optional<std::string> error = check(descriptor);
  if (!error) {
    error = writeTo(descriptor, lines);
    // What nobody has been told of must not count the next time.
    if (error && ::ftruncate(descriptor, static_cast<off_t>(held_.size())) == 0)
      ::fsync(descriptor);
  }
  if (!Descriptors::close(descriptor) && !error)
    error = errorText();
  if (!error)
    held_ += lines;
  return error;
}

// The file must hold what it is known to hold, and then nothing but the rest of a failed append.
std::optional<std::string> GrowingFile::check(int descriptor) const {
  off_t size = 0;
  if (!isRegular(descriptor, size))
    return "Not a regular file";
  std::string bytes;
  if (static_cast<std::uintmax_t>(size) > SafeFile::mostBytes ||
      !Descriptors::readAll(descriptor, static_cast<std::size_t>(size), bytes))
    return "The file cannot be read";
  const std::string_view rest =
      std::string_view(bytes).substr(std::min(held_.size(), bytes.size()));
  if (!bytes.starts_with(held_) || !(isUnfinishedLine(rest) || attempted_.starts_with(rest)))
    return "Another program has changed the file";
  return std::nullopt;
}

std::optional<std::string> GrowingFile::writeTo(int descriptor, std::string_view lines) {
  attempted_ = lines;
  const auto end = static_cast<off_t>(held_.size());
  if (::ftruncate(descriptor, end) != 0 || ::lseek(descriptor, end, SEEK_SET) != end ||
      !Descriptors::writeAll(descriptor, lines) || ::fsync(descriptor) != 0)
    return errorText();
  // A new file also needs its folder's entry. Some file systems cannot flush a folder.
  isListed_ = isListed_ || SafeFile::sync(Folders::of(path_)) || errno == EINVAL;
  if (!isListed_)
    return errorText();
  return std::nullopt;
}

} // namespace velto
