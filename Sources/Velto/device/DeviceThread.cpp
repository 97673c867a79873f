#include "DeviceThread.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace velto {

// State shared by the main thread and the device thread; freed by whichever releases it last.
class DeviceThread::Shared {
public:
  using Clock = std::chrono::steady_clock;
  enum class Phase { closed, opening, open, closing };

  Shared(OutputDeviceFactory makeDevice, std::shared_ptr<StreamRenderer> renderer,
         std::chrono::milliseconds closeDelay)
      : makeDevice_(std::move(makeDevice)), renderer_(std::move(renderer)),
        closeDelay_(closeDelay) {}

  // The thread's work: opens and closes devices until isEnding.
  void run();

  // Call with `mutex` held.
  [[nodiscard]] bool hasWorkingDevice() const { return phase == Phase::open && !device->failed(); }
  void request();
  void closeLater();

  mutable std::mutex mutex;
  std::condition_variable wake;  // for the device thread
  std::condition_variable ended; // an opening or the thread has ended

  // Guarded by the mutex, except for a device that is being opened or closed, which only the device
  // thread uses.
  Phase phase = Phase::closed;
  std::unique_ptr<OutputDevice> device;
  std::optional<std::string> error;
  bool isRequested = false; // an opening is pending or under way
  bool isAwaited = false;   // openAndWait() waits for its end
  std::function<void()> openingEnded;
  std::optional<Clock::time_point> closeAt;
  bool isEnding = false, hasEnded = false;

private:
  using Lock = std::unique_lock<std::mutex>;

  [[nodiscard]] bool isDueToClose() const;
  void open(Lock& lock);
  void close(Lock& lock);
  void forgetDevice();

  const OutputDeviceFactory makeDevice_;
  const std::shared_ptr<StreamRenderer> renderer_;
  const std::chrono::milliseconds closeDelay_;
};

void DeviceThread::Shared::run() {
  Lock lock(mutex);
  while (true) {
    if (phase == Phase::open && isDueToClose())
      close(lock);
    else if (phase == Phase::closed && isRequested)
      open(lock);
    else if (phase == Phase::closed && isEnding)
      break;
    else if (const auto due = closeAt)
      wake.wait_until(lock, *due);
    else
      wake.wait(lock);
  }
  hasEnded = true;
  ended.notify_all();
}

bool DeviceThread::Shared::isDueToClose() const {
  return (isRequested && device->failed()) || (closeAt && Clock::now() >= *closeAt);
}

void DeviceThread::Shared::open(Lock& lock) {
  phase = Phase::opening;
  device = makeDevice_();
  renderer_->streamBegins(device->latencyFrames());
  lock.unlock();
  auto problem = device->start(*renderer_);
  lock.lock();
  if (problem)
    forgetDevice();
  else
    phase = Phase::open;
  error = std::move(problem);
  if (isRequested && !isAwaited && openingEnded)
    openingEnded();
  isRequested = false;
  ended.notify_all();
}

void DeviceThread::Shared::close(Lock& lock) {
  phase = Phase::closing;
  lock.unlock();
  device->stop();
  lock.lock();
  forgetDevice();
}

void DeviceThread::Shared::forgetDevice() {
  device.reset();
  renderer_->streamEnded();
  phase = Phase::closed;
  closeAt.reset();
}

void DeviceThread::Shared::request() {
  isRequested = true;
  error.reset();
  wake.notify_one();
}

void DeviceThread::Shared::closeLater() {
  isRequested = false;
  if (phase != Phase::closed && !closeAt)
    closeAt = Clock::now() + closeDelay_;
  wake.notify_one();
}

DeviceThread::DeviceThread(OutputDeviceFactory makeDevice, std::shared_ptr<StreamRenderer> renderer,
                           std::chrono::milliseconds closeDelay)
    : shared_(std::make_shared<Shared>(std::move(makeDevice), std::move(renderer), closeDelay)),
      thread_([shared = shared_] { shared->run(); }) {}

DeviceThread::~DeviceThread() {
  std::unique_lock lock(shared_->mutex);
  shared_->closeLater();
  shared_->isEnding = true;
  shared_->openingEnded = nullptr;
  const auto due = shared_->closeAt.value_or(Shared::Clock::now()) + endPatience;
  const bool ends = shared_->ended.wait_until(lock, due, [this] { return shared_->hasEnded; });
  lock.unlock();
  if (ends)
    thread_.join();
  else
    thread_.detach();
}

bool DeviceThread::keepOpen() {
  const std::lock_guard lock(shared_->mutex);
  shared_->closeAt.reset();
  return shared_->hasWorkingDevice();
}

bool DeviceThread::open() {
  const std::lock_guard lock(shared_->mutex);
  if (shared_->hasWorkingDevice())
    return true;
  shared_->request();
  return false;
}

std::optional<std::string> DeviceThread::openAndWait() {
  std::unique_lock lock(shared_->mutex);
  if (shared_->hasWorkingDevice())
    return std::nullopt;
  shared_->request();
  shared_->isAwaited = true;
  shared_->ended.wait(lock, [this] { return !shared_->isRequested; });
  shared_->isAwaited = false;
  return shared_->error;
}

void DeviceThread::closeLater() {
  const std::lock_guard lock(shared_->mutex);
  shared_->closeLater();
}

void DeviceThread::whenOpeningEnds(std::function<void()> call) {
  const std::lock_guard lock(shared_->mutex);
  shared_->openingEnded = std::move(call);
}

bool DeviceThread::isOpening() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->isRequested;
}

bool DeviceThread::isOpen() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->hasWorkingDevice();
}

std::optional<std::string> DeviceThread::error() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->error;
}

std::size_t DeviceThread::latencyFrames() const {
  const std::lock_guard lock(shared_->mutex);
  return shared_->device ? shared_->device->latencyFrames() : 0;
}

} // namespace velto
