#include "OutputDevice.h"

#include "CallbackWatchdog.h"
#include "DSP.h"
#include "Environment.h"
#include "SoundServers.h"
#include "Subprocess.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cubeb/cubeb.h>
#include <string_view>
#include <utility>

namespace velto {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr const char* streamName = "Velto";

// How long a server may take to answer: when an output is opened, and while another one plays. A
// server that is started by the first connection needs a second.
constexpr auto openingPatience = 1500ms, lookingPatience = 300ms, jackPatience = 700ms;

// Backends, by the library's names.
constexpr const char *pulse = "pulse", *jack = "jack", *alsa = "alsa";

std::string withCode(std::string text, int code) {
  return std::move(text) + " (cubeb error " + std::to_string(code) + ")";
}

// The library's default order of backends suits the systems that are not listed here.
#ifdef __linux__
constexpr bool choosesBackend = true;
#else
constexpr bool choosesBackend = false;
#endif

// A context of `backend`, or of any if it is nullptr; nullptr if there is none. If a backend fails,
// the library goes on with the others.
cubeb* newContext(const char* backend) {
  cubeb* context = nullptr;
  if (cubeb_init(&context, streamName, backend) != CUBEB_OK)
    return nullptr;
  if (backend == nullptr || std::string_view(cubeb_get_backend_id(context)) == backend)
    return context;
  cubeb_destroy(context);
  return nullptr;
}

// The system's sound servers, and what all devices learn about its output.
class System {
public:
  explicit System(std::string jackFinder)
      : pulse_(Environment::ofProcess()), jack_(Environment::ofProcess()),
        jackFinder_(std::move(jackFinder)) {}

  [[nodiscard]] ServerAnswer askPulse(std::chrono::milliseconds patience) const {
    return pulse_.ask(patience);
  }

  // The JACK library waits forever for a server that hangs, or for a lock that a client left when
  // it died. So another process looks for the server. If it has to be killed, it may leave such a
  // lock itself.
  [[nodiscard]] bool jackAnswers() const { return jack_.mayRun() && findsJack(); }
  // The same, more cheaply: not where only PipeWire may replace the server.
  [[nodiscard]] bool jackHasCome() const { return JackServer::hasTraces() && findsJack(); }

  // An output that is slow to start gets more time at its next start.
  [[nodiscard]] std::chrono::milliseconds startPatience() const {
    return CallbackWatchdog::patience * (1 << slowStarts_.load());
  }
  void noteStart(bool wasSlow) {
    constexpr int most = 2;
    slowStarts_.store(wasSlow ? std::min(slowStarts_.load() + 1, most) : 0);
  }

private:
  [[nodiscard]] bool findsJack() const {
    return !jackFinder_.empty() &&
           Subprocess::run({jackFinder_, jackFinderSwitch}, jackPatience) == 0;
  }

  const PulseServer pulse_;
  const JackServer jack_;
  const std::string jackFinder_;
  std::atomic<int> slowStarts_{0};
};

class CubebDevice final : public OutputDevice {
public:
  explicit CubebDevice(std::shared_ptr<System> system) : system_(std::move(system)) {}
  ~CubebDevice() override { stop(); }

  CubebDevice(const CubebDevice&) = delete;
  CubebDevice& operator=(const CubebDevice&) = delete;

  std::optional<std::string> start(Renderer& renderer) override {
    renderer_ = &renderer;
    auto error = openContext();
    if (!error)
      error = openStream();
    if (error) {
      stop();
    } else {
      watchdog_.emplace(Clock::now(), system_->startPatience());
      isStarted_.store(true);
    }
    return error;
  }

  void stop() override {
    if (isStarted_.exchange(false))
      system_->noteStart(failed_.load() && callbacks_.load() < CallbackWatchdog::startCallbacks);
    // A stream that still runs must not be destroyed: ALSA's backend aborts.
    if (stream_ != nullptr) {
      cubeb_stream_stop(stream_);
      cubeb_stream_destroy(stream_);
    }
    stream_ = nullptr;
    if (context_ != nullptr)
      cubeb_destroy(context_);
    context_ = nullptr;
  }

  [[nodiscard]] bool failed() const override {
    if (isStarted_.load() && watchdog_->isSilent(callbacks_.load(), Clock::now()))
      failed_.store(true);
    return failed_.load();
  }

  [[nodiscard]] bool isOutdone() override {
    if (!isLastResort_)
      return false;
    const bool knew =
        std::exchange(knowsServer_, system_->askPulse(lookingPatience) == ServerAnswer::answers ||
                                        system_->jackHasCome());
    return knowsServer_ && !knew;
  }

  // PulseAudio's buffer can be larger than requested.
  [[nodiscard]] std::chrono::milliseconds unheard() override {
    std::uint64_t heard = 0;
    const std::uint64_t rendered = frames_.load();
    if (context_ == nullptr || std::string_view(cubeb_get_backend_id(context_)) != pulse ||
        failed() || cubeb_stream_get_position(stream_, &heard) != CUBEB_OK || heard > rendered)
      return 0ms;
    return std::chrono::milliseconds((rendered - heard) * 1000 /
                                     static_cast<std::uint64_t>(sampleRateHz));
  }

  // cubeb aborts if the latency is queried after an error, so return the requested one.
  [[nodiscard]] std::size_t latencyFrames() const override { return outputLatencyFrames; }

private:
  // PulseAudio and JACK are asked only if their servers answer: the library would wait for them, or
  // go on with another backend.
  std::optional<std::string> openContext() {
    if (!choosesBackend) {
      context_ = newContext(nullptr);
      return context_ ? std::nullopt : std::optional<std::string>(noOutput);
    }
    const ServerAnswer answer = system_->askPulse(openingPatience);
    if (answer == ServerAnswer::answers) {
      knowsServer_ = true;
      context_ = newContext(pulse);
    }
    if (context_ == nullptr && system_->jackAnswers()) {
      knowsServer_ = true;
      context_ = newContext(jack);
    }
    if (context_ == nullptr) {
      isLastResort_ = true;
      isServerSilent_ = answer == ServerAnswer::silent;
      context_ = newContext(alsa);
    }
    return context_ ? std::nullopt : std::optional<std::string>(noOutput);
  }

  std::optional<std::string> openStream() {
    cubeb_stream_params format{};
    format.format = CUBEB_SAMPLE_FLOAT32NE;
    format.rate = static_cast<std::uint32_t>(sampleRateHz);
    format.channels = 2;
    format.layout = CUBEB_LAYOUT_STEREO;
    format.prefs = CUBEB_STREAM_PREF_NONE;
    if (const int code =
            cubeb_stream_init(context_, &stream_, streamName, nullptr, nullptr, nullptr, &format,
                              outputLatencyFrames, render, stateChanged, this);
        code != CUBEB_OK)
      return isServerSilent_ ? serverIsSilent : withCode("the sound output cannot be opened", code);
    if (const int code = cubeb_stream_start(stream_); code != CUBEB_OK)
      return withCode("the sound output cannot be started", code);
    return std::nullopt;
  }

  // Audio thread. Single writer of the counts.
  static long render(cubeb_stream*, void* device, const void*, void* output, long frames) {
    auto& self = *static_cast<CubebDevice*>(device);
    self.callbacks_.store(self.callbacks_.load(std::memory_order_relaxed) + 1,
                          std::memory_order_relaxed);
    fillOutput(*self.renderer_, static_cast<float*>(output), static_cast<std::size_t>(frames));
    self.frames_.store(self.frames_.load(std::memory_order_relaxed) +
                           static_cast<std::uint64_t>(frames),
                       std::memory_order_relaxed);
    return frames;
  }

  // Any thread.
  static void stateChanged(cubeb_stream*, void* device, cubeb_state state) {
    if (state == CUBEB_STATE_ERROR)
      static_cast<CubebDevice*>(device)->failed_.store(true);
  }

  static constexpr const char* noOutput = "no sound server or sound card is available";

  const std::shared_ptr<System> system_;
  Renderer* renderer_ = nullptr;
  cubeb* context_ = nullptr;
  cubeb_stream* stream_ = nullptr;
  bool isLastResort_ = false;   // plays where no server answered
  bool isServerSilent_ = false; // a server is there, but did not answer
  bool knowsServer_ = false;    // a server answered the last time
  std::atomic<bool> isStarted_{false};
  mutable std::atomic<bool> failed_{false};
  std::atomic<std::uint64_t> callbacks_{0};
  std::atomic<std::uint64_t> frames_{0};             // rendered
  mutable std::optional<CallbackWatchdog> watchdog_; // once started
};

} // namespace

OutputDeviceFactory systemOutput(std::string jackFinder) {
  return [system = std::make_shared<System>(std::move(jackFinder))] {
    return std::make_unique<CubebDevice>(system);
  };
}

int findJackServer() {
  Subprocess::endAfter(5s);
  // Where JACK fails, the library goes on with these.
  Environment::setVariable("PULSE_SERVER", "/dev/null");
  Environment::setVariable("ALSA_CONFIG_PATH", "/dev/null");
  cubeb* context = newContext(jack);
  if (context == nullptr)
    return 1;
  cubeb_destroy(context);
  return 0;
}

} // namespace velto
