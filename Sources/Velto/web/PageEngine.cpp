#include "PageEngine.h"

#include <algorithm>
#include <cmath>

namespace velto {

void PageEngine::opened(double latencySeconds) {
  output_ = Output::open;
  error_.reset();
  latencySeconds_ = std::isfinite(latencySeconds) ? std::max(latencySeconds, 0.0) : 0;
  if (openingEnds_)
    openingEnds_();
}

void PageEngine::failed(std::string reason) {
  output_ = Output::closed;
  error_ = std::move(reason);
  isStarted_ = false;
  if (openingEnds_)
    openingEnds_();
}

std::optional<std::string> PageEngine::start() {
  if (startAtOnce())
    return std::nullopt;
  return "the browser has not opened the output yet";
}

bool PageEngine::startAtOnce() {
  if (output_ == Output::closed) {
    output_ = Output::opening;
    error_.reset();
    host_.openSound();
  }
  isStarted_ = output_ == Output::open;
  return isStarted_;
}

void PageEngine::play(std::vector<Slot> slots, std::int64_t chosen, double secondsToSound,
                      Switching switching) {
  const double seconds = std::max(secondsToSound - latencySeconds_, 0.0);
  host_.play(slots, chosen, static_cast<std::uint64_t>(std::llround(seconds * sampleRateHz)),
             switching);
}

void PageEngine::stop() {
  if (isStarted_)
    host_.silence();
  isStarted_ = false;
}

BusFormat PageEngine::outputFormat() const {
  return {.sampleRateHz = sampleRateHz, .channelCount = 2};
}

} // namespace velto
