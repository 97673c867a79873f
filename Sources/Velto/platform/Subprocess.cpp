#include "Subprocess.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace velto {

namespace {

using Clock = std::chrono::steady_clock;

std::optional<pid_t> start(std::vector<std::string>& arguments) {
  std::vector<char*> words;
  words.reserve(arguments.size() + 1);
  for (std::string& argument : arguments)
    words.push_back(argument.data());
  words.push_back(nullptr);
  posix_spawn_file_actions_t streams;
  posix_spawn_file_actions_init(&streams);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    posix_spawn_file_actions_addopen(&streams, stream, "/dev/null", O_RDWR, 0);
  pid_t child = -1;
  const int error = posix_spawn(&child, words[0], &streams, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&streams);
  return error == 0 ? std::optional(child) : std::nullopt;
}

// The status of waitpid(); nullopt while the child runs. A child that cannot be waited for counts
// as killed.
std::optional<int> ended(pid_t child, int options) {
  int status = 0;
  pid_t found = -1;
  do
    found = waitpid(child, &status, options);
  while (found < 0 && errno == EINTR);
  if (found == 0)
    return std::nullopt;
  return found == child ? status : W_EXITCODE(0, SIGKILL);
}

} // namespace

std::optional<int> Subprocess::run(std::vector<std::string> arguments,
                                   std::chrono::milliseconds patience) {
  constexpr std::chrono::milliseconds interval{5};
  const auto child = start(arguments);
  if (!child)
    return std::nullopt;
  const auto deadline = Clock::now() + patience;
  std::optional<int> status;
  while (!(status = ended(*child, WNOHANG)) && Clock::now() < deadline)
    std::this_thread::sleep_for(interval);
  if (!status) {
    kill(*child, SIGKILL);
    status = ended(*child, 0);
  }
  return WIFEXITED(*status) ? std::optional(WEXITSTATUS(*status)) : std::nullopt;
}

void Subprocess::endAfter(std::chrono::seconds time) {
  alarm(static_cast<unsigned>(time.count()));
}

std::string Subprocess::ownPath() {
  return "/proc/self/exe";
}

} // namespace velto
