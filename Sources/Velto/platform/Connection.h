// A connection to a server, on this machine or over the network, with deadlines.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

// A connected stream socket. One thread at a time.
class Connection {
public:
  using Time = std::chrono::steady_clock::time_point;

  // Connect to a socket in the file system, or to a port of a host. Wait while a server's queue is
  // full. nullopt if nobody listens, or at the deadline, which the look-up of the host's address
  // ignores.
  [[nodiscard]] static std::optional<Connection> toFile(const std::filesystem::path& file,
                                                        Time deadline);
  [[nodiscard]] static std::optional<Connection> toHost(const std::string& host,
                                                        const std::string& port, Time deadline);

  ~Connection();
  Connection(Connection&& other) noexcept;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  Connection& operator=(Connection&&) = delete;

  // False if the connection ended, or at the deadline.
  [[nodiscard]] bool send(std::string_view bytes, Time deadline);
  // Exactly `count` bytes; nullopt if the connection ended before, or at the deadline.
  [[nodiscard]] std::optional<std::string> receive(std::size_t count, Time deadline);

private:
  explicit Connection(int socket) : socket_(socket) {}

  int socket_;
};

} // namespace velto
