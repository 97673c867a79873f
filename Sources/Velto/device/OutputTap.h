// Hands what the mixer puts out to a listener that may take its time.
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

// A stretch of the output, valid while the block that got it runs.
struct TapBuffer {
  BusFormat format;
  std::array<std::span<const float>, 2> channels; // left, right: the tap's count of frames each
  std::uint64_t droppedFrames = 0;                // lost so far, because the block could not follow
};

// A ring that the audio thread fills, and a thread that empties it in buffers of equal length,
// frame by frame as they were rendered. The audio thread never waits for the block: when the block
// stays behind by more than the ring holds, frames are dropped and counted.
class OutputTap {
public:
  using Block = std::function<void(const TapBuffer&)>;

  // Starts the thread that will run `block`. Frames that do not fill a buffer are never delivered.
  OutputTap(const BusFormat& format, std::size_t bufferFrames, Block block);
  ~OutputTap() { stop(); }

  OutputTap(const OutputTap&) = delete;
  OutputTap& operator=(const OutputTap&) = delete;

  // The block is not running and will not be called again when this returns; not to be called by
  // the block itself. The ring stays.
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
