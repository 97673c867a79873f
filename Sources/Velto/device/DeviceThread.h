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

// A renderer with callbacks for the begin and the end of a stream. Both run on the device thread,
// never concurrently with render(), and must not call the DeviceThread.
class StreamRenderer : public Renderer {
public:
  // `latencyFrames` is the length of the stream's buffer.
  virtual void streamBegins(std::size_t latencyFrames) = 0;
  virtual void streamEnded() = 0;
};

// Opening and closing a device takes milliseconds, or half a minute if the sound server does not
// answer. Only openAndWait() waits for that; the destructor waits for a limited time.
//
// Main thread only.
class DeviceThread {
public:
  // How long the destructor waits, once a device is due to close.
  static constexpr std::chrono::milliseconds endPatience{1000};

  // Devices call `renderer`, and close `closeDelay` after closeLater(). No device is created before
  // open() or openAndWait().
  DeviceThread(OutputDeviceFactory makeDevice, std::shared_ptr<StreamRenderer> renderer,
               std::chrono::milliseconds closeDelay);
  // Closes the device and waits until it is closed. If that takes too long, detaches the thread,
  // which keeps the device and all objects in use alive.
  ~DeviceThread();

  DeviceThread(const DeviceThread&) = delete;
  DeviceThread& operator=(const DeviceThread&) = delete;

  // Cancels closeLater(). True if a device is open and has not failed.
  [[nodiscard]] bool keepOpen();

  // Returns true if a device is open and has not failed. Otherwise requests opening and returns
  // false; a device that has failed is closed first.
  bool open();
  // Same, but waits until the device is open. Returns an error text; nullopt on success.
  [[nodiscard]] std::optional<std::string> openAndWait();

  // Cancels a requested opening, and closes an open device after the delay.
  void closeLater();

  // Sets the callback that runs when an opening requested by open() has succeeded or failed. It
  // runs on the device thread and must not call this object.
  void whenOpeningEnds(std::function<void()> call);

  // True from the request for an opening until it has succeeded or failed, even while an earlier
  // device is still closing.
  [[nodiscard]] bool isOpening() const;
  [[nodiscard]] bool isOpen() const; // false if the device has failed

  // Why the latest opening failed; nullopt if it did not, or if a new one has been requested.
  [[nodiscard]] std::optional<std::string> error() const;

  // Frames from rendering to the listener; 0 without a device.
  [[nodiscard]] std::size_t latencyFrames() const;

private:
  class Shared;

  const std::shared_ptr<Shared> shared_; // shared with the thread
  std::thread thread_;
};

} // namespace velto
