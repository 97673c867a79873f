#include "Table.h"

#include <gtest/gtest.h>

namespace velto {
namespace {

TEST(LabTable, AlignsItsColumns) {
  using enum Lab::Table::Alignment;
  Lab::Table table({left, right, left});
  table.add({"drill", "hits", "remark"});
  table.add({"level", "7", ""});
  table.add({"x", "12345"});
  EXPECT_EQ(table.text(), "drill   hits  remark\n"
                          "level      7\n"
                          "x      12345\n");
  EXPECT_EQ(Lab::Table({left}).text(), "");
}

} // namespace
} // namespace velto
