#include "SoundServers.h"

#include "Environment.h"

#include "kit/Files.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <map>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace velto {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Words = std::vector<std::string>;

Environment environmentOf(std::map<std::string, std::string> variables) {
  return {.variable = [variables =
                           std::move(variables)](const char* name) -> std::optional<std::string> {
            const auto found = variables.find(name);
            return found == variables.end() ? std::nullopt : std::optional(found->second);
          },
          .accountHome = [] { return std::nullopt; }};
}

// What a fake server does with each connection.
enum class Manner { answers, refuses, closes, waits, babbles };

std::string packet(std::initializer_list<unsigned> body) {
  std::string bytes{'\0',   '\0',   '\0',   static_cast<char>(5 * body.size()),
                    '\xff', '\xff', '\xff', '\xff'};
  bytes.append(12, '\0');
  for (const unsigned number : body) {
    bytes.push_back('L');
    bytes.append(3, '\0');
    bytes.push_back(static_cast<char>(number));
  }
  return bytes;
}

class FakeServer {
public:
  FakeServer(const fs::path& file, Manner manner) : manner_(manner) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, file.c_str());
    listenAt(reinterpret_cast<sockaddr*>(&address), sizeof address, AF_UNIX);
  }
  explicit FakeServer(Manner manner) : manner_(manner) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    listenAt(reinterpret_cast<sockaddr*>(&address), sizeof address, AF_INET);
    socklen_t size = sizeof address;
    ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
    port = ntohs(address.sin_port);
  }
  ~FakeServer() {
    ends_ = true;
    thread_.join();
    ::close(socket_);
  }
  FakeServer(const FakeServer&) = delete;
  FakeServer& operator=(const FakeServer&) = delete;

  int port = 0;
  std::atomic<int> connections{0};
  std::string received; // from the last client; read once the client has its answer

private:
  void listenAt(const sockaddr* address, socklen_t size, int family) {
    socket_ = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::bind(socket_, address, size) != 0 || ::listen(socket_, 5) != 0)
      throw std::runtime_error("the fake server cannot listen");
    thread_ = std::thread([this] { serve(); });
  }

  void serve() {
    std::vector<int> waiting;
    while (!ends_) {
      pollfd arrival{.fd = socket_, .events = POLLIN, .revents = 0};
      if (::poll(&arrival, 1, 10) != 1)
        continue;
      const int client = ::accept(socket_, nullptr, nullptr);
      ++connections;
      if (manner_ == Manner::waits) {
        waiting.push_back(client);
        continue;
      }
      respond(client);
      ::close(client);
    }
    for (const int client : waiting)
      ::close(client);
  }

  void respond(int client) {
    if (manner_ == Manner::closes)
      return;
    constexpr std::size_t length = 20 + 3 * 5 + 5 + 256;
    std::array<char, length> bytes{};
    if (::recv(client, bytes.data(), bytes.size(), MSG_WAITALL) != length)
      return;
    received.assign(bytes.begin(), bytes.end());
    const std::string reply = manner_ == Manner::answers   ? packet({2, 0, 35})
                              : manner_ == Manner::refuses ? packet({0, 0, 1})
                                                           : std::string(100, 'x');
    (void)!::send(client, reply.data(), reply.size(), MSG_NOSIGNAL);
  }

  const Manner manner_;
  int socket_ = -1;
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

struct PulseServerTest : ::testing::Test {
  kit::ScratchFolder folder;
  const fs::path file = folder.path() / "native";

  [[nodiscard]] static PulseServer at(const std::string& addresses) {
    return PulseServer(environmentOf({{"PULSE_SERVER", addresses}}));
  }
};

TEST_F(PulseServerTest, AnswersIfItLetsAClientIn) {
  const FakeServer server(file, Manner::answers);
  EXPECT_EQ(at(file).ask(20s), ServerAnswer::answers);
  EXPECT_EQ(at("unix:" + file.string()).ask(20s), ServerAnswer::answers);
  EXPECT_EQ(server.connections, 2);
}

TEST_F(PulseServerTest, IsAbsentIfNobodyListensOrItRefuses) {
  EXPECT_EQ(at(file).ask(20s), ServerAnswer::absent);
  EXPECT_EQ(at("unix:" + std::string(200, 'x')).ask(20s), ServerAnswer::absent);
  EXPECT_EQ(at("unix:/dev/null").ask(20s), ServerAnswer::absent);
  for (const Manner manner : {Manner::refuses, Manner::closes, Manner::babbles}) {
    fs::remove(file);
    const FakeServer server(file, manner);
    EXPECT_EQ(at(file).ask(20s), ServerAnswer::absent) << static_cast<int>(manner);
  }
  EXPECT_EQ(at(file).ask(20s), ServerAnswer::absent) << "its socket is left";
}

TEST_F(PulseServerTest, IsSilentIfItAcceptsAndNeverAnswers) {
  const FakeServer server(file, Manner::waits);
  for (int i = 0; i < 2; ++i) {
    const auto begin = Clock::now();
    EXPECT_EQ(at(file).ask(200ms), ServerAnswer::silent);
    EXPECT_GE(Clock::now() - begin, 200ms);
    EXPECT_LT(Clock::now() - begin, 10s);
  }
}

// A stopped server accepts nothing: its queue fills up.
TEST_F(PulseServerTest, IsSilentIfItsQueueIsFull) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, file.c_str());
  ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(socket, 1), 0);
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(at(file).ask(100ms), ServerAnswer::silent) << i;
  ::close(socket);
}

TEST_F(PulseServerTest, IsTheFirstOfTheListThatAnswers) {
  const FakeServer silent(file, Manner::waits);
  const FakeServer good(folder.path() / "good", Manner::answers);
  const std::string both = "/there/is/none {0123abc}unix:" + (folder.path() / "good").string();
  EXPECT_EQ(at(both).ask(20s), ServerAnswer::answers);
  EXPECT_EQ(at((folder.path() / "good").string() + " " + file.string()).ask(20s),
            ServerAnswer::answers);
  EXPECT_EQ(at("/there/is/none " + file.string()).ask(100ms), ServerAnswer::silent);
  EXPECT_EQ(at(file.string() + " /there/is/none").ask(100ms), ServerAnswer::silent);
}

TEST_F(PulseServerTest, AnswersOverTheNetworkToo) {
  const FakeServer server(Manner::answers);
  const std::string port = std::to_string(server.port);
  EXPECT_EQ(at("tcp:127.0.0.1:" + port).ask(20s), ServerAnswer::answers);
  EXPECT_EQ(at("127.0.0.1:" + port).ask(20s), ServerAnswer::answers);
  EXPECT_EQ(at("tcp4:[127.0.0.1]:" + port).ask(20s), ServerAnswer::answers);
  EXPECT_EQ(at("tcp:127.0.0.1:1").ask(20s), ServerAnswer::absent);
}

TEST_F(PulseServerTest, GetsTheCookieOfTheUser) {
  const FakeServer server(file, Manner::answers);
  const std::string cookie = std::string(100, 'a') + std::string(156, 'b');
  const std::string none(256, '\0');
  kit::put(folder.path() / "config/pulse/cookie", cookie);
  const auto sent = [&](std::map<std::string, std::string> variables) {
    variables["PULSE_SERVER"] = file;
    EXPECT_EQ(PulseServer(environmentOf(variables)).ask(20s), ServerAnswer::answers);
    return server.received.substr(server.received.size() - 256);
  };
  EXPECT_EQ(sent({}), none);
  EXPECT_EQ(sent({{"XDG_CONFIG_HOME", folder.path() / "config"}}), cookie);
  EXPECT_EQ(sent({{"PULSE_COOKIE", folder.path() / "config/pulse/cookie"}}), cookie);
  EXPECT_EQ(sent({{"HOME", folder.path()}}), none);
  kit::put(folder.path() / ".config/pulse/cookie", cookie);
  EXPECT_EQ(sent({{"HOME", folder.path()}}), cookie);
}

TEST_F(PulseServerTest, IsLookedUpWhereThePulseAudioLibraryDoes) {
  const auto addresses = [](std::map<std::string, std::string> variables) {
    return PulseServer(environmentOf(std::move(variables))).addresses();
  };
  const fs::path config = folder.path() / "config";
  const std::string folders = config.string();
  kit::put(config / "pulse/client.conf", "# default-server = /no\n; cookie-file = no\n");
  EXPECT_EQ(addresses({{"XDG_CONFIG_HOME", folders}, {"XDG_RUNTIME_DIR", "/run/user/7"}}),
            (Words{"/run/user/7/pulse/native", "/var/run/pulse/native"}));
  EXPECT_EQ(addresses({{"XDG_CONFIG_HOME", folders},
                       {"XDG_RUNTIME_DIR", "/run/user/7"},
                       {"PULSE_RUNTIME_PATH", "/there"}}),
            (Words{"/there/native", "/var/run/pulse/native"}));
  kit::put(config / "pulse/client.conf", "autospawn = no\n default-server =  /a  unix:/b ; both\n");
  EXPECT_EQ(addresses({{"XDG_CONFIG_HOME", folders}}), (Words{"/a", "/b"}));
  kit::put(config / "pulse/client.conf.d/2.conf", "default-server = /c\n");
  kit::put(config / "pulse/client.conf.d/1.conf", "default-server = /d\n");
  kit::put(config / "pulse/client.conf.d/3.txt", "default-server = /e\n");
  EXPECT_EQ(addresses({{"XDG_CONFIG_HOME", folders}}), (Words{"/c"}));
  EXPECT_EQ(addresses({{"XDG_CONFIG_HOME", folders}, {"PULSE_SERVER", "host tcp6:[::1]:9 x/y"}}),
            (Words{"tcp:host", "tcp:[::1]:9"}));
  EXPECT_EQ(addresses({{"XDG_CONFIG_HOME", folders},
                       {"PULSE_CLIENTCONFIG", config / "pulse/client.conf.d/1.conf"}}),
            (Words{"/d"}));
  EXPECT_EQ(addresses({{"XDG_CONFIG_HOME", folders}, {"PULSE_SERVER", "{id} {"}}), Words{});
}

TEST(JackServer, MayRunWherePipeWireDoes) {
  const kit::ScratchFolder folder;
  const JackServer server(environmentOf({{"XDG_RUNTIME_DIR", folder.path()}}));
  kit::put(folder.path() / "pipewire-0", "");
  EXPECT_TRUE(server.mayRun());
}

} // namespace
} // namespace velto
