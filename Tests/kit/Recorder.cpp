#include "Recorder.h"

#include <algorithm>
#include <stdexcept>

namespace velto::kit {

namespace {

// More than any healthy server needs.
constexpr std::chrono::seconds patience{20};

} // namespace

Recorder::Recorder(const std::string& source) : stream_(source) {
  reader_ = std::thread([this] { read(); });
  try {
    waitForMore(1);
  } catch (...) {
    stop();
    throw;
  }
}

Recorder::~Recorder() {
  if (reader_.joinable())
    stop();
}

std::size_t Recorder::frames() const {
  const std::lock_guard lock(mutex_);
  return samples_.size() / 2;
}

void Recorder::waitForMore(std::size_t count) {
  std::unique_lock lock(mutex_);
  const std::size_t wanted = samples_.size() / 2 + count;
  const auto enough = patience + std::chrono::seconds(count / 48000);
  more_.wait_for(lock, enough, [&] { return ended_ || samples_.size() / 2 >= wanted; });
  if (samples_.size() / 2 < wanted)
    throw std::runtime_error(ended_ ? "the recording ended by itself" : "no sound arrives");
}

Recording Recorder::recording() const {
  const std::lock_guard lock(mutex_);
  return Recording::fromInterleaved(samples_);
}

Recording Recorder::since(std::size_t frame) const {
  const std::lock_guard lock(mutex_);
  const auto begin = samples_.begin() + static_cast<std::ptrdiff_t>(2 * frame);
  return Recording::fromInterleaved({begin, samples_.end()});
}

Recorder::Clock::time_point Recorder::arrival(std::size_t frame) const {
  const std::lock_guard lock(mutex_);
  const auto read = std::find_if(reads_.begin(), reads_.end(),
                                 [frame](const auto& entry) { return entry.first > frame; });
  if (read == reads_.end())
    throw std::runtime_error("the frame has not arrived");
  return read->second;
}

Recording Recorder::stop() {
  stream_.end();
  reader_.join();
  return Recording::fromInterleaved(samples_);
}

void Recorder::read() {
  std::vector<float> block;
  while (stream_.read(block)) {
    const std::lock_guard lock(mutex_);
    samples_.insert(samples_.end(), block.begin(), block.end());
    block.clear();
    reads_.emplace_back(samples_.size() / 2, Clock::now());
    more_.notify_all();
  }
  const std::lock_guard lock(mutex_);
  ended_ = true;
  more_.notify_all();
}

} // namespace velto::kit
