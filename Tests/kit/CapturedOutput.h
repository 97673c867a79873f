// Capture of standard output.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace velto::kit {

// Replaces standard output from construction to text().
class CapturedOutput {
public:
  CapturedOutput() : earlier_(::dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    ::dup2(::fileno(file_.get()), STDOUT_FILENO);
  }
  ~CapturedOutput() { restore(); }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  // Everything written so far. Restores standard output.
  [[nodiscard]] std::string text() {
    restore();
    std::string text;
    std::rewind(file_.get());
    for (int c = std::fgetc(file_.get()); c != EOF; c = std::fgetc(file_.get()))
      text += static_cast<char>(c);
    return text;
  }

private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void restore() {
    if (earlier_ < 0)
      return;
    std::fflush(stdout);
    ::dup2(earlier_, STDOUT_FILENO);
    ::close(earlier_);
    earlier_ = -1;
  }

  std::unique_ptr<std::FILE, Close> file_{std::tmpfile()};
  int earlier_;
};

[[nodiscard]] inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\n', begin);
    lines.push_back(text.substr(begin, end - begin));
    if (end == text.npos) {
      lines.back() += " (no line feed)";
      break;
    }
    begin = end + 1;
  }
  return lines;
}

} // namespace velto::kit
