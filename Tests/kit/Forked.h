// Runs part of a test in a separate process.
#pragma once

#include "Processes.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/types.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>
#include <utility>

namespace velto::kit {

// A fork of this process that runs `body` and exits, with 1 if an expectation failed in it. The
// destructor kills it.
class Forked {
public:
  template <typename Body>
  explicit Forked(Body body) : process_(::fork()) {
    if (process_ == 0)
      run(std::move(body));
  }
  Forked(const Forked&) = delete;
  Forked& operator=(const Forked&) = delete;
  ~Forked() { static_cast<void>(killed()); }

  // Waits for the end. Returns the exit status, or 128 + n if signal n ended it.
  int ended() {
    if (process_ <= 0)
      return status_;
    status_ = waitForEnd(process_);
    process_ = -1;
    return status_;
  }

  int killed() {
    if (process_ > 0)
      ::kill(process_, SIGKILL);
    return ended();
  }

private:
  template <typename Body>
  [[noreturn]] static void run(Body body) {
    try {
      body();
    } catch (const std::exception& problem) {
      ADD_FAILURE() << problem.what();
    }
    std::fflush(nullptr);
    ::_exit(::testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
  }

  pid_t process_ = -1;
  int status_ = -1;
};

// Moves this process to mounts of its own. Another user than root also gets a user namespace, and
// keeps the own name in it: a user whom it does not know may not write to what it mounts. Returns
// false if this is not permitted.
[[nodiscard]] inline bool takeOwnMounts() {
  const uid_t user = ::geteuid();
  const gid_t group = ::getegid();
  if (::unshare(CLONE_NEWNS | (user == 0 ? 0 : CLONE_NEWUSER)) != 0)
    return false;
  if (user != 0) {
    const auto same = [](auto id) { return std::to_string(id) + " " + std::to_string(id) + " 1"; };
    std::ofstream("/proc/self/setgroups") << "deny";
    if (!(std::ofstream("/proc/self/uid_map") << same(user) << std::flush) ||
        !(std::ofstream("/proc/self/gid_map") << same(group) << std::flush))
      return false;
  }
  return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

// Runs `body` in a process with its own mounts. Returns false if that is not permitted.
template <typename Body>
[[nodiscard]] bool withOwnMounts(Body body) {
  constexpr int notAllowed = 77;
  Forked forked([&] {
    if (!takeOwnMounts())
      ::_exit(notAllowed);
    body();
  });
  const int status = forked.ended();
  if (status == notAllowed)
    return false;
  EXPECT_EQ(status, EXIT_SUCCESS);
  return true;
}

} // namespace velto::kit
