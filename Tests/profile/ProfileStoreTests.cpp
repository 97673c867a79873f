// The record's files: when each is written, by which thread, and what is left after a fault.
#include "BackupFile.h"
#include "PutAside.h"

#include "kit/Eventually.h"
#include "kit/FileFaults.h"
#include "kit/Forked.h"
#include "kit/NumberedProfile.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <regex>
#include <thread>

namespace velto {
namespace {

using namespace testing;
using namespace std::chrono_literals;
using kit::FileFault;
using kit::FileFaults;
using kit::Forked;
using kit::SlowDisk;
using kit::StuckFlushes;
using std::chrono::steady_clock;

namespace fs = std::filesystem;

class ProfileFiles : public NumberedProfile {
protected:
  // Runs `body` on a profile in another process, which is then killed.
  template <typename Body>
  void killedAfter(Body body) const {
    Forked program([&] {
      Profile profile(location());
      body(profile);
      ::raise(SIGKILL);
    });
    EXPECT_EQ(program.ended(), 128 + SIGKILL);
  }
  [[nodiscard]] std::string encoded(std::int64_t count) const {
    return Coding::encode(Stored{numberedRows(count), {}, {}}).value();
  }
  // The copies beside the file of a kind, "saving" or "backup".
  [[nodiscard]] std::vector<fs::path> copies(const char* kind) const {
    return BackupFile::all(file(), kind);
  }
};

// Holds the lock on a folder as another program would.
class HeldLock {
public:
  explicit HeldLock(const fs::path& folder)
      : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    EXPECT_EQ(::flock(descriptor_, LOCK_EX), 0);
  }
  HeldLock(const HeldLock&) = delete;
  HeldLock& operator=(const HeldLock&) = delete;
  ~HeldLock() { ::close(descriptor_); }

private:
  int descriptor_;
};

// Gives up root's rights, so that file modes apply.
void becomeNobody() {
  constexpr uid_t nobody = 65534;
  if (::geteuid() == 0) {
    ASSERT_EQ(::setuid(nobody), 0);
  }
}

// ---- A normal day ----

TEST_F(ProfileFiles, ACleanEndLeavesNothingBesideTheFile) {
  restart(3);
  {
    Profile profile(location());
    recordNumbered(profile, 3);
    recordNumbered(profile, 4);
  }
  EXPECT_EQ(stored()->attempts.size(), 5U);
  expectNothingBesideTheFile();
}

TEST_F(ProfileFiles, ReadingARecordWritesNothing) {
  restart(3);
  const auto before = fs::last_write_time(folder());
  EXPECT_EQ(answersOnFile(), 3);
  EXPECT_EQ(fs::last_write_time(folder()), before);
}

TEST_F(ProfileFiles, RecordWritesTheFileItselfOnceABackupExists) {
  restart(3);
  Profile profile(location());
  recordNumbered(profile, 3);
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_EQ(stored()->attempts, profile.attempts());
  for (std::int64_t number = 4; number < 10; ++number) {
    recordNumbered(profile, number);
    EXPECT_EQ(stored()->attempts, profile.attempts());
    ASSERT_TRUE(profile.waitForDisk(patience));
  }
  EXPECT_EQ(copies("saving").size(), 0U);
  EXPECT_EQ(copies("backup").size(), 1U);
}

// Before that, the file's former content may be the only durable copy.
TEST_F(ProfileFiles, TheFileIsNotTouchedBeforeABackupIsOnTheDisk) {
  restart(3);
  const std::string before = contentOf(file());
  const SlowDisk slow(100ms);
  Profile profile(location());
  recordNumbered(profile, 3);
  EXPECT_EQ(contentOf(file()), before);
  EXPECT_EQ(copies("saving").size(), 1U);
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_EQ(stored()->attempts, profile.attempts());
}

// ---- The main thread ----

template <typename Body>
steady_clock::duration timeOf(Body body) {
  const auto begin = steady_clock::now();
  body();
  return steady_clock::now() - begin;
}

// Records answers to a full record. A benchmark measures how long recording takes otherwise.
TEST_F(ProfileFiles, RecordingNeverWaitsForTheDiskTheLockOrAMerge) {
  restart(5000);
  const SlowDisk slow(100ms);
  Profile profile(location());
  const auto expectNoWait = [&](const char* when, auto prepare) {
    for (int i = 0; i < 5; ++i) {
      prepare();
      const std::size_t waits = SlowDisk::waitsOfThisThread();
      const std::size_t locks = SlowDisk::lockAttemptsOfThisThread();
      recordNumbered(profile, 5000 + i);
      EXPECT_EQ(SlowDisk::waitsOfThisThread(), waits) << when;
      EXPECT_LE(SlowDisk::lockAttemptsOfThisThread(), locks + 2)
          << when; // locks of folder and copy, tried once each
    }
  };
  const auto settle = [&] { ASSERT_TRUE(profile.waitForDisk(patience)); };
  expectNoWait("first, and while the disk is busy", [] {});
  expectNoWait("while the disk is idle", settle);
  {
    const HeldLock held(folder());
    expectNoWait("with the lock held elsewhere", [] {});
  }
  expectNoWait("with a merge due", [&] {
    settle();
    Stored other = *stored();
    other.attempts.push_back(row(Drill::level, {}, true, 0, Date::now()));
    put(file(), Coding::encode(other).value());
  });
  expectNoWait("with a merged record to be taken over", settle);
}

// ---- A slow disk ----

// Answers on the disk while flushes do not return: all that a power cut would leave.
class SlowFlush : public ProfileFiles {
protected:
  void expectOnTheDisk(std::int64_t answers) const {
    EXPECT_TRUE(kit::eventually([&] {
      // Under its own name a copy has been flushed.
      const auto all = copies("backup");
      return std::any_of(all.begin(), all.end(), [&](const fs::path& copy) {
        const auto backup = Coding::decodeBackup(contentOf(copy));
        return !BackupFile::isPartial(copy) && backup &&
               backup->attempts.size() == static_cast<std::size_t>(answers);
      });
    })) << answers
        << " answers";
  }
};

// Whatever a flush takes, the next copy does not wait for it.
TEST_F(SlowFlush, DelaysNoLaterAnswer) {
  constexpr std::size_t flushes = 3;
  restart(3);
  Forked program([&] {
    Profile profile(location());
    recordNumbered(profile, 3);
    ASSERT_TRUE(profile.waitForDisk(patience));
    const StuckFlushes stuck(0, flushes);
    std::int64_t number = 4;
    for (std::size_t i = 1; i <= flushes; ++i) {
      recordNumbered(profile, number++);
      EXPECT_TRUE(kit::eventually([&] { return StuckFlushes::now() == i; })) << i;
    }
    recordNumbered(profile, number++);
    expectOnTheDisk(number);
    ::raise(SIGKILL);
  });
  EXPECT_EQ(program.ended(), 128 + SIGKILL);
  put(file(), "");
  EXPECT_EQ(answersOnFile(), 8);
  {
    Profile next(location());
    recordNumbered(next, 8);
  }
  EXPECT_EQ(stored()->attempts.size(), 9U);
  expectNothingBesideTheFile();
}

// Not even if the writer was to save another program's answers with it.
TEST_F(SlowFlush, OfAMergeDelaysNoLaterAnswer) {
  restart(3);
  Forked program([&] {
    Profile profile(location());
    recordNumbered(profile, 3);
    ASSERT_TRUE(profile.waitForDisk(patience));
    Stored other = *stored();
    other.attempts.push_back(row(Drill::level, {}, true, 0, Date::now()));
    put(file(), Coding::encode(other).value());
    const StuckFlushes stuck(0, 1);
    recordNumbered(profile, 4);
    EXPECT_TRUE(kit::eventually([] { return StuckFlushes::now() == 1; }));
    recordNumbered(profile, 5);
    expectOnTheDisk(6);
    ::raise(SIGKILL);
  });
  EXPECT_EQ(program.ended(), 128 + SIGKILL);
  EXPECT_EQ(Profile(location()).attempts().size(), 7U);
}

// The first answer is durable after one copy: its contents and its entry in the folder.
TEST_F(SlowFlush, NothingElseComesBeforeTheCopy) {
  const auto expectOneCopy = [&](const char* what) {
    SCOPED_TRACE(what);
    Profile profile(location());
    const StuckFlushes stuck(2, 100);
    const std::int64_t before = answersIn(profile);
    recordNumbered(profile, before);
    expectOnTheDisk(before + 1);
  };
  fs::create_directories(folder());
  expectOneCopy("no file");
  restart(3);
  expectOneCopy("an unknown file");
  put(file(), "from a newer version");
  expectOneCopy("an unreadable file");
}

// The writer's copy can hold answers of another program that the later one has not.
TEST_F(SlowFlush, AFurtherCopyDoesNotHideTheWriters) {
  const std::vector<Attempt> both = numberedRows(4);
  const auto copyWith = [&](const Attempt& attempt, std::int64_t save) {
    Stored stored{both, {}, {}};
    stored.attempts.push_back(attempt);
    return Coding::encodeBackup(Coding::encode(stored).value(), {}, 1, save).value();
  };
  put(file(), "");
  put(folder() / "profile.json.backup-0123abcd",
      copyWith(row(Drill::level, {}, true, 0, Date::now()), 1));
  put(folder() / "profile.json.backup-2-0123abcd", copyWith(numberedRows(5).back(), 2));
  EXPECT_EQ(Profile(location()).attempts().size(), 6U);
}

// Once the disk is fast again, one copy is enough.
TEST_F(SlowFlush, LeavesNoFurtherCopies) {
  restart(3);
  {
    Profile profile(location());
    recordNumbered(profile, 3);
    ASSERT_TRUE(profile.waitForDisk(patience));
    {
      const StuckFlushes stuck(0, 1);
      recordNumbered(profile, 4);
      EXPECT_TRUE(kit::eventually([] { return StuckFlushes::now() == 1; }));
      for (std::int64_t number = 5; number < 8; ++number) {
        recordNumbered(profile, number);
        expectOnTheDisk(number + 1);
      }
      EXPECT_LE(copies("backup").size(), 4U);
    }
    ASSERT_TRUE(profile.waitForDisk(patience));
    EXPECT_EQ(copies("backup").size(), 1U);
  }
  EXPECT_EQ(stored()->attempts.size(), 8U);
  expectNothingBesideTheFile();
}

TEST_F(ProfileFiles, ClosingWaitsAtMostTwoSecondsAndLosesNothing) {
  restart(3);
  const HeldLock held(folder());
  auto profile = std::make_unique<Profile>(location());
  recordNumbered(*profile, 3);
  const auto time = timeOf([&] { profile.reset(); });
  EXPECT_GE(time, 1900ms);
  EXPECT_LT(time, 2500ms);
  EXPECT_EQ(stored()->attempts.size(), 3U);
  EXPECT_EQ(answersOnFile(), 4);
}

TEST_F(ProfileFiles, AnswersGivenWhileTheLockIsHeldAreSavedOnceItIsFree) {
  restart(3);
  Profile profile(location());
  {
    const HeldLock held(folder());
    for (std::int64_t number = 3; number < 8; ++number)
      recordNumbered(profile, number);
    EXPECT_FALSE(profile.waitForDisk(300ms));
    EXPECT_EQ(stored()->attempts.size(), 3U);
  }
  EXPECT_TRUE(profile.waitForDisk(patience));
  EXPECT_EQ(stored()->attempts, profile.attempts());
}

TEST_F(ProfileFiles, LoadingNeverWaitsForTheLock) {
  restart(3);
  const HeldLock held(folder());
  const std::size_t attempts = SlowDisk::lockAttemptsOfThisThread();
  EXPECT_EQ(answersOnFile(), 3);
  EXPECT_EQ(SlowDisk::lockAttemptsOfThisThread(), attempts + 1);
}

TEST_F(ProfileFiles, AKillWhileTheLockIsHeldLosesNothing) {
  restart(3);
  const HeldLock held(folder());
  killedAfter([](Profile& profile) { recordNumbered(profile, 3); });
  EXPECT_EQ(answersOnFile(), 4);
}

// ---- Two programs ----

TEST_F(ProfileFiles, MergesTheAnswersOfTwoProgramsInTheFileAndInMemory) {
  restart(3);
  Profile first(location());
  Profile second(location());
  for (std::int64_t number = 0; number < 4; ++number) {
    recordNumbered(first, 10 + number);
    ASSERT_TRUE(first.waitForDisk(patience));
    recordNumbered(second, 20 + number);
    ASSERT_TRUE(second.waitForDisk(patience));
  }
  EXPECT_EQ(stored()->attempts.size(), 11U);
  recordNumbered(first, 30);
  EXPECT_EQ(first.attempts().size(), 11U); // without the second program's last one, not read yet
  ASSERT_TRUE(first.waitForDisk(patience));
  EXPECT_EQ(stored()->attempts.size(), 12U);
  EXPECT_EQ(stored()->staircases, first.staircases());
}

TEST_F(ProfileFiles, ASaveKeepsMergedAnswersThatAreNotInMemoryYet) {
  restart(3);
  Profile profile(location());
  recordNumbered(profile, 3);
  ASSERT_TRUE(profile.waitForDisk(patience));
  Stored other = *stored();
  other.attempts.push_back(row(Drill::level, {}, true, 0, Date::now()));
  put(file(), Coding::encode(other).value());
  for (int i = 0; i < 2; ++i) {
    profile.save();
    ASSERT_TRUE(profile.waitForDisk(patience));
    EXPECT_EQ(profile.attempts().size(), 4U);
    EXPECT_EQ(stored()->attempts.size(), 5U);
  }
}

// ---- Unclean ends ----

// The file as a power cut may leave it, after answers that reached the backup.
class AfterAPowerCut : public ProfileFiles {
protected:
  void SetUp() override {
    restart(3);
    const std::string before = contentOf(file());
    const auto inode = SafeFile::stamp(file())->inode;
    killedAfter([&](Profile& profile) {
      recordNumbered(profile, 3);
      recordNumbered(profile, 4);
      ASSERT_TRUE(profile.waitForDisk(patience));
    });
    ASSERT_EQ(SafeFile::stamp(file())->inode, inode);
    newest_ = contentOf(file());
    // Gives a later change a later time stamp: the clock ticks at least every 10 ms.
    std::this_thread::sleep_for(20ms);
  }
  // The next program finds all five answers, saves a sixth and clears up.
  void expectFiveAnswers() const {
    EXPECT_EQ(answersOnFile(), 5);
    {
      Profile profile(location());
      recordNumbered(profile, 5);
    }
    EXPECT_EQ(answersIn(Profile(location())), 6);
    EXPECT_EQ(stored()->attempts.size(), 6U);
    EXPECT_EQ(copies("saving").size() + copies("backup").size(), 0U);
  }

  std::string newest_;
};

TEST_F(AfterAPowerCut, TheBackupReplacesATornFile) {
  for (const std::string& torn :
       {std::string(), newest_.substr(0, newest_.size() / 2), std::string(newest_.size(), '\0')}) {
    SetUp();
    put(file(), torn);
    expectFiveAnswers();
  }
}

TEST_F(AfterAPowerCut, AnIntactFileIsTheRecord) {
  expectFiveAnswers();
}

// A file's change time cannot be set back, so moves the one in the backup into the future.
TEST_F(AfterAPowerCut, TheBackupWinsOverAnOlderFileThatDecodes) {
  put(file(), encoded(0));
  const fs::path backup = copies("backup").at(0);
  put(backup, std::regex_replace(contentOf(backup), std::regex(R"("fileChanged":\d+)"),
                                 R"("fileChanged":9000000000000000000)"));
  expectFiveAnswers();
}

TEST_F(AfterAPowerCut, ADeletedFileStaysDeleted) {
  fs::remove(file());
  EXPECT_EQ(answersOnFile(), 0);
  {
    Profile profile(location());
    recordNumbered(profile, 0);
  }
  EXPECT_EQ(answersOnFile(), 1);
  EXPECT_EQ(copies("backup").size(), 0U);
  // The answers that only the backup had are kept aside.
  ASSERT_EQ(PutAside::all(file()).size(), 1U);
  EXPECT_EQ(Coding::decodeStored(contentOf(PutAside::all(file())[0]))->attempts.size(), 5U);
}

TEST_F(AfterAPowerCut, TheAnswersOfADeletedFileAreKeptAlsoIfItsCopyCannotBeReadForAMoment) {
  std::size_t operations = 0;
  for (std::size_t number = 0; number <= operations; ++number) {
    SCOPED_TRACE("operation " + std::to_string(number));
    SetUp();
    fs::remove(file());
    {
      Profile profile(location());
      const FileFaults faults({{number, FileFault::noDescriptors}},
                              FileFaults::Where::otherThreads);
      recordNumbered(profile, 0);
      ASSERT_TRUE(profile.waitForDisk(patience));
      operations = std::max(operations, FileFaults::operationsSoFar());
    }
    {
      Profile profile(location());
      recordNumbered(profile, 1);
    }
    ASSERT_EQ(stored()->attempts.size(), 2U);
    ASSERT_EQ(PutAside::all(file()).size(), 1U);
    ASSERT_EQ(Coding::decodeStored(contentOf(PutAside::all(file())[0]))->attempts.size(), 5U);
    fs::remove(PutAside::all(file())[0]);
  }
  EXPECT_GE(operations, 10U);
}

TEST_F(AfterAPowerCut, AReplacedFileIsTheRecord) {
  const fs::path other = scratch_.path() / "other.json";
  put(other, encoded(2));
  fs::last_write_time(other, fs::file_time_type::clock::now() - 24h); // as a copy tool would
  fs::rename(other, file());
  EXPECT_EQ(answersOnFile(), 2);
  put(file(), encoded(1));
  EXPECT_EQ(answersOnFile(), 1);
}

// After a power cut, a file that was new may be missing from its folder.
TEST_F(ProfileFiles, AMissingFileIsRestoredIfTheBackupKnowsOfNone) {
  fs::create_directories(folder());
  {
    // With the lock held elsewhere no file is written, so the backup knows of none.
    const HeldLock held(folder());
    killedAfter([&](Profile& profile) {
      recordNumbered(profile, 0);
      std::this_thread::sleep_for(300ms);
    });
  }
  EXPECT_FALSE(fs::exists(file()));
  EXPECT_EQ(answersOnFile(), 1);
}

TEST_F(ProfileFiles, AnUncleanEndOfManyProgramsIsClearedUp) {
  restart(3);
  for (std::int64_t number = 3; number < 8; ++number)
    killedAfter([&](Profile& profile) {
      EXPECT_EQ(answersIn(profile), number);
      recordNumbered(profile, number);
    });
  EXPECT_EQ(answersOnFile(), 8);
  {
    Profile profile(location());
    recordNumbered(profile, 8);
  }
  EXPECT_EQ(answersOnFile(), 9);
  expectNothingBesideTheFile();
}

// An answer that only the copy of another, killed program has. Each opening of each copy fails
// once.
TEST_F(ProfileFiles, AnAbandonedCopyThatCannotBeReadForAMomentIsMergedLater) {
  for (const std::string kind : {"backup-", "saving-"}) {
    std::size_t openings = 1;
    for (std::size_t number = 0; number < openings; ++number) {
      SCOPED_TRACE(kind + ", opening " + std::to_string(number));
      restart(3);
      {
        Profile profile(location());
        killedAfter([&](Profile& other) {
          recordNumbered(other, 3);
          ASSERT_TRUE(other.waitForDisk(patience));
          const HeldLock held(folder());
          recordNumbered(other, 4);
        });
        const std::set<std::string> names = besideTheFile();
        const auto copy = names.lower_bound(file().filename().string() + '.' + kind);
        ASSERT_NE(copy, names.end());
        const FileFaults faults(folder() / *copy, number, FileFault::noDescriptors);
        recordNumbered(profile, 5);
        ASSERT_TRUE(profile.waitForDisk(patience));
        openings = std::max(openings, FileFaults::operationsSoFar());
      }
      {
        Profile profile(location());
        recordNumbered(profile, 6);
      }
      ASSERT_EQ(stored()->attempts.size(), 7U);
      expectNothingBesideTheFile();
    }
    EXPECT_GE(openings, 2U) << "one to see whether it is locked, one to read it";
  }
}

// ---- Files that cannot be read ----

class UnreadableFile : public ProfileFiles {
protected:
  // Loads with a fault, then records the given answer without it.
  void recordAfter(FileFault fault, std::size_t operation, std::int64_t number) const {
    std::optional<FileFaults> faults(std::in_place, std::map{std::pair{operation, fault}});
    Profile profile(location());
    faults.reset();
    EXPECT_EQ(profile.attempts().size(), 0U);
    recordNumbered(profile, number);
  }
};

TEST_F(UnreadableFile, AFaultThatPassesLosesNothing) {
  for (const FileFault fault :
       {FileFault::inputOutputError, FileFault::notPermitted, FileFault::noDescriptors}) {
    restart(100);
    recordAfter(fault, 2, 100); // after open and flock of the folder: open of the file
    EXPECT_EQ(answersOnFile(), 101);
    EXPECT_EQ(stored()->attempts.size(), 101U);
    expectNothingBesideTheFile();
  }
}

TEST_F(UnreadableFile, AFileThatDoesNotDecodeIsPutAsideOnce) {
  restart(100);
  const std::string foreign =
      changed(contentOf(file()), R"("staircases":{})", R"("staircases":{},"x":[)");
  for (int round = 0; round < 3; ++round) {
    put(file(), foreign);
    {
      Profile profile(location());
      EXPECT_EQ(profile.attempts().size(), 0U);
      recordNumbered(profile, 0);
      recordNumbered(profile, 1);
    }
    EXPECT_EQ(answersOnFile(), 2);
    ASSERT_EQ(besideTheFile().size(), 1U);
    EXPECT_EQ(contentOf(PutAside::all(file()).at(0)), foreign);
  }
}

TEST_F(UnreadableFile, AFileThatDecodesByTheFirstAnswerIsMerged) {
  restart(100);
  const std::string whole = contentOf(file());
  put(file(), whole.substr(0, 500));
  Profile profile(location());
  put(file(), whole);
  recordNumbered(profile, 100);
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_EQ(stored()->attempts.size(), 101U);
  recordNumbered(profile, 101);
  EXPECT_EQ(answersIn(profile), 102);
  EXPECT_TRUE(PutAside::all(file()).empty());
}

TEST_F(UnreadableFile, AFileThatCannotBeOpenedIsPutAside) {
  restart(100);
  const std::string whole = contentOf(file());
  fs::permissions(file(), fs::perms::none);
  fs::permissions(scratch_.path(), fs::perms::all);
  fs::permissions(folder(), fs::perms::all);
  Forked program([&] {
    becomeNobody();
    Profile profile(location());
    recordNumbered(profile, 0);
  });
  EXPECT_EQ(program.ended(), EXIT_SUCCESS);
  EXPECT_EQ(answersOnFile(), 1);
  ASSERT_EQ(PutAside::all(file()).size(), 1U);
  const fs::path aside = PutAside::all(file())[0];
  fs::permissions(aside, fs::perms::owner_read);
  EXPECT_EQ(contentOf(aside), whole);
}

TEST_F(UnreadableFile, IfItCannotBePutAsideTheNextAnswerTriesAgain) {
  restart(100);
  put(file(), "from a newer version");
  Profile profile(location());
  {
    // From its third operation on, all file operations of the writer fail.
    std::map<std::size_t, FileFault> all;
    for (std::size_t number = 2; number < 200; ++number)
      all[number] = FileFault::inputOutputError;
    const FileFaults faults(all, FileFaults::Where::otherThreads);
    recordNumbered(profile, 0);
    ASSERT_TRUE(profile.waitForDisk(patience));
  }
  EXPECT_EQ(contentOf(file()), "from a newer version");
  recordNumbered(profile, 1);
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_EQ(stored()->attempts.size(), 2U);
  EXPECT_EQ(contentOf(PutAside::all(file()).at(0)), "from a newer version");
}

TEST_F(UnreadableFile, WithoutDescriptorsTheFileIsNeitherRenamedNorOverwritten) {
  restart(100);
  const std::string whole = contentOf(file());
  put(file(), "from a newer version");
  Profile profile(location());
  put(file(), whole);
  {
    // After open and flock of the folder: open of the file.
    const FileFaults faults({{2, FileFault::noDescriptors}}, FileFaults::Where::otherThreads);
    recordNumbered(profile, 100);
    ASSERT_TRUE(profile.waitForDisk(patience));
  }
  EXPECT_EQ(contentOf(file()), whole);
  recordNumbered(profile, 101);
  ASSERT_TRUE(profile.waitForDisk(patience));
  EXPECT_EQ(stored()->attempts.size(), 102U);
  EXPECT_TRUE(PutAside::all(file()).empty());
}

TEST_F(UnreadableFile, AnswersToAReadOnlyFileAreKeptUntilItIsWritable) {
  restart(100);
  fs::permissions(scratch_.path(), fs::perms::all);
  fs::permissions(folder(), fs::perms::all);
  fs::permissions(file(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  const std::string before = contentOf(file());
  for (std::int64_t number = 100; number < 103; ++number) {
    Forked program([&] {
      becomeNobody();
      Profile profile(location());
      EXPECT_EQ(answersIn(profile), number);
      recordNumbered(profile, number);
    });
    EXPECT_EQ(program.ended(), EXIT_SUCCESS);
  }
  EXPECT_EQ(contentOf(file()), before);
  EXPECT_EQ(copies("backup").size(), 1U);
  fs::permissions(file(), fs::perms::all);
  {
    Profile profile(location());
    recordNumbered(profile, 103);
  }
  EXPECT_EQ(stored()->attempts.size(), 104U);
  EXPECT_EQ(answersOnFile(), 104);
  expectNothingBesideTheFile();
}

// ---- Folders and disks that cannot be written ----

TEST_F(ProfileFiles, InAReadOnlyFolderOnlyTheFileItselfIsWritten) {
  restart(100);
  fs::permissions(scratch_.path(), fs::perms::all);
  fs::permissions(file(), fs::perms::all & ~fs::perms::owner_exec);
  fs::permissions(folder(), fs::perms::owner_read | fs::perms::owner_exec | fs::perms::group_read |
                                fs::perms::group_exec | fs::perms::others_read |
                                fs::perms::others_exec);
  Forked program([&] {
    becomeNobody();
    Profile profile(location());
    for (std::int64_t number = 100; number < 103; ++number)
      recordNumbered(profile, number);
  });
  EXPECT_EQ(program.ended(), EXIT_SUCCESS);
  fs::permissions(folder(), fs::perms::owner_all);
  EXPECT_EQ(stored()->attempts.size(), 103U);
  expectNothingBesideTheFile();
}

TEST_F(ProfileFiles, OnAReadOnlyDiskAnswersWaitUntilItIsWritable) {
  restart(100);
  const bool allowed = kit::withOwnMounts([&] {
    const std::string folderName = folder();
    const char* place = folderName.c_str();
    ASSERT_EQ(::mount(place, place, nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(::mount(nullptr, place, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
    Profile profile(location());
    recordNumbered(profile, 100);
    ASSERT_TRUE(profile.waitForDisk(patience));
    EXPECT_EQ(answersOnFile(), 100);
    ASSERT_EQ(::mount(nullptr, place, nullptr, MS_REMOUNT | MS_BIND, nullptr), 0);
    recordNumbered(profile, 101);
    ASSERT_TRUE(profile.waitForDisk(patience));
    EXPECT_EQ(stored()->attempts.size(), 102U);
  });
  if (!allowed)
    GTEST_SKIP() << "mounting is not permitted";
}

// ---- Faults of the disk ----

bool isDeadly(FileFault fault) {
  return fault == FileFault::death || fault == FileFault::halfAndDeath ||
         fault == FileFault::lateDeath;
}

constexpr std::array allFaults{FileFault::inputOutputError, FileFault::noSpace,
                               FileFault::notPermitted,     FileFault::noDescriptors,
                               FileFault::interrupted,      FileFault::half,
                               FileFault::halfAndError,     FileFault::death,
                               FileFault::halfAndDeath,     FileFault::lateDeath};

class EveryFault : public ProfileFiles, public ::testing::WithParamInterface<FileFaults::Where> {};

// A program records answers 3 and 4, with one fault in one operation: of the main thread's save of
// answer 4, or of the writer's after answer 3. Whatever the fault, no recorded answer is lost. Only
// answer 4 may be missing, if the fault killed the program before recording it was complete.
TEST_P(EveryFault, LosesNoAnswerThatWasRecorded) {
  const bool inWriter = GetParam() == FileFaults::Where::otherThreads;
  std::size_t operations = 0;
  for (std::size_t number = 0; number <= operations; ++number) {
    for (const FileFault fault : allFaults) {
      SCOPED_TRACE("operation " + std::to_string(number) + ", fault " +
                   std::to_string(static_cast<int>(fault)));
      restart(3);
      const auto practise = [&] {
        Profile profile(location());
        if (!inWriter) {
          recordNumbered(profile, 3);
          ASSERT_TRUE(profile.waitForDisk(patience));
        }
        {
          const FileFaults faults({{number, fault}}, GetParam());
          recordNumbered(profile, inWriter ? 3 : 4);
          if (inWriter) {
            ASSERT_TRUE(profile.waitForDisk(patience));
          }
          operations = std::max(operations, FileFaults::operationsSoFar());
        }
        if (inWriter) {
          recordNumbered(profile, 4);
        }
      };
      if (isDeadly(fault)) {
        Forked dying(practise);
        const int status = dying.ended();
        EXPECT_TRUE(status == 128 + SIGKILL || status == EXIT_SUCCESS) << status;
        ASSERT_GE(answersOnFile(), 4);
        ASSERT_LE(answersOnFile(), 5);
      } else {
        practise();
        ASSERT_EQ(answersOnFile(), 5);
      }
      const std::int64_t next = answersOnFile();
      {
        Profile profile(location());
        recordNumbered(profile, next);
      }
      ASSERT_EQ(answersOnFile(), next + 1);
      ASSERT_EQ(stored()->attempts.size(), static_cast<std::size_t>(next) + 1);
      ASSERT_EQ(besideTheFile(), std::set<std::string>{});
    }
  }
  EXPECT_GE(operations, 10U);
}

INSTANTIATE_TEST_SUITE_P(OfThe, EveryFault,
                         ::testing::Values(FileFaults::Where::thisThread,
                                           FileFaults::Where::otherThreads),
                         [](const auto& param) {
                           return param.param == FileFaults::Where::thisThread ? "mainThread"
                                                                               : "writer";
                         });

} // namespace
} // namespace velto
