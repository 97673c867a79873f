// Plays the slots of a trial, all at once and in sample-locked loops, and switches between them.
#pragma once

#include "PlaybackEngine.h"
#include "SelfTest.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace velto {

// Idle, or playing: then every slot runs on its own node, and the node of `current` is heard.
// Main thread only.
class Player {
public:
  static constexpr std::size_t nodeCount = Scene::maxSlots;
  static constexpr double startDelaySeconds = 0.12; // from load() to the first sound

  // What load() does while the output is closed.
  enum class Opening {
    awaited,     // waits until it is open; reports a failure
    inBackground // requests opening and stays idle: load again when whenOpeningEnds() has called
  };

  explicit Player(std::unique_ptr<PlaybackEngine> engine, Opening opening = Opening::awaited);

  // Stops, then plays `slots` (the first three) in loops that all start at one moment, with slot
  // `startAt` audible; none if there is no such slot. Stays idle if the engine does not start. A
  // slot without buffers, or with buffers of different lengths, is a programming error: the process
  // stops.
  void load(std::span<const Slot> slots, std::int64_t startAt,
            Switching switching = Switching::crossfade);

  // Switches to `slot` in the way that load() was given, even to one that has nothing to play. A
  // no-op while idle, and if the index is not below the number of nodes.
  void switchTo(std::int64_t slot);

  // Silences and stops everything. `current` keeps its value.
  void stop();

  [[nodiscard]] std::int64_t current() const { return current_; }
  [[nodiscard]] bool isPlaying() const { return isPlaying_; }
  // In slot order: node i plays slot i.
  [[nodiscard]] const std::array<PlayerNode, nodeCount>& nodes() const { return nodes_; }

  // Whether what is playing reaches the output.
  [[nodiscard]] bool isRunning() const { return isPlaying_ && engine_->isRunning(); }
  // The output, as PlaybackEngine has it.
  [[nodiscard]] PlaybackEngine::Output output() const { return engine_->output(); }
  [[nodiscard]] std::optional<std::string> error() const { return engine_->error(); }
  void whenOpeningEnds(std::function<void()> call) { engine_->whenOpeningEnds(std::move(call)); }

  // Prints in one line on standard error why there is no sound.
  static void reportFailure(const std::string& reason);

  // Proves that what a player plays leaves its engine's mixer at the expected level: plays a fixed
  // trial aloud for 1.2 s, passes its lines to `print`, and returns whether it passed.
  [[nodiscard]] static bool selfTest(std::unique_ptr<PlaybackEngine> engine,
                                     const SelfTest::Print& print);

private:
  [[nodiscard]] bool startEngine();

  const std::unique_ptr<PlaybackEngine> engine_;
  const Opening opening_;
  std::array<PlayerNode, nodeCount> nodes_;
  std::int64_t current_ = 0;
  bool isPlaying_ = false;
};

} // namespace velto
