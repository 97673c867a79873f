// Records when each answer was acknowledged, in a file that two processes map. The file is not on
// the disk whose power is cut.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stdexcept>

namespace velto::testing {

class AnswerLog {
public:
  using Clock = std::chrono::steady_clock; // the same in all processes
  static constexpr std::size_t most = 100000;

  // Maps `file`; creates it if needed. Throws std::runtime_error.
  explicit AnswerLog(const std::filesystem::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0 || ::ftruncate(descriptor, sizeof(Content)) != 0)
      throw std::runtime_error("cannot create the log of answers");
    place_ = ::mmap(nullptr, sizeof(Content), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    ::close(descriptor);
    if (place_ == MAP_FAILED)
      throw std::runtime_error("cannot map the log of answers");
    content_ = static_cast<Content*>(place_);
  }
  AnswerLog(const AnswerLog&) = delete;
  AnswerLog& operator=(const AnswerLog&) = delete;
  ~AnswerLog() { ::munmap(place_, sizeof(Content)); }

  // Sets the number of answers in the record when the program started.
  void start(std::int64_t answers) { content_->before = answers + 1; }

  // Adds an answer that is acknowledged now.
  void acknowledge() {
    const std::size_t count = content_->count;
    content_->times.at(count) = Clock::now().time_since_epoch().count();
    content_->count = count + 1;
  }

  // Answers before the start, or -1 if the program has not started.
  [[nodiscard]] std::int64_t before() const { return content_->before - 1; }

  // The number of answers that were acknowledged by `moment`, with those before the start.
  [[nodiscard]] std::int64_t acknowledgedBy(Clock::time_point moment) const {
    std::size_t count = content_->count;
    while (count > 0 && timeOf(count - 1) > moment)
      --count;
    return before() + static_cast<std::int64_t>(count);
  }

  // When an answer was acknowledged. The first one after the start has the number before().
  [[nodiscard]] Clock::time_point timeOfAnswer(std::int64_t number) const {
    return timeOf(static_cast<std::size_t>(number - before()));
  }

private:
  // All zero in a new file.
  struct Content {
    std::atomic<std::int64_t> before; // plus one, 0 until the start
    std::atomic<std::size_t> count;
    std::array<Clock::rep, most> times;
  };
  static_assert(std::atomic<std::size_t>::is_always_lock_free);

  [[nodiscard]] Clock::time_point timeOf(std::size_t index) const {
    return Clock::time_point(Clock::duration(content_->times.at(index)));
  }

  void* place_ = nullptr;
  Content* content_ = nullptr;
};

} // namespace velto::testing
