#include "Recorder.h"

#include <algorithm>
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

// What no healthy server ever needs.
constexpr std::chrono::seconds patience{20};

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

Recorder::Recorder(const std::string& source) {
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
  reader_ = std::thread([this] { read(); });
  try {
    waitForMore(1);
  } catch (...) {
    stop();
    throw;
  }
}

Recorder::~Recorder() {
  if (reader_.joinable())
    stop();
}

std::size_t Recorder::frames() const {
  const std::lock_guard lock(mutex_);
  return samples_.size() / 2;
}

void Recorder::waitForMore(std::size_t count) {
  std::unique_lock lock(mutex_);
  const std::size_t wanted = samples_.size() / 2 + count;
  const auto enough = patience + std::chrono::seconds(count / 48000);
  more_.wait_for(lock, enough, [&] { return ended_ || samples_.size() / 2 >= wanted; });
  if (samples_.size() / 2 < wanted)
    throw std::runtime_error(ended_ ? "the recording ended by itself" : "no sound arrives");
}

Recording Recorder::recording() const {
  const std::lock_guard lock(mutex_);
  return Recording::fromInterleaved(samples_);
}

Recorder::Clock::time_point Recorder::arrival(std::size_t frame) const {
  const std::lock_guard lock(mutex_);
  const auto read = std::find_if(reads_.begin(), reads_.end(),
                                 [frame](const auto& entry) { return entry.first > frame; });
  if (read == reads_.end())
    throw std::runtime_error("the frame has not arrived");
  return read->second;
}

Recording Recorder::stop() {
  kill(child_, SIGTERM);
  reader_.join();
  while (waitpid(child_, nullptr, 0) < 0 && errno == EINTR) {
  }
  close(pipe_);
  return Recording::fromInterleaved(samples_);
}

void Recorder::read() {
  std::vector<char> bytes;
  std::array<char, 65536> block{};
  while (true) {
    const ssize_t count = ::read(pipe_, block.data(), block.size());
    if (count < 0 && errno == EINTR)
      continue;
    const std::lock_guard lock(mutex_);
    if (count <= 0) {
      ended_ = true;
      more_.notify_all();
      return;
    }
    bytes.insert(bytes.end(), block.begin(), block.begin() + count);
    const std::size_t whole = bytes.size() / sizeof(float);
    const std::size_t before = samples_.size();
    samples_.resize(before + whole);
    std::memcpy(samples_.data() + before, bytes.data(), whole * sizeof(float));
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(whole * sizeof(float)));
    reads_.emplace_back(samples_.size() / 2, Clock::now());
    more_.notify_all();
  }
}

} // namespace velto::kit
