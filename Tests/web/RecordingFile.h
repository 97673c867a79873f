// Sound that a browser check has recorded.
#pragma once

#include "kit/Recording.h"

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace velto::kit {

// Reads 32-bit floats, stereo. Ignores a part of a frame at the end. Throws std::runtime_error if
// the file cannot be read.
[[nodiscard]] inline Recording readRecording(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file)
    throw std::runtime_error(path + " cannot be read");
  std::vector<float> samples;
  float sample = 0;
  while (file.read(reinterpret_cast<char*>(&sample), sizeof sample))
    samples.push_back(sample);
  return Recording::fromInterleaved(samples);
}

} // namespace velto::kit
