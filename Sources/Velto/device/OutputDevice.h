// The sound output of the system.
#pragma once

#include "Headroom.h"
#include "Renderer.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

// Requested output latency: 60 ms. On two busy cores, the longest gap between callbacks within a
// minute was 40 ms.
inline constexpr std::size_t outputLatencyFrames = 2880;

// A stereo output of 32-bit floats at 48000 Hz. Each device is started at most once. To play again
// after stop(), create a new device, so that no frame of the old stream is replayed.
//
// One thread at a time, except where noted.
class OutputDevice {
public:
  virtual ~OutputDevice() = default;

  // Opens the output. `renderer` is called on the device's own thread, possibly before this
  // returns, until stop(). Returns an error text; nullopt on success.
  [[nodiscard]] virtual std::optional<std::string> start(Renderer& renderer) = 0;

  // Closes the output. When this returns, the renderer is not running and will not be called again.
  virtual void stop() = 0;

  // True if the output broke while it was open, or has not called the renderer for a second. Stop
  // and destroy a broken device. Any thread.
  [[nodiscard]] virtual bool failed() const = 0;

  // True if a better output has become available since start() or the last call: play on a new
  // device. May take a second.
  [[nodiscard]] virtual bool isOutdone() { return false; }

  // How long it will take until all that has been rendered is heard; 0 if unknown. May wait for the
  // device.
  [[nodiscard]] virtual std::chrono::milliseconds unheard() { return {}; }

  // The requested time from a rendered frame to the listener, in frames.
  [[nodiscard]] virtual std::size_t latencyFrames() const = 0;
};

using OutputDeviceFactory = std::function<std::unique_ptr<OutputDevice>()>;

// Why an opening failed if a sound server is there, but does not answer.
inline constexpr const char* serverIsSilent = "the sound server does not answer";

// The system's default output. On Linux: PulseAudio, or PipeWire in its place, if the server
// answers within 1.5 s; else JACK, if its server answers; else ALSA, until one of them answers. On
// other systems, what the sound library prefers.
//
// JACK servers are found by another process: `jackFinder` is the path of a program that returns the
// value of findJackServer() if its only argument is `jackFinderSwitch`. Without one, JACK is not
// used. Main thread only; the factory may be called on any thread.
[[nodiscard]] OutputDeviceFactory systemOutput(std::string jackFinder = {});

inline constexpr const char* jackFinderSwitch = "--find-jack-server";

// Returns 0 if a JACK server answers, else 1. May hang, but ends the process after 5 s. Call it in
// a process that does nothing else.
[[nodiscard]] int findJackServer();

} // namespace velto
