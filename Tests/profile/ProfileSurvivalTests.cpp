// The practice record survives kills, full disks and a second program.
#include "BackupFile.h"
#include "Coding.h"
#include "Profile.h"

#include "kit/FileFaults.h"
#include "kit/Forked.h"
#include "kit/NumberedProfile.h"

#include <sys/mman.h>
#include <sys/mount.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace velto {
namespace {

using namespace testing;
using kit::FileFault;
using kit::FileFaults;
using kit::Forked;

namespace fs = std::filesystem;

class ProfileSurvival : public NumberedProfile {};

// ---- Kills ----

// A counter shared with another process.
class SharedCount {
  using Count = std::atomic<std::int64_t>;
  static_assert(Count::is_always_lock_free);

public:
  SharedCount()
      : place_(::mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                      -1, 0)) {
    if (place_ == MAP_FAILED)
      throw std::bad_alloc();
    count_ = new (place_) Count(0);
  }
  SharedCount(const SharedCount&) = delete;
  SharedCount& operator=(const SharedCount&) = delete;
  ~SharedCount() { ::munmap(place_, sizeof(Count)); }

  Count& operator*() { return *count_; }

private:
  void* place_;
  Count* count_;
};

int killsAtEachSize() {
  const char* kills = std::getenv("VELTO_TEST_KILLS");
  return kills == nullptr ? 20 : std::atoi(kills);
}

class KilledAt : public ProfileSurvival, public ::testing::WithParamInterface<int> {
protected:
  static constexpr int killsInARow = 5;

  // Measures how long recording an answer takes, in microseconds.
  int answerTime() {
    using std::chrono::steady_clock;
    Profile profile(location());
    const auto begin = steady_clock::now();
    recordNumbered(profile, answersIn(profile));
    const auto time = steady_clock::now() - begin;
    return static_cast<int>(std::chrono::duration_cast<std::chrono::microseconds>(time).count());
  }

  // Records an answer in the file while the file operation `step` of that save, from 0, has a
  // fault. Returns the number of operations.
  static std::size_t saveWithFault(Profile& profile, std::size_t step, FileFault fault,
                                   SharedCount& saved) {
    recordNumbered(profile, answersIn(profile));
    EXPECT_TRUE(profile.waitForDisk(patience));
    *saved = answersIn(profile);
    const FileFaults faults({{step, fault}});
    recordNumbered(profile, answersIn(profile));
    return FileFaults::operationsSoFar();
  }

  void expectNothingLost(std::int64_t saved, const std::string& kill) const {
    const std::int64_t onFile = answersOnFile();
    ASSERT_GE(onFile, saved) << kill;
    ASSERT_LE(onFile, saved + 1) << kill;
  }

  void expectTheNextAnswerClearsUp() const {
    {
      Profile again(location());
      recordNumbered(again, answersIn(again));
    }
    expectNothingBesideTheFile();
  }
};

// Before, in the midst of and after each file operation of a save. Every fifth process starts with
// a new file of the given size; the others continue with the files
// that the process before them left.
TEST_P(KilledAt, EachStepOfASaveLosesAtMostTheAnswerBeingSaved) {
  constexpr std::array deaths{FileFault::death, FileFault::halfAndDeath, FileFault::lateDeath};
  restart(GetParam());
  SharedCount saved;
  std::size_t steps = 0;
  {
    Profile profile(location());
    constexpr auto none = std::numeric_limits<std::size_t>::max();
    steps = saveWithFault(profile, none, FileFault::death, saved);
  }
  ASSERT_GE(steps, 10U);
  int cutShort = 0;
  int incomplete = 0;
  // By default two of the three at each size, so that all are seen at two sizes.
  const std::size_t kills =
      std::clamp(static_cast<std::size_t>(killsAtEachSize()), 2 * steps, deaths.size() * steps);
  const auto first = static_cast<std::size_t>(GetParam());
  for (std::size_t kill = 0; kill < kills; ++kill) {
    if (kill % killsInARow == 0)
      restart(GetParam());
    const std::size_t step = kill % steps;
    Forked practising([&] {
      Profile profile(location());
      saveWithFault(profile, step, deaths.at((first + step + kill / steps) % deaths.size()), saved);
    });
    ASSERT_EQ(practising.ended(), 128 + SIGKILL) << "step " << step;
    cutShort += BackupFile::all(file(), "saving").empty() ? 0 : 1;
    incomplete += stored() ? 0 : 1;
    expectNothingLost(*saved, "kill " + std::to_string(kill));
  }
  EXPECT_GT(cutShort, 0);
  EXPECT_GT(incomplete, 0);
  expectTheNextAnswerClearsUp();
}

// Whatever the threads of the program are at.
TEST_P(KilledAt, ARandomMomentLosesAtMostTheAnswerBeingSaved) {
  std::minstd_rand random(std::random_device{}());
  restart(GetParam());
  std::uniform_int_distribution<int> microseconds(0, 2 * answerTime());
  for (int kill = 0; kill < killsAtEachSize(); ++kill) {
    if (kill % killsInARow == 0)
      restart(GetParam());
    SharedCount saved;
    Forked practising([&] {
      Profile profile(location());
      for (std::int64_t number = answersIn(profile);; ++number) {
        *saved = number;
        recordNumbered(profile, number);
      }
    });
    while (*saved == 0)
      std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
    EXPECT_EQ(practising.killed(), 128 + SIGKILL);
    expectNothingLost(*saved, "kill " + std::to_string(kill));
  }
  expectTheNextAnswerClearsUp();
}

INSTANTIATE_TEST_SUITE_P(AroundTheCap, KilledAt, ::testing::Values(4999, 5000, 5001));

// ---- Disks ----

TEST_F(ProfileSurvival, ADiskErrorIsSilentAndTheNextAnswerRetries) {
  for (std::size_t number = 0; number < 16; ++number) {
    for (const FileFault fault :
         {FileFault::inputOutputError, FileFault::halfAndError, FileFault::noSpace}) {
      restart(3);
      Profile profile(location());
      {
        const FileFaults faults({{number, fault}});
        recordNumbered(profile, 3);
      }
      EXPECT_EQ(profile.attempts().size(), 4U);
      EXPECT_GE(answersOnFile(), 3) << "operation " << number;
      recordNumbered(profile, 4);
      ASSERT_TRUE(profile.waitForDisk(patience));
      EXPECT_EQ(answersOnFile(), 5);
    }
  }
}

// Fills a small disk except for about `butFor` bytes.
void fillUp(const fs::path& filler, std::size_t butFor) {
  std::ofstream(filler, std::ios::binary) << std::string(1 << 20, 'x');
  const auto size = fs::file_size(filler);
  fs::resize_file(filler, size - std::min<std::uintmax_t>(size, butFor));
}

TEST_F(ProfileSurvival, AFullDiskLeavesTheFileUntouchedUntilThereIsRoom) {
  const bool allowed = kit::withOwnMounts([&] {
    fs::create_directories(folder());
    ASSERT_EQ(::mount("tmpfs", folder().c_str(), "tmpfs", 0, "size=256k"), 0);
    const fs::path filler = folder() / "filler";
    int untouched = 0;
    int saved = 0;
    // The file and each of its copies take 20 kB.
    for (std::size_t room = 0; room < 120000; room += 4096) {
      fs::remove(filler);
      put(file(), Coding::encode(Stored{numberedRows(100), {}, {}}).value());
      const std::string before = contentOf(file());
      fillUp(filler, room);
      Profile profile(location());
      recordNumbered(profile, 100);
      ASSERT_TRUE(profile.waitForDisk(patience));
      EXPECT_EQ(profile.attempts().size(), 101U);
      (contentOf(file()) == before ? untouched : saved) += 1;
      EXPECT_GE(answersOnFile(), 100);

      fs::remove(filler);
      recordNumbered(profile, 101);
      ASSERT_TRUE(profile.waitForDisk(patience));
      EXPECT_EQ(answersOnFile(), 102);
    }
    EXPECT_GT(untouched, 2);
    EXPECT_GT(saved, 2);
  });
  if (!allowed)
    GTEST_SKIP() << "mounting is not permitted";
}

TEST_F(ProfileSurvival, SavesAgainOnceAMissingFolderIsBack) {
  restart(3);
  Profile profile(location());
  const fs::path elsewhere = scratch_.path() / "elsewhere";
  fs::rename(folder(), elsewhere);
  recordNumbered(profile, 3);
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_FALSE(fs::exists(folder()));
  EXPECT_EQ(answersIn(Profile({elsewhere, std::nullopt})), 3);
  fs::rename(elsewhere, folder());
  EXPECT_EQ(answersOnFile(), 3);
  recordNumbered(profile, 4);
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_EQ(answersOnFile(), 5);
}

// ---- Records that cannot be encoded ----

// An infinite error cannot be written, so nothing is saved while it is in the record.
TEST_F(ProfileSurvival, ARecordThatCanBeEncodedAgainIsSavedAgain) {
  restart(3);
  const std::string before = contentOf(file());
  Profile profile(location());
  profile.record({.drill = Drill::frequency, .difficulty = 3},
                 {false, std::numeric_limits<double>::infinity(), {}, {}, {}});
  recordNumbered(profile, 4);
  EXPECT_EQ(profile.attempts().size(), 5U);
  EXPECT_EQ(contentOf(file()), before);
  expectNothingBesideTheFile();

  auto finite = profile.attempts();
  finite[3].error = 9;
  profile.replace(finite, profile.staircases());
  recordNumbered(profile, 5);
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_EQ(answersOnFile(), 6);
}

// ---- Two programs ----

// Sixteen programs record at once, until the rows exceed the cap. Every answer is in the file or
// rolled up, once, and no load meanwhile finds fewer rows than there were at first.
TEST_F(ProfileSurvival, SixteenProgramsAtOnceLoseNoAnswer) {
  constexpr int programs = 16;
  constexpr std::int64_t answersEach = 12;
  constexpr std::int64_t initial = static_cast<std::int64_t>(Profile::detailRows) - 60;
  restart(initial);
  SharedCount begun;
  std::vector<std::unique_ptr<Forked>> practising;
  for (int program = 0; program < programs; ++program)
    practising.push_back(std::make_unique<Forked>([&, program] {
      Profile profile(location());
      ++*begun;
      while (*begun < programs)
        std::this_thread::yield();
      for (std::int64_t i = 0; i < answersEach; ++i) {
        recordNumbered(profile, 10000 + program * answersEach + i);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
    }));
  Forked watching([&] {
    while (*begun < programs)
      std::this_thread::yield();
    for (int i = 0; i < 50; ++i)
      EXPECT_GE(Profile(location()).attempts().size(), static_cast<std::size_t>(initial));
  });
  for (const auto& program : practising)
    EXPECT_EQ(program->ended(), EXIT_SUCCESS);
  EXPECT_EQ(watching.ended(), EXIT_SUCCESS);

  // On a slow disk, a program may have ended before its answers were in the file.
  if (!besideTheFile().empty()) {
    Profile next(location());
    next.save();
    ASSERT_TRUE(next.waitForDisk(patience));
  }
  const Stored all = stored().value();
  EXPECT_EQ(all.attempts.size(), Profile::detailRows);
  std::int64_t rolledUp = 0;
  for (const auto& [band, roll] : all.lifetime)
    rolledUp += roll.attempts;
  EXPECT_EQ(rolledUp,
            initial + programs * answersEach - static_cast<std::int64_t>(Profile::detailRows));
  std::set<double> numbers;
  for (const Attempt& attempt : all.attempts)
    numbers.insert(attempt.difficulty);
  EXPECT_EQ(numbers.size(), Profile::detailRows);
  for (std::int64_t number = 0; number < programs * answersEach; ++number)
    EXPECT_TRUE(numbers.contains(static_cast<double>(10000 + number))) << number;
  expectNothingBesideTheFile();
}

} // namespace
} // namespace velto
