// The seam between the mixer and the machine's sound output.
#pragma once

#include "Renderer.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velto {

// What a rendered sample is multiplied by on its way out: 6.02 dB down, exactly. Every material has
// an RMS level of -20 dB, but the drum loop's crest reaches 5.2 dB above full scale where a drill
// makes it louder, and a converter would cut that off.
inline constexpr float outputHeadroom = 0.5F;

// How far ahead of the listener a frame is rendered: 60 ms. On two cores that were kept busy, the
// longest time between two callbacks was 40 ms in a minute.
inline constexpr std::size_t outputLatencyFrames = 2880;

// The whole of a device's callback: lets `renderer` fill the block and takes the headroom off.
// Audio thread: no lock, no allocation, no system call.
void fillOutput(Renderer& renderer, float* interleaved, std::size_t frames) noexcept;

// A stereo output of 32-bit floats at 48000 Hz. One device is started once: whoever wants sound
// again after `stop` makes a new one, so that no frame of the old stream is ever replayed.
//
// All functions are called by one thread at a time.
class OutputDevice {
public:
  virtual ~OutputDevice() = default;

  // Opens the output and lets `renderer` be called on the device's own thread, possibly before this
  // returns, until `stop`. Returns what went wrong, or nothing.
  [[nodiscard]] virtual std::optional<std::string> start(Renderer& renderer) = 0;

  // Closes the output. No call of the renderer is running or will come when this returns.
  virtual void stop() = 0;

  // Whether the output broke while it was open. A broken device calls no renderer; only stopping
  // and destroying it remain. Any thread.
  [[nodiscard]] virtual bool failed() const = 0;

  // How long a rendered frame takes to the listener, in frames: the figure that was asked for.
  [[nodiscard]] virtual std::size_t latencyFrames() const = 0;
};

using OutputDeviceFactory = std::function<std::unique_ptr<OutputDevice>()>;

// The output that the system calls its default one.
[[nodiscard]] std::unique_ptr<OutputDevice> makeDefaultOutputDevice();

} // namespace velto
