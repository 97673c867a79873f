#include "Console.h"

#include "Command.h"
#include "StandardStreams.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace velto {

namespace {

constexpr std::string_view eraseLine = "\r\x1b[K";
constexpr std::chrono::milliseconds betweenWrites{100};

} // namespace

void Lab::Console::print(std::string_view text) {
  const int error = StandardStreams::writeToOutput(text);
  if (error != 0 && error != EPIPE)
    throw Failure(std::string("the output cannot be written: ") + std::strerror(error));
}

Lab::Progress::Progress(std::string what, std::size_t total, std::chrono::milliseconds patience)
    : what_(std::move(what)), total_(total), next_(std::chrono::steady_clock::now() + patience),
      isTerminal_(StandardStreams::isErrorATerminal()) {}

Lab::Progress::~Progress() {
  if (isShown_)
    StandardStreams::writeToError(eraseLine);
}

void Lab::Progress::advance() {
  ++done_;
  if (!isTerminal_)
    return;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_)
    return;
  next_ = now + betweenWrites;
  isShown_ = true;
  std::string line(eraseLine);
  line += what_ + ": " + std::to_string(done_) + " of " + std::to_string(total_);
  StandardStreams::writeToError(line);
}

} // namespace velto
