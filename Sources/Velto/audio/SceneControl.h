// Makes the scenes that a mixer plays, one from the other.
#pragma once

#include "Scene.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace velto {

// The latest scene, and the changes that lead to the next one. Publish scene() to a mixer after
// each change. One thread at a time.
class SceneControl {
public:
  [[nodiscard]] const Scene& scene() const { return scene_; }

  // Plays `slots` (at most Scene::maxSlots) as loops that start `delayFrames` after the mixer
  // adopts the scene; see Scene.
  void play(std::vector<Slot> slots, std::int64_t chosen, std::uint64_t delayFrames,
            Switching switching);
  // Switches to the slot `chosen`; to silence if out of range.
  void switchTo(std::int64_t chosen);
  // Fades to silence.
  void silence();
  // Starts a new stream, silent: nothing fades out in it.
  void beginStream();
  void setTap(std::shared_ptr<FrameRing> tap) { scene_.tap = std::move(tap); }

private:
  Scene scene_;
};

} // namespace velto
