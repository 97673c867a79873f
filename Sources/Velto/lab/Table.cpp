#include "Table.h"

#include <algorithm>
#include <cstddef>

namespace velto {

std::string Lab::Table::text() const {
  std::vector<std::size_t> widths(columns_.size(), 0);
  for (const auto& cells : rows_)
    for (std::size_t i = 0; i < cells.size(); ++i)
      widths[i] = std::max(widths[i], cells[i].size());

  std::string text;
  for (const auto& cells : rows_) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::string padding(widths[i] - cells[i].size(), ' ');
      line += i == 0 ? "" : "  ";
      line += columns_[i] == Alignment::right ? padding + cells[i] : cells[i] + padding;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

} // namespace velto
