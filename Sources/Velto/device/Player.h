// Plays the slots of a trial, all at once and in sample-locked loops, and switches between them.
#pragma once

#include "AudioEngine.h"
#include "Drills.h"
#include "OutputDevice.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace velto {

// Main thread only. Idle, or playing: then every slot runs on its own node, and the node of
// `current` is heard. Switching moves the nodes' volumes within 150 ms, as `load` was told.
class Player {
public:
  static constexpr std::size_t nodeCount = Playback::maxSlots;
  static constexpr double startDelaySeconds = 0.12; // from `load` to the first sound

  // How `load` treats an output that is not open yet.
  enum class Opening {
    awaited,      // waits for it, and says so if that fails
    inBackground, // lets it be opened and leaves the player idle: the caller loads again when the
                  // engine says that it is open, and speaks if it is not
  };

  // The first two as the engine's.
  explicit Player(OutputDeviceFactory makeDevice = makeDefaultOutputDevice,
                  std::chrono::milliseconds closeDelay = Engine::defaultCloseDelay,
                  Opening opening = Opening::awaited);

  // Stops, then plays `slots` (the first three of them) in loops that all start at one moment, with
  // slot `startAt` audible; with none audible if there is no such slot. If the engine does not
  // start the player stays idle; where it waits for that it reports the failure. A slot without
  // buffers, or with a left and a right one of different lengths, is a programming error: the
  // process stops.
  void load(std::span<const Slot> slots, std::int64_t startAt,
            Switching switching = Switching::crossfade);

  // Switches to `slot`, even to one that has nothing to play. Does nothing while idle, or if the
  // index is not below the number of nodes.
  void switchTo(std::int64_t slot);

  // Silences and stops everything. `current` keeps its value.
  void stop();

  // Says in one line on standard error why there is no sound.
  static void reportFailure(const std::string& reason);

  // Proves that what a player plays comes out of its engine's mixer at the expected level: plays a
  // fixed trial aloud for 1.2 s, reports on standard output, and returns whether it passed.
  [[nodiscard]] static bool selfTest(OutputDeviceFactory makeDevice = makeDefaultOutputDevice);

  [[nodiscard]] std::int64_t current() const { return current_; }
  [[nodiscard]] bool isPlaying() const { return isPlaying_; }
  [[nodiscard]] Engine& engine() { return engine_; }
  [[nodiscard]] const Engine& engine() const { return engine_; }
  // In slot order: node i plays slot i.
  [[nodiscard]] const std::array<PlayerNode, nodeCount>& nodes() const { return nodes_; }

private:
  [[nodiscard]] bool startEngine();

  Engine engine_;
  const Opening opening_;
  std::array<PlayerNode, nodeCount> nodes_;
  std::int64_t current_ = 0;
  bool isPlaying_ = false;
};

} // namespace velto
