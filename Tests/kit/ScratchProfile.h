// A practice record of the test's own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace velto::kit {

// While it lives, profiles are made in a fresh folder, which it removes at the end.
class ScratchProfile {
public:
  ScratchProfile() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velto-test-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
    ::setenv("VELTO_PROFILE_DIR", folder_.c_str(), 1);
  }
  ~ScratchProfile() {
    ::unsetenv("VELTO_PROFILE_DIR");
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ScratchProfile(const ScratchProfile&) = delete;
  ScratchProfile& operator=(const ScratchProfile&) = delete;

  [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
  [[nodiscard]] std::filesystem::path file() const { return folder_ / "profile.json"; }

private:
  std::filesystem::path folder_;
};

} // namespace velto::kit
