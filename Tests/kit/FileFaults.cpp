#include "kit/FileFaults.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdarg>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace velto::kit {

namespace {

struct Armed {
  std::map<std::size_t, FileFault> faults;
  FileFaults::Where where = FileFaults::Where::thisThread;
  std::thread::id thread;
  std::size_t operations = 0;
  std::string opened; // if not empty, only openings of this file count, in any thread
};

std::mutex mutex;
std::optional<Armed> armed;

std::atomic<std::chrono::milliseconds> flushTime{};
thread_local std::size_t flushes = 0;
struct Stuck {
  std::size_t from = 0;
  std::size_t to = 0;
  std::size_t flushes = 0;
  std::size_t now = 0;
};
std::optional<Stuck> stuck; // with the mutex
std::condition_variable released;
thread_local std::size_t lockAttempts = 0;

bool isCounted(const Armed& faults, const char* opened) {
  if (!faults.opened.empty())
    return opened != nullptr && faults.opened == opened;
  const bool isThisThread = std::this_thread::get_id() == faults.thread;
  return isThisThread == (faults.where == FileFaults::Where::thisThread);
}

// `opened` is the file that an operation opens, if it opens one.
std::optional<FileFault> nextFault(const char* opened) {
  const std::lock_guard lock(mutex);
  if (!armed || !isCounted(*armed, opened))
    return std::nullopt;
  const auto found = armed->faults.find(armed->operations++);
  return found == armed->faults.end() ? std::nullopt : std::optional(found->second);
}

int errorOf(FileFault fault) {
  switch (fault) {
  case FileFault::noSpace:
    return ENOSPC;
  case FileFault::notPermitted:
    return EPERM;
  case FileFault::noDescriptors:
    return EMFILE;
  case FileFault::interrupted:
    return EINTR;
  default:
    return EIO;
  }
}

// Performs `real`, or the fault armed for this operation. `half` performs the part of the operation
// that a half fault lets through.
template <typename Real, typename Half>
auto faulty(Real real, Half half, const char* opened = nullptr) -> decltype(real()) {
  const auto fault = nextFault(opened);
  if (!fault)
    return real();
  switch (*fault) {
  case FileFault::half:
    return half(FileFault::half);
  case FileFault::lateDeath:
    real();
    ::raise(SIGKILL);
    break;
  case FileFault::halfAndDeath:
    half(*fault);
    ::raise(SIGKILL);
    break;
  case FileFault::death:
    ::raise(SIGKILL);
    break;
  case FileFault::halfAndError:
    half(*fault);
    break;
  default:
    break;
  }
  errno = errorOf(*fault);
  return -1;
}

// For operations that cannot be halved: FileFault::half performs them, other half faults skip them.
template <typename Real>
auto faulty(Real real, const char* opened = nullptr) -> decltype(real()) {
  return faulty(
      real,
      [&](FileFault fault) -> decltype(real()) { return fault == FileFault::half ? real() : -1; },
      opened);
}

void waitIfStuck() {
  std::unique_lock lock(mutex);
  if (!stuck)
    return;
  const std::size_t number = stuck->flushes++;
  if (number < stuck->from || number >= stuck->to)
    return;
  ++stuck->now;
  released.wait(lock, [] { return !stuck; });
}

template <typename Real>
int flushed(Real real) {
  ++flushes;
  waitIfStuck();
  std::this_thread::sleep_for(flushTime.load());
  return faulty(real);
}

} // namespace

FileFaults::FileFaults(std::map<std::size_t, FileFault> faults, Where where) {
  const std::lock_guard lock(mutex);
  armed = Armed{std::move(faults), where, std::this_thread::get_id(), 0, {}};
}

FileFaults::FileFaults(const std::filesystem::path& file, std::size_t number, FileFault fault) {
  const std::lock_guard lock(mutex);
  armed = Armed{{{number, fault}}, Where::otherThreads, {}, 0, file.string()};
}

FileFaults::~FileFaults() {
  const std::lock_guard lock(mutex);
  armed.reset();
}

std::size_t FileFaults::operationsSoFar() {
  const std::lock_guard lock(mutex);
  return armed ? armed->operations : 0;
}

SlowDisk::SlowDisk(std::chrono::milliseconds flush) {
  flushTime = flush;
}

SlowDisk::~SlowDisk() {
  flushTime = std::chrono::milliseconds(0);
}

StuckFlushes::StuckFlushes(std::size_t first, std::size_t count) {
  const std::lock_guard lock(mutex);
  stuck = Stuck{.from = first, .to = first + count};
}

StuckFlushes::~StuckFlushes() {
  {
    const std::lock_guard lock(mutex);
    stuck.reset();
  }
  released.notify_all();
}

std::size_t StuckFlushes::now() {
  const std::lock_guard lock(mutex);
  return stuck ? stuck->now : 0;
}

std::size_t SlowDisk::waitsOfThisThread() {
  return flushes;
}

std::size_t SlowDisk::lockAttemptsOfThisThread() {
  return lockAttempts;
}

} // namespace velto::kit

// ---- Replacements that the linker finds before the C library's functions ----

using velto::kit::faulty;
using velto::kit::FileFault;
using velto::kit::flushed;

extern "C" {

int open(const char* path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
    va_list arguments;
    va_start(arguments, flags);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  return faulty(
      [&] { return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode)); }, path);
}

ssize_t write(int descriptor, const void* bytes, size_t count) {
  const auto writeSome = [&](size_t some) -> ssize_t {
    return ::syscall(SYS_write, descriptor, bytes, some);
  };
  return faulty([&] { return writeSome(count); },
                [&](FileFault) { return writeSome(count > 1 ? count / 2 : count); });
}

// A failing close closes the descriptor anyway.
int close(int descriptor) {
  const auto really = [&] { return static_cast<int>(::syscall(SYS_close, descriptor)); };
  return faulty(really, [&](FileFault) { return really(); }) == 0
             ? 0
             : (static_cast<void>(really()), -1);
}

int rename(const char* from, const char* to) noexcept {
  return faulty(
      [&] { return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0)); });
}

int unlink(const char* path) noexcept {
  return faulty([&] { return static_cast<int>(::syscall(SYS_unlinkat, AT_FDCWD, path, 0)); });
}

int flock(int descriptor, int operation) noexcept {
  ++velto::kit::lockAttempts;
  return faulty([&] { return static_cast<int>(::syscall(SYS_flock, descriptor, operation)); });
}

int fsync(int descriptor) {
  return flushed([&] { return static_cast<int>(::syscall(SYS_fsync, descriptor)); });
}

int fdatasync(int descriptor) {
  return flushed([&] { return static_cast<int>(::syscall(SYS_fdatasync, descriptor)); });
}

int futimens(int descriptor, const timespec* times) noexcept {
  return faulty(
      [&] { return static_cast<int>(::syscall(SYS_utimensat, descriptor, nullptr, times, 0)); });
}

} // extern "C"
