#include "SoundServer.h"

#include "Command.h"
#include "Eventually.h"
#include "Processes.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace velto::kit {

SoundServer::SoundServer() {
  const char* desk = std::getenv("VELTO_DESK");
  if (desk == nullptr)
    throw std::runtime_error("run on a private desk");
  const std::string folder = std::string(desk) + "/pulse";
  const std::string script = folder + "/default.pa";
  const std::string log = std::string(desk) + "/logs/pulseaudio";
  ::setenv("PULSE_CONFIG", (folder + "/daemon.conf").c_str(), 1);
  pid_ = spawn({"pulseaudio", "--daemonize=no", "--log-target=stderr", "-nF", script},
               [&](auto& actions) {
                 posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, log.c_str(),
                                                  O_WRONLY | O_CREAT | O_APPEND, 0600);
               });
  ::unsetenv("PULSE_CONFIG");
  if (!eventually([] { return pactl("list short sinks").find("velto_sink") != std::string::npos; }))
    throw std::runtime_error("pulseaudio does not answer");
}

void SoundServer::kill() {
  if (pid_ < 0)
    return;
  ::kill(pid_, SIGKILL);
  waitForEnd(pid_);
  pid_ = -1;
}

void SoundServer::freeze() {
  ::kill(pid_, SIGSTOP);
}

void SoundServer::thaw() {
  ::kill(pid_, SIGCONT);
}

std::string pactl(const std::string& arguments) {
  return runCommand("pactl " + arguments + " 2>/dev/null").output;
}

} // namespace velto::kit
