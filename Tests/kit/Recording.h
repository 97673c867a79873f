// Recorded stereo audio.
#pragma once

#include <cstddef>
#include <vector>

namespace velto::kit {

// Frames at 48000 Hz, one vector per channel.
struct Recording {
  std::vector<float> l, r;

  [[nodiscard]] std::size_t frames() const { return l.size(); }

  void append(const Recording& more) { append(more, 0, more.frames()); }

  // Appends `count` frames of another recording, from `begin`.
  void append(const Recording& other, std::size_t begin, std::size_t count) {
    const auto from = static_cast<std::ptrdiff_t>(begin);
    const auto to = from + static_cast<std::ptrdiff_t>(count);
    l.insert(l.end(), other.l.begin() + from, other.l.begin() + to);
    r.insert(r.end(), other.r.begin() + from, other.r.begin() + to);
  }

  // `count` frames from `begin`.
  [[nodiscard]] Recording part(std::size_t begin, std::size_t count) const {
    const auto from = static_cast<std::ptrdiff_t>(begin);
    const auto to = from + static_cast<std::ptrdiff_t>(count);
    return {std::vector<float>(l.begin() + from, l.begin() + to),
            std::vector<float>(r.begin() + from, r.begin() + to)};
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
