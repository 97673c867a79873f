// A server that a test runs.
#pragma once

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velto::kit {

// A process on a private desk. The destructor kills it, so it does not outlive a test. Its output
// goes to a log of the desk. Failures throw std::runtime_error.
class Daemon {
public:
  // `arguments`: the program, found on PATH, first. `changes` to the environment.
  explicit Daemon(const std::vector<std::string>& arguments,
                  const std::map<std::string, std::string>& changes = {});
  ~Daemon() { kill(); }
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  // Ends it with SIGKILL.
  void kill();
  // Ends it with SIGTERM, after 5 s with SIGKILL.
  void end();

  // Stops the process until thaw(): connections stay open, but nothing answers.
  void freeze();
  void thaw();

private:
  pid_t pid_ = -1;
};

// The folder of the desk.
[[nodiscard]] std::string deskFolder();

} // namespace velto::kit
