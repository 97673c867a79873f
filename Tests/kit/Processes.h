// Starts and reaps child processes.
#pragma once

#include <cerrno>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace velto::kit {

// A status from waitpid() as in a shell: the exit status, or 128 + n if signal n ended the process.
[[nodiscard]] inline int shellStatus(int status) {
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// Waits until a child ends. Returns its status as in a shell.
inline int waitForEnd(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return shellStatus(status);
}

// Pointers to `texts`, and a null pointer at the end.
[[nodiscard]] inline std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts)
    pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Starts a program (`words[0]`, searched in PATH) after `redirect(actions)` has added file actions.
// Throws std::runtime_error.
template <typename Redirect>
[[nodiscard]] pid_t spawn(std::vector<std::string> words, Redirect redirect,
                          char* const* environment = environ) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  redirect(actions);
  pid_t child = -1;
  const int error = posix_spawnp(&child, words[0].c_str(), &actions, nullptr,
                                 pointersTo(words).data(), environment);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0)
    throw std::runtime_error(words[0] + ": " + std::generic_category().message(error));
  return child;
}

} // namespace velto::kit
