// What commands write to the terminal.
//
// Main thread only.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace velto::Lab {

namespace Console {

// Writes `text` to standard output. Throws Failure if that fails, unless the reader of a pipe is
// gone: it has all that it wanted.
void print(std::string_view text);

} // namespace Console

// One line on standard error that says how far a command has got: "rendering: 12 of 82". Shown only
// on a terminal, once the command has taken a while, and removed at the end.
class Progress {
public:
  static constexpr std::chrono::milliseconds defaultPatience{500};

  Progress(std::string what, std::size_t total,
           std::chrono::milliseconds patience = defaultPatience);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  // Call after each of the `total` steps. Cheap: writes ten times a second at most.
  void advance();

private:
  std::string what_;
  std::size_t total_;
  std::size_t done_ = 0;
  std::chrono::steady_clock::time_point next_; // when to write next
  bool isTerminal_;
  bool isShown_ = false;
};

} // namespace velto::Lab
