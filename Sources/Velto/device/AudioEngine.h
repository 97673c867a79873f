// The program's engine: a mixer, and an output device that is open only while it is needed.
#pragma once

#include "DeviceThread.h"
#include "OutputDevice.h"
#include "OutputTap.h"
#include "PlaybackEngine.h"
#include "SceneControl.h"
#include "UnderrunCounter.h"

#include <chrono>
#include <memory>

namespace velto {

// Only start() and the destructor wait for the device. stop() lets the sound fade before the device
// closes; a start before that keeps the open device.
//
// Main thread only, except where noted.
class Engine final : public PlaybackEngine {
public:
  // How long after stop() the device closes: longer than the fade and the requested latency. Where
  // the device has more buffered, it closes once the fade has been heard.
  static constexpr std::chrono::milliseconds defaultCloseDelay{100};

  // No device is created before the first start.
  explicit Engine(OutputDeviceFactory makeDevice = systemOutput(),
                  std::chrono::milliseconds closeDelay = defaultCloseDelay,
                  const DeviceThread::Limits& limits = {});
  // Stops, and waits for the device to close; see DeviceThread.
  ~Engine() override;

  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  [[nodiscard]] std::optional<std::string> start() override;
  [[nodiscard]] bool startAtOnce() override;
  void whenOpeningEnds(std::function<void()> call) override;
  [[nodiscard]] Output output() const override;
  [[nodiscard]] std::optional<std::string> error() const override;
  [[nodiscard]] bool isRunning() const override;
  void play(std::vector<Slot> slots, std::int64_t chosen, double secondsToSound,
            Switching switching = Switching::crossfade) override;
  void switchTo(std::int64_t chosen) override;
  void stop() override;
  [[nodiscard]] float volume(std::size_t slot) const override;
  [[nodiscard]] BusFormat outputFormat() const override;
  [[nodiscard]] Samples captureLeft(std::chrono::milliseconds duration) override;

  // Counts over all streams so far. Any thread.
  [[nodiscard]] CallbackCounts callbackCounts() const;

  // Delivers the mixer's output from now on to `block`, in buffers of `bufferFrames` frames.
  // `block` runs on its own thread, where it may lock and allocate; if it falls behind, frames are
  // dropped. Replaces an earlier tap.
  void installTap(std::size_t bufferFrames, OutputTap::Block block);

  // When this returns, the block is not running and will not be called again. Must not be called by
  // the block. A no-op without a tap.
  void removeTap();

private:
  class Source;

  void publish();
  void beginStream();

  const std::shared_ptr<Source> source_; // shared with the device thread
  bool isStarted_ = false;
  SceneControl control_;
  std::unique_ptr<OutputTap> tap_;
  DeviceThread deviceThread_; // last: its destructor waits for the device
};

} // namespace velto
