// The state of a practice record on the disk.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>

namespace velto {

struct RecordCheck {
  std::filesystem::path file;
  bool exists = false;
  std::optional<std::size_t> answers; // nullopt if the file cannot be read or decoded

  // Changes nothing on the disk.
  [[nodiscard]] static RecordCheck of(const std::filesystem::path& file);
};

} // namespace velto
