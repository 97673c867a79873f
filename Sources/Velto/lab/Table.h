// Tables of plain text.
#pragma once

#include <string>
#include <vector>

namespace velto::Lab {

// Columns as wide as their widest cell. Cells count as wide as they have characters, so they are
// to be ASCII.
class Table {
public:
  enum class Alignment { left, right };

  explicit Table(std::vector<Alignment> columns) : columns_(std::move(columns)) {}

  // Adds a row. Cells that are missing at its end are empty; `cells` are no more than the columns.
  void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

  // The rows, each a line; two spaces between columns, none at the end of a line.
  [[nodiscard]] std::string text() const;

private:
  std::vector<Alignment> columns_;
  std::vector<std::vector<std::string>> rows_;
};

} // namespace velto::Lab
