// The line that says how far a command has got.
#include "Console.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>

namespace velto {
namespace {

using Lab::Progress;
using namespace std::chrono_literals;

// Makes a terminal of standard error while it exists.
class Terminal {
public:
  Terminal() : own_(::posix_openpt(O_RDWR | O_NOCTTY)), earlier_(::dup(STDERR_FILENO)) {
    ::grantpt(own_);
    ::unlockpt(own_);
    const int theirs = ::open(::ptsname(own_), O_RDWR | O_NOCTTY);
    ::dup2(theirs, STDERR_FILENO);
    ::close(theirs);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() {
    ::dup2(earlier_, STDERR_FILENO);
    ::close(earlier_);
    ::close(own_);
  }

  // What has been written so far.
  [[nodiscard]] std::string text() const {
    std::string text;
    pollfd input{.fd = own_, .events = POLLIN, .revents = 0};
    while (::poll(&input, 1, 0) == 1 && (input.revents & POLLIN) != 0) {
      std::array<char, 256> bytes{};
      const ssize_t count = ::read(own_, bytes.data(), bytes.size());
      if (count <= 0)
        break;
      text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return text;
  }

private:
  int own_, earlier_;
};

TEST(LabProgress, IsShownOnATerminalAndRemoved) {
  const Terminal terminal;
  {
    Progress progress("rendering", 82, 0ms);
    progress.advance();
    EXPECT_EQ(terminal.text(), "\r\x1b[Krendering: 1 of 82");
  }
  EXPECT_EQ(terminal.text(), "\r\x1b[K");
}

TEST(LabProgress, IsNotShownForWhatTakesNoTime) {
  const Terminal terminal;
  {
    Progress progress("rendering", 2, 1h);
    progress.advance();
    progress.advance();
  }
  EXPECT_EQ(terminal.text(), "");
}

TEST(LabProgress, WritesNoMoreThanTheEyeSees) {
  const Terminal terminal;
  Progress progress("rendering", 2, 0ms);
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 1000; ++i)
    progress.advance();
  const auto lines = std::chrono::steady_clock::now() - begin;
  const std::string text = terminal.text();
  EXPECT_LE(std::count(text.begin(), text.end(), '\r'), 1 + lines / 100ms) << text;
}

TEST(LabProgress, IsNotShownElsewhere) {
  ::testing::internal::CaptureStderr();
  {
    Progress progress("rendering", 2, 0ms);
    progress.advance();
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

} // namespace
} // namespace velto
