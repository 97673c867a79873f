// Fake output devices that hang when they open or close, each until it is released.
#pragma once

#include "OutputDevice.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velto::kit {

// The test's side of all devices made by its factory, numbered from 0 in the order of their
// openings. Any thread. Devices may outlive it.
class HangingOutput {
public:
  ~HangingOutput() { releaseAll(); }

  [[nodiscard]] OutputDeviceFactory factory() {
    return [state = state_] { return std::make_unique<Device>(state); };
  }

  // Devices hang in openings, or closings, that begin from now on.
  void hangOpenings(bool hang) { set(state_->hangsOpening, hang); }
  void hangClosings(bool hang) { set(state_->hangsClosing, hang); }

  // Ends the hanging of one device, or of all.
  void release(std::size_t device) {
    const std::lock_guard lock(state_->mutex);
    state_->devices.at(device).isReleased = true;
    state_->changed.notify_all();
  }
  void releaseAll() {
    const std::lock_guard lock(state_->mutex);
    state_->hangsOpening = state_->hangsClosing = false;
    for (One& one : state_->devices)
      one.isReleased = true;
    state_->changed.notify_all();
  }

  // A better output becomes available.
  void offerBetter() { set(state_->isBetterThere, true); }

  // Devices that are being opened or closed.
  [[nodiscard]] int hanging() const { return get(state_->hanging); }
  // The largest number at a time so far.
  [[nodiscard]] int mostHanging() const { return get(state_->mostHanging); }
  [[nodiscard]] std::size_t openings() const {
    const std::lock_guard lock(state_->mutex);
    return state_->devices.size();
  }
  [[nodiscard]] bool isOpen(std::size_t device) const {
    const std::lock_guard lock(state_->mutex);
    return device < state_->devices.size() && state_->devices[device].renderer != nullptr;
  }

  // The left channel of the next block of a device; empty if it is not open.
  [[nodiscard]] std::vector<float> pull(std::size_t device, std::size_t frames) {
    const std::lock_guard lock(state_->mutex);
    Renderer* renderer = state_->devices.at(device).renderer;
    if (renderer == nullptr)
      return {};
    std::vector<float> block(2 * frames), left;
    renderer->render(block.data(), frames);
    for (std::size_t i = 0; i < block.size(); i += 2)
      left.push_back(block[i]);
    return left;
  }

private:
  struct One {
    bool isReleased = false;
    Renderer* renderer = nullptr; // between start and stop, even while it hangs
  };

  struct State {
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::vector<One> devices;
    bool hangsOpening = false, hangsClosing = false, isBetterThere = false;
    int hanging = 0, mostHanging = 0;

    void hang(std::unique_lock<std::mutex>& lock, std::size_t device) {
      mostHanging = std::max(mostHanging, ++hanging);
      changed.wait(lock, [&] { return devices[device].isReleased; });
      --hanging;
      devices[device].isReleased = false;
    }
  };

  class Device final : public OutputDevice {
  public:
    explicit Device(std::shared_ptr<State> state) : state_(std::move(state)) {}

    std::optional<std::string> start(Renderer& renderer) override {
      std::unique_lock lock(state_->mutex);
      number_ = state_->devices.size();
      state_->devices.push_back({.isReleased = false, .renderer = &renderer});
      if (state_->hangsOpening)
        state_->hang(lock, number_);
      return std::nullopt;
    }

    void stop() override {
      std::unique_lock lock(state_->mutex);
      if (state_->hangsClosing)
        state_->hang(lock, number_);
      state_->devices[number_].renderer = nullptr;
    }

    [[nodiscard]] bool failed() const override { return false; }
    [[nodiscard]] std::size_t latencyFrames() const override { return 0; }

    [[nodiscard]] bool isOutdone() override {
      const std::lock_guard lock(state_->mutex);
      return std::exchange(state_->isBetterThere, false);
    }

  private:
    const std::shared_ptr<State> state_;
    std::size_t number_ = 0;
  };

  void set(bool& value, bool to) {
    const std::lock_guard lock(state_->mutex);
    value = to;
  }
  [[nodiscard]] int get(const int& value) const {
    const std::lock_guard lock(state_->mutex);
    return value;
  }

  const std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace velto::kit
