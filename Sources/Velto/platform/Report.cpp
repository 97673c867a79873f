#include "Report.h"

#include "StandardStreams.h"

#include <cerrno>
#include <cstring>

namespace velto {

namespace {

bool hasFailed = false;

std::string spaces(std::string_view text, std::size_t width) {
  return std::string(text.size() < width ? width - text.size() : 0, ' ');
}

} // namespace

void Report::line(std::string_view text) {
  const int error = StandardStreams::writeToOutput(std::string(text) + '\n');
  // A closed pipe is not an error: the reader has all that it wanted.
  if (error == 0 || error == EPIPE || hasFailed)
    return;
  hasFailed = true;
  StandardStreams::writeToError(std::string("Velto: the report cannot be written: ") +
                                std::strerror(error) + '\n');
}

bool Report::isComplete() {
  return !hasFailed;
}

std::string Report::check(bool ok, std::string_view name, std::size_t nameWidth,
                          std::string_view detail) {
  std::string text = ok ? "  PASS  " : "  FAIL  ";
  text += leftAligned(name, nameWidth);
  text += "  ";
  text += detail;
  return text;
}

std::string Report::rightAligned(std::string_view text, std::size_t width) {
  return spaces(text, width).append(text);
}

std::string Report::leftAligned(std::string_view text, std::size_t width) {
  return std::string(text) + spaces(text, width);
}

} // namespace velto
