// The guide's table of what can be had without listening.
#include "BlindAnswer.h"
#include "TrialSeeds.h"
#include "kit/RecordTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

namespace velto {
namespace {

using testing::contentOf;
using testing::utc;

std::vector<std::string> cellsOf(const std::string& line) {
  std::vector<std::string> cells;
  std::istringstream text(line);
  std::string cell;
  std::getline(text, cell, '|');
  while (std::getline(text, cell, '|')) {
    cell.erase(0, cell.find_first_not_of(' '));
    cell.erase(cell.find_last_not_of(' ') + 1);
    cells.push_back(cell);
  }
  return cells;
}

// The rows of the guide's table below a heading, without head and ruler.
std::vector<std::vector<std::string>> tableBelow(const std::string& heading) {
  const std::string guide = contentOf(VELTO_GUIDE);
  std::istringstream text(guide.substr(std::min(guide.find(heading), guide.size())));
  std::vector<std::vector<std::string>> rows;
  std::string line;
  while (std::getline(text, line) && (rows.empty() || line.starts_with('|')))
    if (line.starts_with('|'))
      rows.push_back(cellsOf(line));
  if (rows.size() > 1)
    rows.erase(rows.begin() + 1);
  return rows;
}

TEST(Guide, TellsHowOftenTheBestAnswerWithoutListeningHits) {
  const auto table = tableBelow("## What the drills do not prove");
  ASSERT_EQ(table.size(), 1 + 2 * Drill::allCases.size());
  const auto& head = table.front();
  const auto clock = TrialSeeds::clock(utc(2026, 1, 1));
  const auto spread = TrialSeeds::spread();
  int figures = 0;
  for (std::size_t i = 1; i < table.size(); ++i) {
    ASSERT_EQ(table[i].size(), head.size());
    const auto drill = Drill::fromRawValue(table[i][0]);
    ASSERT_TRUE(drill) << table[i][0];
    const bool isFair = table[i][1] == "`velto --fair`";
    EXPECT_TRUE(isFair || table[i][1] == "`velto`") << table[i][1];
    for (std::size_t k = 2; k < head.size(); ++k) {
      const BlindAnswer answer =
          BlindAnswer::best(Targets::of(*drill, std::stod(head[k]), isFair ? spread : clock));
      EXPECT_EQ(std::stoi(table[i][k]), std::lround(100 * answer.hitRate))
          << table[i][0] << " " << table[i][1] << " at " << head[k];
      ++figures;
    }
  }
  EXPECT_EQ(figures, 8 * 7);
}

} // namespace
} // namespace velto
