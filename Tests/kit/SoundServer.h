// Sound servers for tests that start, freeze and end them, on a desk without a server of its own.
#pragma once

#include <string>
#include <sys/types.h>

namespace velto::kit {

// The server that the desk would have started, at the same address. Failures throw
// std::runtime_error.
class SoundServer {
public:
  // Returns once the server answers.
  SoundServer();
  ~SoundServer() { kill(); }
  SoundServer(const SoundServer&) = delete;
  SoundServer& operator=(const SoundServer&) = delete;

  // Ends it with SIGKILL.
  void kill();

  // Stops the process until thaw(): connections stay open, but nothing answers.
  void freeze();
  void thaw();

private:
  pid_t pid_ = -1;
};

// Runs `pactl` with `arguments` and returns its output.
std::string pactl(const std::string& arguments);

} // namespace velto::kit
