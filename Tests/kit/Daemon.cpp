#include "Daemon.h"

#include "Eventually.h"
#include "Processes.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace velto::kit {

namespace {

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& changes) {
  std::vector<std::string> entries;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!changes.contains(text.substr(0, text.find('='))))
      entries.push_back(text);
  }
  for (const auto& [name, value] : changes)
    entries.push_back(name + "=" + value);
  return entries;
}

} // namespace

std::string deskFolder() {
  const char* desk = std::getenv("VELTO_DESK");
  if (desk == nullptr)
    throw std::runtime_error("run on a private desk");
  return desk;
}

Daemon::Daemon(const std::vector<std::string>& arguments,
               const std::map<std::string, std::string>& changes) {
  const std::string log = deskFolder() + "/logs/" + arguments.at(0);
  std::vector<std::string> variables = environmentWith(changes);
  pid_ = spawn(
      arguments,
      [&log](auto& actions) {
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
          posix_spawn_file_actions_addopen(&actions, stream, log.c_str(),
                                           O_WRONLY | O_CREAT | O_APPEND, 0600);
      },
      pointersTo(variables).data());
}

void Daemon::kill() {
  if (pid_ < 0)
    return;
  ::kill(pid_, SIGKILL);
  waitForEnd(pid_);
  pid_ = -1;
}

void Daemon::end() {
  if (pid_ < 0)
    return;
  ::kill(pid_, SIGTERM);
  ::kill(pid_, SIGCONT);
  if (eventually([this] { return ::waitpid(pid_, nullptr, WNOHANG) == pid_; },
                 std::chrono::seconds(5)))
    pid_ = -1;
  kill();
}

void Daemon::freeze() {
  ::kill(pid_, SIGSTOP);
}

void Daemon::thaw() {
  ::kill(pid_, SIGCONT);
}

} // namespace velto::kit
