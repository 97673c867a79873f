#include "Folders.h"

#include "SafeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <system_error>

namespace velto {

namespace fs = std::filesystem;

fs::path Folders::temporary() {
  std::error_code error;
  auto directory = fs::temp_directory_path(error);
  return error ? "/tmp" : directory;
}

fs::path Folders::absolute(const fs::path& path) {
  std::error_code error;
  auto absolute = fs::absolute(path, error);
  return error ? path : absolute;
}

bool Folders::exists(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

void Folders::create(const fs::path& folder) {
  std::error_code ignored;
  fs::create_directories(folder, ignored);
}

void Folders::moveFile(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::rename(from, to, error);
  if (error != std::errc::cross_device_link)
    return;
  fs::path copy = to;
  copy += ".moving";
  std::error_code ignored;
  fs::remove(copy, ignored); // left by a move that was cut short
  const bool isCopied = fs::copy_file(from, copy, error) && SafeFile::sync(copy);
  if (isCopied)
    fs::rename(copy, to, error);
  if (isCopied && !error && SafeFile::sync(of(to)))
    fs::remove(from, ignored);
  fs::remove(copy, ignored);
}

fs::path Folders::of(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

bool Folders::isWritable(const fs::path& path) {
  return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

std::uintmax_t Folders::freeBytes(const fs::path& path) {
  std::error_code error;
  const fs::space_info space = fs::space(path, error);
  return error ? 0 : space.available;
}

void Folders::remove(const fs::path& path) {
  std::error_code ignored;
  fs::remove_all(path, ignored);
}

} // namespace velto
