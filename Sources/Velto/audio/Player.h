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

// Either idle or playing. While playing, every slot runs on its own node, and only the node of
// current() is audible once a switch is over. Main thread only.
class Player {
public:
  static constexpr std::size_t nodeCount = Scene::maxSlots;
  static constexpr double startDelaySeconds = 0.12; // from load() to the first sound

  // What load() does while the output is closed.
  enum class Opening {
    awaited,     // waits until it is open; reports a failure
    inBackground // requests opening and stays idle: load again after the callback of
                 // whenOpeningEnds()
  };

  explicit Player(std::unique_ptr<PlaybackEngine> engine, Opening opening = Opening::awaited);

  // Stops, then plays the first three of `slots` as loops that start together, with slot `startAt`
  // audible; none if out of range. Stays idle if the engine does not start. Aborts if a slot has no
  // buffers, buffers of different lengths, or 2^32 frames or more.
  void load(std::span<const Slot> slots, std::int64_t startAt,
            Switching switching = Switching::crossfade);

  // Switches to `slot`, as the `switching` of load() says; to silence if it has nothing to play. A
  // no-op while idle, or if `slot` is `nodeCount` or more.
  void switchTo(std::int64_t slot);

  // Stops playback. current() keeps its value.
  void stop();

  [[nodiscard]] std::int64_t current() const { return current_; }
  [[nodiscard]] bool isPlaying() const { return isPlaying_; }
  // In slot order: node i plays slot i.
  [[nodiscard]] const std::array<PlayerNode, nodeCount>& nodes() const { return nodes_; }

  // True if playing, and the output has not failed.
  [[nodiscard]] bool isRunning() const { return isPlaying_ && engine_->isRunning(); }
  // See PlaybackEngine.
  [[nodiscard]] PlaybackEngine::Output output() const { return engine_->output(); }
  [[nodiscard]] std::optional<std::string> error() const { return engine_->error(); }
  void whenOpeningEnds(std::function<void()> call) { engine_->whenOpeningEnds(std::move(call)); }

  // Writes the reason why there is no sound to standard error, in one line.
  static void reportFailure(const std::string& reason);

  // Plays a fixed trial for 1.2 s and checks that the engine's mixer outputs it at the expected
  // level. Passes the lines of its report to `print`. True if it passed.
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
