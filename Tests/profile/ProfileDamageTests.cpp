// Damaged, out-of-range and oversized profile files.
#include "Coding.h"
#include "Profile.h"

#include "kit/RecordTesting.h"

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <chrono>

namespace velto {
namespace {

using namespace testing;

namespace fs = std::filesystem;

const std::string smallFile =
    R"({"attempts":[{"id":"0123ABCD-4567-49AB-8DEF-00FF10EE20DD","date":801234567.25,)"
    R"("drill":"frequency","material":"Pink noise","difficulty":20.5,"correct":true,)"
    R"("error":0.32,"bandIndex":14}],"staircases":{"level":{"difficulty":44.25,)"
    R"("consecutiveCorrect":1,"reversals":6,"lastDirection":-1}},)"
    R"("lifetime":{"3":{"attempts":10,"hits":4,"errorSum":7.125}}})";

class ProfileDamage : public ::testing::Test {
protected:
  [[nodiscard]] ProfileLocation location() const { return {scratch_.path(), std::nullopt}; }
  [[nodiscard]] fs::path file() const { return scratch_.path() / "profile.json"; }

  // Expects the record to be empty if `content` is invalid. Otherwise expects it to be complete: a
  // trial of every drill can be made from it, and the next answers are saved.
  void expectUsable(const std::string& content) const {
    put(file(), content);
    const bool isValid = Coding::decodeStored(content).has_value();
    Profile profile(location());
    const std::size_t before = profile.attempts().size();
    ASSERT_EQ(profile.stats().bands.size(), isValid ? 27U : 0U) << content;
    if (!isValid) {
      ASSERT_TRUE(before == 0 && profile.staircases().empty() && profile.lifetime().empty());
      return;
    }

    for (const Drill drill : Drill::allCases) {
      const Trial trial =
          Drills::makeTrial(profile.staircase(drill).difficulty, Material::pinkNoise, 5, drill);
      ASSERT_TRUE(trial.boostDB >= 0 && trial.boostDB <= 12) << content;
      ASSERT_TRUE(trial.targetLevelDB >= 0 && trial.targetLevelDB <= 6) << content;
      ASSERT_TRUE(trial.targetGRdB >= 0 && trial.targetGRdB <= 12) << content;
      ASSERT_TRUE(trial.correlation >= 0 && trial.correlation <= 1) << content;
      profile.record(trial, {false, 1, {}, {}, {}});
      ASSERT_GE(profile.staircase(drill).difficulty, 0) << content;
    }
    ASSERT_EQ(profile.attempts().size(), before + 4);
    ASSERT_TRUE(profile.waitForDisk(std::chrono::seconds(30)));
    const Profile again(location());
    ASSERT_EQ(again.attempts(), profile.attempts()) << content;
    ASSERT_EQ(again.staircases(), profile.staircases()) << content;
  }

  ScratchFolder scratch_;
};

TEST_F(ProfileDamage, EveryFlippedBitGivesAnEmptyRecordOrAValidOne) {
  for (std::size_t position = 0; position < smallFile.size(); ++position) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      std::string content = smallFile;
      content[position] =
          static_cast<char>(static_cast<unsigned char>(content[position]) ^ (1U << bit));
      expectUsable(content);
    }
  }
}

// Replaces every number of the file in turn.
TEST_F(ProfileDamage, NumbersOutOfRangeLeaveTheRecordUsable) {
  const std::array<std::string, 10> numbers{"801234567.25", "20.5", "0.32", "14}", "44.25",
                                            ":1,",          ":6,",  "-1}",  "10,", "7.125"};
  for (const std::string& number : numbers) {
    const auto tail = number.find_first_of(",}");
    const std::string behind = tail == number.npos ? "" : number.substr(tail);
    const std::string before = number.starts_with(':') ? ":" : "";
    for (const char* other : {"1e308",
                              "-1e308",
                              "1.7976931348623157e308",
                              "5e-324",
                              "-0",
                              "1e309",
                              "-1e999999999999",
                              "1e-999999999999",
                              "9223372036854775807",
                              "-9223372036854775808",
                              "9223372036854775808",
                              "18446744073709551616",
                              "-1",
                              "27",
                              "2147483648",
                              "1e18",
                              "NaN",
                              "Infinity",
                              "-Infinity",
                              "nan",
                              "inf",
                              "0x10",
                              "1e",
                              "true",
                              "null",
                              "\"1\"",
                              "[]",
                              "{}"})
      expectUsable(changed(smallFile, number, before + other + behind));
    expectUsable(changed(smallFile, number, before + std::string(5000, '9') + behind));
    expectUsable(changed(smallFile, number, before + "0." + std::string(5000, '0') + "1" + behind));
  }
}

TEST_F(ProfileDamage, StaircasesOutOfRangeAreClampedByTheNextMove) {
  for (const char* difficulty : {"-1e308", "-0.5", "100.5", "1e308"}) {
    for (const char* count : {"-9223372036854775808", "-1", "2", "9223372036854775807"}) {
      put(file(),
          changed(changed(smallFile, "44.25", difficulty), ":1,", std::string(":") + count + ","));
      Profile profile(location());
      const Trial trial = Drills::makeTrial(50, Material::pad, 5, Drill::level);
      profile.record(trial, {false, 1, {}, {}, {}});
      EXPECT_GE(profile.staircase(Drill::level).difficulty, 0);
      // One wrong answer moves it down, two right ones move it up.
      profile.record(trial, {true, 0, {}, {}, {}});
      profile.record(trial, {true, 0, {}, {}, {}});
      EXPECT_LE(profile.staircase(Drill::level).difficulty, 100);
    }
  }
}

// An error sum that overflows cannot be encoded: the file stays as it was.
TEST_F(ProfileDamage, AnOverflowingErrorSumOnlyStopsSaving) {
  Stored stored;
  for (int i = 0; i < 5000; ++i)
    stored.attempts.push_back(row(Drill::frequency, 3, false, 1e308));
  const std::string content = Coding::encode(stored).value();
  put(file(), content);
  Profile profile(location());
  const Trial trial = Drills::makeTrial(50, Material::pad, 5, Drill::level);
  profile.record(trial, {true, 0, {}, {}, {}});
  ASSERT_TRUE(profile.waitForDisk(std::chrono::seconds(30)));
  EXPECT_NE(contentOf(file()), content);
  const std::string last = contentOf(file());
  profile.record(trial, {true, 0, {}, {}, {}});
  EXPECT_EQ(contentOf(file()), last);
  EXPECT_EQ(profile.attempts().size(), 5000U);
  EXPECT_TRUE(std::isinf(profile.stats().bands[3].meanErrorOct));
}

// ---- Large files ----

constexpr std::size_t hundredMegabytes = 100'000'000;

std::string repeated(const std::string& text, std::size_t bytes) {
  std::string result;
  result.reserve(bytes + text.size());
  while (result.size() < bytes)
    result += text;
  return result;
}

// Files of a hundred megabytes, one per test, to measure the memory of each.
class ProfileSize : public ProfileDamage {
protected:
  // Writes the file, loads it and returns the number of rows. Loading may take memory of at most
  // five times the file's size: its bytes, the rows, and one token with the parser's copies of it.
  [[nodiscard]] std::size_t rowsOf(std::string content) const {
    constexpr double mostTimes = 5;
    put(file(), content);
    const auto size = static_cast<double>(content.size());
    content = {};
    content.shrink_to_fit();
    const double before = residentBytes();
    resetPeak();
    const Profile profile(location());
    const double times = (peakBytes() - before) / size;
    std::printf("%s: %.2f times the size of the file\n",
                ::testing::UnitTest::GetInstance()->current_test_info()->name(), times);
    EXPECT_LE(times, mostTimes);
    return profile.attempts().size();
  }

private:
  static double statusBytes(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
      if (line.starts_with(key))
        return 1024 * static_cast<double>(std::atoll(line.c_str() + key.size()));
    return 0;
  }
  static double residentBytes() { return statusBytes("VmRSS:"); }
  static double peakBytes() { return statusBytes("VmHWM:"); }
  static void resetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }
};

std::string attemptTextOf(const std::string& file) {
  const auto from = file.find('[') + 1;
  return file.substr(from, file.find(']') - from);
}

TEST_F(ProfileSize, ReadsManyRowsWithinTheLimit) {
  const std::string attempt = attemptTextOf(smallFile);
  const std::string rows = repeated(attempt + ",", hundredMegabytes) + attempt;
  EXPECT_EQ(rowsOf(R"({"attempts":[)" + rows + R"(],"staircases":{}})"),
            (rows.size() + 1) / (attempt.size() + 1));
}

TEST_F(ProfileSize, ReadsOneLongTextWithinTheLimit) {
  EXPECT_EQ(rowsOf(changed(smallFile, R"("lifetime")",
                           R"("x":")" + std::string(hundredMegabytes, 'y') + R"(","lifetime")")),
            1U);
}

TEST_F(ProfileSize, ReadsOneLongNumberWithinTheLimit) {
  EXPECT_EQ(rowsOf(changed(smallFile, "20.5", "20.5" + std::string(hundredMegabytes, '0'))), 1U);
}

TEST_F(ProfileSize, RejectsDeepNestingWithinTheLimit) {
  EXPECT_EQ(rowsOf(R"({"attempts":[],"x":)" + std::string(hundredMegabytes, '[')), 0U);
}

TEST_F(ProfileSize, SkipsUnknownMembersWithinTheLimit) {
  EXPECT_EQ(rowsOf(changed(smallFile, R"("lifetime")",
                           repeated(R"("x":{"y":[1,2,3.5,"z",null]},)", hundredMegabytes) +
                               R"("lifetime")")),
            1U);
}

TEST_F(ProfileSize, RejectsOtherBytesWithinTheLimit) {
  EXPECT_EQ(rowsOf(std::string(hundredMegabytes, '\xff')), 0U);
  EXPECT_EQ(rowsOf(std::string(hundredMegabytes, ' ')), 0U);
}

} // namespace
} // namespace velto
