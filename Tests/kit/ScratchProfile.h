// Practice record of a test.
#pragma once

#include "Files.h"

#include <cstdlib>
#include <filesystem>

namespace velto::kit {

// While it exists, profiles are created in a new folder; the destructor removes the folder.
class ScratchProfile {
public:
  ScratchProfile() { ::setenv("VELTO_PROFILE_DIR", folder().c_str(), 1); }
  ~ScratchProfile() { ::unsetenv("VELTO_PROFILE_DIR"); }
  ScratchProfile(const ScratchProfile&) = delete;
  ScratchProfile& operator=(const ScratchProfile&) = delete;

  [[nodiscard]] const std::filesystem::path& folder() const { return folder_.path(); }
  [[nodiscard]] std::filesystem::path file() const { return folder() / "profile.json"; }

private:
  ScratchFolder folder_;
};

} // namespace velto::kit
