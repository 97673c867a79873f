// The audio engine: an output device that runs while there is something to hear, and the mixer
// that feeds it.
#pragma once

#include "Mixer.h"
#include "OutputDevice.h"
#include "OutputTap.h"
#include "UnderrunCounter.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace velto {

// Main thread only, but for what says otherwise. The audio thread waits for nobody.
//
// A helper thread opens and closes the device: either takes as long as the sound server lets it,
// half a minute if that does not answer. Nothing here but `start` waits for that. `stop` lets the
// sound fade before the device closes; a start that comes before goes on with the open device.
class Engine {
public:
  // How long after `stop` the device closes: longer than the fade and the device's latency.
  static constexpr std::chrono::milliseconds defaultCloseDelay{100};

  // How long the end of an engine waits for a device that is to close.
  static constexpr std::chrono::milliseconds endPatience{1000};

  // No device is made before `start`.
  explicit Engine(OutputDeviceFactory makeDevice,
                  std::chrono::milliseconds closeDelay = defaultCloseDelay);
  // Stops, and returns when the device is closed. A device that does not close is left to the
  // helper thread, with all that it may still touch.
  ~Engine();

  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  // Opens the device, or goes on with the open one unless it has failed. Returns what went wrong,
  // or nothing; after an error the engine is stopped.
  [[nodiscard]] std::optional<std::string> start();

  // The same without waiting: goes on with the open device and returns true, or lets one be opened
  // and returns false, still stopped. When that has ended the function of `whenOpeningEnds` is
  // called, and the next start finds a device, or `error` tells why there is none. `stop` calls it
  // off.
  [[nodiscard]] bool startAtOnce();

  // Sets what is called, on another thread, at the end of an opening that nobody waits for. It must
  // not call the engine.
  void whenOpeningEnds(std::function<void()> call);

  // The output as the next start will find it.
  enum class Output { closed, opening, open };
  [[nodiscard]] Output output() const;

  // What went wrong with the last opening, unless another one has been asked for.
  [[nodiscard]] std::optional<std::string> error() const;

  // Between `start` and `stop`, as long as the device has not failed.
  [[nodiscard]] bool isRunning() const;

  // Plays `slots` (of which at most Playback::maxSlots count) from one common frame that leaves the
  // device `secondsToSound` from now; `chosen` fades in, no slot if it names none. Replaces what
  // was playing. The buffers are kept until they have been played for the last time. Only while
  // started.
  void play(std::vector<Slot> slots, std::int64_t chosen, double secondsToSound,
            Switching switching = Switching::crossfade);

  // Switches to the slot `chosen` as `play` was told; to silence if it names none. Only while
  // something plays.
  void crossfadeTo(std::int64_t chosen);

  // Silence within 5 ms of audio.
  void stop();

  // The volume of a voice, as of the last block; 0 while nothing plays.
  [[nodiscard]] float volume(std::size_t voice) const;

  // How often the devices asked for frames so far, and how often too late. Any thread.
  [[nodiscard]] CallbackCounts callbackCounts() const;

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
  class Shared;

  [[nodiscard]] bool takeOpenDevice();
  void askForDevice();

  const std::shared_ptr<Shared> shared_; // with the helper thread and the audio thread
  bool isStarted_ = false;
  Scene scene_; // the latest one handed over
  std::unique_ptr<OutputTap> tap_;
  std::thread helper_; // last: it uses shared_
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
