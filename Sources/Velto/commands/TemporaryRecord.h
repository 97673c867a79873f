// Temporary practice record.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

// While it exists, new profiles use a folder of their own in the system's temporary directory; the
// destructor removes the folder. Sets VELTO_PROFILE_DIR and restores it, so the latest of several
// objects wins, and no other thread may use the environment during construction and destruction. If
// the folder cannot be written, profiles are not saved. Main thread only.
class TemporaryRecord {
public:
  // The folder's name is `prefix` followed by a UUID.
  explicit TemporaryRecord(std::string_view prefix);
  ~TemporaryRecord();

  TemporaryRecord(const TemporaryRecord&) = delete;
  TemporaryRecord& operator=(const TemporaryRecord&) = delete;

private:
  std::filesystem::path folder_;
  std::optional<std::string> earlier_; // the variable's previous value
};

} // namespace velto
