// The threads that open and close the output device.
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
#include <vector>

namespace velto {

// A renderer with callbacks for the begin and the end of a stream. Both run on any thread,
// never concurrently with render(), and must not call the DeviceThread.
class StreamRenderer : public Renderer {
public:
  // `latencyFrames` is the length of the stream's buffer.
  virtual void streamBegins(std::size_t latencyFrames) = 0;
  virtual void streamEnded() = 0;
};

// Opening and closing a device takes milliseconds, or forever if the sound server hangs. Only
// openAndWait() waits for that, and the destructor, both for a limited time.
//
// A thread that hangs is given up: it keeps its device, which renders silence from then on, and
// ends when the device lets it. Another thread takes its place, but never more than one: two
// threads can hang at a time.
//
// Main thread only.
class DeviceThread {
public:
  // Time limits. Only tests change them.
  struct Limits {
    std::chrono::milliseconds opening{10'000}; // then the opening has failed
    std::chrono::milliseconds closing{2000};   // then the next opening does not wait for it
    std::chrono::milliseconds ending{1250};    // the destructor's wait for a device due to close
    std::chrono::milliseconds looking{500};    // between looks for a better output
  };

  // Devices call `renderer`. They close `closeDelay` after closeLater(), or later, once a fade that
  // begins then has been heard: at most 530 ms after. No device is created before
  // open() or openAndWait().
  DeviceThread(OutputDeviceFactory makeDevice, std::shared_ptr<StreamRenderer> renderer,
               std::chrono::milliseconds closeDelay, const Limits& limits);
  // Closes the device and waits until it is closed. If that takes too long, gives its thread up.
  ~DeviceThread();

  DeviceThread(const DeviceThread&) = delete;
  DeviceThread& operator=(const DeviceThread&) = delete;

  // Cancels closeLater(). True if a device is open and neither broken nor outdone.
  [[nodiscard]] bool keepOpen();

  // Returns true if such a device is open. Otherwise requests opening and returns false; another
  // device is closed first. A device that was opened by this call fades out and counts as closed
  // when a better output becomes available.
  bool open();
  // Same, but waits until the device is open, and keeps it until it fails. Returns an error text;
  // nullopt on success.
  [[nodiscard]] std::optional<std::string> openAndWait();

  // Cancels a requested opening, and closes an open device after the delay.
  void closeLater();

  // Sets the callback for the end of an opening that open() requested, unless it was given up. It
  // runs on the device thread and must not call this object.
  void whenOpeningEnds(std::function<void()> call);

  // True from the request for an opening until it has succeeded or failed, even while an earlier
  // device is still closing.
  [[nodiscard]] bool isOpening() const;
  [[nodiscard]] bool isOpen() const; // as keepOpen() says

  // Why the latest opening failed; nullopt if it did not, or if a new one has been requested.
  [[nodiscard]] std::optional<std::string> error() const;

  // Frames from rendering to the listener; 0 without a device.
  [[nodiscard]] std::size_t latencyFrames() const;

  // The number of threads that hang.
  [[nodiscard]] std::size_t hanging() const;

private:
  class Worker;

  void replaceIfHanging();
  [[nodiscard]] std::size_t givenUp() const;

  // Each is shared with its thread; the last of the two frees it.
  std::shared_ptr<Worker> worker_;
  std::vector<std::weak_ptr<Worker>> givenUp_; // expired once they end
  std::thread thread_;                         // of worker_
};

} // namespace velto
