// The program on every sound system that it can meet, and what it does when one hangs. Run on a
// private desk with a display, but without a sound server; each test starts servers of its own.
#include "kit/ChildProcess.h"
#include "kit/Desktop.h"
#include "kit/Eventually.h"
#include "kit/Files.h"
#include "kit/JackEar.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"
#include "kit/SoundServer.h"

#include "DSP.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace velto::kit {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Variables = std::map<std::string, std::string>;

const std::string nowhere = "unix:/dev/null";

// Writes a configuration of ALSA whose default device is `definition`; returns its path.
std::string alsaConfiguration(const std::string& definition) {
  const std::string file = deskFolder() + "/alsa-" + std::to_string(definition.size()) + ".conf";
  put(file, "pcm.!default { " + definition + " }\nctl.!default { type hw card 0 }\n");
  return file;
}

// Has ALSA play through a PulseAudio server, whose clock it takes and at whose sink it can be
// heard.
std::string alsaOnPulse() {
  return alsaConfiguration("type pulse server \"unix:" + deskFolder() + "/pulse/native\"");
}

// True if the newest 100 ms at the sink hold sound. False if they cannot be recorded: a server that
// was stopped refuses new clients until it has accepted the five that its socket keeps waiting.
bool sinkSounds() {
  try {
    Recorder recorder;
    recorder.waitForMore(9600);
    const Recording sound = recorder.stop();
    const std::size_t begin = sound.frames() - 4800;
    return Measure::rmsDB(std::span(sound.l).subspan(begin)) > -60;
  } catch (const std::runtime_error&) {
    return false;
  }
}

// A sound system, as the program finds it.
struct System {
  std::string name;
  Variables environment;         // leads the program there
  std::shared_ptr<void> servers; // what runs meanwhile
  std::function<bool()> sounds;  // whether it plays sound; empty if that cannot be heard
};

System pulseAudio() {
  return {.name = "PulseAudio",
          .environment = {},
          .servers = std::make_shared<SoundServer>(),
          .sounds = sinkSounds};
}

System pipeWire() {
  return {.name = "PipeWire",
          .environment = {},
          .servers = std::make_shared<PipeWireServer>(),
          .sounds = sinkSounds};
}

System alsa() {
  return {.name = "ALSA",
          .environment = {{"PULSE_SERVER", nowhere}, {"ALSA_CONFIG_PATH", alsaOnPulse()}},
          .servers = std::make_shared<SoundServer>(),
          .sounds = sinkSounds};
}

// ALSA without a clock: it takes all frames at once.
System alsaNull() {
  return {.name = "ALSA without a device",
          .environment = {{"PULSE_SERVER", nowhere},
                          {"ALSA_CONFIG_PATH", alsaConfiguration("type null")}},
          .servers = {},
          .sounds = {}};
}

System jack() {
  auto server = std::make_shared<JackServerProcess>();
  const std::string name = server->name();
  return {.name = "JACK",
          .environment = {{"PULSE_SERVER", nowhere}, {"JACK_DEFAULT_SERVER", name}},
          .servers = server,
          .sounds = [name] { return jackSounds(name, "Velto"); }};
}

ProgramRunner::Environment changesOf(const Variables& variables) {
  return {variables.begin(), variables.end()};
}

class Backend : public ::testing::TestWithParam<System (*)()> {
protected:
  const System system = GetParam()();
};

TEST_P(Backend, PlaysSuspendsResumesAndEnds) {
  Desktop desktop;
  ProgramRunner program(VELTO_PROGRAM, {"--drill", "level"}, changesOf(system.environment));
  const WindowId window = desktop.waitForWindow("MORLA Velto", program.pid());
  desktop.waitForActive(window);
  for (int round = 0; round < 3; ++round) {
    if (system.sounds) {
      EXPECT_TRUE(eventually(system.sounds)) << round << program.errors();
    }
    std::this_thread::sleep_for(500ms);
    desktop.minimise(window);
    if (system.sounds) {
      EXPECT_TRUE(eventually([this] { return !system.sounds(); })) << round;
    }
    std::this_thread::sleep_for(500ms);
    desktop.activate(window);
    desktop.waitForActive(window);
  }
  if (system.sounds) {
    EXPECT_TRUE(eventually(system.sounds)) << program.errors();
  }
  desktop.close(window);
  EXPECT_EQ(program.waitForExit(), 0);
  EXPECT_EQ(program.errors(), "");
}

TEST_P(Backend, TakesAPicture) {
  ProgramRunner program(VELTO_PROGRAM, {"--shot", deskFolder() + "/tmp/shot.png"},
                        changesOf(system.environment));
  EXPECT_EQ(program.waitForExit(), 0);
  EXPECT_EQ(program.errors(), "wrote " + deskFolder() + "/tmp/shot.png\n");
}

TEST_P(Backend, PassesTheSelfTest) {
  ProgramRunner program(VELTO_PROGRAM, {"--audio-selftest"}, changesOf(system.environment));
  EXPECT_EQ(program.waitForExit(), 0);
  EXPECT_EQ(program.errors(), "");
  EXPECT_NE(program.output().find("PASS"), std::string::npos) << program.output();
}

TEST_P(Backend, RunsThePlaybackBenchUntilASignalEndsIt) {
  ProgramRunner program(VELTO_PROGRAM, {"--bench-audio", "on"}, changesOf(system.environment));
  if (system.sounds) {
    EXPECT_TRUE(eventually(system.sounds));
  }
  std::this_thread::sleep_for(500ms);
  ::kill(program.pid(), SIGTERM);
  EXPECT_EQ(program.waitForExit(), 128 + SIGTERM);
  EXPECT_EQ(program.errors() + program.output(), "");
}

std::string nameOf(const ::testing::TestParamInfo<System (*)()>& info) {
  const std::array names{"PulseAudio", "PipeWire", "ALSA", "ALSANull", "JACK"};
  return names.at(info.index);
}

INSTANTIATE_TEST_SUITE_P(Systems, Backend,
                         ::testing::Values(pulseAudio, pipeWire, alsa, alsaNull, jack), nameOf);

// --- Servers that come, go and hang ---

// The program in the level drill, with its window in front.
struct Practice {
  explicit Practice(const Variables& environment)
      : program(VELTO_PROGRAM, {"--drill", "level"}, changesOf(environment)),
        window(desktop.waitForWindow("MORLA Velto", program.pid())) {
    desktop.waitForActive(window);
  }

  // True if the program exits with 0 when its window is closed.
  [[nodiscard]] bool ends() {
    desktop.close(window);
    return program.waitForExit() == 0;
  }

  Desktop desktop;
  ProgramRunner program;
  WindowId window;
};

bool hasStream() {
  return !pactl("list short sink-inputs").empty();
}

// The seconds until `condition` holds; prints them.
template <typename Condition>
double secondsUntil(Condition condition, const char* what) {
  const auto begin = Clock::now();
  EXPECT_TRUE(eventually(condition)) << what;
  const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  std::cout << "  " << what << ": " << seconds << " s\n";
  return seconds;
}

// A server that accepts connections and never answers; a PulseAudio server unless told otherwise.
class DeafServer {
public:
  explicit DeafServer(std::string file = deskFolder() + "/pulse/native")
      : file_(std::move(file)),
        socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ::unlink(file_.c_str());
    file_.copy(address.sun_path, sizeof address.sun_path - 1);
    if (::bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket_, 100) != 0)
      throw std::runtime_error("the deaf server cannot listen");
  }
  ~DeafServer() {
    ::close(socket_);
    ::unlink(file_.c_str());
  }
  DeafServer(const DeafServer&) = delete;
  DeafServer& operator=(const DeafServer&) = delete;

  [[nodiscard]] int socket() const { return socket_; }

private:
  const std::string file_;
  int socket_;
};

// A PulseAudio server that lets clients in, then hangs up or answers no more.
class HalfServer {
public:
  enum class Then { hangsUp, hangs };

  explicit HalfServer(Then then) : then_(then), thread_([this] { serve(); }) {}
  ~HalfServer() {
    ends_ = true;
    thread_.join();
    for (const int client : clients_)
      ::close(client);
  }
  HalfServer(const HalfServer&) = delete;
  HalfServer& operator=(const HalfServer&) = delete;

  [[nodiscard]] int clients() const { return served_; }

private:
  void serve() {
    while (!ends_) {
      const int client =
          ::accept4(server_.socket(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
      if (client < 0) {
        std::this_thread::sleep_for(5ms);
        continue;
      }
      clients_.push_back(client);
      // The header of the packet, "reply", its number, and the version of the protocol.
      constexpr std::string_view reply("\0\0\0\x0f\xff\xff\xff\xff\0\0\0\0\0\0\0\0\0\0\0\0"
                                       "L\0\0\0\x02L\0\0\0\0L\0\0\0\x23",
                                       35);
      static_cast<void>(::send(client, reply.data(), reply.size(), MSG_NOSIGNAL));
      ++served_;
      if (then_ == Then::hangsUp) {
        std::this_thread::sleep_for(50ms);
        ::shutdown(client, SHUT_RDWR);
      }
    }
  }

  const Then then_;
  DeafServer server_;
  std::vector<int> clients_;
  std::atomic<bool> ends_{false};
  std::atomic<int> served_{0};
  std::thread thread_;
};

// What the sound system does while a mode without a window runs.
struct Trouble {
  std::string name;
  std::function<std::shared_ptr<void>()> begin; // lasts as long as the result exists
  Variables environment;
};

std::shared_ptr<void> frozenServer() {
  auto server = std::make_shared<SoundServer>();
  server->freeze();
  return server;
}

std::vector<Trouble> troubles() {
  const std::string jackName = "deaf-" + std::to_string(::getpid());
  const std::string jackSocket =
      "/dev/shm/jack_" + jackName + "_" + std::to_string(::getuid()) + "_0";
  return {{"no server", [] { return std::shared_ptr<void>(); }, {}},
          {"a frozen server", frozenServer, {}},
          {"a frozen server behind ALSA too", frozenServer, {{"ALSA_CONFIG_PATH", alsaOnPulse()}}},
          {"a server that never answers", [] { return std::make_shared<DeafServer>(); }, {}},
          {"a server that lets in and never answers again",
           [] { return std::make_shared<HalfServer>(HalfServer::Then::hangs); },
           {}},
          {"a server that lets in and hangs up",
           [] { return std::make_shared<HalfServer>(HalfServer::Then::hangsUp); },
           {}},
          {"a JACK server that never answers",
           [jackSocket] { return std::make_shared<DeafServer>(jackSocket); },
           {{"PULSE_SERVER", nowhere}, {"JACK_DEFAULT_SERVER", jackName}}},
          {"a server that never answers, behind ALSA too",
           [] { return std::make_shared<DeafServer>(); },
           {{"ALSA_CONFIG_PATH", alsaOnPulse()}}}};
}

TEST(Trouble, EndsTheSelfTestWithin15Seconds) {
  for (const Trouble& trouble : troubles()) {
    const auto server = trouble.begin();
    const auto begin = Clock::now();
    ProgramRunner program(VELTO_PROGRAM, {"--audio-selftest"}, changesOf(trouble.environment));
    EXPECT_EQ(program.waitForExit(), 1) << trouble.name;
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    std::cout << "  self-test with " << trouble.name << ": " << seconds << " s\n";
    EXPECT_LT(seconds, 15) << trouble.name;
    EXPECT_EQ(program.output(), "FAIL  engine did not start\n") << trouble.name;
  }
}

TEST(TroubleLong, EndsThePlaybackBenchWithin27Seconds) {
  for (const Trouble& trouble : troubles()) {
    const auto server = trouble.begin();
    const auto begin = Clock::now();
    ProgramRunner program(VELTO_PROGRAM, {"--bench-audio", "on"}, changesOf(trouble.environment));
    EXPECT_TRUE(eventually([&] { return !program.isRunning(); }, 40s)) << trouble.name;
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    std::cout << "  playback bench with " << trouble.name << ": " << seconds << " s\n";
    EXPECT_EQ(program.waitForExit(), 0) << trouble.name;
    EXPECT_GE(seconds, 25) << trouble.name;
    EXPECT_LT(seconds, 27) << trouble.name;
  }
}

TEST(Trouble, AServerThatStopsDuringTheSelfTestDoesNotHoldItUp) {
  SoundServer server;
  ProgramRunner program(VELTO_PROGRAM, {"--audio-selftest"});
  ASSERT_TRUE(eventually(hasStream));
  server.freeze();
  const auto begin = Clock::now();
  EXPECT_TRUE(program.waitForExit().has_value());
  EXPECT_LT(Clock::now() - begin, 14s);
}

// Another PulseAudio server on the desk, at an address of its own.
class SecondServer {
public:
  static std::string address() { return deskFolder() + "/pulse/second"; }

  SecondServer() {
    ::unlink(file_.c_str());
    daemon_.emplace(
        std::vector<std::string>{
            "pulseaudio", "--daemonize=no", "--log-target=stderr", "-n", "--use-pid-file=no", "-L",
            "module-native-protocol-unix socket=" + file_ + " auth-anonymous=1", "-L",
            "module-null-sink sink_name=second norewinds=1 format=float32le"},
        std::map<std::string, std::string>{{"PULSE_RUNTIME_PATH", deskFolder() + "/tmp"}});
    waitUntil([this] { return asked("list short sinks").find("second") != std::string::npos; },
              "the second server answers");
  }

  [[nodiscard]] std::string asked(const std::string& what) const {
    return pactl("--server=unix:" + file_ + " " + what);
  }
  // The number of the stream that it plays; empty if there is none.
  [[nodiscard]] std::string stream() const {
    const std::string list = asked("list short sink-inputs");
    return list.substr(0, list.find('\t'));
  }

private:
  const std::string file_ = address();
  std::optional<Daemon> daemon_;
};

std::string alsaOnSecond() {
  return alsaConfiguration("type pulse server \"unix:" + SecondServer::address() + "\"");
}

TEST(Trouble, AServerThatDoesNotAnswerLeavesALSAToPlay) {
  SoundServer frozen;
  const SecondServer behindALSA;
  frozen.freeze();
  ProgramRunner program(VELTO_PROGRAM, {"--audio-selftest"},
                        {{"ALSA_CONFIG_PATH", alsaOnSecond()}});
  EXPECT_EQ(program.waitForExit(), 0) << program.errors();
}

// ALSA plays through a second server while the program's PulseAudio server is away.
TEST(Return, FromALSAWhenAServerAnswers) {
  const SoundServer behindALSA;
  for (int round = 0; round < 3; ++round) {
    Practice practice(
        {{"PULSE_SERVER", "unix:" + SecondServer::address()}, {"ALSA_CONFIG_PATH", alsaOnPulse()}});
    ASSERT_TRUE(eventually(hasStream)) << practice.program.errors();
    std::this_thread::sleep_for(1s + round * 170ms);
    const SecondServer server;
    EXPECT_LT(secondsUntil([&] { return !server.stream().empty(); },
                           "from ALSA to the server that answers"),
              2);
    EXPECT_TRUE(eventually([] { return !hasStream(); })) << "ALSA's stream has ended";
    EXPECT_EQ(practice.program.errors(), "");
    EXPECT_TRUE(practice.ends());
  }
}

TEST(Return, OfAServerThatWasStoppedWhileItPlayed) {
  SoundServer server;
  for (const auto stopped : {3s, 13s}) {
    Practice practice({});
    ASSERT_TRUE(eventually(sinkSounds));
    server.freeze();
    std::this_thread::sleep_for(stopped);
    if (stopped > 10s) {
      EXPECT_EQ(practice.program.errors(),
                "Velto: engine start failed - the sound server does not answer\n");
    }
    server.thaw();
    EXPECT_LT(secondsUntil(sinkSounds, "until a stopped server plays again"), 2.4);
    std::this_thread::sleep_for(1s);
    EXPECT_TRUE(sinkSounds()) << "new sound, not what the server had buffered";
    EXPECT_TRUE(practice.ends());
  }
}

TEST(Return, OfAServerThatWasStoppedForPulseAudioAndALSA) {
  SoundServer server;
  Practice practice({{"ALSA_CONFIG_PATH", alsaOnPulse()}});
  ASSERT_TRUE(eventually(sinkSounds));
  server.freeze();
  std::this_thread::sleep_for(25s); // two openings hang
  server.thaw();
  EXPECT_LT(secondsUntil(sinkSounds, "until two hanging openings end"), 2.4);
  std::this_thread::sleep_for(1s);
  EXPECT_TRUE(sinkSounds()) << "new sound, not what the server had buffered";
  EXPECT_TRUE(practice.ends());
}

TEST(Return, OfAServerThatHungAfterAuthentication) {
  std::optional<HalfServer> half(std::in_place, HalfServer::Then::hangs);
  Practice practice({});
  std::this_thread::sleep_for(23s); // two openings hang
  EXPECT_EQ(practice.program.errors(),
            "Velto: engine start failed - the sound server does not answer\n");
  std::cout << "  connections in 23 s: " << half->clients() << "\n";
  EXPECT_EQ(half->clients(), 4) << "two openings, each after a question";
  half.reset();
  const SoundServer server;
  EXPECT_LT(secondsUntil(sinkSounds, "until a new server plays"), 2.4);
  std::this_thread::sleep_for(1s);
  EXPECT_TRUE(sinkSounds()) << "new sound, not what the server had buffered";
  EXPECT_TRUE(practice.ends());
}

// cubeb falls back to ALSA when PulseAudio hangs up. The program notices, and neither retries over
// and over nor mistakes ALSA for PulseAudio.
TEST(Return, FromALSAToAServerThatHungUpAtFirst) {
  const SecondServer behindALSA;
  std::optional<HalfServer> half(std::in_place, HalfServer::Then::hangsUp);
  Practice practice({{"ALSA_CONFIG_PATH", alsaOnSecond()}});
  ASSERT_TRUE(eventually([&] { return !behindALSA.stream().empty(); }))
      << practice.program.errors();
  std::this_thread::sleep_for(500ms);
  const std::string stream = behindALSA.stream();
  std::this_thread::sleep_for(3s);
  EXPECT_EQ(behindALSA.stream(), stream) << "the same stream plays on";
  half.reset();
  std::this_thread::sleep_for(1s);
  const SoundServer server;
  EXPECT_LT(secondsUntil(hasStream, "from ALSA to a server that had hung up"), 2);
  EXPECT_EQ(practice.program.errors(), "");
  EXPECT_TRUE(practice.ends());
}

TEST(Return, OfAJackServerThatWasStoppedOrKilled) {
  std::optional<JackServerProcess> server(std::in_place);
  const std::string name = server->name();
  const auto sounds = [&] { return jackSounds(name, "Velto"); };
  Practice practice({{"PULSE_SERVER", nowhere}, {"JACK_DEFAULT_SERVER", name}});
  ASSERT_TRUE(eventually(sounds)) << practice.program.errors();
  server->freeze();
  std::this_thread::sleep_for(4s);
  server->thaw();
  EXPECT_LT(secondsUntil(sounds, "until a stopped JACK server plays again"), 2.4);
  server->kill();
  EXPECT_TRUE(eventually([&] { return !practice.program.errors().empty(); }));
  server.reset();
  server.emplace();
  EXPECT_LT(secondsUntil(sounds, "until a new JACK server plays"), 2.4);
  EXPECT_TRUE(practice.ends()) << practice.program.errors();
}

} // namespace
} // namespace velto::kit
