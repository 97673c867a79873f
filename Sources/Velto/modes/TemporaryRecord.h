// A practice record that is not the listener's.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

// While it lives, profiles are made in a fresh folder of the system's temporary directory, which it
// removes at the end; then profiles are made where they were before. Works by VELTO_PROFILE_DIR, so
// the one made last counts, and no other thread may use the environment meanwhile. Where there is
// no temporary directory to write to, profiles do without their file. Main thread only.
class TemporaryRecord {
public:
  // The folder's name is `prefix` and a UUID.
  explicit TemporaryRecord(std::string_view prefix);
  ~TemporaryRecord();

  TemporaryRecord(const TemporaryRecord&) = delete;
  TemporaryRecord& operator=(const TemporaryRecord&) = delete;

private:
  std::filesystem::path folder_;
  std::optional<std::string> earlier_; // the variable's value
};

} // namespace velto
