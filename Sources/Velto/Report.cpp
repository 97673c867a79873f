#include "Report.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace velto {

namespace {

bool hasFailed = false;

std::string spaces(std::string_view text, std::size_t width) {
  return std::string(text.size() < width ? width - text.size() : 0, ' ');
}

// Whether the write may be tried again. A reader that has set its end not to block is waited for.
bool canRetry(int error) {
  if (error == EINTR)
    return true;
  if (error != EAGAIN)
    return false;
  pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
  return poll(&output, 1, -1) == 1 || errno == EINTR;
}

// 0, or the error number.
int writeWhole(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (written >= 0)
      bytes.remove_prefix(static_cast<std::size_t>(written));
    else if (const int error = errno; !canRetry(error))
      return error;
  }
  return 0;
}

// Opened for reading only: a write has to fail as it would on the closed stream.
void occupyIfClosed(int stream) {
  if (fcntl(stream, F_GETFD) >= 0)
    return;
  const int opened = open("/dev/null", O_RDONLY);
  if (opened >= 0 && opened != stream) {
    dup2(opened, stream);
    close(opened);
  }
}

} // namespace

void Report::prepareStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    occupyIfClosed(stream);
}

void Report::line(std::string_view text) {
  const int error = writeWhole(std::string(text) + '\n');
  if (error == 0 || hasFailed)
    return;
  hasFailed = true;
  const std::string message =
      std::string("Velto: the report cannot be written: ") + std::strerror(error) + '\n';
  [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, message.data(), message.size());
}

bool Report::isComplete() {
  return !hasFailed;
}

std::string Report::check(bool ok, std::string_view name, std::size_t nameWidth,
                          std::string_view detail) {
  std::string text = ok ? "  PASS  " : "  FAIL  ";
  text += leftAligned(name, nameWidth);
  text += "  ";
  text += detail;
  return text;
}

std::string Report::rightAligned(std::string_view text, std::size_t width) {
  return spaces(text, width).append(text);
}

std::string Report::leftAligned(std::string_view text, std::size_t width) {
  return std::string(text) + spaces(text, width);
}

} // namespace velto
