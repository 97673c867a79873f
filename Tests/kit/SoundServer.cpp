#include "SoundServer.h"

#include "Command.h"
#include "Eventually.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <unistd.h>

namespace velto::kit {

namespace {

std::string pulseFolder() {
  return deskFolder() + "/pulse";
}

void waitForSink() {
  if (!eventually([] { return pactl("list short sinks").find("velto_sink") != std::string::npos; }))
    throw std::runtime_error("the sound server does not answer");
}

// The socket at which a server accepts its clients.
std::string jackSocket(const std::string& server) {
  return "/dev/shm/jack_" + server + "_" + std::to_string(::getuid()) + "_0";
}

} // namespace

SoundServer::SoundServer()
    : Daemon({"pulseaudio", "--daemonize=no", "--log-target=stderr", "-nF",
              pulseFolder() + "/default.pa"},
             {{"PULSE_CONFIG", pulseFolder() + "/daemon.conf"}}) {
  waitForSink();
}

PipeWireServer::PipeWireServer() : core_({"pipewire"}) {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  waitUntil([&] { return std::filesystem::exists(std::string(runtime) + "/pipewire-0"); },
            "PipeWire answers");
  manager_.emplace(std::vector<std::string>{"wireplumber"});
  pulse_.emplace(std::vector<std::string>{"pipewire-pulse"});
  waitUntil([] { return !pactl("info").empty(); }, "PipeWire's PulseAudio service answers");
  pactl("load-module module-null-sink sink_name=velto_sink rate=48000 channels=2");
  waitForSink();
  waitUntil([] { return pactl("get-default-sink").starts_with("velto_sink"); },
            "the sink is the default");
}

JackServerProcess::JackServerProcess() : name_("velto-test-" + std::to_string(::getpid() % 4)) {
  removeTraces();
  daemon_.emplace(std::vector<std::string>{"jackd", "--name", name_, "--no-realtime", "-d", "dummy",
                                           "--rate", "48000", "--period", "1024"},
                  std::map<std::string, std::string>{{"JACK_NO_AUDIO_RESERVATION", "1"}});
  waitUntil([this] { return std::filesystem::exists(jackSocket(name_)); }, "JACK answers");
}

JackServerProcess::~JackServerProcess() {
  daemon_->end();
  removeTraces();
}

// A server that was killed leaves its socket and its semaphores behind.
void JackServerProcess::removeTraces() const {
  namespace fs = std::filesystem;
  std::error_code ignored;
  std::vector<fs::path> left;
  for (const fs::directory_entry& entry : fs::directory_iterator("/dev/shm", ignored))
    if (entry.path().filename().native().starts_with("jack_") &&
        entry.path().native().find("_" + name_ + "_") != std::string::npos)
      left.push_back(entry.path());
  for (const fs::path& file : left)
    fs::remove(file, ignored);
}

std::string pactl(const std::string& arguments) {
  return runCommand("pactl " + arguments + " 2>/dev/null").output;
}

} // namespace velto::kit
