#include "AudioEngine.h"

#include "DSP.h"

#include <algorithm>
#include <cmath>

namespace velto {

Engine::Engine(OutputDeviceFactory makeDevice, std::chrono::milliseconds closeDelay)
    : makeDevice_(std::move(makeDevice)), closeDelay_(closeDelay),
      closer_([this] { closeDevicesWhenDue(); }) {}

Engine::~Engine() {
  removeTap();
  stop();
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  wake_.notify_one();
  closer_.join();
}

std::optional<std::string> Engine::start() {
  const std::lock_guard lock(mutex_);
  isStarted_ = false;
  closeAt_.reset();
  if (device_ && device_->failed())
    closeDevice();
  if (!device_) {
    mixer_.publish(scene_); // closing made the mixer forget the tap
    auto device = makeDevice_();
    if (auto error = device->start(mixer_))
      return error;
    device_ = std::move(device);
  }
  isStarted_ = true;
  return std::nullopt;
}

bool Engine::isRunning() const {
  const std::lock_guard lock(mutex_);
  return isStarted_ && !device_->failed();
}

void Engine::play(std::vector<Slot> slots, std::int64_t chosen, double secondsToSound) {
  auto playback = std::make_unique<Playback>();
  const std::size_t count = std::min(slots.size(), playback->slots.size());
  std::move(slots.begin(), slots.begin() + static_cast<std::ptrdiff_t>(count),
            playback->slots.begin());

  const std::lock_guard lock(mutex_);
  const auto framesToSound =
      static_cast<std::uint64_t>(std::llround(secondsToSound * sampleRateHz));
  playback->startDelayFrames =
      framesToSound - std::min<std::uint64_t>(framesToSound, device_->latencyFrames());
  retire();
  playback_ = std::move(playback);
  scene_.playback = playback_.get();
  scene_.chosen = chosen;
  mixer_.publish(scene_);
  freeReleased();
}

void Engine::crossfadeTo(std::int64_t chosen) {
  scene_.chosen = chosen;
  ++scene_.ramp;
  mixer_.publish(scene_);
  const std::lock_guard lock(mutex_);
  freeReleased();
}

void Engine::stop() {
  if (!isStarted_)
    return;
  isStarted_ = false;
  {
    const std::lock_guard lock(mutex_);
    retire();
    mixer_.publish(scene_);
    freeReleased();
    closeAt_ = Clock::now() + closeDelay_;
  }
  wake_.notify_one();
}

float Engine::volume(std::size_t voice) const {
  return scene_.playback == nullptr ? 0 : mixer_.volume(voice, scene_.generation);
}

BusFormat Engine::outputFormat() {
  return {.sampleRateHz = sampleRateHz, .channelCount = 2};
}

void Engine::installTap(std::size_t bufferFrames, OutputTap::Block block) {
  removeTap();
  tap_ = std::make_unique<OutputTap>(outputFormat(), bufferFrames, std::move(block));
  scene_.tap = &tap_->ring();
  ++scene_.tapGeneration;
  mixer_.publish(scene_);
}

void Engine::removeTap() {
  if (!tap_)
    return;
  tap_->stop();
  const std::lock_guard lock(mutex_);
  retiredTaps_.emplace_back(scene_.tapGeneration, std::move(tap_));
  scene_.tap = nullptr;
  ++scene_.tapGeneration;
  mixer_.publish(scene_);
  freeReleased();
}

// Starts a new generation, with nothing to play yet.
void Engine::retire() {
  if (playback_)
    retired_.emplace_back(scene_.generation, std::move(playback_));
  scene_.playback = nullptr;
  ++scene_.generation;
}

void Engine::freeReleased() {
  const auto adopted = mixer_.adoptedGeneration();
  std::erase_if(retired_, [adopted](const auto& entry) { return entry.first < adopted; });
  // Without a device nobody renders, and the scene that waits names none of them.
  const auto adoptedTap = mixer_.adoptedTapGeneration();
  std::erase_if(retiredTaps_, [this, adoptedTap](const auto& entry) {
    return !device_ || entry.first < adoptedTap;
  });
}

void Engine::closeDevice() {
  device_->stop();
  device_.reset();
  mixer_.reset();
  retired_.clear();
  retiredTaps_.clear();
  closeAt_.reset();
}

void Engine::closeDevicesWhenDue() {
  std::unique_lock lock(mutex_);
  while (true) {
    wake_.wait(lock, [this] { return closeAt_ || isEnding_; });
    if (!closeAt_)
      return;
    const Clock::time_point due = *closeAt_;
    if (!wake_.wait_until(lock, due, [this, due] { return closeAt_ != due; }))
      closeDevice();
  }
}

} // namespace velto
