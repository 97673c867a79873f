// Fake output devices: one whose blocks the test pulls, and one with a thread of its own.
#pragma once

#include "OutputDevice.h"

#include "Recording.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace velto::kit {

// The test's side of a fake device. Outlives the devices made by its factory, of which one at a
// time is open. Any thread.
class FakeOutput {
public:
  explicit FakeOutput(std::size_t latencyFrames = 1920) : latencyFrames_(latencyFrames) {}

  [[nodiscard]] OutputDeviceFactory factory() {
    return [this] { return std::make_unique<Device>(*this); };
  }

  // Renders one block; empty if the device is closed or has failed.
  [[nodiscard]] Recording pullBlock(std::size_t frames) {
    const std::lock_guard lock(mutex_);
    if (renderer_ == nullptr || failed_)
      return {};
    std::vector<float> block(2 * frames + 2, untouched);
    renderer_->render(block.data(), frames);
    overran_ = overran_ || block[2 * frames] != untouched || block[2 * frames + 1] != untouched;
    block.resize(2 * frames);
    return Recording::fromInterleaved(block);
  }

  // Renders `frames` frames in blocks of `blockFrames`. Fewer if the device is closed or has
  // failed.
  [[nodiscard]] Recording pull(std::size_t frames, std::size_t blockFrames) {
    Recording recording;
    while (recording.frames() < frames) {
      const Recording block = pullBlock(std::min(blockFrames, frames - recording.frames()));
      if (block.frames() == 0)
        return recording;
      recording.append(block);
    }
    return recording;
  }

  // Makes the next devices fail to start with `error`; nullopt lets them start again.
  void refuse(std::optional<std::string> error) {
    const std::lock_guard lock(mutex_);
    refusal_ = std::move(error);
  }

  // Breaks the open device, like a dying sound server.
  void fail() {
    const std::lock_guard lock(mutex_);
    failed_ = true;
  }

  // Blocks opening and closing until letGo(), like a server that does not answer.
  void hold() {
    const std::lock_guard lock(mutex_);
    isHeld_ = true;
  }
  void letGo() {
    const std::lock_guard lock(mutex_);
    isHeld_ = false;
    released_.notify_all();
  }

  // Number of blocked openings and closings.
  [[nodiscard]] int held() const {
    const std::lock_guard lock(mutex_);
    return held_;
  }

  [[nodiscard]] bool isOpen() const {
    const std::lock_guard lock(mutex_);
    return renderer_ != nullptr;
  }

  // Number of openings so far.
  [[nodiscard]] int opened() const {
    const std::lock_guard lock(mutex_);
    return opened_;
  }

  // True if a block was written beyond its end.
  [[nodiscard]] bool overran() const { return overran_; }

  // Returns false on a timeout.
  [[nodiscard]] bool waitUntilClosed() {
    std::unique_lock lock(mutex_);
    return closed_.wait_for(lock, std::chrono::seconds(20),
                            [this] { return renderer_ == nullptr; });
  }

private:
  class Device final : public OutputDevice {
  public:
    explicit Device(FakeOutput& output) : output_(output) {}

    std::optional<std::string> start(Renderer& renderer) override {
      std::unique_lock lock(output_.mutex_);
      output_.waitForRelease(lock);
      if (output_.refusal_)
        return output_.refusal_;
      output_.renderer_ = &renderer;
      output_.failed_ = false;
      ++output_.opened_;
      return std::nullopt;
    }

    void stop() override {
      std::unique_lock lock(output_.mutex_);
      output_.waitForRelease(lock);
      output_.renderer_ = nullptr;
      output_.closed_.notify_all();
    }

    [[nodiscard]] bool failed() const override {
      const std::lock_guard lock(output_.mutex_);
      return output_.failed_;
    }

    [[nodiscard]] std::size_t latencyFrames() const override { return output_.latencyFrames_; }

  private:
    FakeOutput& output_;
  };

  void waitForRelease(std::unique_lock<std::mutex>& lock) {
    ++held_;
    released_.wait(lock, [this] { return !isHeld_; });
    --held_;
  }

  static constexpr float untouched = 12345.0F;

  const std::size_t latencyFrames_;
  mutable std::mutex mutex_;
  std::condition_variable closed_;
  std::condition_variable released_;
  Renderer* renderer_ = nullptr;
  std::optional<std::string> refusal_;
  bool failed_ = false;
  bool overran_ = false;
  bool isHeld_ = false;
  int held_ = 0;
  int opened_ = 0;
};

// A device whose thread renders continuously and shares no lock with other threads, so that only
// the code under test synchronises the accesses.
class RacingDevice final : public OutputDevice {
public:
  // A `pause` between blocks leaves the processor to others.
  explicit RacingDevice(std::chrono::microseconds pause = {}) : pause_(pause) {}
  ~RacingDevice() override { stop(); }

  std::optional<std::string> start(Renderer& renderer) override {
    thread_ = std::thread([this, &renderer] {
      std::vector<float> block(2 * 64);
      while (!stopping_.load(std::memory_order_relaxed)) {
        renderer.render(block.data(), 64);
        for (const float sample : block)
          if (!(sample >= -limit && sample <= limit))
            exceededLimits_.store(true, std::memory_order_relaxed);
        if (pause_.count() > 0)
          std::this_thread::sleep_for(pause_);
      }
    });
    return std::nullopt;
  }

  void stop() override {
    stopping_.store(true, std::memory_order_relaxed);
    if (thread_.joinable())
      thread_.join();
  }

  [[nodiscard]] bool failed() const override { return false; }
  [[nodiscard]] std::size_t latencyFrames() const override {
    return std::numeric_limits<std::size_t>::max();
  }

  // True if any device ever rendered a sample beyond ±2, or NaN.
  [[nodiscard]] static bool exceededLimits() { return exceededLimits_.load(); }

private:
  static constexpr float limit = 2.0F;
  static inline std::atomic<bool> exceededLimits_{false};

  const std::chrono::microseconds pause_;
  std::thread thread_;
  std::atomic<bool> stopping_{false};
};

} // namespace velto::kit
