#include "ProgramRunner.h"

#include "Processes.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace velto::kit {

namespace {

std::vector<std::string> environmentWith(const ProgramRunner::Environment& changes) {
  std::vector<std::string> entries;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!changes.contains(text.substr(0, text.find('='))))
      entries.push_back(text);
  }
  for (const auto& [name, value] : changes)
    if (value)
      entries.push_back(name + "=" + *value);
  return entries;
}

} // namespace

ProgramRunner::ProgramRunner(const std::string& program, std::vector<std::string> arguments,
                             const Environment& changes) {
  arguments.insert(arguments.begin(), program);
  Environment all = changes;
  all.emplace("VELTO_PROFILE_DIR", (scratch() / "profile").string());
  auto environment = environmentWith(all);

  startTime_ = std::chrono::steady_clock::now();
  pid_ = spawn(
      std::move(arguments),
      [&](auto& actions) {
        for (const auto& [descriptor, name] : {std::pair{1, "output"}, std::pair{2, "errors"}})
          posix_spawn_file_actions_addopen(&actions, descriptor, (scratch() / name).c_str(),
                                           O_WRONLY | O_CREAT | O_APPEND, 0600);
      },
      pointersTo(environment).data());
  pidFd_ = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
}

// NOLINTNEXTLINE(bugprone-exception-escape): as declared
ProgramRunner::~ProgramRunner() {
  if (!status_) {
    kill(pid_, SIGTERM);
    if (!reap(std::chrono::seconds(5))) {
      kill(pid_, SIGKILL);
      static_cast<void>(reap(std::chrono::seconds(60)));
    }
  }
  close(pidFd_);
}

std::filesystem::path ProgramRunner::profileFile() const {
  return scratch() / "profile" / "profile.json";
}

bool ProgramRunner::isRunning() {
  return !reap(std::chrono::milliseconds(0));
}

std::optional<int> ProgramRunner::waitForExit() {
  static_cast<void>(reap(std::chrono::seconds(20)));
  return status_;
}

void ProgramRunner::terminate() {
  if (!status_)
    kill(pid_, SIGTERM);
  if (!waitForExit())
    throw std::runtime_error("the program does not end");
}

std::string ProgramRunner::errors() const {
  return contentOf(scratch() / "errors");
}

std::string ProgramRunner::output() const {
  return contentOf(scratch() / "output");
}

bool ProgramRunner::reap(std::chrono::milliseconds patience) {
  if (status_)
    return true;
  pollfd ended{.fd = pidFd_, .events = POLLIN, .revents = 0};
  if (poll(&ended, 1, static_cast<int>(patience.count())) <= 0)
    return false;
  int status = 0;
  if (waitpid(pid_, &status, 0) != pid_)
    throw std::runtime_error("the program cannot be waited for");
  status_ = shellStatus(status);
  return true;
}

} // namespace velto::kit
