// Finds out whether a sound server answers, without the risk of hanging on it.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

struct Environment;

// How a server responded.
enum class ServerAnswer {
  absent, // nobody listens
  silent, // it accepts a connection, but does not answer in time
  answers
};

// The PulseAudio server, or PipeWire's service in its place, that the PulseAudio library would
// connect to.
class PulseServer {
public:
  // Looks up addresses and the cookie's file where the library does, except for properties of an X
  // display. Reads configuration files.
  explicit PulseServer(const Environment& environment);

  // Connects and authenticates. `silent` if no address answers in time, but one accepts the
  // connection; a refusal counts as `absent`. Any thread.
  [[nodiscard]] ServerAnswer ask(std::chrono::milliseconds patience) const;

  // In order of preference: paths of sockets, or "tcp:host:port".
  [[nodiscard]] const std::vector<std::string>& addresses() const { return addresses_; }

private:
  std::vector<std::string> addresses_;
  std::vector<std::filesystem::path> cookieFiles_;
};

// JACK servers.
class JackServer {
public:
  explicit JackServer(const Environment& environment);

  // True if a server runs, or has left files behind. Cheap. Any thread.
  [[nodiscard]] static bool hasTraces();
  // Same, but also true if PipeWire runs, which can replace a server.
  [[nodiscard]] bool mayRun() const;

private:
  std::optional<std::filesystem::path> pipeWire_; // its socket
};

} // namespace velto
