// The sound output as a player uses it.
#pragma once

#include "Scene.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// The format of an output.
struct BusFormat {
  double sampleRateHz = 0;
  std::size_t channelCount = 0;

  bool operator==(const BusFormat&) const = default;
};

// Plays slots to an output that is open only while it is needed. Main thread only.
class PlaybackEngine {
public:
  virtual ~PlaybackEngine() = default;

  // Opens the output and waits until it is open; keeps an open output that has not failed. Returns
  // an error text; nullopt on success. After an error the engine is stopped.
  [[nodiscard]] virtual std::optional<std::string> start() = 0;

  // Non-blocking start(). Returns true if the output is already open; otherwise requests opening
  // and returns false, still stopped. Once the output is open or has failed to open, the callback
  // of whenOpeningEnds() runs; call start() again, or see error(). stop() cancels the request.
  [[nodiscard]] virtual bool startAtOnce() = 0;

  // Sets the callback that runs when an opening requested by startAtOnce() has succeeded or failed.
  // It runs on another thread and must not call the engine.
  virtual void whenOpeningEnds(std::function<void()> call) = 0;

  // State of the output; `opening` from the request on.
  enum class Output { closed, opening, open };
  [[nodiscard]] virtual Output output() const = 0;

  // Why the latest opening failed; nullopt if it did not, or if a new one has been requested.
  [[nodiscard]] virtual std::optional<std::string> error() const = 0;

  // True between a successful start and stop(), unless the output has failed.
  [[nodiscard]] virtual bool isRunning() const = 0;

  // Plays `slots` (at most Scene::maxSlots) as loops that start together and become audible
  // `secondsToSound` from now. Fades in the slot `chosen`; none if out of range. Replaces the slots
  // that were playing. Call only while started.
  virtual void play(std::vector<Slot> slots, std::int64_t chosen, double secondsToSound,
                    Switching switching) = 0;

  // Switches to the slot `chosen`, as the `switching` of play() says; to silence if out of range.
  // Call only while something plays.
  virtual void switchTo(std::int64_t chosen) = 0;

  // Fades to silence within 5 ms of audio.
  virtual void stop() = 0;

  // The volume of a slot as of the latest block, 0 to 1; 0 while nothing plays.
  [[nodiscard]] virtual float volume(std::size_t slot) const = 0;

  [[nodiscard]] virtual BusFormat outputFormat() const = 0;

  // Blocks for `duration` and returns the left channel that the output played in that time.
  [[nodiscard]] virtual Samples captureLeft(std::chrono::milliseconds duration) = 0;
};

// One of the slots that an engine plays.
class PlayerNode {
public:
  PlayerNode(const PlaybackEngine& engine, std::size_t index) : engine_(&engine), index_(index) {}

  // 0 to 1, as of the latest block. Main thread only.
  [[nodiscard]] float volume() const { return engine_->volume(index_); }

private:
  const PlaybackEngine* engine_;
  std::size_t index_;
};

} // namespace velto
