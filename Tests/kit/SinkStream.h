// The sound that a PulseAudio sink plays, as a stream.
#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velto::kit {

// Reads the monitor of a sink from construction on, through a `parec` process. Failures throw
// std::runtime_error.
class SinkStream {
public:
  explicit SinkStream(const std::string& source = "velto_sink.monitor");
  // Ends the stream and waits for its process.
  ~SinkStream();

  SinkStream(const SinkStream&) = delete;
  SinkStream& operator=(const SinkStream&) = delete;

  // Waits for sound and appends it to `samples`: 32-bit floats at 48000 Hz, two channels
  // interleaved. A call may end within a frame. Returns false at the end of the stream. One thread
  // at a time.
  bool read(std::vector<float>& samples);

  // Ends the stream; read() still returns what is in transit. Any thread.
  void end();

private:
  pid_t child_ = -1;
  int pipe_ = -1;
  std::vector<char> block_;
  std::size_t kept_ = 0; // bytes at the front of block_ of an incomplete sample
};

} // namespace velto::kit
