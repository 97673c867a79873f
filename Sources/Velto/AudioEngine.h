// The audio engine: an output device that runs while there is something to hear, and the mixer
// that feeds it.
#pragma once

#include "Mixer.h"
#include "OutputDevice.h"
#include "OutputTap.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace velto {

// Main thread only. Nothing here waits for the audio thread, and the audio thread waits for nobody.
//
// `stop` lets the sound fade before the device closes, so a helper thread closes it a little later;
// a `start` that comes before goes on with the open device.
class Engine {
public:
  // How long after `stop` the device closes: longer than the fade and the device's latency.
  static constexpr std::chrono::milliseconds defaultCloseDelay{100};

  // No device is made before `start`.
  explicit Engine(OutputDeviceFactory makeDevice,
                  std::chrono::milliseconds closeDelay = defaultCloseDelay);
  // Stops, and returns when the device is closed.
  ~Engine();

  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  // Opens the device, or goes on with the open one unless it has failed. Returns what went wrong,
  // or nothing; after an error the engine is stopped.
  [[nodiscard]] std::optional<std::string> start();

  // Between `start` and `stop`, as long as the device has not failed.
  [[nodiscard]] bool isRunning() const;

  // Plays `slots` (of which at most Playback::maxSlots count) from one common frame that leaves the
  // device `secondsToSound` from now; `chosen` fades in, no slot if it names none. Replaces what
  // was playing. The buffers are kept until they have been played for the last time. Only while
  // started.
  void play(std::vector<Slot> slots, std::int64_t chosen, double secondsToSound);

  // Crossfades to the slot `chosen`; to silence if it names none. Only while something plays.
  void crossfadeTo(std::int64_t chosen);

  // Silence within 5 ms of audio.
  void stop();

  // The volume of a voice, as of the last block; 0 while nothing plays.
  [[nodiscard]] float volume(std::size_t voice) const;

  // What the mixer puts out, whether it runs or not.
  [[nodiscard]] static BusFormat outputFormat();

  // From now on, whenever the engine renders, `block` gets every frame that the mixer puts out, in
  // buffers of `bufferFrames` frames and on a thread of its own, where it may lock and allocate. It
  // takes the place of a tap that was installed before.
  void installTap(std::size_t bufferFrames, OutputTap::Block block);

  // The block is not running and will not be called again when this returns; not to be called by
  // the block. Does nothing without a tap.
  void removeTap();

private:
  using Clock = std::chrono::steady_clock;

  void retire();       // holds mutex_
  void freeReleased(); // holds mutex_
  void closeDevice();  // holds mutex_
  void closeDevicesWhenDue();

  const OutputDeviceFactory makeDevice_;
  const std::chrono::milliseconds closeDelay_;
  Mixer mixer_;

  // Main thread only.
  bool isStarted_ = false;
  Scene scene_; // the latest one handed over
  std::unique_ptr<OutputTap> tap_;

  // Main thread and closing thread, under mutex_.
  mutable std::mutex mutex_;
  std::condition_variable wake_;
  std::unique_ptr<OutputDevice> device_;
  std::unique_ptr<const Playback> playback_; // what scene_ names
  std::vector<std::pair<std::uint32_t, std::unique_ptr<const Playback>>> retired_; // by generation
  std::vector<std::pair<std::uint32_t, std::unique_ptr<OutputTap>>> retiredTaps_;  // likewise
  std::optional<Clock::time_point> closeAt_;
  bool isEnding_ = false;

  std::thread closer_; // last: it uses all of the above
};

// One of the voices of an engine.
class PlayerNode {
public:
  PlayerNode(const Engine& engine, std::size_t index) : engine_(&engine), index_(index) {}

  // 0 to 1, as the crossfade has moved it up to the last rendered block. Main thread only.
  [[nodiscard]] float volume() const { return engine_->volume(index_); }

private:
  const Engine* engine_;
  std::size_t index_;
};

} // namespace velto
