#include "BackgroundWriter.h"

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace velto {

class BackgroundWriter::Threads {
public:
  Threads(std::chrono::milliseconds patience, std::function<void()> whenDone)
      : patience_(patience), whenDone_(std::move(whenDone)) {}

  void post(Work work, Detour detour, const std::shared_ptr<Threads>& self) {
    std::unique_lock lock(mutex_);
    next_ = std::move(work);
    detour_ = std::move(detour);
    if (!worker_.joinable())
      start(self, lock);
    if (busy_ && detour_ && helpers_.size() == detours_ && detours_ < mostDetours)
      startHelper(self);
    wake_.notify_all();
  }

  std::vector<Finish> takeFinishes() {
    const std::lock_guard lock(mutex_);
    return std::exchange(finishes_, {});
  }

  bool wait(std::chrono::milliseconds most) {
    std::unique_lock lock(mutex_);
    return idle_.wait_for(lock, most, [this] { return isIdle(); });
  }

  // Joins the threads if all are idle, otherwise detaches them.
  void end() {
    std::unique_lock lock(mutex_);
    ending_ = true;
    next_ = nullptr;
    detour_ = nullptr;
    whenDone_ = nullptr;
    wake_.notify_all();
    const bool joins = isIdle();
    lock.unlock();
    helpers_.push_back(std::move(worker_));
    for (std::thread& thread : helpers_) {
      if (!thread.joinable())
        continue;
      if (joins)
        thread.join();
      else
        thread.detach();
    }
  }

private:
  using Clock = std::chrono::steady_clock;

  [[nodiscard]] bool isIdle() const { return !next_ && !busy_ && detours_ == 0; }

  // The caller holds the lock.
  void keep(Finish finish) {
    if (!finish)
      return;
    finishes_.push_back(std::move(finish));
    if (whenDone_)
      whenDone_();
  }

  // If no thread can be started, runs the work on this one.
  void start(const std::shared_ptr<Threads>& self, std::unique_lock<std::mutex>& lock) {
    try {
      worker_ = std::thread([self] { self->run(); });
    } catch (const std::system_error&) {
      const Work work = std::exchange(next_, nullptr);
      detour_ = nullptr;
      lock.unlock();
      Outcome outcome = work();
      lock.lock();
      keep(std::move(outcome.finish));
    }
  }

  // Without a thread to be had, the work waits for its turn.
  void startHelper(const std::shared_ptr<Threads>& self) {
    try {
      helpers_.emplace_back([self] { self->help(); });
    } catch (const std::system_error&) {
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
      detour_ = nullptr;
      latestStart_ = Clock::now();
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
      // Destroying what the work owns may take time.
      lock.unlock();
      work = nullptr;
      lock.lock();
      busy_ = false;
      if (isIdle())
        idle_.notify_all();
    }
  }

  void help() {
    std::unique_lock lock(mutex_);
    while (true) {
      wake_.wait(lock, [this] { return (detour_ && busy_) || ending_; });
      if (ending_)
        return;
      // Another start meanwhile defers this one.
      if (const auto due = latestStart_ + patience_; Clock::now() < due) {
        wake_.wait_until(lock, due, [this] { return !detour_ || !busy_ || ending_; });
        continue;
      }
      Detour detour = std::exchange(detour_, nullptr);
      latestStart_ = Clock::now();
      ++detours_;
      lock.unlock();
      detour();
      detour = nullptr;
      lock.lock();
      --detours_;
      if (isIdle())
        idle_.notify_all();
    }
  }

  const std::chrono::milliseconds patience_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable idle_;
  Work next_;
  Detour detour_;                 // of next_; none once it has started
  Clock::time_point latestStart_; // of work or of a detour
  std::vector<Finish> finishes_;
  std::function<void()> whenDone_;
  bool busy_ = false; // the worker
  bool ending_ = false;
  std::size_t detours_ = 0;          // running
  std::thread worker_;               // owner only
  std::vector<std::thread> helpers_; // owner only
};

BackgroundWriter::BackgroundWriter(std::chrono::milliseconds patience,
                                   std::function<void()> whenDone)
    : threads_(std::make_shared<Threads>(patience, std::move(whenDone))) {}

BackgroundWriter::~BackgroundWriter() {
  threads_->end();
}

void BackgroundWriter::post(Work work, Detour detour) {
  threads_->post(std::move(work), std::move(detour), threads_);
}

void BackgroundWriter::collect() {
  for (const Finish& finish : threads_->takeFinishes())
    finish();
}

bool BackgroundWriter::wait(std::chrono::milliseconds most) {
  return threads_->wait(most);
}

} // namespace velto
