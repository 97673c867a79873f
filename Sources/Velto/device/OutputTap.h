// Hands the output of the mixer to a callback that need not be real-time safe.
#pragma once

#include "FrameRing.h"
#include "PlaybackEngine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <stop_token>
#include <thread>
#include <vector>

namespace velto {

// A part of the output, valid until the block returns.
struct TapBuffer {
  BusFormat format;
  std::array<std::span<const float>, 2> channels; // left, right; `bufferFrames` frames each
  std::uint64_t droppedFrames = 0;                // dropped so far because the block fell behind
};

// A ring that the audio thread fills, and a thread that delivers it in buffers of equal length. The
// audio thread never waits: if the block falls behind by more than the ring holds, frames are
// dropped and counted.
class OutputTap {
public:
  using Block = std::function<void(const TapBuffer&)>;

  // Starts the thread that will run `block`. Frames that do not fill a buffer are never delivered.
  OutputTap(const BusFormat& format, std::size_t bufferFrames, Block block);
  ~OutputTap() { stop(); }

  OutputTap(const OutputTap&) = delete;
  OutputTap& operator=(const OutputTap&) = delete;

  // When this returns, the block is not running and will not be called again. Must not be called by
  // the block. The ring stays valid.
  void stop();

  // For the audio thread to write to.
  [[nodiscard]] const std::shared_ptr<FrameRing>& ring() const { return ring_; }

private:
  void deliver(const std::stop_token& ending);

  const BusFormat format_;
  const Block block_;
  const std::shared_ptr<FrameRing> ring_;

  // Delivering thread only.
  std::vector<float> left_, right_;

  std::jthread thread_; // last: it uses all of the above
};

} // namespace velto
