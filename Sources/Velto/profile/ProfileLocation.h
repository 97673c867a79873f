// Location of the profile file.
#pragma once

#include "Environment.h"

#include <filesystem>
#include <optional>

namespace velto {

// The folder of a profile file. Nothing here accesses the disk.
struct ProfileLocation {
  std::filesystem::path directory;
  std::optional<std::filesystem::path> earlierFile; // where an earlier version kept it

  // VELTO_PROFILE_DIR as it is, if set (empty or relative: in the current folder), else "MORLA
  // Velto" in the user's data directory: XDG_DATA_HOME, or .local/share in HOME or in the account's
  // home. Relative ones of these three are ignored; nullopt if none is usable.
  [[nodiscard]] static std::optional<ProfileLocation> find(const Environment& environment);
  // Same, but aborts if no path is usable.
  [[nodiscard]] static ProfileLocation resolve(const Environment& environment);

  // Texts shown to the user: where the data directory is, and why none was found.
  static constexpr const char* dataDirectoryInWords = "XDG_DATA_HOME (by default ~/.local/share)";
  static constexpr const char* noDirectory = "neither XDG_DATA_HOME nor a home is known";

  [[nodiscard]] std::filesystem::path file() const { return directory / "profile.json"; }

  bool operator==(const ProfileLocation&) const = default;
};

} // namespace velto
