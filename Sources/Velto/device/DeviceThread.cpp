#include "DeviceThread.h"

#include "RendererGate.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace velto {

// A thread's work, and the state that it shares with the main thread.
class DeviceThread::Worker {
public:
  using Clock = std::chrono::steady_clock;
  enum class Phase { closed, opening, open, closing };

  Worker(OutputDeviceFactory makeDevice, std::shared_ptr<StreamRenderer> renderer,
         std::chrono::milliseconds closeDelay, const Limits& theLimits)
      : limits(theLimits), makeDevice_(std::move(makeDevice)), renderer_(std::move(renderer)),
        closeDelay_(closeDelay) {}

  // Opens and closes devices until isEnding.
  void run();

  // A worker that takes over, for a thread of its own.
  [[nodiscard]] std::shared_ptr<Worker> successor() const {
    return std::make_shared<Worker>(makeDevice_, renderer_, closeDelay_, limits);
  }

  // Call with `mutex` held.
  [[nodiscard]] bool hasWorkingDevice() const {
    return phase == Phase::open && !isOutdone && !device->failed();
  }
  // True if opening or closing takes too long.
  [[nodiscard]] bool hangs() const;
  // When it will, unless it ends before.
  [[nodiscard]] Clock::time_point patienceEnds() const;
  void request(bool isFollowing);
  void closeLater();
  // Nothing renders any more. The thread ends as soon as the device lets it.
  void abandon();

  const Limits limits;
  mutable std::mutex mutex;
  std::condition_variable wake;    // for the device thread
  std::condition_variable changed; // the phase has changed, or an opening or the thread has ended

  // Guarded by the mutex, except for a device that is being opened, asked or closed, which only the
  // device thread uses.
  Phase phase = Phase::closed;
  Clock::time_point phaseBegan;
  std::unique_ptr<OutputDevice> device;
  std::unique_ptr<RendererGate> gate; // in front of the device
  std::optional<std::string> error;
  bool isRequested = false; // an opening is pending or under way
  bool isAwaited = false;   // openAndWait() waits for its end
  bool isOutdone = false;   // the open device should be replaced by a better one
  bool follows = false;     // looks for a better one
  std::function<void()> openingEnded;
  std::optional<Clock::time_point> closeAt;
  bool isBuffered = false; // closeAt includes what the device has buffered
  bool isAbandoned = false;
  bool isEnding = false, hasEnded = false;

private:
  using Lock = std::unique_lock<std::mutex>;
  static constexpr std::chrono::milliseconds mostUnheard{500};
  static constexpr std::chrono::milliseconds fadeMargin{30}; // the fade, and jitter of the device

  void enter(Phase next);
  [[nodiscard]] bool isDueToClose() const;
  void open(Lock& lock);
  void attend(Lock& lock);
  void waitForBuffered(Lock& lock);
  void close(Lock& lock);
  void forgetDevice();
  void endStream();

  const OutputDeviceFactory makeDevice_;
  const std::shared_ptr<StreamRenderer> renderer_;
  const std::chrono::milliseconds closeDelay_;
  Clock::time_point lookAt_; // for a better output; device thread only
};

void DeviceThread::Worker::run() {
  Lock lock(mutex);
  while (true) {
    if (phase == Phase::open && isDueToClose())
      close(lock);
    else if (phase == Phase::open)
      attend(lock);
    else if (isRequested)
      open(lock);
    else if (isEnding)
      break;
    else
      wake.wait(lock);
  }
  hasEnded = true;
  changed.notify_all();
}

bool DeviceThread::Worker::isDueToClose() const {
  return (isRequested && !hasWorkingDevice()) || (closeAt && Clock::now() >= *closeAt);
}

void DeviceThread::Worker::enter(Phase next) {
  phase = next;
  phaseBegan = Clock::now();
  changed.notify_all();
}

void DeviceThread::Worker::open(Lock& lock) {
  enter(Phase::opening);
  device = makeDevice_();
  gate = std::make_unique<RendererGate>(*renderer_);
  renderer_->streamBegins(device->latencyFrames());
  lock.unlock();
  auto problem = device->start(*gate);
  lock.lock();
  if (problem)
    forgetDevice();
  else
    enter(Phase::open);
  error = std::move(problem);
  isOutdone = false;
  lookAt_ = Clock::now() + limits.looking;
  if (isRequested && !isAwaited && openingEnded)
    openingEnded();
  isRequested = false;
  changed.notify_all();
}

// Waits for something to do with the open device, or for the next look for a better output.
void DeviceThread::Worker::attend(Lock& lock) {
  if (closeAt && !isBuffered)
    return waitForBuffered(lock);
  if (const auto due = closeAt) {
    wake.wait_until(lock, *due);
    return;
  }
  if (isRequested || isOutdone || !follows)
    return wake.wait(lock);
  if (Clock::now() < lookAt_) {
    wake.wait_until(lock, lookAt_);
    return;
  }
  lock.unlock();
  const bool isBetter = device->isOutdone();
  lock.lock();
  lookAt_ = Clock::now() + limits.looking;
  if (!isBetter || !follows)
    return;
  gate->fadeOut();
  lock.unlock();
  std::this_thread::sleep_for(closeDelay_);
  lock.lock();
  isOutdone = true;
}

// The fade is rendered behind all that the device has buffered, and is heard after it.
void DeviceThread::Worker::waitForBuffered(Lock& lock) {
  isBuffered = true;
  const auto due = closeAt;
  lock.unlock();
  const auto heard = Clock::now() + std::min(device->unheard(), mostUnheard) + fadeMargin;
  lock.lock();
  if (closeAt == due)
    closeAt = std::max(*due, heard);
}

void DeviceThread::Worker::close(Lock& lock) {
  enter(Phase::closing);
  lock.unlock();
  device->stop();
  lock.lock();
  forgetDevice();
}

void DeviceThread::Worker::forgetDevice() {
  device.reset();
  endStream();
  gate.reset();
  enter(Phase::closed);
  closeAt.reset();
}

void DeviceThread::Worker::endStream() {
  if (!isAbandoned)
    renderer_->streamEnded();
}

bool DeviceThread::Worker::hangs() const {
  return Clock::now() >= patienceEnds();
}

DeviceThread::Worker::Clock::time_point DeviceThread::Worker::patienceEnds() const {
  if (phase == Phase::opening)
    return phaseBegan + limits.opening;
  if (phase == Phase::closing)
    return phaseBegan + limits.closing;
  return Clock::time_point::max();
}

void DeviceThread::Worker::request(bool isFollowing) {
  isRequested = true;
  follows = isFollowing;
  error.reset();
  wake.notify_one();
}

void DeviceThread::Worker::closeLater() {
  isRequested = false;
  if (phase != Phase::closed && !closeAt) {
    closeAt = Clock::now() + closeDelay_;
    isBuffered = false;
  }
  wake.notify_one();
}

void DeviceThread::Worker::abandon() {
  closeLater();
  isEnding = true;
  openingEnded = nullptr;
  if (phase == Phase::opening || phase == Phase::closing) {
    gate->close();
    endStream();
  }
  isAbandoned = true;
}

DeviceThread::DeviceThread(OutputDeviceFactory makeDevice, std::shared_ptr<StreamRenderer> renderer,
                           std::chrono::milliseconds closeDelay, const Limits& limits)
    : worker_(
          std::make_shared<Worker>(std::move(makeDevice), std::move(renderer), closeDelay, limits)),
      thread_([worker = worker_] { worker->run(); }) {}

DeviceThread::~DeviceThread() {
  std::unique_lock lock(worker_->mutex);
  worker_->closeLater();
  worker_->isEnding = true;
  worker_->openingEnded = nullptr;
  const auto due = worker_->closeAt.value_or(Worker::Clock::now()) + worker_->limits.ending;
  const bool ends = worker_->changed.wait_until(lock, due, [this] { return worker_->hasEnded; });
  lock.unlock();
  if (ends)
    thread_.join();
  else
    thread_.detach();
}

bool DeviceThread::keepOpen() {
  const std::lock_guard lock(worker_->mutex);
  worker_->closeAt.reset();
  return worker_->hasWorkingDevice();
}

bool DeviceThread::open() {
  replaceIfHanging();
  const std::lock_guard lock(worker_->mutex);
  if (worker_->hasWorkingDevice())
    return true;
  worker_->request(true);
  return false;
}

std::optional<std::string> DeviceThread::openAndWait() {
  replaceIfHanging();
  std::unique_lock lock(worker_->mutex);
  if (worker_->hasWorkingDevice())
    return std::nullopt;
  worker_->request(false);
  worker_->isAwaited = true;
  while (worker_->isRequested && !worker_->hangs()) {
    const auto end = worker_->patienceEnds();
    end == Worker::Clock::time_point::max() ? worker_->changed.wait(lock)
                                            : void(worker_->changed.wait_until(lock, end));
  }
  worker_->isAwaited = false;
  if (!worker_->isRequested)
    return worker_->error;
  worker_->closeLater();
  worker_->error = serverIsSilent;
  return worker_->error;
}

void DeviceThread::closeLater() {
  const std::lock_guard lock(worker_->mutex);
  worker_->closeLater();
}

void DeviceThread::whenOpeningEnds(std::function<void()> call) {
  const std::lock_guard lock(worker_->mutex);
  worker_->openingEnded = std::move(call);
}

bool DeviceThread::isOpening() const {
  const std::lock_guard lock(worker_->mutex);
  return worker_->isRequested && !worker_->hangs();
}

bool DeviceThread::isOpen() const {
  const std::lock_guard lock(worker_->mutex);
  return worker_->hasWorkingDevice();
}

std::optional<std::string> DeviceThread::error() const {
  const std::lock_guard lock(worker_->mutex);
  if (worker_->isRequested && worker_->hangs())
    return serverIsSilent;
  return worker_->error;
}

std::size_t DeviceThread::latencyFrames() const {
  const std::lock_guard lock(worker_->mutex);
  return worker_->device ? worker_->device->latencyFrames() : 0;
}

std::size_t DeviceThread::hanging() const {
  const std::lock_guard lock(worker_->mutex);
  return givenUp() + (worker_->hangs() ? 1 : 0);
}

std::size_t DeviceThread::givenUp() const {
  return static_cast<std::size_t>(std::count_if(
      givenUp_.begin(), givenUp_.end(), [](const auto& worker) { return !worker.expired(); }));
}

void DeviceThread::replaceIfHanging() {
  std::shared_ptr<Worker> next;
  {
    const std::lock_guard lock(worker_->mutex);
    if (!worker_->hangs() || givenUp() > 0)
      return;
    next = worker_->successor();
    next->openingEnded = std::move(worker_->openingEnded);
    worker_->abandon();
  }
  std::erase_if(givenUp_, [](const auto& worker) { return worker.expired(); });
  givenUp_.push_back(worker_);
  thread_.detach();
  worker_ = std::move(next);
  thread_ = std::thread([worker = worker_] { worker->run(); });
}

} // namespace velto
