#include "SinkStream.h"

#include "Processes.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace velto::kit {

SinkStream::SinkStream(const std::string& source) : block_(65536) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0)
    throw std::runtime_error("no pipe");
  pipe_ = ends[0];
  try {
    child_ = spawn(
        {"parec", "-d", source, "--raw", "--format=float32le", "--rate=48000", "--channels=2",
         "--latency-msec=20"},
        [&](auto& actions) { posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO); });
  } catch (...) {
    close(ends[0]);
    close(ends[1]);
    throw;
  }
  close(ends[1]);
}

SinkStream::~SinkStream() {
  end();
  waitForEnd(child_);
  close(pipe_);
}

void SinkStream::end() {
  kill(child_, SIGTERM);
}

bool SinkStream::read(std::vector<float>& samples) {
  ssize_t count = -1;
  do
    count = ::read(pipe_, block_.data() + kept_, block_.size() - kept_);
  while (count < 0 && errno == EINTR);
  if (count <= 0)
    return false;
  const std::size_t bytes = kept_ + static_cast<std::size_t>(count);
  const std::size_t whole = bytes / sizeof(float);
  const std::size_t before = samples.size();
  samples.resize(before + whole);
  std::memcpy(samples.data() + before, block_.data(), whole * sizeof(float));
  kept_ = bytes % sizeof(float);
  std::memmove(block_.data(), block_.data() + whole * sizeof(float), kept_);
  return true;
}

} // namespace velto::kit
