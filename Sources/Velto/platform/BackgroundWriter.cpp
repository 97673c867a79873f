#include "BackgroundWriter.h"

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace velto {

class BackgroundWriter::Thread {
public:
  explicit Thread(std::function<void()> whenDone) : whenDone_(std::move(whenDone)) {}

  void post(Work work, const std::shared_ptr<Thread>& self) {
    std::unique_lock lock(mutex_);
    next_ = std::move(work);
    if (!started_)
      start(self, lock);
    wake_.notify_all();
  }

  std::vector<Finish> takeFinishes() {
    const std::lock_guard lock(mutex_);
    return std::exchange(finishes_, {});
  }

  bool wait(std::chrono::milliseconds most) {
    std::unique_lock lock(mutex_);
    return idle_.wait_for(lock, most, [this] { return !next_ && !busy_; });
  }

  // Joins the thread if it is idle, else lets it go.
  void end() {
    std::unique_lock lock(mutex_);
    ending_ = true;
    next_ = nullptr;
    whenDone_ = nullptr;
    wake_.notify_all();
    const bool isIdle = !busy_;
    lock.unlock();
    if (!thread_.joinable())
      return;
    if (isIdle)
      thread_.join();
    else
      thread_.detach();
  }

private:
  // The caller holds the lock.
  void keep(Finish finish) {
    if (!finish)
      return;
    finishes_.push_back(std::move(finish));
    if (whenDone_)
      whenDone_();
  }

  // Without a thread to be had, the caller does the work itself.
  void start(const std::shared_ptr<Thread>& self, std::unique_lock<std::mutex>& lock) {
    try {
      thread_ = std::thread([self] { self->run(); });
      started_ = true;
    } catch (const std::system_error&) {
      const Work work = std::exchange(next_, nullptr);
      lock.unlock();
      Outcome outcome = work();
      lock.lock();
      keep(std::move(outcome.finish));
    }
  }

  void run() {
    constexpr std::chrono::milliseconds pause{10};
    std::unique_lock lock(mutex_);
    while (true) {
      wake_.wait(lock, [this] { return next_ || ending_; });
      if (ending_)
        return;
      Work work = std::exchange(next_, nullptr);
      busy_ = true;
      lock.unlock();
      Outcome outcome = work();
      lock.lock();
      keep(std::move(outcome.finish));
      if (outcome.again && !next_ && !ending_) {
        wake_.wait_for(lock, pause, [this] { return next_ || ending_; });
        if (!next_ && !ending_)
          next_ = std::move(work);
      }
      // What the work owns may need time to go.
      lock.unlock();
      work = nullptr;
      lock.lock();
      busy_ = false;
      if (!next_)
        idle_.notify_all();
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable idle_;
  Work next_;
  std::vector<Finish> finishes_;
  std::function<void()> whenDone_;
  bool started_ = false;
  bool busy_ = false;
  bool ending_ = false;
  std::thread thread_; // owner only
};

BackgroundWriter::BackgroundWriter(std::function<void()> whenDone)
    : thread_(std::make_shared<Thread>(std::move(whenDone))) {}

BackgroundWriter::~BackgroundWriter() {
  thread_->end();
}

void BackgroundWriter::post(Work work) {
  thread_->post(std::move(work), thread_);
}

void BackgroundWriter::collect() {
  for (const Finish& finish : thread_->takeFinishes())
    finish();
}

bool BackgroundWriter::wait(std::chrono::milliseconds most) {
  return thread_->wait(most);
}

} // namespace velto
