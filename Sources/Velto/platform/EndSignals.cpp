#include "EndSignals.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace velto {

namespace {

int readEnd = -1;
int writeEnd = -1; // written before the handlers are installed, read by them
int first = 0;

// Async-signal-safe.
void pass(int signal) {
  const int error = errno;
  const auto byte = static_cast<unsigned char>(signal);
  [[maybe_unused]] const ssize_t ignored = write(writeEnd, &byte, 1);
  errno = error;
}

} // namespace

int EndSignals::hold() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
    return -1;
  readEnd = ends[0];
  writeEnd = ends[1];
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
      continue;
    action = {};
    action.sa_handler = pass;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
  }
  return readEnd;
}

int EndSignals::received() {
  unsigned char byte = 0;
  if (first == 0 && readEnd >= 0 && read(readEnd, &byte, 1) == 1)
    first = byte;
  return first;
}

int EndSignals::waitUntil(std::chrono::steady_clock::time_point time) {
  using Clock = std::chrono::steady_clock;
  for (auto now = Clock::now(); received() == 0 && now < time; now = Clock::now()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - now);
    pollfd waiting{.fd = readEnd, .events = POLLIN, .revents = 0};
    poll(&waiting, 1,
         static_cast<int>(std::min<std::chrono::milliseconds::rep>(left.count(), 60'000)));
  }
  return first;
}

} // namespace velto
