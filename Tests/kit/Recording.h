// Recorded stereo audio.
#pragma once

#include <cstddef>
#include <vector>

namespace velto::kit {

// Frames at 48000 Hz, one vector per channel.
struct Recording {
  std::vector<float> l, r;

  [[nodiscard]] std::size_t frames() const { return l.size(); }

  void append(const Recording& more) {
    l.insert(l.end(), more.l.begin(), more.l.end());
    r.insert(r.end(), more.r.begin(), more.r.end());
  }

  // `count` frames from `begin`.
  [[nodiscard]] Recording part(std::size_t begin, std::size_t count) const {
    const auto of = [&](const std::vector<float>& channel) {
      const auto from = channel.begin() + static_cast<std::ptrdiff_t>(begin);
      return std::vector<float>(from, from + static_cast<std::ptrdiff_t>(count));
    };
    return {of(l), of(r)};
  }

  // Ignores an odd last sample.
  [[nodiscard]] static Recording fromInterleaved(const std::vector<float>& samples) {
    Recording recording;
    for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
      recording.l.push_back(samples[i]);
      recording.r.push_back(samples[i + 1]);
    }
    return recording;
  }
};

// Recorded output at its rendered level. Doubling undoes the headroom exactly.
[[nodiscard]] inline Recording asRendered(Recording recording) {
  for (auto* channel : {&recording.l, &recording.r})
    for (float& sample : *channel)
      sample *= 2;
  return recording;
}

} // namespace velto::kit
