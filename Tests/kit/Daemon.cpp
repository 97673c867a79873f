#include "Daemon.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace velto::kit {

namespace {

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> list;
  for (std::string& text : texts)
    list.push_back(text.data());
  list.push_back(nullptr);
  return list;
}

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
  std::vector<std::string> words = arguments, variables = environmentWith(changes);
  const std::string log = deskFolder() + "/logs/" + words.at(0);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
    posix_spawn_file_actions_addopen(&actions, stream, log.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                     0600);
  const int error = posix_spawnp(&pid_, words[0].c_str(), &actions, nullptr, pointers(words).data(),
                                 pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0)
    throw std::runtime_error(words[0] + " cannot be started");
}

void Daemon::kill() {
  if (pid_ < 0)
    return;
  ::kill(pid_, SIGKILL);
  while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
  pid_ = -1;
}

void Daemon::freeze() {
  ::kill(pid_, SIGSTOP);
}

void Daemon::thaw() {
  ::kill(pid_, SIGCONT);
}

} // namespace velto::kit
