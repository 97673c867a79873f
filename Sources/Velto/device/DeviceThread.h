// The thread that opens and closes the output device.
#pragma once

#include "OutputDevice.h"
#include "Renderer.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace velto {

// A renderer that is told when a stream begins and ends. Both are called on the device thread,
// while nobody renders; they must not call the DeviceThread.
class StreamRenderer : public Renderer {
public:
  // `latencyFrames` is the length of the stream's buffer.
  virtual void streamBegins(std::size_t latencyFrames) = 0;
  virtual void streamEnded() = 0;
};

// Opening and closing a device takes as long as the sound server lets it: milliseconds, or half a
// minute if it does not answer. Only openAndWait() waits for that.
//
// Main thread only.
class DeviceThread {
public:
  // How long the destructor waits for a device to close.
  static constexpr std::chrono::milliseconds endPatience{1000};

  // Devices call `renderer`, and close `closeDelay` after closeLater(). No device is made before
  // open() or openAndWait().
  DeviceThread(OutputDeviceFactory makeDevice, std::shared_ptr<StreamRenderer> renderer,
               std::chrono::milliseconds closeDelay);
  // Closes the device and waits for that. A device that does not close in time is abandoned to the
  // thread, with all that it may still touch.
  ~DeviceThread();

  DeviceThread(const DeviceThread&) = delete;
  DeviceThread& operator=(const DeviceThread&) = delete;

  // Cancels closeLater(). Returns whether a device is open and has not failed.
  [[nodiscard]] bool keepOpen();

  // Returns true if a device is open and has not failed. Otherwise requests that one be opened,
  // after closing one that has failed, and returns false.
  bool open();
  // Waits until a device is open, and returns what went wrong.
  [[nodiscard]] std::optional<std::string> openAndWait();

  // Cancels a requested opening, and closes an open device after the delay.
  void closeLater();

  // Sets what is called, on the thread, when an opening that nobody waits for has ended. It must
  // not call this object.
  void whenOpeningEnds(std::function<void()> call);

  [[nodiscard]] bool
  isOpening() const;                 // also while the opening waits for an earlier device to close
  [[nodiscard]] bool isOpen() const; // false if the device has failed

  // Why the latest opening failed; nullopt if it did not, or if another one has been requested.
  [[nodiscard]] std::optional<std::string> error() const;

  // From a rendered frame to the listener. 0 without a device.
  [[nodiscard]] std::size_t latencyFrames() const;

private:
  class Shared;

  const std::shared_ptr<Shared> shared_; // with the thread
  std::thread thread_;
};

} // namespace velto
