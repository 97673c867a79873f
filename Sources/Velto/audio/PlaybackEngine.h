// What a player asks of the sound output.
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

// Plays slots to an output that is open while there is something to hear. Main thread only.
class PlaybackEngine {
public:
  virtual ~PlaybackEngine() = default;

  // Opens the output, or keeps the open one unless it has failed. Waits for that. Returns what went
  // wrong; after an error the engine is stopped.
  [[nodiscard]] virtual std::optional<std::string> start() = 0;

  // Non-blocking start(). Returns true if the output is already open; otherwise requests opening
  // and returns false, still stopped. When the opening has ended, the function of `whenOpeningEnds`
  // is called; the next start then finds the output open, or `error` tells why it is not. `stop`
  // cancels the request.
  [[nodiscard]] virtual bool startAtOnce() = 0;

  // Sets what is called, on another thread, when an opening that startAtOnce() requested has ended.
  // It must not call the engine.
  virtual void whenOpeningEnds(std::function<void()> call) = 0;

  // The output as the next start will find it.
  enum class Output { closed, opening, open };
  [[nodiscard]] virtual Output output() const = 0;

  // Why the latest opening failed; nullopt if it did not, or if another one has been requested.
  [[nodiscard]] virtual std::optional<std::string> error() const = 0;

  // True between a successful start and `stop`, unless the output has failed.
  [[nodiscard]] virtual bool isRunning() const = 0;

  // Plays `slots` (at most Scene::maxSlots of them) from one common frame that is heard
  // `secondsToSound` from now; `chosen` fades in, no slot if it names none. Replaces what was
  // playing. Only while started.
  virtual void play(std::vector<Slot> slots, std::int64_t chosen, double secondsToSound,
                    Switching switching) = 0;

  // Switches to the slot `chosen` in the way that play() was given; to silence if it names none.
  // Only while something plays.
  virtual void switchTo(std::int64_t chosen) = 0;

  // Silence within 5 ms of audio.
  virtual void stop() = 0;

  // The volume of a slot as of the latest block, 0 to 1; 0 while nothing plays.
  [[nodiscard]] virtual float volume(std::size_t slot) const = 0;

  [[nodiscard]] virtual BusFormat outputFormat() const = 0;

  // Waits for `duration` and returns the left channel of what was put out meanwhile.
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
