#include "FurtherBackups.h"

#include <algorithm>
#include <limits>
#include <list>
#include <mutex>
#include <utility>

namespace velto {

namespace {

struct Copy {
  explicit Copy(const std::filesystem::path& original, const std::string& suffix)
      : file(original, suffix) {}

  BackupFile file;
  std::int64_t number = 0;
  bool isBusy = true; // being written: belongs to the thread that does
};

} // namespace

struct FurtherBackups::Copies {
  Copies(std::filesystem::path original, std::string kindOfCopy, std::string idOfProgram)
      : file(std::move(original)), kind(std::move(kindOfCopy)), id(std::move(idOfProgram)) {}

  // One that holds nothing and that nobody else writes.
  Copy& take() {
    const std::lock_guard lock(mutex);
    const auto free = std::find_if(all.begin(), all.end(), [](const Copy& copy) {
      return !copy.isBusy && !copy.file.exists();
    });
    if (free == all.end())
      return all.emplace_back(file, kind + '-' + std::to_string(all.size() + 2) + '-' + id);
    free->isBusy = true;
    return *free;
  }

  void giveBack(Copy& copy, std::int64_t number, bool isWritten) {
    const std::lock_guard lock(mutex);
    copy.isBusy = false;
    copy.number = number;
    removeUpTo(isWritten ? number - 1 : obsolete);
  }

  // With the lock.
  void removeUpTo(std::int64_t number) {
    obsolete = std::max(obsolete, number);
    for (Copy& copy : all)
      if (!copy.isBusy && copy.number <= obsolete)
        copy.file.remove();
  }

  const std::filesystem::path file;
  const std::string kind;
  const std::string id;
  std::mutex mutex;
  std::list<Copy> all;
  std::int64_t obsolete = std::numeric_limits<std::int64_t>::min(); // up to this number
};

FurtherBackups::FurtherBackups(std::filesystem::path file, std::string kind, std::string id)
    : copies_(std::make_unique<Copies>(std::move(file), std::move(kind), std::move(id))) {}

FurtherBackups::~FurtherBackups() = default;

SafeFile::Written FurtherBackups::write(std::string_view bytes, std::int64_t number) {
  Copy& copy = copies_->take();
  const SafeFile::Written result = copy.file.write(bytes, BackupFile::Durability::survivePowerCut);
  copies_->giveBack(copy, number, result == SafeFile::Written::done);
  return result;
}

void FurtherBackups::removeUpTo(std::int64_t number) {
  const std::lock_guard lock(copies_->mutex);
  copies_->removeUpTo(number);
}

} // namespace velto
