#include "SinkStream.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace velto::kit {

namespace {

void check(int error, const char* what) {
  if (error != 0)
    throw std::runtime_error(std::string(what) + ": " + std::generic_category().message(error));
}

pid_t spawn(std::vector<std::string> words, int output) {
  std::vector<char*> arguments;
  for (std::string& word : words)
    arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  check(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  pid_t child = -1;
  const int error =
      posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  check(error, arguments[0]);
  return child;
}

} // namespace

SinkStream::SinkStream(const std::string& source) : block_(65536) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0)
    check(errno, "pipe");
  pipe_ = ends[0];
  try {
    child_ = spawn({"parec", "-d", source, "--raw", "--format=float32le", "--rate=48000",
                    "--channels=2", "--latency-msec=20"},
                   ends[1]);
  } catch (...) {
    close(ends[0]);
    close(ends[1]);
    throw;
  }
  close(ends[1]);
}

SinkStream::~SinkStream() {
  end();
  while (waitpid(child_, nullptr, 0) < 0 && errno == EINTR) {
  }
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
