#include "PutAside.h"

#include "BackupFile.h"
#include "Folders.h"

#include <time.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <system_error>

namespace velto {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view prefix = "aside-";

std::string now() {
  const std::time_t seconds = std::time(nullptr);
  std::tm fields{};
  char text[] = "2001-01-01-000000";
  if (gmtime_r(&seconds, &fields) != nullptr)
    std::strftime(text, sizeof text, "%Y-%m-%d-%H%M%S", &fields);
  return text;
}

// The suffix of the next file.
std::string freeSuffix(const fs::path& file) {
  const std::string first = std::string(prefix) + now();
  std::string suffix = first;
  for (int number = 2; Folders::exists(file.string() + "." + suffix); ++number)
    suffix = first + "-" + std::to_string(number);
  return suffix;
}

bool isKept(const fs::path& kept, std::string_view bytes) {
  std::error_code error;
  return fs::file_size(kept, error) == bytes.size() && SafeFile::read(kept).bytes == bytes;
}

void makeRoom(const std::vector<fs::path>& files, const PutAside::Decodes& decodes) {
  for (std::size_t count = files.size(); const fs::path& kept : files) {
    if (count < PutAside::mostFiles)
      return;
    const SafeFile::Reading reading = SafeFile::read(kept);
    if (reading.state != SafeFile::Reading::State::complete ||
        reading.bytes.size() > PutAside::mostBytesOfJunk || decodes(reading.bytes))
      continue;
    Folders::remove(kept);
    --count;
  }
}

// Removes partial copies of programs that were killed while writing them.
void removeParts(const fs::path& file) {
  for (const fs::path& copy : BackupFile::all(file, prefix))
    if (BackupFile::isPartial(copy) && BackupFile::stateOf(copy) == BackupFile::State::abandoned)
      Folders::remove(copy);
}

bool renameAside(const fs::path& file) {
  std::error_code error;
  fs::rename(file, file.string() + "." + freeSuffix(file), error);
  if (error)
    return false;
  SafeFile::sync(Folders::of(file));
  return true;
}

} // namespace

bool PutAside::keep(const fs::path& file, const SafeFile::Reading& reading,
                    const Decodes& decodes) {
  using enum SafeFile::Reading::State;
  switch (reading.state) {
  case missing:
    return true;
  case complete:
    return keepBytes(file, reading.bytes, decodes) || renameAside(file);
  case unreadable:
    return renameAside(file);
  case irregular:
  case exhausted:
    break;
  }
  return false;
}

bool PutAside::keepBytes(const fs::path& file, std::string_view bytes, const Decodes& decodes) {
  const std::vector<fs::path> files = all(file);
  if (bytes.empty() || std::any_of(files.begin(), files.end(),
                                   [&](const fs::path& kept) { return isKept(kept, bytes); }))
    return true;
  makeRoom(files, decodes);
  removeParts(file);
  BackupFile copy(file, freeSuffix(file));
  return copy.write(bytes, BackupFile::Durability::survivePowerCut) == SafeFile::Written::done;
}

std::vector<fs::path> PutAside::all(const fs::path& file) {
  std::vector<fs::path> files = BackupFile::all(file, prefix);
  std::erase_if(files, BackupFile::isPartial);
  std::sort(files.begin(), files.end());
  return files;
}

} // namespace velto
