// Complete copies of a file that several threads write at once.
#pragma once

#include "BackupFile.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace velto {

// The copies are BackupFiles of their own. Any thread.
class FurtherBackups {
public:
  // The copies of `file` are called "FILE.KIND-N-ID", with N from 2. Nothing is written yet.
  FurtherBackups(std::filesystem::path file, std::string kind, std::string id);
  FurtherBackups(const FurtherBackups&) = delete;
  FurtherBackups& operator=(const FurtherBackups&) = delete;
  // Leaves the copies to the next program.
  ~FurtherBackups();

  // Writes one more copy, which survives a power cut once this returns, and then removes those with
  // lower numbers. Waits for the disk.
  SafeFile::Written write(std::string_view bytes, std::int64_t number);

  // Removes the copies up to `number`; those being written, once they are written. Does not wait.
  void removeUpTo(std::int64_t number);

private:
  struct Copies;
  std::unique_ptr<Copies> copies_;
};

} // namespace velto
