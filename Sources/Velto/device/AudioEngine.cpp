#include "AudioEngine.h"

#include "Mixer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <utility>

namespace velto {

// The renderer of the device: the mixer, with a count of underruns.
class Engine::Source final : public StreamRenderer {
public:
  void streamBegins(std::size_t latencyFrames) override {
    const std::lock_guard lock(mutex_);
    isStreaming_ = true;
    underruns.begin(latencyFrames);
  }

  void streamEnded() override {
    const std::lock_guard lock(mutex_);
    isStreaming_ = false;
    mixer.releaseAllButLatest();
  }

  // Reading the steady clock is not a system call: the vDSO does it in user space.
  void render(float* interleaved, std::size_t frames) noexcept override {
    const auto begin = std::chrono::steady_clock::now();
    mixer.render(interleaved, frames);
    underruns.note(begin, std::chrono::steady_clock::now(), frames);
  }

  // Main thread.
  void publish(Scene scene) {
    const std::lock_guard lock(mutex_);
    mixer.publish(std::move(scene));
    if (!isStreaming_)
      mixer.releaseAllButLatest();
  }

  Mixer mixer;
  UnderrunCounter underruns;

private:
  std::mutex mutex_; // serialises publications and stream changes; the audio thread never takes it
  bool isStreaming_ = false;
};

Engine::Engine(OutputDeviceFactory makeDevice, std::chrono::milliseconds closeDelay,
               const DeviceThread::Limits& limits)
    : source_(std::make_shared<Source>()),
      deviceThread_(std::move(makeDevice), source_, closeDelay, limits) {}

Engine::~Engine() {
  removeTap();
  stop();
}

std::optional<std::string> Engine::start() {
  isStarted_ = deviceThread_.keepOpen();
  if (isStarted_)
    return std::nullopt;
  beginStream();
  auto error = deviceThread_.openAndWait();
  isStarted_ = !error;
  return error;
}

bool Engine::startAtOnce() {
  isStarted_ = deviceThread_.keepOpen();
  if (!isStarted_) {
    beginStream();
    isStarted_ = deviceThread_.open();
  }
  return isStarted_;
}

void Engine::whenOpeningEnds(std::function<void()> call) {
  deviceThread_.whenOpeningEnds(std::move(call));
}

Engine::Output Engine::output() const {
  if (deviceThread_.isOpening())
    return Output::opening;
  return deviceThread_.isOpen() ? Output::open : Output::closed;
}

std::optional<std::string> Engine::error() const {
  return deviceThread_.error();
}

bool Engine::isRunning() const {
  return isStarted_ && deviceThread_.isOpen();
}

void Engine::play(std::vector<Slot> slots, std::int64_t chosen, double secondsToSound,
                  Switching switching) {
  const auto framesToSound =
      static_cast<std::uint64_t>(std::llround(secondsToSound * sampleRateHz));
  control_.play(std::move(slots), chosen,
                framesToSound -
                    std::min<std::uint64_t>(framesToSound, deviceThread_.latencyFrames()),
                switching);
  publish();
}

void Engine::switchTo(std::int64_t chosen) {
  control_.switchTo(chosen);
  publish();
}

void Engine::stop() {
  if (isStarted_) {
    control_.silence();
    publish();
  }
  isStarted_ = false;
  deviceThread_.closeLater();
}

float Engine::volume(std::size_t slot) const {
  return source_->mixer.volume(slot, control_.scene().load);
}

BusFormat Engine::outputFormat() const {
  return {.sampleRateHz = sampleRateHz, .channelCount = 2};
}

Samples Engine::captureLeft(std::chrono::milliseconds duration) {
  constexpr std::size_t bufferFrames = 4096;
  std::mutex mutex;
  Samples captured; // under mutex while the tap is installed
  const auto end = std::chrono::steady_clock::now() + duration;
  installTap(bufferFrames, [&mutex, &captured](const TapBuffer& buffer) {
    const auto left = buffer.channels.front();
    const std::lock_guard lock(mutex);
    captured.insert(captured.end(), left.begin(), left.end());
  });
  std::this_thread::sleep_until(end);
  removeTap();
  const std::lock_guard lock(mutex);
  return captured;
}

CallbackCounts Engine::callbackCounts() const {
  return source_->underruns.counts();
}

void Engine::installTap(std::size_t bufferFrames, OutputTap::Block block) {
  removeTap();
  tap_ = std::make_unique<OutputTap>(outputFormat(), bufferFrames, std::move(block));
  control_.setTap(tap_->ring());
  publish();
}

void Engine::removeTap() {
  if (!tap_)
    return;
  tap_->stop();
  tap_.reset();
  control_.setTap(nullptr);
  publish();
}

void Engine::publish() {
  source_->publish(control_.scene());
}

// Starts a new stream, silent, for the device that will be opened.
void Engine::beginStream() {
  control_.beginStream();
  publish();
}

} // namespace velto
