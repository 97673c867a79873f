#include "Bench.h"

#include "Xorshift64.h"
#include "kit/CapturedOutput.h"

#include "kit/RecordTesting.h"

#include <cstdlib>
#include <regex>
#include <string>
#include <vector>

namespace velto {
namespace {

namespace fs = std::filesystem;
using testing::ScopedVariable;
using testing::ScratchFolder;

std::vector<std::string> linesOfARun() {
  kit::CapturedOutput output;
  Bench::run();
  return kit::linesOf(output.text());
}

TEST(Bench, PrintsEveryDrillAndProfileSizeInColumns) {
  const std::vector<std::string> expected{
      R"(per-trial render cost \(10 runs each, 3\.2 s of audio\))",
      R"(  frequency  mean [ 0-9]{5}\.[0-9] ms   best [ 0-9]{5}\.[0-9] ms)",
      R"(  level      mean [ 0-9]{5}\.[0-9] ms   best [ 0-9]{5}\.[0-9] ms)",
      R"(  dynamics   mean [ 0-9]{5}\.[0-9] ms   best [ 0-9]{5}\.[0-9] ms)",
      R"(  polarity   mean [ 0-9]{5}\.[0-9] ms   best [ 0-9]{5}\.[0-9] ms)",
      "",
      R"(profile stats cost \(what recomputes on every view update\))",
      R"(     200 attempts   [ 0-9]{2}\.[0-9]{3} ms per view update  \(detail rows kept: 200\))",
      R"(    2000 attempts   [ 0-9]{2}\.[0-9]{3} ms per view update  \(detail rows kept: 2000\))",
      R"(   20000 attempts   [ 0-9]{2}\.[0-9]{3} ms per view update  \(detail rows kept: 5000\))",
  };
  const auto lines = linesOfARun();
  ASSERT_EQ(lines.size(), expected.size());
  for (std::size_t i = 0; i < lines.size(); ++i)
    EXPECT_TRUE(std::regex_match(lines[i], std::regex(expected[i]))) << lines[i];
}

TEST(Bench, TheBestRunIsPositiveAndAtMostTheMean) {
  const std::regex figures(R"(.* mean +([0-9]+)\.([0-9]) ms   best +([0-9]+)\.([0-9]) ms)");
  const auto lines = linesOfARun();
  for (std::size_t i = 1; i <= 4; ++i) {
    std::smatch match;
    ASSERT_TRUE(std::regex_match(lines[i], match, figures)) << lines[i];
    const int mean = std::stoi(match[1]) * 10 + std::stoi(match[2]);
    const int best = std::stoi(match[3]) * 10 + std::stoi(match[4]);
    EXPECT_LE(best, mean) << lines[i];
    EXPECT_GT(best, 0) << lines[i];
  }
}

TEST(Bench, RemovesItsFolderAndRestoresTheVariable) {
  const ScratchFolder folder;
  const ScopedVariable temporary("TMPDIR", folder.path().string());
  const ScopedVariable record("VELTO_PROFILE_DIR", (folder.path() / "own").string());
  (void)linesOfARun();
  EXPECT_TRUE(fs::is_empty(folder.path()));
  EXPECT_STREQ(std::getenv("VELTO_PROFILE_DIR"), (folder.path() / "own").c_str());
}

TEST(Bench, SyntheticAnswersUseThreeDrawsEachAndCycleThroughDrillsAndMaterials) {
  const double before = Date::now().secondsSinceReferenceDate;
  const auto attempts = Bench::syntheticAttempts(2000);
  const double after = Date::now().secondsSinceReferenceDate;
  ASSERT_EQ(attempts.size(), 2000U);
  Xorshift64 generator(4242);
  int hits = 0;
  for (std::size_t i = 0; i < attempts.size(); ++i) {
    const Attempt& attempt = attempts[i];
    EXPECT_EQ(attempt.correct, Xorshift64::unit(generator.next()) < 0.7) << i;
    EXPECT_EQ(attempt.error, Xorshift64::unit(generator.next())) << i;
    const auto band = static_cast<std::int64_t>(generator.next() % 27);
    EXPECT_EQ(attempt.mappedBand(), i % 4 == 0 ? std::optional(band) : std::nullopt) << i;
    EXPECT_EQ(attempt.drill, Drill::allCases[i % 4]) << i;
    EXPECT_EQ(attempt.material, Material::allCases[i % 3]) << i;
    EXPECT_EQ(attempt.difficulty, 50) << i;
    EXPECT_LE(before, attempt.date.secondsSinceReferenceDate) << i;
    EXPECT_GE(after, attempt.date.secondsSinceReferenceDate) << i;
    hits += attempt.correct ? 1 : 0;
  }
  EXPECT_NEAR(hits, 1400, 80); // four standard deviations
}

} // namespace
} // namespace velto
