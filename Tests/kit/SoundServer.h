// Sound servers for tests that start, freeze and end them, on a desk without a server of its own.
#pragma once

#include "Daemon.h"

#include <optional>
#include <string>

namespace velto::kit {

// The PulseAudio server that the desk would have started, at the same address. Failures throw
// std::runtime_error.
class SoundServer : public Daemon {
public:
  // Returns once the server answers.
  SoundServer();
};

// PipeWire with its PulseAudio service at that address, and a sink `velto_sink`. Needs a session
// bus.
class PipeWireServer {
public:
  // Returns once the service answers.
  PipeWireServer();

private:
  Daemon core_;
  std::optional<Daemon> manager_, pulse_;
};

// A JACK server with the dummy driver, under one of four names: JACK refuses to start
// more than a few servers, and a server that was killed counts until another one takes its name.
class JackServerProcess {
public:
  // Returns once it accepts clients.
  JackServerProcess();
  ~JackServerProcess();
  JackServerProcess(const JackServerProcess&) = delete;
  JackServerProcess& operator=(const JackServerProcess&) = delete;

  // The value of JACK_DEFAULT_SERVER that leads to it.
  [[nodiscard]] const std::string& name() const { return name_; }

  void kill() { daemon_->kill(); }
  void freeze() { daemon_->freeze(); }
  void thaw() { daemon_->thaw(); }

private:
  void removeTraces() const;

  const std::string name_;
  std::optional<Daemon> daemon_;
};

// Runs `pactl` with `arguments` and returns its output.
std::string pactl(const std::string& arguments);

} // namespace velto::kit
