#include "RecordCheck.h"

#include "Coding.h"
#include "kit/RecordTesting.h"

namespace velto {
namespace {

TEST(RecordCheck, CountsTheAnswersOfARecord) {
  const testing::ScratchFolder folder;
  const auto file = folder.path() / "profile.json";
  EXPECT_FALSE(RecordCheck::of(file).exists);
  Stored stored;
  stored.attempts.resize(3);
  testing::put(file, Coding::encode(stored).value());
  EXPECT_EQ(RecordCheck::of(file).answers, 3U);
  testing::put(file, "[]");
  EXPECT_TRUE(RecordCheck::of(file).exists);
  EXPECT_EQ(RecordCheck::of(file).answers, std::nullopt);
}

} // namespace
} // namespace velto
