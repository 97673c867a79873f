#include "Profile.h"

#include "Bands.h"
#include "Coding.h"
#include "kit/RecordTesting.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace velto {
namespace {

using namespace testing;

namespace fs = std::filesystem;

Trial frequencyTrial(double targetFreq = 1000, double difficulty = 20) {
  return {.drill = Drill::frequency,
          .seed = 7,
          .material = Material::drums,
          .difficulty = difficulty,
          .targetFreq = targetFreq};
}

Trial levelTrial() {
  return {.drill = Drill::level, .seed = 7, .material = Material::pad, .difficulty = 33};
}

Drills::Grade graded(bool correct, double error) {
  return {correct, error, {}, {}, {}};
}

// `count` answers dated now, with their index as difficulty. Every other one is a frequency answer
// in band i % 27. Errors are tenths, so that a sum kept in 32 bits would differ.
std::vector<Attempt> rows(int count) {
  std::vector<Attempt> result;
  Attempt attempt = row(Drill::level, std::nullopt, false, 0, Date::now());
  for (int i = 0; i < count; ++i) {
    const bool frequency = i % 2 == 0;
    attempt.drill = frequency ? Drill::frequency : Drill::level;
    attempt.bandIndex = frequency ? std::optional<std::int64_t>(i % 27) : std::nullopt;
    attempt.correct = i % 3 == 0;
    attempt.error = (i % 64) / 10.0;
    attempt.difficulty = i;
    result.push_back(attempt);
  }
  return result;
}

// Adds an answer to the expected roll-up of its band.
void count(BandRoll& roll, const Attempt& attempt) {
  roll.attempts += 1;
  roll.hits += attempt.correct ? 1 : 0;
  roll.errorSum += attempt.error;
}

class ProfileTest : public ::testing::Test {
protected:
  static constexpr std::chrono::seconds patience{30};

  [[nodiscard]] ProfileLocation location() const { return {folder(), std::nullopt}; }
  [[nodiscard]] fs::path folder() const { return scratch_.path() / "profile"; }
  [[nodiscard]] fs::path file() const { return folder() / "profile.json"; }
  [[nodiscard]] Stored saved() const { return Coding::decodeStored(contentOf(file())).value(); }
  void putRows(int count) const {
    put(file(), Coding::encode(Stored{rows(count), {}, {}}).value());
  }

  static void expectEmpty(const Profile& profile) {
    EXPECT_TRUE(profile.attempts().empty());
    EXPECT_TRUE(profile.staircases().empty());
    EXPECT_TRUE(profile.lifetime().empty());
    EXPECT_EQ(profile.stats(), Stats{});
  }

  ScratchFolder scratch_;
};

// ---- Location and migration ----

class ProfileInData : public ProfileTest {
protected:
  [[nodiscard]] fs::path data() const { return scratch_.path() / "data"; }
  [[nodiscard]] fs::path earlier() const { return data() / "Velto" / "profile.json"; }
  [[nodiscard]] fs::path current() const { return data() / "MORLA Velto" / "profile.json"; }

  ScopedVariable noDirectory_{"VELTO_PROFILE_DIR", std::nullopt};
  ScopedVariable dataHome_{"XDG_DATA_HOME", data().string()};
  const std::string five_ = Coding::encode(Stored{rows(5), {}, {}}).value();
  const std::string three_ = Coding::encode(Stored{rows(3), {}, {}}).value();
};

TEST_F(ProfileInData, CreatesTheFolderButNotTheFile) {
  const Profile profile;
  EXPECT_EQ(profile.url(), current());
  EXPECT_TRUE(fs::is_directory(data() / "MORLA Velto"));
  EXPECT_FALSE(fs::exists(current()));
  EXPECT_FALSE(fs::exists(data() / "Velto"));
}

TEST_F(ProfileInData, AnEarlierFileIsMoved) {
  put(earlier(), five_);
  EXPECT_EQ(Profile().attempts().size(), 5U);
  EXPECT_EQ(contentOf(current()), five_);
  EXPECT_FALSE(fs::exists(earlier()));
}

TEST_F(ProfileInData, AnEarlierFileIsMovedEvenIfInvalid) {
  put(earlier(), "not a profile");
  expectEmpty(Profile());
  EXPECT_EQ(contentOf(current()), "not a profile");
}

TEST_F(ProfileInData, AnEarlierFileStaysIfTheCurrentOneExists) {
  put(earlier(), five_);
  put(current(), three_);
  EXPECT_EQ(Profile().attempts().size(), 3U);
  EXPECT_EQ(contentOf(earlier()), five_);
  EXPECT_EQ(contentOf(current()), three_);
}

TEST_F(ProfileInData, AfterAFailedMoveTheEarlierFileIsLoadedAndKept) {
  put(earlier(), five_);
  put(data() / "MORLA Velto", "a file where the folder should be");
  Profile profile;
  EXPECT_EQ(profile.attempts().size(), 5U);
  profile.record(levelTrial(), graded(true, 0));
  EXPECT_EQ(profile.attempts().size(), 6U);
  EXPECT_EQ(contentOf(earlier()), five_);
  EXPECT_EQ(contentOf(data() / "MORLA Velto"), "a file where the folder should be");
}

TEST_F(ProfileInData, AnEarlierFileIsMovedAcrossFileSystems) {
  struct stat here {};
  struct stat there {};
  if (stat(scratch_.path().c_str(), &here) != 0 || stat("/dev/shm", &there) != 0 ||
      here.st_dev == there.st_dev)
    GTEST_SKIP() << "no second file system at /dev/shm";
  const ScratchFolder other("/dev/shm");
  put(earlier(), five_);
  fs::create_directory_symlink(other.path(), data() / "MORLA Velto");
  EXPECT_EQ(Profile().attempts().size(), 5U);
  EXPECT_EQ(contentOf(other.path() / "profile.json"), five_);
  EXPECT_FALSE(fs::exists(earlier()));
}

TEST_F(ProfileInData, WithTheVariableSetTheDataDirectoryIsNotTouched) {
  put(earlier(), five_);
  const ScopedVariable directory("VELTO_PROFILE_DIR", (scratch_.path() / "own/deep").string());
  Profile profile;
  EXPECT_EQ(profile.url(), scratch_.path() / "own/deep/profile.json");
  profile.record(levelTrial(), graded(true, 0));
  EXPECT_TRUE(fs::exists(scratch_.path() / "own/deep/profile.json"));
  EXPECT_EQ(contentOf(earlier()), five_);
  EXPECT_FALSE(fs::exists(data() / "MORLA Velto"));
}

TEST_F(ProfileInData, AnEmptyVariableMeansTheCurrentFolderAtConstruction) {
  const fs::path before = fs::current_path();
  const ScopedVariable directory("VELTO_PROFILE_DIR", "");
  fs::current_path(scratch_.path());
  Profile profile;
  fs::current_path(before);
  profile.record(levelTrial(), graded(true, 0));
  EXPECT_TRUE(fs::exists(scratch_.path() / "profile.json"));
}

// ---- Loading ----

TEST_F(ProfileTest, WithoutAFileItIsEmptyAndNothingIsWritten) {
  const Profile profile(location());
  expectEmpty(profile);
  EXPECT_TRUE(fs::is_directory(folder()));
  EXPECT_FALSE(fs::exists(file()));
}

TEST_F(ProfileTest, AFileIsLoadedWithItsStatistics) {
  Stored stored{rows(10), {{"level", {61, 1, 2, -1}}}, {{5, {9, 4, 4.5}}}};
  put(file(), Coding::encode(stored).value());
  const Profile profile(location());
  EXPECT_EQ(profile.attempts(), stored.attempts);
  EXPECT_EQ(profile.staircases(), stored.staircases);
  EXPECT_EQ(profile.lifetime(), stored.lifetime);
  EXPECT_EQ(profile.stats().bands.size(), 27U);
  EXPECT_EQ(profile.stats().bands[5].attempts, 9);
  EXPECT_EQ(profile.stats().weakest.value().index, 5);
  EXPECT_EQ(profile.staircase(Drill::level), (Staircase{61, 1, 2, -1}));
}

TEST_F(ProfileTest, AnEmptyStoredRecordHasStatistics) {
  put(file(), R"({"staircases":{},"attempts":[]})");
  EXPECT_EQ(Profile(location()).stats().bands.size(), 27U);
}

TEST_F(ProfileTest, AnInvalidFileLoadsEmptyAndStaysUntilTheNextAnswer) {
  const std::string good = Coding::encode(Stored{rows(2), {}, {}}).value();
  for (const std::string& content :
       {std::string(), good + "x", std::string(R"({"attempts":[]})"),
        changed(good, "\"level\"", "\"loudness\""), std::string(5000, '\0')}) {
    put(file(), content);
    Profile profile(location());
    expectEmpty(profile);
    EXPECT_EQ(contentOf(file()), content);
    profile.record(levelTrial(), graded(true, 0));
    ASSERT_TRUE(profile.waitForDisk(patience));
    EXPECT_EQ(saved().attempts, profile.attempts());
    EXPECT_EQ(profile.attempts().size(), 1U);
  }
}

TEST_F(ProfileTest, KeepsAnswersInMemoryIfTheFileIsAFolder) {
  fs::create_directories(file()); // a folder in its place
  Profile profile(location());
  expectEmpty(profile);
  profile.record(levelTrial(), graded(true, 0));
  EXPECT_EQ(profile.attempts().size(), 1U);
  EXPECT_EQ(profile.stats().todayCount, 1);
  EXPECT_TRUE(fs::is_directory(file()));
}

TEST_F(ProfileTest, KeepsAnswersInMemoryIfTheFolderCannotBeCreated) {
  put(scratch_.path() / "profile", "a file");
  Profile profile(location());
  expectEmpty(profile);
  profile.record(levelTrial(), graded(true, 0));
  EXPECT_EQ(profile.staircase(Drill::level).consecutiveCorrect, 1);
  EXPECT_EQ(contentOf(scratch_.path() / "profile"), "a file");
}

TEST_F(ProfileTest, AnEndlessFileIsNotRead) {
  fs::create_directories(folder());
  fs::create_symlink("/dev/zero", file());
  expectEmpty(Profile(location()));
}

TEST_F(ProfileTest, KeepsAnswersInMemoryIfTheDiskIsFull) {
  fs::create_directories(folder());
  fs::create_symlink("/dev/full", file());
  Profile profile(location());
  profile.record(levelTrial(), graded(true, 0));
  EXPECT_EQ(profile.attempts().size(), 1U);
}

// ---- Recording ----

TEST_F(ProfileTest, RecordsAnAnswerWithItsTrialAndGrade) {
  Profile profile(location());
  const Date before = Date::now();
  profile.record(frequencyTrial(1250, 41.5), graded(true, 0.25));
  const Date after = Date::now();
  profile.record(levelTrial(), graded(false, 1.5));

  ASSERT_EQ(profile.attempts().size(), 2U);
  const Attempt& first = profile.attempts()[0];
  EXPECT_GE(first.date.secondsSinceReferenceDate, before.secondsSinceReferenceDate);
  EXPECT_LE(first.date.secondsSinceReferenceDate, after.secondsSinceReferenceDate);
  EXPECT_EQ(first.drill, Drill::frequency);
  EXPECT_EQ(first.material, Material::drums);
  EXPECT_EQ(first.difficulty, 41.5);
  EXPECT_TRUE(first.correct);
  EXPECT_EQ(first.error, 0.25);
  EXPECT_EQ(first.bandIndex, 15);

  const Attempt& second = profile.attempts()[1];
  EXPECT_EQ(second.drill, Drill::level);
  EXPECT_EQ(second.material, Material::pad);
  EXPECT_FALSE(second.correct);
  EXPECT_EQ(second.error, 1.5);
  EXPECT_EQ(second.bandIndex, std::nullopt);
  EXPECT_NE(first.id, second.id);

  EXPECT_EQ(profile.stats().todayCount, 2);
  EXPECT_EQ(profile.accuracy(Drill::frequency), 1);
  EXPECT_EQ(profile.accuracy(Drill::level), 0);
  EXPECT_EQ(profile.accuracy(Drill::polarity), std::nullopt);
  ASSERT_EQ(profile.curve(Drill::frequency).size(), 1U);
  EXPECT_EQ(profile.curve(Drill::frequency)[0], 41.5);
  EXPECT_TRUE(profile.curve(Drill::dynamics).empty());
}

TEST_F(ProfileTest, LoadsWhatWasRecorded) {
  Profile profile(location());
  for (int i = 0; i < 20; ++i)
    profile.record(i % 3 == 0 ? levelTrial() : frequencyTrial(40.0 + 100 * i),
                   graded(i % 4 != 0, i / 8.0));
  const Profile again(location());
  EXPECT_EQ(again.attempts(), profile.attempts());
  EXPECT_EQ(again.staircases(), profile.staircases());
  EXPECT_EQ(again.lifetime(), profile.lifetime());
  EXPECT_EQ(again.stats(), profile.stats());
}

TEST_F(ProfileTest, OnlyTheFrequencyDrillHasABandInTheFile) {
  Profile profile(location());
  for (const Drill drill : Drill::allCases) {
    Trial trial = frequencyTrial();
    trial.drill = drill;
    profile.record(trial, graded(true, 0));
    EXPECT_EQ(profile.attempts().back().bandIndex.has_value(), drill == Drill::frequency);
  }
  const std::string content = contentOf(file());
  const auto first = content.find("bandIndex");
  ASSERT_NE(first, content.npos);
  EXPECT_EQ(content.find("bandIndex", first + 1), content.npos);
  EXPECT_EQ(content.find("null"), content.npos);
}

TEST_F(ProfileTest, AnAnswerMovesItsDrillsStaircase) {
  Profile profile(location());
  EXPECT_EQ(profile.staircase(Drill::level), (Staircase{20, 0, 0, 0}));
  profile.record(levelTrial(), graded(true, 0));
  EXPECT_EQ(profile.staircase(Drill::level), (Staircase{20, 1, 0, 0}));
  profile.record(levelTrial(), graded(true, 0));
  EXPECT_EQ(profile.staircase(Drill::level), (Staircase{32, 0, 0, 1}));
  profile.record(levelTrial(), graded(false, 1));
  EXPECT_EQ(profile.staircase(Drill::level), (Staircase{20, 0, 1, -1}));
  EXPECT_EQ(profile.staircase(Drill::frequency), Staircase{});
  EXPECT_EQ(profile.staircases().size(), 1U);
  EXPECT_EQ(saved().staircases, profile.staircases());
}

TEST_F(ProfileTest, StaircasesOfUnknownDrillsAreWrittenBack) {
  put(file(),
      R"({"staircases":{"zoom":{"difficulty":1,"consecutiveCorrect":2,"reversals":3,"lastDirection":1}},"attempts":[]})");
  Profile profile(location());
  profile.record(levelTrial(), graded(false, 0));
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_EQ(saved().staircases.at("zoom"), (Staircase{1, 2, 3, 1}));
  EXPECT_EQ(saved().staircases.size(), 2U);
}

TEST_F(ProfileTest, ANonFiniteErrorStaysInMemoryAndOutOfTheFile) {
  Profile profile(location());
  profile.record(levelTrial(), graded(true, 0.5));
  const std::string before = contentOf(file());
  for (const double error :
       {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    profile.record(frequencyTrial(), graded(false, error));
    EXPECT_EQ(contentOf(file()), before);
  }
  EXPECT_EQ(profile.attempts().size(), 3U);
  EXPECT_EQ(profile.stats().bands[14].attempts, 2);
}

TEST_F(ProfileTest, EveryAnswerRewritesTheWholeFile) {
  putRows(50);
  const auto longer = fs::file_size(file());
  Profile profile(location());
  profile.replace(rows(2), {});
  profile.record(levelTrial(), graded(true, 0));
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_LT(fs::file_size(file()), longer);
  EXPECT_EQ(saved().attempts, profile.attempts());
}

// ---- The cap ----

TEST_F(ProfileTest, LoadingKeepsEveryRow) {
  for (const int count : {0, 1, 4999, 5000, 5001, 20000}) {
    putRows(count);
    const Profile profile(location());
    EXPECT_EQ(profile.attempts().size(), static_cast<std::size_t>(count));
    EXPECT_TRUE(profile.lifetime().empty());
    EXPECT_EQ(profile.stats().bands.size(), 27U);
  }
}

TEST_F(ProfileTest, TheNextAnswerRollsUpRowsBeyondFiveThousand) {
  for (const int count : {0, 1, 4998, 4999, 5000, 5001, 20000}) {
    putRows(count);
    Profile profile(location());
    const auto before = profile.attempts();
    profile.record(levelTrial(), graded(true, 0));
    ASSERT_TRUE(profile.waitForDisk(patience));

    const auto excess = static_cast<std::size_t>(std::max(0, count + 1 - 5000));
    EXPECT_EQ(profile.attempts().size(), static_cast<std::size_t>(count) + 1 - excess);
    EXPECT_TRUE(
        std::equal(before.begin() + static_cast<std::ptrdiff_t>(std::min(excess, before.size())),
                   before.end(), profile.attempts().begin()));
    std::map<std::int64_t, BandRoll> expected;
    for (std::size_t i = 0; i < excess; i += 2) { // only the rows with an even index have a band
      BandRoll& roll = expected[static_cast<std::int64_t>(i % 27)];
      roll.attempts += 1;
      roll.hits += i % 3 == 0 ? 1 : 0;
      roll.errorSum += static_cast<double>(i % 64) / 10;
    }
    EXPECT_EQ(profile.lifetime(), expected) << count;
    EXPECT_EQ(saved().lifetime, expected);
    EXPECT_EQ(saved().attempts, profile.attempts());
  }
}

TEST_F(ProfileTest, OnlyFrequencyRowsWithABandAreRolledUp) {
  auto history = rows(5004);
  history[0] = row(Drill::frequency, std::nullopt, true, 1);
  history[1] = row(Drill::level, 5, true, 1);
  history[2] = row(Drill::frequency, 5, true, 0.5);
  history[3] = row(Drill::frequency, 5, false, 0.25);
  Profile profile(location());
  profile.replace(history, {});
  profile.trim();
  EXPECT_EQ(profile.attempts().size(), 5000U);
  EXPECT_EQ(profile.lifetime(), (std::map<std::int64_t, BandRoll>{{5, {2, 1, 0.75}}}));
}

TEST_F(ProfileTest, CountersSaturate) {
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  put(file(),
      Coding::encode(Stored{rows(5000), {{"level", {50, most, most, -1}}}, {{0, {most, most, 0}}}})
          .value());
  Profile profile(location());
  profile.record(levelTrial(), graded(true, 0)); // rolls up row 0: band 0, a hit
  EXPECT_EQ(profile.lifetime().at(0), (BandRoll{most, most, 0}));
  EXPECT_EQ(profile.staircase(Drill::level), (Staircase{53, 0, most, 1}));
}

TEST_F(ProfileTest, ReplaceKeepsTheRollUpAndDoesNotSave) {
  put(file(), Coding::encode(Stored{rows(3), {{"level", {}}}, {{5, {9, 4, 4.5}}}}).value());
  const std::string before = contentOf(file());
  Profile profile(location());
  profile.replace(rows(160), {{"polarity", {77, 0, 0, 1}}});
  profile.trim();
  profile.recompute();
  EXPECT_EQ(contentOf(file()), before);
  profile.save();
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_EQ(saved(),
            (Stored{profile.attempts(), {{"polarity", {77, 0, 0, 1}}}, {{5, {9, 4, 4.5}}}}));
  EXPECT_EQ(profile.stats().todayCount + 160, profile.stats().todayCount * 2);
}

// Sums of roll-up and rows of each band.
std::map<std::int64_t, BandRoll> totals(const Profile& profile) {
  std::map<std::int64_t, BandRoll> sums = profile.lifetime();
  for (const Attempt& attempt : profile.attempts())
    if (attempt.drill == Drill::frequency && attempt.bandIndex)
      count(sums[*attempt.bandIndex], attempt);
  return sums;
}

RC_GTEST_PROP(ProfileRollUp, LosesNoAnswerOfAnyBand, ()) {
  const ScratchFolder scratch;
  Profile profile(ProfileLocation{scratch.path(), std::nullopt});
  std::map<std::int64_t, BandRoll> expected;
  std::size_t given = 0;
  for (int round = *rc::gen::inRange(1, 4); round > 0; --round) {
    // Many answers in one band, then a few mixed ones. Errors are tenths: their sum depends on the
    // order and needs all 64 bits.
    auto history = profile.attempts();
    const auto stretchBand = *rc::gen::inRange<std::int64_t>(0, 27);
    const int stretch = *rc::gen::inRange(0, 6000);
    const int mixed = *rc::gen::inRange(0, 40);
    Attempt attempt = row(Drill::frequency, stretchBand);
    for (int i = 0; i < stretch + mixed; ++i) {
      attempt.correct = i % 2 == 0;
      attempt.error = (i % 7) / 10.0;
      if (i >= stretch) {
        attempt.drill = *anyDrill();
        attempt.bandIndex = *rc::gen::inRange<std::int64_t>(-1, 27);
        if (*rc::gen::inRange(0, 8) == 0)
          attempt.bandIndex.reset();
        attempt.correct = *rc::gen::arbitrary<bool>();
        attempt.error = *rc::gen::inRange(0, 200) / 10.0;
      }
      if (attempt.drill == Drill::frequency && attempt.bandIndex)
        count(expected[*attempt.bandIndex], attempt);
      history.push_back(attempt);
      ++given;
    }
    profile.replace(history, {});
    profile.trim();
    RC_ASSERT(profile.attempts().size() <= std::min<std::size_t>(given, 5000));
    RC_ASSERT(std::equal(profile.attempts().rbegin(), profile.attempts().rend(), history.rbegin()));
    RC_ASSERT(totals(profile) == expected);
  }
  profile.recompute();
  for (const BandStat& band : profile.stats().bands) {
    const BandRoll roll = expected.contains(band.index) ? expected[band.index] : BandRoll{};
    RC_ASSERT(band.attempts == roll.attempts);
    RC_ASSERT(band.hits == roll.hits);
    RC_ASSERT(band.meanErrorOct ==
              (roll.attempts == 0 ? 0.0 : roll.errorSum / static_cast<double>(roll.attempts)));
  }
}

// ---- Announcements ----

struct Seen {
  std::size_t attempts;
  std::int64_t today;

  bool operator==(const Seen&) const = default;
};

TEST_F(ProfileTest, EachChangeIsAnnouncedBeforeItHappens) {
  Profile profile(location());
  std::vector<Seen> seen;
  profile.objectWillChange.subscribe([&] {
    seen.push_back({profile.attempts().size(), profile.stats().todayCount});
  });

  profile.record(levelTrial(), graded(true, 0));
  EXPECT_EQ(seen, (std::vector<Seen>{{0, 0}, {1, 0}})); // attempts, then stats
  seen.clear();
  profile.recompute(); // announces even without a difference
  EXPECT_EQ(seen, (std::vector<Seen>{{1, 1}}));
  seen.clear();
  profile.replace(rows(5000), {});
  EXPECT_EQ(seen, (std::vector<Seen>{{1, 1}}));
  seen.clear();
  profile.trim();
  profile.save();
  EXPECT_EQ(seen, std::vector<Seen>{}); // nothing to trim, nothing changed
  profile.recompute();
  seen.clear();
  const std::int64_t today = profile.stats().todayCount;
  profile.record(levelTrial(), graded(true, 0));
  EXPECT_EQ(seen, (std::vector<Seen>{{5000, today}, {5001, today}, {5000, today}}));
}

TEST_F(ProfileTest, TheFileIsWrittenAfterTheLastAnnouncement) {
  Profile profile(location());
  profile.objectWillChange.subscribe([&] { EXPECT_FALSE(fs::exists(file())); });
  profile.record(levelTrial(), graded(true, 0));
  EXPECT_TRUE(fs::exists(file()));
}

} // namespace
} // namespace velto
