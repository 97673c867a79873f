// A practice record of the test's own.
#pragma once

#include "Files.h"

#include <cstdlib>
#include <filesystem>

namespace velto::kit {

// While it lives, profiles are made in a fresh folder, which it removes at the end.
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
