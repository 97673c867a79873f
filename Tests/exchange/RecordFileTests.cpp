#include "RecordFile.h"

#include "BackupFile.h"
#include "Coding.h"
#include "FolderLock.h"
#include "Profile.h"
#include "PutAside.h"
#include "kit/FileFaults.h"
#include "kit/Forked.h"
#include "kit/NumberedProfile.h"

#include <algorithm>

namespace velto {
namespace {

namespace fs = std::filesystem;
using testing::contentOf;
using testing::numberedRows;
using testing::put;
using Replacement = RecordFile::Replacement;

Stored numbered(std::int64_t count) {
  Stored stored{numberedRows(count), {{"frequency", {50, 1, 2, 1}}}, {}};
  for (Attempt& attempt : stored.attempts)
    attempt.date = {800'000'000 + attempt.difficulty};
  return stored;
}

std::string encoded(const Stored& stored) {
  return Coding::encode(stored).value();
}

class RecordFileTest : public testing::NumberedProfile {
protected:
  void SetUp() override { fs::create_directories(folder()); }

  [[nodiscard]] Replacement replaceBy(const Stored& record, bool unlessRunning = false) const {
    return RecordFile::replace(
        location(), [&](const std::optional<Stored>&) { return record; }, unlessRunning,
        std::chrono::milliseconds(50));
  }
  [[nodiscard]] Replacement import(const Stored& record) const {
    return RecordFile::replace(
        location(),
        [&](const std::optional<Stored>& present) { return RecordFile::merged(present, record); },
        false);
  }
  [[nodiscard]] std::vector<fs::path> aside() const { return PutAside::all(file()); }
};

// ---- What comes of two records ----

TEST(RecordMerging, TakesTheWholeIntoAnEmptyRecord) {
  Stored imported = numbered(3);
  std::reverse(imported.attempts.begin(), imported.attempts.end()); // not by date
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(RecordFile::merged(std::nullopt, imported), imported);
    EXPECT_EQ(RecordFile::merged(Stored{}, imported), imported);
    imported.lifetime[2] = {1, 1, 0.5};
  }
}

TEST(RecordMerging, CountsEachAnswerOnce) {
  const Stored all = numbered(10);
  Stored present = all, imported = all;
  present.attempts.resize(7);
  imported.attempts.erase(imported.attempts.begin(), imported.attempts.begin() + 4);
  EXPECT_EQ(RecordFile::merged(present, imported).attempts, all.attempts);
  EXPECT_EQ(RecordFile::merged(imported, present).attempts, all.attempts);
  EXPECT_EQ(RecordFile::merged(all, imported), all);
}

TEST(RecordMerging, KeepsTheLargerRollUp) {
  Stored present = numbered(2), imported = numbered(3);
  imported.lifetime[4] = {100, 50, 10};
  EXPECT_EQ(RecordFile::merged(present, imported).lifetime, imported.lifetime);
  EXPECT_EQ(RecordFile::merged(imported, present).lifetime, imported.lifetime);
  present.lifetime[5] = {100, 50, 10};
  EXPECT_EQ(RecordFile::merged(present, imported).lifetime, present.lifetime);
}

TEST(RecordMerging, RollsUpWhatIsTooMuch) {
  const auto rows = static_cast<std::int64_t>(Profile::detailRows);
  const Stored merged = RecordFile::merged(numbered(rows), Stored{numberedRows(1), {}, {}});
  EXPECT_EQ(merged.attempts.size(), Profile::detailRows);
  std::int64_t count = 0;
  for (const auto& [band, roll] : merged.lifetime)
    count += roll.attempts;
  EXPECT_EQ(count, 1);
}

// ---- Replacing ----

TEST_F(RecordFileTest, PutsThePresentFileAside) {
  put(file(), encoded(numbered(5)));
  const std::string former = contentOf(file());
  const Stored record = numbered(8);
  const Replacement result = replaceBy(record);
  EXPECT_EQ(result.problem, "");
  EXPECT_TRUE(result.isChanged);
  EXPECT_EQ(contentOf(file()), encoded(record));
  ASSERT_EQ(aside().size(), 1U);
  EXPECT_EQ(result.former, aside()[0]);
  EXPECT_EQ(contentOf(aside()[0]), former);
  EXPECT_EQ(besideTheFile().size(), 1U); // no copy is left
}

TEST_F(RecordFileTest, PutsADamagedFileAside) {
  put(file(), "damaged");
  EXPECT_EQ(import(numbered(2)).problem, "");
  EXPECT_EQ(answersOnFile(), 2);
  ASSERT_EQ(aside().size(), 1U);
  EXPECT_EQ(contentOf(aside()[0]), "damaged");
}

TEST_F(RecordFileTest, PutsNothingAsideWithoutNeed) {
  const Stored record = numbered(3);
  EXPECT_TRUE(replaceBy(record).isChanged);
  EXPECT_EQ(aside().size(), 0U);
  const Replacement again = import(record);
  EXPECT_EQ(again.problem, "");
  EXPECT_FALSE(again.isChanged);
  expectNothingBesideTheFile();
}

TEST_F(RecordFileTest, IncludesWhatVeltoWouldRecover) {
  put(file(), "{\"attempts\":[");
  Stored left = numbered(6);
  put(file().string() + ".backup-12345678", Coding::encodeBackup(encoded(left), {}, 0, 1).value());
  Stored imported{{left.attempts.back()}, {}, {}};
  imported.attempts[0].id = UUID::random();
  imported.attempts[0].difficulty = 6;
  EXPECT_EQ(import(imported).problem, "");
  EXPECT_EQ(answersOnFile(), 7);
}

TEST_F(RecordFileTest, RefusesWhileAProgramSaves) {
  put(file(), encoded(numbered(1)));
  const FolderLock lock(file(), FolderLock::Use::writing, std::chrono::milliseconds(0));
  EXPECT_EQ(replaceBy(numbered(2)).problem, "another program is saving the record; try again");
  EXPECT_EQ(stored()->attempts.size(), 1U);
  expectNothingBesideTheFile();
}

TEST_F(RecordFileTest, RestoresNothingWhileVeltoRuns) {
  BackupFile running(file(), "backup-12345678");
  ASSERT_EQ(running.write(encoded(numbered(4)), BackupFile::Durability::surviveKill),
            SafeFile::Written::done);
  EXPECT_EQ(replaceBy(numbered(2), true).problem,
            "Velto is running with this record; close it first");
  EXPECT_FALSE(fs::exists(file()));
  // An import does no harm: Velto merges it.
  EXPECT_EQ(replaceBy(numbered(2), false).problem, "");
}

TEST_F(RecordFileTest, MeetsARunningVelto) {
  Profile velto(location());
  for (std::int64_t number = 0; number < 3; ++number)
    testing::recordNumbered(velto, number);
  Stored imported = numbered(1);
  imported.attempts[0].difficulty = 3;
  imported.attempts[0].date.secondsSinceReferenceDate += 60;
  ASSERT_TRUE(velto.waitForDisk(patience));
  EXPECT_EQ(import(imported).problem, "");
  EXPECT_EQ(stored()->attempts.size(), 4U);
  testing::recordNumbered(velto, 4);
  ASSERT_TRUE(velto.waitForDisk(patience));
  EXPECT_EQ(stored()->attempts.size(), 5U);
}

TEST_F(RecordFileTest, DoesNotReplaceAFileThatChangesMeanwhile) {
  put(file(), encoded(numbered(1)));
  const Replacement result = RecordFile::replace(
      location(),
      [&](const std::optional<Stored>&) {
        put(file(), encoded(numbered(9))); // by a program without locks
        return numbered(2);
      },
      false);
  EXPECT_EQ(result.problem, "another program changed the record meanwhile; nothing was changed");
  EXPECT_EQ(answersOnFile(), 9);
}

TEST_F(RecordFileTest, ReplacesNoFolder) {
  fs::create_directory(file());
  EXPECT_NE(replaceBy(numbered(1)).problem, "");
  EXPECT_TRUE(fs::is_directory(file()));
}

// ---- Faults ----

// Lets each file operation of an import fail in turn. What was in the record is there afterwards,
// in any case; what was imported if no problem was reported.
void failEach(const RecordFileTest&, kit::FileFault fault, const fs::path& folder,
              const ProfileLocation& location) {
  const Stored present = numbered(20);
  Stored imported = numbered(21);
  std::copy(present.attempts.begin(), present.attempts.end(), imported.attempts.begin());
  bool hasFailed = false;
  for (std::size_t number = 0;; ++number) {
    fs::remove_all(folder);
    put(location.file(), encoded(present));
    Replacement result;
    std::size_t operations = 0;
    {
      const kit::FileFaults faults({{number, fault}});
      result = RecordFile::replace(
          location,
          [&](const std::optional<Stored>& found) { return RecordFile::merged(found, imported); },
          false);
      operations = kit::FileFaults::operationsSoFar();
    }
    hasFailed = hasFailed || !result.problem.empty();
    const auto loaded = RecordFile::load(location);
    ASSERT_TRUE(loaded) << "operation " << number;
    if (result.problem.empty())
      EXPECT_EQ(loaded->attempts, imported.attempts) << "operation " << number;
    else
      EXPECT_GE(loaded->attempts.size(), present.attempts.size()) << "operation " << number;
    if (number >= operations)
      break;
  }
  EXPECT_TRUE(hasFailed);
}

TEST_F(RecordFileTest, LosesNothingWhenTheDiskIsFull) {
  failEach(*this, kit::FileFault::noSpace, folder(), location());
}

TEST_F(RecordFileTest, LosesNothingWithoutPermission) {
  failEach(*this, kit::FileFault::notPermitted, folder(), location());
}

TEST_F(RecordFileTest, LosesNothingWhenTheDiskFails) {
  failEach(*this, kit::FileFault::halfAndError, folder(), location());
}

TEST_F(RecordFileTest, LosesNothingWhenItIsKilled) {
  const Stored present = numbered(20), record = numbered(25);
  int killed = 0;
  for (std::size_t number = 0;; ++number) {
    fs::remove_all(folder());
    put(file(), encoded(present));
    kit::Forked program([&] {
      const kit::FileFaults faults({{number, kit::FileFault::halfAndDeath}});
      static_cast<void>(replaceBy(record));
    });
    if (program.ended() != 128 + SIGKILL)
      break;
    ++killed;
    const auto loaded = RecordFile::load(location());
    ASSERT_TRUE(loaded) << "operation " << number;
    EXPECT_TRUE(*loaded == present || loaded->attempts.size() >= record.attempts.size())
        << "operation " << number;
  }
  EXPECT_GT(killed, 10);
}

// ---- What is worth bringing back ----

TEST_F(RecordFileTest, BringsBackTheNewestRecordThatDiffers) {
  const auto candidate = [&] { return RecordFile::candidate(location()); };
  EXPECT_FALSE(candidate());
  const Stored first = numbered(3), second = numbered(5), third = numbered(4);
  EXPECT_TRUE(replaceBy(first).isChanged);
  EXPECT_FALSE(candidate());
  EXPECT_TRUE(replaceBy(second).isChanged);
  ASSERT_TRUE(candidate());
  EXPECT_EQ(candidate()->record, first);
  // Bringing it back and changing one's mind.
  EXPECT_TRUE(replaceBy(candidate()->record).isChanged);
  ASSERT_TRUE(candidate());
  EXPECT_EQ(candidate()->record, second);
  // The newest file beside it now is the same as the record.
  EXPECT_TRUE(replaceBy(second).isChanged);
  ASSERT_TRUE(candidate());
  EXPECT_EQ(candidate()->record, first);
  fs::remove(file());
  EXPECT_EQ(candidate()->record, second);
}

TEST_F(RecordFileTest, BringsBackNoCopyThatAddsNothing) {
  const Stored record = numbered(5);
  Stored older = record;
  older.attempts.pop_back();
  put(file(), encoded(record));
  put(file().string() + ".backup-12345678", Coding::encodeBackup(encoded(older), {}, 0, 1).value());
  EXPECT_FALSE(RecordFile::candidate(location()));
}

TEST_F(RecordFileTest, LoadsTheFileOfAnEarlierVersionWhereItIs) {
  const ProfileLocation moved{folder() / "new", folder() / "old" / "profile.json"};
  EXPECT_FALSE(RecordFile::load(moved));
  put(*moved.earlierFile, encoded(numbered(2)));
  EXPECT_EQ(RecordFile::load(moved)->attempts.size(), 2U);
  EXPECT_FALSE(fs::exists(moved.directory));
  // Replacing moves it first, as Velto does.
  EXPECT_EQ(RecordFile::replace(
                moved, [](const std::optional<Stored>& present) { return present.value(); }, false)
                .problem,
            "");
  EXPECT_FALSE(fs::exists(*moved.earlierFile));
  EXPECT_TRUE(fs::exists(moved.file()));
}

} // namespace
} // namespace velto
