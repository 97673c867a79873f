#include "Report.h"

#include <gtest/gtest.h>

using namespace velto;

TEST(Report, PadsNamesToTheirColumn) {
  EXPECT_EQ(Report::check(true, "short", 10, "detail"), "  PASS  short       detail");
  EXPECT_EQ(Report::check(false, "short", 10, ""), "  FAIL  short       ");
}

TEST(Report, KeepsLongNamesWhole) {
  EXPECT_EQ(Report::check(true, "exactly ten", 11, "d"), "  PASS  exactly ten  d");
  EXPECT_EQ(Report::check(false, "longer than that", 10, "d"), "  FAIL  longer than that  d");
}
