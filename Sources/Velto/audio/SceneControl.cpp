#include "SceneControl.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace velto {

void SceneControl::play(std::vector<Slot> slots, std::int64_t chosen, std::uint64_t delayFrames,
                        Switching switching) {
  const std::size_t count = std::min(slots.size(), scene_.slots.size());
  scene_.slots = {};
  std::move(slots.begin(), slots.begin() + static_cast<std::ptrdiff_t>(count),
            scene_.slots.begin());
  scene_.startDelayFrames = delayFrames;
  scene_.switching = switching;
  scene_.chosen = chosen;
  ++scene_.load;
}

void SceneControl::switchTo(std::int64_t chosen) {
  scene_.chosen = chosen;
  ++scene_.ramp;
}

void SceneControl::silence() {
  scene_.slots = {};
  scene_.startDelayFrames = 0;
  scene_.chosen = -1;
  ++scene_.load;
}

void SceneControl::beginStream() {
  ++scene_.stream;
  silence();
}

} // namespace velto
