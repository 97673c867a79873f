#include "OutputTap.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace velto {

namespace {

// The audio thread signals nothing, so the ring is polled. The ring holds far more than arrives
// between two polls: at least a second of audio and at least `leastBuffers` buffers.
constexpr std::chrono::milliseconds pollInterval{10};

std::size_t capacityFor(const BusFormat& format, std::size_t bufferFrames) {
  constexpr std::size_t leastBuffers = 16;
  return std::max(static_cast<std::size_t>(format.sampleRateHz), leastBuffers * bufferFrames);
}

} // namespace

OutputTap::OutputTap(const BusFormat& format, std::size_t bufferFrames, Block block)
    : format_(format), block_(std::move(block)),
      ring_(std::make_shared<FrameRing>(capacityFor(format, bufferFrames))), left_(bufferFrames),
      right_(bufferFrames), thread_([this](const std::stop_token& ending) { deliver(ending); }) {}

void OutputTap::stop() {
  thread_.request_stop();
  if (thread_.joinable())
    thread_.join();
}

void OutputTap::deliver(const std::stop_token& ending) {
  std::mutex mutex;
  std::condition_variable_any wake; // notified only by a stop request
  std::unique_lock lock(mutex);
  while (!ending.stop_requested()) {
    while (!ending.stop_requested() && ring_->read(left_.data(), right_.data(), left_.size()))
      block_({format_, {left_, right_}, ring_->droppedFrames()});
    wake.wait_for(lock, ending, pollInterval, [] { return false; });
  }
}

} // namespace velto
