// Records what a PulseAudio sink plays.
#pragma once

#include "Recording.h"
#include "SinkStream.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace velto::kit {

// Records the monitor of a sink from construction to `stop`. The recorded frames are the test's
// clock: waiting for frames waits for the sink's real time.
//
// Call all functions from one thread. Failures throw std::runtime_error.
class Recorder {
public:
  using Clock = std::chrono::steady_clock;

  // Returns once the first frames have arrived.
  explicit Recorder(const std::string& source = "velto_sink.monitor");
  ~Recorder();

  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  // Frames that have arrived so far.
  [[nodiscard]] std::size_t frames() const;

  // Waits until `count` more frames have arrived.
  void waitForMore(std::size_t count);

  // Everything that has arrived so far.
  [[nodiscard]] Recording recording() const;

  // What has arrived so far, from `frame`.
  [[nodiscard]] Recording since(std::size_t frame) const;

  // Upper bound of the arrival time of `frame`. It was played earlier, by the recorder's latency.
  [[nodiscard]] Clock::time_point arrival(std::size_t frame) const;

  // Ends the recording and returns all of it.
  Recording stop();

private:
  void read();

  SinkStream stream_;
  mutable std::mutex mutex_;
  std::condition_variable more_;
  std::vector<float> samples_;                                   // guarded by mutex_; interleaved
  std::vector<std::pair<std::size_t, Clock::time_point>> reads_; // guarded by mutex_; frames so far
  bool ended_ = false;                                           // guarded by mutex_
  std::thread reader_;
};

} // namespace velto::kit
