// Records what a PulseAudio sink plays, frame by frame.
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
// clock: waiting for them waits for the sink's real time.
//
// All functions are called by one thread. What goes wrong is thrown as a std::runtime_error.
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

  // Returns when `count` more frames than now have arrived.
  void waitForMore(std::size_t count);

  // What has arrived so far.
  [[nodiscard]] Recording recording() const;

  // When `frame` was here at the latest. It was played earlier, by the recorder's latency.
  [[nodiscard]] Clock::time_point arrival(std::size_t frame) const;

  // Ends the recording and returns the whole of it.
  Recording stop();

private:
  void read();

  SinkStream stream_;
  mutable std::mutex mutex_;
  std::condition_variable more_;
  std::vector<float> samples_;                                   // under mutex_; interleaved
  std::vector<std::pair<std::size_t, Clock::time_point>> reads_; // under mutex_; frames by then
  bool ended_ = false;                                           // under mutex_
  std::thread reader_;
};

} // namespace velto::kit
