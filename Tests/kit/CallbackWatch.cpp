#include "CallbackWatch.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <ctime>
#include <cubeb/cubeb.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>
#include <vector>

namespace velto::kit {

namespace {

std::atomic<std::uint64_t> callbacks, allocations, locks, systemCalls;
std::atomic<bool> everySystemCall;

constinit thread_local bool inside = false;

void count(std::atomic<std::uint64_t>& offences) {
  if (inside)
    offences.fetch_add(1, std::memory_order_relaxed);
}

// ---- System calls, as dispatched by the kernel ----

// Read by the kernel at each system call of this thread.
enum : char { allow = 0, handOver = 1 }; // SYSCALL_DISPATCH_FILTER_ALLOW, _BLOCK
constinit thread_local volatile char dispatch = allow;

#ifdef __x86_64__

constexpr int setSyscallUserDispatch = 59; // PR_SET_SYSCALL_USER_DISPATCH

// Counts and performs the system call. Further calls of the same callback are not counted, because
// returning from this handler is a system call itself.
void takeSystemCall(int, siginfo_t*, void* context) {
  dispatch = allow;
  systemCalls.fetch_add(1, std::memory_order_relaxed);
  greg_t* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  const int savedError = errno;
  const bool wasInside = inside;
  inside = false;
  const long result =
      ::syscall(registers[REG_RAX], registers[REG_RDI], registers[REG_RSI], registers[REG_RDX],
                registers[REG_R10], registers[REG_R8], registers[REG_R9]);
  registers[REG_RAX] = result == -1 ? -errno : result;
  inside = wasInside;
  errno = savedError;
}

bool handOverSystemCalls() {
  struct sigaction action = {};
  action.sa_sigaction = takeSystemCall;
  action.sa_flags = SA_SIGINFO;
  // The sound library's threads block all signals, and a blocked SIGSYS would end the process.
  sigset_t own;
  sigemptyset(&own);
  sigaddset(&own, SIGSYS);
  return ::sigaction(SIGSYS, &action, nullptr) == 0 &&
         ::pthread_sigmask(SIG_UNBLOCK, &own, nullptr) == 0 &&
         ::prctl(setSyscallUserDispatch, 1, 0, 0, &dispatch) == 0;
}

#else

bool handOverSystemCalls() {
  return false;
}

#endif

// ---- The callback ----

struct Watched {
  cubeb_data_callback data;
  cubeb_state_callback state;
  void* user;
};

long watchedData(cubeb_stream* stream, void* user, const void* input, void* output, long frames) {
  static thread_local const bool isHandedOver = handOverSystemCalls();
  everySystemCall.store(isHandedOver, std::memory_order_relaxed);
  const auto* watched = static_cast<const Watched*>(user);
  inside = true;
  dispatch = isHandedOver ? handOver : allow;
  const long result = watched->data(stream, watched->user, input, output, frames);
  dispatch = allow;
  inside = false;
  callbacks.fetch_add(1, std::memory_order_relaxed);
  return result;
}

void watchedState(cubeb_stream* stream, void* user, cubeb_state state) {
  const auto* watched = static_cast<const Watched*>(user);
  watched->state(stream, watched->user, state);
}

// The library's function of this name, which this file replaces.
void* next(const char* name, std::atomic<void*>& known) {
  void* function = known.load(std::memory_order_relaxed);
  if (function == nullptr) {
    function = ::dlsym(RTLD_NEXT, name);
    known.store(function, std::memory_order_relaxed);
  }
  return function;
}

} // namespace

void CallbackWatch::reset() {
  for (auto* number : {&callbacks, &allocations, &locks, &systemCalls})
    number->store(0);
}

CallbackOffences CallbackWatch::offences() {
  return {.callbacks = callbacks,
          .allocations = allocations,
          .locks = locks,
          .systemCalls = systemCalls};
}

bool CallbackWatch::seesEverySystemCall() {
  return everySystemCall;
}

} // namespace velto::kit

// --- Replacements that the linker finds before the libraries' functions ---

using namespace velto::kit;

// Defines a function that counts and passes through: kind, result, name, parameters, arguments.
// NOLINTBEGIN(bugprone-macro-parentheses): the arguments bring their own
#define VELTO_COUNTED(kind, result, name, parameters, arguments)                                   \
  result name parameters {                                                                         \
    static constinit std::atomic<void*> known{nullptr};                                            \
    count(kind);                                                                                   \
    return reinterpret_cast<decltype(&::name)>(next(#name, known)) arguments;                      \
  }
// NOLINTEND(bugprone-macro-parentheses)

extern "C" {

int cubeb_stream_init(cubeb* context, cubeb_stream** stream, const char* name,
                      cubeb_devid inputDevice, cubeb_stream_params* inputParameters,
                      cubeb_devid outputDevice, cubeb_stream_params* outputParameters,
                      std::uint32_t latency, cubeb_data_callback data, cubeb_state_callback state,
                      void* user) {
  static constinit std::atomic<void*> known{nullptr};
  static std::mutex mutex;
  static std::vector<std::unique_ptr<Watched>> all; // kept: a stream may outlive its creator
  const std::lock_guard lock(mutex);
  all.push_back(std::make_unique<Watched>(Watched{data, state, user}));
  const auto real =
      reinterpret_cast<decltype(&::cubeb_stream_init)>(next("cubeb_stream_init", known));
  return real(context, stream, name, inputDevice, inputParameters, outputDevice, outputParameters,
              latency, watchedData, watchedState, all.back().get());
}

// Allocations call the C library's internal names: looking up the public ones would allocate.

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t size) {
  count(allocations);
  return __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size) {
  count(allocations);
  return __libc_calloc(number, size);
}

void* realloc(void* old, std::size_t size) {
  count(allocations);
  return __libc_realloc(old, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  count(allocations);
  return __libc_memalign(alignment, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
  count(allocations);
  return __libc_memalign(alignment, size);
}

int posix_memalign(void** place, std::size_t alignment, std::size_t size) {
  count(allocations);
  void* memory = __libc_memalign(alignment, size);
  if (memory == nullptr)
    return ENOMEM;
  *place = memory;
  return 0;
}

void free(void* memory) {
  count(allocations);
  __libc_free(memory);
}

// Locks.

VELTO_COUNTED(locks, int, pthread_mutex_lock, (pthread_mutex_t * mutex) noexcept, (mutex))
VELTO_COUNTED(locks, int, pthread_mutex_trylock, (pthread_mutex_t * mutex) noexcept, (mutex))
VELTO_COUNTED(locks, int, pthread_mutex_unlock, (pthread_mutex_t * mutex) noexcept, (mutex))
VELTO_COUNTED(locks, int, pthread_rwlock_rdlock, (pthread_rwlock_t * lock) noexcept, (lock))
VELTO_COUNTED(locks, int, pthread_rwlock_wrlock, (pthread_rwlock_t * lock) noexcept, (lock))
VELTO_COUNTED(locks, int, pthread_rwlock_tryrdlock, (pthread_rwlock_t * lock) noexcept, (lock))
VELTO_COUNTED(locks, int, pthread_rwlock_trywrlock, (pthread_rwlock_t * lock) noexcept, (lock))
VELTO_COUNTED(locks, int, pthread_spin_lock, (pthread_spinlock_t * lock) noexcept, (lock))
VELTO_COUNTED(locks, int, pthread_cond_wait, (pthread_cond_t * condition, pthread_mutex_t* mutex),
              (condition, mutex))
VELTO_COUNTED(locks, int, pthread_cond_timedwait,
              (pthread_cond_t * condition, pthread_mutex_t* mutex, const timespec* time),
              (condition, mutex, time))
VELTO_COUNTED(locks, int, pthread_cond_signal, (pthread_cond_t * condition) noexcept, (condition))
VELTO_COUNTED(locks, int, pthread_cond_broadcast, (pthread_cond_t * condition) noexcept,
              (condition))
VELTO_COUNTED(locks, int, sem_wait, (sem_t * semaphore), (semaphore))
VELTO_COUNTED(locks, int, sem_trywait, (sem_t * semaphore) noexcept, (semaphore))
VELTO_COUNTED(locks, int, sem_post, (sem_t * semaphore) noexcept, (semaphore))

// System calls. If the kernel dispatches all of them, they are counted there instead.

VELTO_COUNTED(systemCalls, ssize_t, write, (int file, const void* bytes, std::size_t size),
              (file, bytes, size))
VELTO_COUNTED(systemCalls, ssize_t, read, (int file, void* bytes, std::size_t size),
              (file, bytes, size))
VELTO_COUNTED(systemCalls, int, poll, (pollfd * files, nfds_t number, int time),
              (files, number, time))
VELTO_COUNTED(systemCalls, int, nanosleep, (const timespec* time, timespec* rest), (time, rest))
VELTO_COUNTED(systemCalls, int, clock_nanosleep,
              (clockid_t clock, int flags, const timespec* time, timespec* rest),
              (clock, flags, time, rest))
VELTO_COUNTED(systemCalls, int, sched_yield, () noexcept, ())
VELTO_COUNTED(systemCalls, void*, mmap,
              (void* place, std::size_t size, int protection, int flags, int file,
               off_t offset) noexcept,
              (place, size, protection, flags, file, offset))
VELTO_COUNTED(systemCalls, int, munmap, (void* place, std::size_t size) noexcept, (place, size))
VELTO_COUNTED(systemCalls, int, close, (int file), (file))

} // extern "C"
