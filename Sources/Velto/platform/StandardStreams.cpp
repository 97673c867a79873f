#include "StandardStreams.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace velto {

namespace {

// True if the write should be retried. Waits until a non-blocking output accepts more.
bool canRetry(int error) {
  if (error == EINTR)
    return true;
  if (error != EAGAIN)
    return false;
  pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
  return poll(&output, 1, -1) == 1 || errno == EINTR;
}

// Opens /dev/null for reading only: writes must fail, as on the closed stream.
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

void StandardStreams::prepare() {
  std::signal(SIGPIPE, SIG_IGN);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    occupyIfClosed(stream);
}

int StandardStreams::writeToOutput(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (written >= 0)
      bytes.remove_prefix(static_cast<std::size_t>(written));
    else if (const int error = errno; !canRetry(error))
      return error;
  }
  return 0;
}

void StandardStreams::writeToError(std::string_view bytes) {
  [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, bytes.data(), bytes.size());
}

bool StandardStreams::isErrorATerminal() {
  return isatty(STDERR_FILENO) == 1;
}

} // namespace velto
