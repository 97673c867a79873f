#include "Date.h"

#include "kit/RecordTesting.h"

#include <chrono>
#include <cmath>

namespace velto {
namespace {

using namespace testing;

TEST(Date, ReferenceIsTheStartOf2001) {
  EXPECT_EQ(Date::referenceSince1970, static_cast<double>(utcSeconds(2001, 1, 1)));
}

TEST(Date, NowIsTheWallClock) {
  const auto secondsSince1970 = [] {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
  };
  const double before = secondsSince1970();
  const double now = Date::now().secondsSinceReferenceDate + 978307200;
  const double after = secondsSince1970();
  EXPECT_GE(now, before - 1e-6); // doubles near 2e9 are 2.4e-7 apart
  EXPECT_LE(now, after + 1e-6);
}

TEST(Date, NowHasAFractionOfASecond) {
  bool fraction = false;
  for (int i = 0; i < 10; ++i) {
    const double now = Date::now().secondsSinceReferenceDate;
    fraction = fraction || now != std::floor(now);
  }
  EXPECT_TRUE(fraction);
}

} // namespace
} // namespace velto
