// Temporary practice record.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

// While it exists, profiles are created in a new folder in the system's temporary directory; the
// destructor removes the folder. Sets VELTO_PROFILE_DIR and restores it: of several objects the
// latest wins, and no other thread may use the environment meanwhile. If the folder cannot be
// written, profiles have no file. Main thread only.
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
