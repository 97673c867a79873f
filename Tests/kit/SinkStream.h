// What a PulseAudio sink plays, as it comes.
#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velto::kit {

// Listens to the monitor of a sink through `parec`, a process of its own, from construction on.
// What goes wrong is thrown as a std::runtime_error.
class SinkStream {
public:
  explicit SinkStream(const std::string& source = "velto_sink.monitor");
  // Ends the stream and waits for its process.
  ~SinkStream();

  SinkStream(const SinkStream&) = delete;
  SinkStream& operator=(const SinkStream&) = delete;

  // Waits for sound and appends it to `samples`: 32-bit floats at 48000 Hz, two channels
  // interleaved; half a frame may come with one call and its other half with the next. False when
  // the stream has ended. One thread at a time.
  bool read(std::vector<float>& samples);

  // Ends the stream: `read` gives what is still on its way. Any thread.
  void end();

private:
  pid_t child_ = -1;
  int pipe_ = -1;
  std::vector<char> block_;
  std::size_t kept_ = 0; // bytes at the front of block_ that are no whole sample yet
};

} // namespace velto::kit
