#include "AudioEngine.h"

#include "DSP.h"

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace velto {

// What the main thread shares with the helper thread and the audio thread. It lives for as long as
// any of them may touch it.
class Engine::Shared final : public Renderer {
public:
  using Clock = std::chrono::steady_clock;
  enum class Phase { closed, opening, open, closing };

  Shared(OutputDeviceFactory makeDevice, std::chrono::milliseconds closeDelay)
      : closeDelay_(closeDelay), makeDevice_(std::move(makeDevice)) {}

  // Audio thread: no lock, no allocation, no system call (the clock is read without one).
  void render(float* interleaved, std::size_t frames) noexcept override {
    const auto begin = Clock::now();
    mixer.render(interleaved, frames);
    underruns.note(begin, Clock::now(), frames);
  }

  // Helper thread: opens and closes the device until the engine ends.
  void attend();

  // All of these hold `mutex`.
  [[nodiscard]] bool hasWorkingDevice() const { return phase == Phase::open && !device->failed(); }
  void closeLater();
  void retire(Scene& scene); // starts a new generation, with nothing to play yet
  void freeReleased();

  Mixer mixer;
  UnderrunCounter underruns;

  mutable std::mutex mutex;
  std::condition_variable wake;  // for the helper
  std::condition_variable ended; // for those who wait for it

  // Under the mutex, but for a device that is just being opened or closed: that is the helper's.
  Phase phase = Phase::closed;
  std::unique_ptr<OutputDevice> device;
  std::optional<std::string> error; // of the last opening
  bool isWanted = false;            // an opening is under way, or will be
  bool isAwaited = false;           // and somebody waits for its end
  std::function<void()> openingEnded;
  std::unique_ptr<const Playback> playback; // what the main thread's scene names
  std::vector<std::pair<std::uint32_t, std::unique_ptr<OutputTap>>> retiredTaps; // by generation
  std::optional<Clock::time_point> closeAt;
  bool isEnding = false, hasEnded = false;

private:
  using Lock = std::unique_lock<std::mutex>;

  [[nodiscard]] bool isDueToClose() const;
  void open(Lock& lock);
  void close(Lock& lock);
  void forgetDevice();

  const std::chrono::milliseconds closeDelay_;
  const OutputDeviceFactory makeDevice_;
  std::vector<std::pair<std::uint32_t, std::unique_ptr<const Playback>>> retired_; // by generation
};

// --- The helper thread ---------------------------------------------------------------------------

void Engine::Shared::attend() {
  Lock lock(mutex);
  while (true) {
    if (phase == Phase::open && isDueToClose())
      close(lock);
    else if (phase == Phase::closed && isWanted)
      open(lock);
    else if (phase == Phase::closed && isEnding)
      break;
    else if (const auto due = closeAt)
      wake.wait_until(lock, *due);
    else
      wake.wait(lock);
  }
  hasEnded = true;
  ended.notify_all();
}

bool Engine::Shared::isDueToClose() const {
  return (isWanted && device->failed()) || (closeAt && Clock::now() >= *closeAt);
}

void Engine::Shared::open(Lock& lock) {
  phase = Phase::opening;
  device = makeDevice_();
  underruns.begin(device->latencyFrames());
  lock.unlock();
  auto problem = device->start(*this);
  lock.lock();
  if (problem)
    forgetDevice();
  else
    phase = Phase::open;
  error = std::move(problem);
  if (isWanted && !isAwaited && openingEnded)
    openingEnded();
  isWanted = false;
  ended.notify_all();
}

void Engine::Shared::close(Lock& lock) {
  phase = Phase::closing;
  lock.unlock();
  device->stop();
  lock.lock();
  forgetDevice();
}

// Nobody renders any more.
void Engine::Shared::forgetDevice() {
  device.reset();
  phase = Phase::closed;
  mixer.reset();
  retired_.clear();
  retiredTaps.clear();
  closeAt.reset();
}

// --- Under the mutex -----------------------------------------------------------------------------

void Engine::Shared::closeLater() {
  isWanted = false;
  if (phase != Phase::closed && !closeAt)
    closeAt = Clock::now() + closeDelay_;
  wake.notify_one();
}

void Engine::Shared::retire(Scene& scene) {
  if (playback)
    retired_.emplace_back(scene.generation, std::move(playback));
  scene.playback = nullptr;
  ++scene.generation;
}

void Engine::Shared::freeReleased() {
  const auto adopted = mixer.adoptedGeneration();
  std::erase_if(retired_, [adopted](const auto& entry) { return entry.first < adopted; });
  // Without a device nobody renders, and the scene that waits names none of them.
  const auto adoptedTap = mixer.adoptedTapGeneration();
  std::erase_if(retiredTaps, [this, adoptedTap](const auto& entry) {
    return phase == Phase::closed || entry.first < adoptedTap;
  });
}

// --- The main thread -----------------------------------------------------------------------------

Engine::Engine(OutputDeviceFactory makeDevice, std::chrono::milliseconds closeDelay)
    : shared_(std::make_shared<Shared>(std::move(makeDevice), closeDelay)),
      helper_([shared = shared_] { shared->attend(); }) {}

Engine::~Engine() {
  removeTap();
  stop();
  std::unique_lock lock(shared_->mutex);
  shared_->isEnding = true;
  shared_->openingEnded = nullptr;
  shared_->wake.notify_one();
  const auto due = shared_->closeAt.value_or(Shared::Clock::now()) + endPatience;
  const bool ends = shared_->ended.wait_until(lock, due, [this] { return shared_->hasEnded; });
  lock.unlock();
  if (ends)
    helper_.join();
  else
    helper_.detach();
}

std::optional<std::string> Engine::start() {
  std::unique_lock lock(shared_->mutex);
  if (takeOpenDevice())
    return std::nullopt;
  askForDevice();
  shared_->isAwaited = true;
  shared_->ended.wait(lock, [this] { return !shared_->isWanted; });
  shared_->isAwaited = false;
  isStarted_ = !shared_->error;
  return shared_->error;
}

bool Engine::startAtOnce() {
  const std::lock_guard lock(shared_->mutex);
  if (takeOpenDevice())
    return true;
  askForDevice();
  return false;
}

// Holds the mutex.
bool Engine::takeOpenDevice() {
  isStarted_ = shared_->hasWorkingDevice();
  shared_->closeAt.reset();
  // Closing a device made the mixer forget the tap.
  shared_->mixer.publish(scene_);
  return isStarted_;
}

// Holds the mutex.
void Engine::askForDevice() {
  shared_->isWanted = true;
  shared_->error.reset();
  shared_->wake.notify_one();
}

void Engine::whenOpeningEnds(std::function<void()> call) {
  const std::lock_guard lock(shared_->mutex);
  shared_->openingEnded = std::move(call);
}

Engine::Output Engine::output() const {
  const std::lock_guard lock(shared_->mutex);
  if (shared_->isWanted)
    return Output::opening;
  return shared_->hasWorkingDevice() ? Output::open : Output::closed;
}

std::optional<std::string> Engine::error() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->error;
}

bool Engine::isRunning() const {
  const std::lock_guard lock(shared_->mutex);
  return isStarted_ && shared_->hasWorkingDevice();
}

void Engine::play(std::vector<Slot> slots, std::int64_t chosen, double secondsToSound,
                  Switching switching) {
  auto playback = std::make_unique<Playback>();
  playback->switching = switching;
  const std::size_t count = std::min(slots.size(), playback->slots.size());
  std::move(slots.begin(), slots.begin() + static_cast<std::ptrdiff_t>(count),
            playback->slots.begin());

  const std::lock_guard lock(shared_->mutex);
  const auto framesToSound =
      static_cast<std::uint64_t>(std::llround(secondsToSound * sampleRateHz));
  playback->startDelayFrames =
      framesToSound - std::min<std::uint64_t>(framesToSound, shared_->device->latencyFrames());
  shared_->retire(scene_);
  shared_->playback = std::move(playback);
  scene_.playback = shared_->playback.get();
  scene_.chosen = chosen;
  shared_->mixer.publish(scene_);
  shared_->freeReleased();
}

void Engine::crossfadeTo(std::int64_t chosen) {
  scene_.chosen = chosen;
  ++scene_.ramp;
  shared_->mixer.publish(scene_);
  const std::lock_guard lock(shared_->mutex);
  shared_->freeReleased();
}

void Engine::stop() {
  const std::lock_guard lock(shared_->mutex);
  if (isStarted_) {
    shared_->retire(scene_);
    shared_->mixer.publish(scene_);
    shared_->freeReleased();
  }
  isStarted_ = false;
  shared_->closeLater();
}

float Engine::volume(std::size_t voice) const {
  return scene_.playback == nullptr ? 0 : shared_->mixer.volume(voice, scene_.generation);
}

CallbackCounts Engine::callbackCounts() const {
  return shared_->underruns.counts();
}

BusFormat Engine::outputFormat() {
  return {.sampleRateHz = sampleRateHz, .channelCount = 2};
}

void Engine::installTap(std::size_t bufferFrames, OutputTap::Block block) {
  removeTap();
  tap_ = std::make_unique<OutputTap>(outputFormat(), bufferFrames, std::move(block));
  scene_.tap = &tap_->ring();
  ++scene_.tapGeneration;
  shared_->mixer.publish(scene_);
}

void Engine::removeTap() {
  if (!tap_)
    return;
  tap_->stop();
  const std::lock_guard lock(shared_->mutex);
  shared_->retiredTaps.emplace_back(scene_.tapGeneration, std::move(tap_));
  scene_.tap = nullptr;
  ++scene_.tapGeneration;
  shared_->mixer.publish(scene_);
  shared_->freeReleased();
}

} // namespace velto
