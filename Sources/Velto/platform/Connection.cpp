#include "Connection.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace velto {

namespace {

using Clock = std::chrono::steady_clock;

int millisecondsTo(Connection::Time deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 60'000));
}

// True once the socket is ready for `events`, or its connection has ended; false at the deadline.
bool isReady(int socket, short events, Connection::Time deadline) {
  pollfd waiting{.fd = socket, .events = events, .revents = 0};
  int count = -1;
  do
    count = poll(&waiting, 1, millisecondsTo(deadline));
  while (count < 0 && errno == EINTR);
  return count == 1;
}

int newSocket(int family) {
  return socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

bool connects(int socket, const sockaddr* address, socklen_t length, Connection::Time deadline) {
  while (connect(socket, address, length) != 0) {
    if (errno == EINPROGRESS) {
      int error = 0;
      socklen_t size = sizeof error;
      return isReady(socket, POLLOUT, deadline) &&
             getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
    }
    // EAGAIN: the queue of a local server is full.
    if ((errno != EAGAIN && errno != EINTR) || Clock::now() >= deadline)
      return false;
    poll(nullptr, 0, std::min(20, millisecondsTo(deadline)));
  }
  return true;
}

} // namespace

std::optional<Connection> Connection::toFile(const std::filesystem::path& file, Time deadline) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string& name = file.native();
  if (name.empty() || name.size() >= sizeof address.sun_path)
    return std::nullopt;
  std::memcpy(address.sun_path, name.data(), name.size());
  Connection connection(newSocket(AF_UNIX));
  if (connection.socket_ < 0 || !connects(connection.socket_, reinterpret_cast<sockaddr*>(&address),
                                          sizeof address, deadline))
    return std::nullopt;
  return connection;
}

std::optional<Connection> Connection::toHost(const std::string& host, const std::string& port,
                                             Time deadline) {
  addrinfo wanted{};
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host.c_str(), port.c_str(), &wanted, &found) != 0)
    return std::nullopt;
  std::optional<Connection> result;
  for (const addrinfo* one = found; one != nullptr && !result; one = one->ai_next) {
    Connection connection(newSocket(one->ai_family));
    if (connection.socket_ >= 0 &&
        connects(connection.socket_, one->ai_addr, one->ai_addrlen, deadline))
      result.emplace(std::move(connection));
  }
  freeaddrinfo(found);
  return result;
}

Connection::~Connection() {
  if (socket_ >= 0)
    close(socket_);
}

Connection::Connection(Connection&& other) noexcept : socket_(std::exchange(other.socket_, -1)) {}

bool Connection::send(std::string_view bytes, Time deadline) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent >= 0)
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    else if (errno != EINTR && (errno != EAGAIN || !isReady(socket_, POLLOUT, deadline)))
      return false;
  }
  return true;
}

std::optional<std::string> Connection::receive(std::size_t count, Time deadline) {
  std::string bytes(count, '\0');
  std::size_t filled = 0;
  while (filled < count) {
    const ssize_t received = recv(socket_, bytes.data() + filled, count - filled, 0);
    if (received > 0)
      filled += static_cast<std::size_t>(received);
    else if (received == 0 ||
             (errno != EINTR && (errno != EAGAIN || !isReady(socket_, POLLIN, deadline))))
      return std::nullopt;
  }
  return bytes;
}

} // namespace velto
