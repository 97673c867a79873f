// Runs the program as a user would, with given arguments, environment and standard streams.
#pragma once

#include "Processes.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace velto::kit {

struct ChildOptions {
  // Kinds of standard output or standard error.
  enum class Stream {
    captured,
    closed,     // no descriptor at all
    readerGone, // a pipe without a reader
    fullDisk,
    full // a non-blocking pipe that is filled up, and read a while after the start
  };

  std::map<std::string, std::string> environment{}; // nothing is inherited
  Stream out = Stream::captured;
  Stream error = Stream::captured;
  std::string folder = "/"; // current folder
};

struct ChildResult {
  int status = -1; // as in a shell: 128 + n if signal n ended it
  std::string out, error;
};

// Both ends of one stream of a child.
class ChildStream {
public:
  explicit ChildStream(ChildOptions::Stream kind) {
    if (kind == ChildOptions::Stream::fullDisk) {
      childEnd_ = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    } else if (kind != ChildOptions::Stream::closed) {
      int ends[2];
      const int flags = kind == ChildOptions::Stream::full ? O_CLOEXEC | O_NONBLOCK : O_CLOEXEC;
      if (::pipe2(ends, flags) != 0)
        throw std::runtime_error("no pipe");
      ownEnd_ = ends[0];
      childEnd_ = ends[1];
      while (kind == ChildOptions::Stream::full && ::write(childEnd_, "x", 1) == 1)
        ++filling_;
    }
    if (kind == ChildOptions::Stream::readerGone)
      close(ownEnd_);
  }
  ~ChildStream() {
    close(ownEnd_);
    close(childEnd_);
  }
  ChildStream(const ChildStream&) = delete;
  ChildStream& operator=(const ChildStream&) = delete;

  // In the child: replaces `descriptor`.
  void takeTheirPlace(int descriptor) const {
    if (childEnd_ >= 0)
      ::dup2(childEnd_, descriptor);
    else
      ::close(descriptor);
  }

  void leaveToChild() { close(childEnd_); }
  [[nodiscard]] int readEnd() const { return ownEnd_; }

  // Appends what has arrived, without the filling. Closes the stream at its end.
  void read(std::string& text) {
    char bytes[4096];
    const ssize_t count = ::read(ownEnd_, bytes, sizeof bytes);
    if (count > 0) {
      const auto skipped = std::min(filling_, count);
      filling_ -= skipped;
      text.append(bytes + skipped, static_cast<std::size_t>(count - skipped));
    } else if (count == 0 || (errno != EINTR && errno != EAGAIN))
      close(ownEnd_);
  }

private:
  static void close(int& descriptor) {
    if (descriptor >= 0)
      ::close(descriptor);
    descriptor = -1;
  }

  ssize_t filling_ = 0; // bytes to skip: not the child's
  int ownEnd_ = -1;
  int childEnd_ = -1;
};

// Runs `arguments` (program first) to the end. Kills the child after a minute.
[[nodiscard]] inline ChildResult runChild(const std::vector<std::string>& arguments,
                                          const ChildOptions& options = {}) {
  std::vector<std::string> words = arguments, variables;
  for (const auto& [name, value] : options.environment)
    variables.push_back(name + "=" + value);
  const auto argumentList = pointersTo(words), environment = pointersTo(variables);

  ChildStream out(options.out), error(options.error);
  const pid_t child = ::fork();
  if (child < 0)
    throw std::runtime_error("no process");
  if (child == 0) {
    std::signal(SIGPIPE, SIG_DFL);
    out.takeTheirPlace(STDOUT_FILENO);
    error.takeTheirPlace(STDERR_FILENO);
    if (::chdir(options.folder.c_str()) == 0)
      ::execve(words[0].c_str(), argumentList.data(), environment.data());
    ::_exit(126);
  }
  out.leaveToChild();
  error.leaveToChild();

  // Lets the child meet the full pipe. Nothing else depends on this time.
  if (options.out == ChildOptions::Stream::full)
    ::poll(nullptr, 0, 500);
  ChildResult result;
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (out.readEnd() >= 0 || error.readEnd() >= 0) {
    // poll() skips negative descriptors.
    pollfd streams[] = {{out.readEnd(), POLLIN, 0}, {error.readEnd(), POLLIN, 0}};
    if (std::chrono::steady_clock::now() > end)
      ::kill(child, SIGKILL);
    ::poll(streams, 2, 100);
    if (streams[0].revents != 0)
      out.read(result.out);
    if (streams[1].revents != 0)
      error.read(result.error);
  }
  result.status = waitForEnd(child);
  return result;
}

} // namespace velto::kit
