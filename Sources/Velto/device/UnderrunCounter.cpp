#include "UnderrunCounter.h"

#include "DSP.h"

#include <algorithm>

namespace velto {

namespace {

// Single writer.
void increment(std::atomic<std::uint64_t>& count) {
  count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_release);
}

} // namespace

void UnderrunCounter::begin(std::size_t bufferFrames) {
  bufferFrames_ = bufferFrames;
  callbacks_ = 0;
}

void UnderrunCounter::note(Time begin, Time end, std::size_t frames) noexcept {
  bufferFrames_ = std::max<std::uint64_t>(bufferFrames_, frames);
  increment(all_);
  if (++callbacks_ > 2) {
    const double played = sampleRateHz * std::chrono::duration<double>(end - lastBegin_).count();
    const auto buffer = static_cast<double>(bufferFrames_);
    if (played > 0.75 * buffer)
      increment(late_);
    if (played > buffer)
      increment(missed_);
  }
  lastBegin_ = begin;
}

CallbackCounts UnderrunCounter::counts() const {
  // The reverse order of the increments, so that missed does not exceed late, nor late all.
  CallbackCounts counts;
  counts.missed = missed_.load(std::memory_order_acquire);
  counts.late = late_.load(std::memory_order_acquire);
  counts.all = all_.load(std::memory_order_relaxed);
  return counts;
}

} // namespace velto
