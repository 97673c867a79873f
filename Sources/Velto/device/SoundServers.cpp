#include "SoundServers.h"

#include "Connection.h"
#include "Environment.h"
#include "Folders.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>
#include <utility>

namespace velto {

namespace {

namespace fs = std::filesystem;
using Time = Connection::Time;
using Clock = std::chrono::steady_clock;

// --- PulseAudio: configuration ---

struct PulseSettings {
  std::optional<std::string> server, cookieFile;
};

std::string trimmed(std::string_view text) {
  constexpr const char* blanks = " \t\r";
  const auto begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos)
    return {};
  return std::string(text.substr(begin, text.find_last_not_of(blanks) + 1 - begin));
}

// Lines are "name = value"; ';' and '#' begin comments.
void readSettings(const fs::path& file, PulseSettings& settings) {
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    line.erase(std::min(line.find_first_of(";#"), line.size()));
    const auto equals = line.find('=');
    if (equals == std::string::npos)
      continue;
    const std::string name = trimmed(std::string_view(line).substr(0, equals));
    const std::string value = trimmed(std::string_view(line).substr(equals + 1));
    if (value.empty())
      continue;
    if (name == "default-server")
      settings.server = value;
    else if (name == "cookie-file")
      settings.cookieFile = value;
  }
}

// Reads `file`, then the parts in the folder beside it, in the order of their names.
void readSettingsAndParts(const fs::path& file, PulseSettings& settings) {
  readSettings(file, settings);
  std::vector<fs::path> parts;
  std::error_code error;
  for (fs::directory_iterator part(file.native() + ".d", error), end; !error && part != end;
       part.increment(error))
    if (part->path().extension() == ".conf")
      parts.push_back(part->path());
  std::sort(parts.begin(), parts.end());
  for (const fs::path& part : parts)
    readSettings(part, settings);
}

std::optional<fs::path> configFolder(const Environment& environment) {
  if (const auto folder = environment.absolutePath("XDG_CONFIG_HOME"))
    return *folder / "pulse";
  const auto home = environment.home();
  return home ? std::optional(*home / ".config" / "pulse") : std::nullopt;
}

PulseSettings settingsOf(const Environment& environment) {
  PulseSettings settings;
  const auto folder = configFolder(environment);
  if (const auto file = environment.absolutePath("PULSE_CLIENTCONFIG"))
    readSettings(*file, settings);
  else if (folder && Folders::exists(*folder / "client.conf"))
    readSettingsAndParts(*folder / "client.conf", settings);
  else
    readSettingsAndParts("/etc/pulse/client.conf", settings);
  if (auto server = environment.variable("PULSE_SERVER"); server && !server->empty())
    settings.server = std::move(server);
  if (auto file = environment.variable("PULSE_COOKIE"); file && !file->empty())
    settings.cookieFile = std::move(file);
  return settings;
}

// --- PulseAudio: addresses ---

constexpr std::string_view tcp = "tcp:";
constexpr const char* usualPort = "4713";

bool takePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix))
    return false;
  text.remove_prefix(prefix.size());
  return true;
}

// Addresses are separated by blanks. One may begin with the identity of a machine, in braces.
std::vector<std::string> parsedAddresses(const std::string& text) {
  std::vector<std::string> addresses;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    std::string_view rest = word;
    if (rest.front() == '{')
      rest.remove_prefix(std::min(rest.find('}'), rest.size() - 1) + 1);
    if (rest.empty())
      continue;
    if (takePrefix(rest, "unix:") || rest.front() == '/')
      addresses.emplace_back(rest);
    else if (takePrefix(rest, "tcp4:") || takePrefix(rest, "tcp6:") || takePrefix(rest, tcp) ||
             rest.find('/') == std::string_view::npos)
      addresses.push_back(std::string(tcp) + std::string(rest));
  }
  return addresses;
}

std::vector<std::string> usualAddresses(const Environment& environment) {
  std::vector<std::string> addresses;
  if (const auto folder = environment.absolutePath("PULSE_RUNTIME_PATH"))
    addresses.push_back(*folder / "native");
  else if (const auto runtime = environment.absolutePath("XDG_RUNTIME_DIR"))
    addresses.push_back(*runtime / "pulse" / "native");
  addresses.emplace_back("/var/run/pulse/native");
  return addresses;
}

// A host is a name, an IPv4 address, or an IPv6 address in brackets; a port may follow.
std::optional<Connection> connectTo(std::string_view address, Time deadline) {
  if (!takePrefix(address, tcp))
    return Connection::toFile(address, deadline);
  std::string port = usualPort;
  std::string_view host = address;
  const auto bracket = address.find(']');
  const auto colon = address.rfind(':');
  if (bracket != std::string_view::npos && address.front() == '[')
    host = address.substr(1, bracket - 1);
  else if (colon != std::string_view::npos)
    host = address.substr(0, colon);
  if (colon != std::string_view::npos && (bracket == std::string_view::npos || colon > bracket))
    port = address.substr(colon + 1);
  return Connection::toHost(std::string(host), port, deadline);
}

// --- PulseAudio: the native protocol ---

// A packet has a header of five 32-bit numbers (the length of the rest, the channel, an offset of
// 64 bits, flags) and then tagged values. All numbers are in network byte order.
constexpr std::size_t headLength = 20;
constexpr std::uint32_t controlChannel = 0xFFFFFFFF;
constexpr char numberTag = 'L', bytesTag = 'x';
constexpr std::uint32_t replyCommand = 2, authenticateCommand = 8;
constexpr std::uint32_t protocolVersion = 13; // predates shared memory, which is not offered
constexpr std::size_t cookieLength = 256;

void append(std::string& bytes, std::uint32_t number) {
  for (const int shift : {24, 16, 8, 0})
    bytes.push_back(static_cast<char>(number >> shift & 0xFF));
}

std::uint32_t numberAt(const std::string& bytes, std::size_t offset) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i)
    number = number << 8 | static_cast<unsigned char>(bytes[offset + i]);
  return number;
}

std::string authentication(const std::string& cookie) {
  std::string body;
  for (const std::uint32_t number : {authenticateCommand, 0U, protocolVersion}) {
    body.push_back(numberTag);
    append(body, number);
  }
  body.push_back(bytesTag);
  append(body, static_cast<std::uint32_t>(cookie.size()));
  body += cookie;
  std::string packet;
  for (const std::uint32_t number :
       {static_cast<std::uint32_t>(body.size()), controlChannel, 0U, 0U, 0U})
    append(packet, number);
  return packet + body;
}

// Zeros if no file has a cookie: a server of the same user needs none.
std::string readCookie(const std::vector<fs::path>& files) {
  for (const fs::path& file : files) {
    std::ifstream stream(file, std::ios::binary);
    std::string cookie(cookieLength, '\0');
    if (stream.read(cookie.data(), static_cast<std::streamsize>(cookie.size())))
      return cookie;
  }
  return std::string(cookieLength, '\0');
}

ServerAnswer askAt(const std::string& address, const std::string& cookie, Time deadline) {
  auto connection = connectTo(address, deadline);
  if (!connection)
    return Clock::now() < deadline ? ServerAnswer::absent : ServerAnswer::silent;
  const auto head = connection->send(authentication(cookie), deadline)
                        ? connection->receive(headLength, deadline)
                        : std::nullopt;
  const auto command = head && numberAt(*head, 0) >= 5
                           ? connection->receive(1 + sizeof replyCommand, deadline)
                           : std::nullopt;
  if (command)
    return (*command)[0] == numberTag && numberAt(*command, 1) == replyCommand
               ? ServerAnswer::answers
               : ServerAnswer::absent;
  return Clock::now() < deadline ? ServerAnswer::absent : ServerAnswer::silent;
}

} // namespace

PulseServer::PulseServer(const Environment& environment) {
  const PulseSettings settings = settingsOf(environment);
  addresses_ = settings.server ? parsedAddresses(*settings.server) : usualAddresses(environment);
  const auto folder = configFolder(environment);
  if (settings.cookieFile) {
    const fs::path file = *settings.cookieFile;
    cookieFiles_.push_back(file.is_absolute() || !folder ? file : *folder / file);
  }
  if (folder)
    cookieFiles_.push_back(*folder / "cookie");
  if (const auto home = environment.home())
    cookieFiles_.push_back(*home / ".pulse-cookie");
}

ServerAnswer PulseServer::ask(std::chrono::milliseconds patience) const {
  const Time deadline = Clock::now() + patience;
  const std::string cookie = readCookie(cookieFiles_);
  auto best = ServerAnswer::absent;
  for (const std::string& address : addresses_) {
    const ServerAnswer answer = askAt(address, cookie, deadline);
    best = std::max(best, answer);
    if (answer == ServerAnswer::answers)
      break;
  }
  return best;
}

JackServer::JackServer(const Environment& environment) {
  if (const auto runtime = environment.absolutePath("XDG_RUNTIME_DIR"))
    pipeWire_ = *runtime / "pipewire-0";
}

bool JackServer::hasTraces() {
  // A server's sockets and shared memory. Its database and its registry outlast every server.
  std::error_code error;
  for (fs::directory_iterator file("/dev/shm", error), end; !error && file != end;
       file.increment(error)) {
    const std::string name = file->path().filename();
    if (name.starts_with("jack") && !name.starts_with("jack_db") && name != "jack-shm-registry")
      return true;
  }
  return false;
}

bool JackServer::mayRun() const {
  return hasTraces() || (pipeWire_ && Folders::exists(*pipeWire_));
}

} // namespace velto
