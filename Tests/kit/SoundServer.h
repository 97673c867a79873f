// Sound servers for tests that start, freeze and end them: for a desk without one of its own.
#pragma once

#include <string>
#include <sys/types.h>

namespace velto::kit {

// The server that the desk would have started, at the address that the programs on the desk look
// at. What goes wrong is thrown as a std::runtime_error.
class SoundServer {
public:
  // Returns once it answers.
  SoundServer();
  ~SoundServer() { kill(); }
  SoundServer(const SoundServer&) = delete;
  SoundServer& operator=(const SoundServer&) = delete;

  // Ends it without giving it a chance to say so.
  void kill();

  // It keeps its connections and answers nobody, until `thaw`.
  void freeze();
  void thaw();

private:
  pid_t pid_ = -1;
};

// Runs `pactl` with these arguments and returns what it writes.
std::string pactl(const std::string& arguments);

} // namespace velto::kit
