#include "Report.h"
#include "StandardStreams.h"

#include "kit/CapturedOutput.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace velto {
namespace {

TEST(Report, PadsNamesToTheColumnWidth) {
  EXPECT_EQ(Report::check(true, "short", 10, "detail"), "  PASS  short       detail");
  EXPECT_EQ(Report::check(false, "short", 10, ""), "  FAIL  short       ");
}

TEST(Report, DoesNotTruncateLongNames) {
  EXPECT_EQ(Report::check(true, "exactly ten", 11, "d"), "  PASS  exactly ten  d");
  EXPECT_EQ(Report::check(false, "longer than that", 10, "d"), "  FAIL  longer than that  d");
}

TEST(Report, AlignsLeftAndRightWithoutTruncating) {
  EXPECT_EQ(Report::rightAligned("1.5", 5), "  1.5");
  EXPECT_EQ(Report::leftAligned("1.5", 5), "1.5  ");
  EXPECT_EQ(Report::rightAligned("12345", 5), "12345");
  EXPECT_EQ(Report::leftAligned("123456", 5), "123456");
}

TEST(Report, LinesKeepTheirOrderAmongOtherOutput) {
  kit::CapturedOutput output;
  std::cout << "first\n" << std::flush;
  Report::line("second");
  std::puts("third");
  std::fflush(stdout);
  Report::line("");
  Report::line("fifth — with a dash");
  EXPECT_EQ(output.text(), "first\nsecond\nthird\n\nfifth — with a dash\n");
  EXPECT_TRUE(Report::isComplete());
}

TEST(ReportDeathTest, AClosedStreamKeepsItsDescriptorAndFailsWrites) {
  EXPECT_EXIT(
      {
        ::close(STDIN_FILENO);
        ::close(STDOUT_FILENO);
        StandardStreams::prepare();
        const int file = ::open("/", O_RDONLY);
        Report::line("for nobody");
        ::_exit(file > STDERR_FILENO && !Report::isComplete() ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "Velto: the report cannot be written: Bad file descriptor\n");
}

} // namespace
} // namespace velto
