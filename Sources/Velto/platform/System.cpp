// POSIX.
#include "System.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <locale.h>
#include <poll.h>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

namespace velto {

namespace {

// The C locale for this thread, while it lives.
class CLocale {
public:
  CLocale() : previous_(uselocale(classic())) {}
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;
  ~CLocale() { uselocale(previous_); }

private:
  static locale_t classic() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
  }

  locale_t previous_;
};

// Whether the write may be tried again. A reader that has set its end not to block is waited for.
bool canRetry(int error) {
  if (error == EINTR)
    return true;
  if (error != EAGAIN)
    return false;
  pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
  return poll(&output, 1, -1) == 1 || errno == EINTR;
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

std::optional<std::string> System::accountHome() {
  const passwd* account = getpwuid(getuid());
  if (account == nullptr || account->pw_dir == nullptr)
    return std::nullopt;
  return account->pw_dir;
}

void System::setVariable(const char* name, const std::optional<std::string>& value) {
  if (value)
    setenv(name, value->c_str(), 1);
  else
    unsetenv(name);
}

std::filesystem::path System::temporaryDirectory() {
  std::error_code error;
  auto directory = std::filesystem::temp_directory_path(error);
  return error ? "/tmp" : directory;
}

void System::readTimeZone() {
  tzset();
}

std::optional<std::tm> System::localTime(std::time_t time) {
  std::tm fields{};
  if (localtime_r(&time, &fields) == nullptr)
    return std::nullopt;
  return fields;
}

void System::runInCLocale(const std::function<void()>& work) {
  const CLocale cLocale;
  work();
}

void System::prepareStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    occupyIfClosed(stream);
}

int System::writeToOutput(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (written >= 0)
      bytes.remove_prefix(static_cast<std::size_t>(written));
    else if (const int error = errno; !canRetry(error))
      return error;
  }
  return 0;
}

void System::writeToError(std::string_view bytes) {
  [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, bytes.data(), bytes.size());
}

} // namespace velto
