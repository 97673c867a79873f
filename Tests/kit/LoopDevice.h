// A block device on top of a file.
#pragma once

#include <filesystem>
#include <string>

namespace velto::kit {

// Attached for its lifetime; the kernel detaches it if this process dies. Needs root. The
// constructor throws std::runtime_error if no device is available.
class LoopDevice {
public:
  explicit LoopDevice(const std::filesystem::path& file);
  LoopDevice(const LoopDevice&) = delete;
  LoopDevice& operator=(const LoopDevice&) = delete;
  ~LoopDevice();

  [[nodiscard]] const std::string& path() const { return path_; }

private:
  std::string path_;
  int descriptor_ = -1;
};

} // namespace velto::kit
