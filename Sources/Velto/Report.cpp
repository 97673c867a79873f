#include "Report.h"

#include <cstdio>

namespace velto {

void Report::line(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}

std::string Report::check(bool ok, std::string_view name, std::size_t nameWidth,
                          std::string_view detail) {
  std::string text = ok ? "  PASS  " : "  FAIL  ";
  text += name;
  if (name.size() < nameWidth)
    text.append(nameWidth - name.size(), ' ');
  text += "  ";
  text += detail;
  return text;
}

} // namespace velto
