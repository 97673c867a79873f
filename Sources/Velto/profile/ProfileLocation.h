// Location of the profile file.
#pragma once

#include "Environment.h"

#include <filesystem>
#include <optional>

namespace velto {

// The folder of a profile file. Computes paths only; neither creates nor checks them.
struct ProfileLocation {
  std::filesystem::path directory;
  std::optional<std::filesystem::path> earlierFile; // where an earlier version kept it

  // VELTO_PROFILE_DIR unchanged if it is set; an empty or relative value refers to the current
  // folder. Otherwise "MORLA Velto" in the user's data directory: XDG_DATA_HOME, else .local/share
  // in HOME, else in the account's home. These three are ignored unless absolute; nullopt if none
  // is usable.
  [[nodiscard]] static std::optional<ProfileLocation> find(const Environment& environment);
  // Same, but aborts if no path is usable.
  [[nodiscard]] static ProfileLocation resolve(const Environment& environment);

  // Texts shown to the user: where the data directory is, and why none was found.
  static constexpr const char* dataDirectoryInWords = "XDG_DATA_HOME (by default ~/.local/share)";
  static constexpr const char* noDirectory = "no usable XDG_DATA_HOME and no home directory";

  [[nodiscard]] std::filesystem::path file() const { return directory / "profile.json"; }

  bool operator==(const ProfileLocation&) const = default;
};

} // namespace velto
