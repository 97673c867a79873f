#include "SafeFile.h"

#include "BackupFile.h"
#include "FolderLock.h"
#include "Folders.h"
#include "PutAside.h"

#include "kit/FileFaults.h"
#include "kit/Forked.h"
#include "kit/RecordTesting.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <regex>
#include <set>

namespace velto {
namespace {

using namespace testing;
using kit::FileFault;
using kit::FileFaults;
using kit::Forked;
using SafeFile::Written;
using State = SafeFile::Reading::State;

namespace fs = std::filesystem;

class FileTest : public ::testing::Test {
protected:
  [[nodiscard]] fs::path file() const { return scratch_.path() / "file"; }
  static std::size_t entries(const fs::path& folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
  }
  [[nodiscard]] std::size_t entries() const { return entries(scratch_.path()); }

  ScratchFolder scratch_;
};

// ---- SafeFile ----

class SafeFileTest : public FileTest {};

TEST_F(SafeFileTest, ReadsWhatWasWritten) {
  EXPECT_EQ(SafeFile::read(file()).state, State::missing);
  EXPECT_EQ(SafeFile::stamp(file()), std::nullopt);
  EXPECT_EQ(SafeFile::overwrite(file(), "longer"), Written::done);
  EXPECT_EQ(SafeFile::overwrite(file(), "text"), Written::done);
  const SafeFile::Reading reading = SafeFile::read(file());
  EXPECT_EQ(reading.state, State::complete);
  EXPECT_EQ(reading.bytes, "text");
  EXPECT_EQ(reading.stamp, SafeFile::stamp(file()));
}

// Even if writes follow each other at once and change neither size nor inode.
TEST_F(SafeFileTest, NoTwoWritesHaveTheSameStamp) {
  auto last = SafeFile::stamp(file());
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(SafeFile::overwrite(file(), "same"), Written::done);
    const auto now = SafeFile::stamp(file());
    ASSERT_NE(now, last);
    ASSERT_TRUE(SafeFile::isExact(now.value()));
    last = now;
  }
}

TEST_F(SafeFileTest, WritesByOthersChangeTheStamp) {
  ASSERT_EQ(SafeFile::overwrite(file(), "same"), Written::done);
  const auto before = SafeFile::stamp(file());
  put(file(), "same");
  EXPECT_NE(SafeFile::stamp(file()), before);
}

TEST_F(SafeFileTest, DoesNotReadAFileAboveTheLimit) {
  put(file(), "");
  fs::resize_file(file(), SafeFile::mostBytes + 1); // sparse
  EXPECT_EQ(SafeFile::read(file()).state, State::unreadable);
}

TEST_F(SafeFileTest, NeitherReadsNorWritesAPipe) {
  ASSERT_EQ(::mkfifo(file().c_str(), S_IRUSR | S_IWUSR), 0);
  EXPECT_EQ(SafeFile::read(file()).state, State::irregular);
  EXPECT_EQ(SafeFile::overwrite(file(), "text"), Written::failed);
  EXPECT_TRUE(fs::is_fifo(file()));
}

TEST_F(SafeFileTest, TellsAMissingFileFromOneThatCannotBeReadNow) {
  put(file(), "text");
  const auto stateWith = [&](FileFault fault) {
    const FileFaults faults({{0, fault}}); // in open
    return SafeFile::read(file()).state;
  };
  EXPECT_EQ(stateWith(FileFault::inputOutputError), State::unreadable);
  EXPECT_EQ(stateWith(FileFault::notPermitted), State::unreadable);
  EXPECT_EQ(stateWith(FileFault::noDescriptors), State::exhausted);
}

// The file remains the same file, with its links and its mode.
TEST_F(SafeFileTest, WritesTheFileInPlace) {
  put(file(), "before");
  fs::permissions(file(), fs::perms::owner_read | fs::perms::owner_write);
  fs::create_hard_link(file(), scratch_.path() / "link");
  EXPECT_EQ(SafeFile::overwrite(file(), "after"), Written::done);
  EXPECT_EQ(contentOf(scratch_.path() / "link"), "after");
  EXPECT_EQ(fs::status(file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

// ---- BackupFile ----

class BackupFileTest : public FileTest {
protected:
  [[nodiscard]] fs::path copy() const { return scratch_.path() / "file.copy-1"; }
};

constexpr auto durable = BackupFile::Durability::survivePowerCut;

TEST_F(BackupFileTest, IsCompleteOrAbsentWhateverFails) {
  const std::string before(300, 'a');
  const std::string after(900, 'b');
  std::size_t operations = 0;
  {
    BackupFile backup(file(), "copy-1");
    const FileFaults counting;
    EXPECT_EQ(backup.write(after, durable), Written::done);
    operations = FileFaults::operationsSoFar();
  }
  EXPECT_GE(operations, 9U);
  for (std::size_t number = 0; number < operations; ++number) {
    for (const FileFault fault :
         {FileFault::inputOutputError, FileFault::noSpace, FileFault::notPermitted, FileFault::half,
          FileFault::halfAndError, FileFault::interrupted}) {
      SCOPED_TRACE("operation " + std::to_string(number));
      BackupFile backup(file(), "copy-1");
      EXPECT_EQ(backup.write(before, durable), Written::done);
      Written written = Written::failed;
      {
        const FileFaults faults({{number, fault}});
        written = backup.write(after, durable);
      }
      const std::string content = contentOf(copy());
      EXPECT_TRUE(content == after || (content == before && written != Written::done));
      EXPECT_EQ(entries(), 1U);
      backup.remove();
      EXPECT_EQ(entries(), 0U);
    }
  }
}

TEST_F(BackupFileTest, WaitsForTheDiskOnlyIfAsked) {
  BackupFile backup(file(), "copy-1");
  const std::size_t before = kit::SlowDisk::waitsOfThisThread();
  EXPECT_EQ(backup.write("text", BackupFile::Durability::surviveKill), Written::done);
  EXPECT_EQ(kit::SlowDisk::waitsOfThisThread(), before);
  EXPECT_EQ(backup.write("text", durable), Written::done);
  EXPECT_EQ(kit::SlowDisk::waitsOfThisThread(), before + 2); // the copy and its folder
}

TEST_F(BackupFileTest, IsInUseUntilItsProgramEnds) {
  Forked program([&] {
    BackupFile backup(file(), "copy-1");
    EXPECT_EQ(backup.write("text", durable), Written::done);
    EXPECT_EQ(backup.write("more text", durable), Written::done);
    put(scratch_.path() / "ready", "");
    ::pause();
  });
  while (!fs::exists(scratch_.path() / "ready"))
    ::usleep(1000);
  EXPECT_EQ(BackupFile::stateOf(copy()), BackupFile::State::inUse);
  static_cast<void>(program.killed());
  EXPECT_EQ(BackupFile::stateOf(copy()), BackupFile::State::abandoned);
  EXPECT_EQ(contentOf(copy()), "more text");
}

// Others remove what they take for abandoned.
TEST_F(BackupFileTest, IsNotTakenForAbandonedWhileItIsReplacedAndRemoved) {
  Forked program([&] {
    BackupFile backup(file(), "copy-1");
    for (std::size_t i = 0;; ++i) {
      EXPECT_EQ(backup.write("text", BackupFile::Durability::surviveKill), Written::done);
      if (i % 3 == 0)
        backup.remove();
    }
  });
  std::array<int, 3> seen{};
  while (seen[static_cast<std::size_t>(BackupFile::State::inUse)] < 20000)
    ++seen[static_cast<std::size_t>(BackupFile::stateOf(copy()))];
  EXPECT_EQ(seen[static_cast<std::size_t>(BackupFile::State::abandoned)], 0);
  static_cast<void>(program.killed());
}

TEST_F(BackupFileTest, ACopyThatIsMissingOrCannotBeOpenedIsNotAbandoned) {
  EXPECT_EQ(BackupFile::stateOf(copy()), BackupFile::State::unknown);
  put(copy(), "text");
  {
    const FileFaults faults({{0, FileFault::noDescriptors}});
    EXPECT_EQ(BackupFile::stateOf(copy()), BackupFile::State::unknown);
  }
  EXPECT_EQ(BackupFile::stateOf(copy()), BackupFile::State::abandoned);
}

TEST_F(BackupFileTest, OthersCannotReadIt) {
  BackupFile backup(file(), "copy-1");
  EXPECT_EQ(backup.write("text", durable), Written::done);
  EXPECT_EQ(fs::status(copy()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(BackupFileTest, IsRefusedWhereTheFolderTakesNoNewFile) {
  fs::permissions(scratch_.path(), fs::perms::owner_read | fs::perms::owner_exec |
                                       fs::perms::others_read | fs::perms::others_exec);
  Forked writing([&] {
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0) {
      ASSERT_EQ(::setuid(nobody), 0);
    }
    BackupFile backup(file(), "copy-1");
    EXPECT_EQ(backup.write("text", durable), Written::refused);
  });
  EXPECT_EQ(writing.ended(), EXIT_SUCCESS);
  fs::permissions(scratch_.path(), fs::perms::owner_all);
}

// ---- PutAside ----

class PutAsideTest : public FileTest {
protected:
  [[nodiscard]] bool keep() const {
    return PutAside::keep(file(), SafeFile::read(file()), decodes);
  }
  [[nodiscard]] bool keep(const std::string& content) const {
    put(file(), content);
    return keep();
  }
  // Takes a text that begins with "good" for a record.
  static bool decodes(std::string_view bytes) { return bytes.starts_with("good"); }
};

TEST_F(PutAsideTest, CopiesTheBytesUnderADatedName) {
  EXPECT_TRUE(keep("bad"));
  const auto files = PutAside::all(file());
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(contentOf(files[0]), "bad");
  EXPECT_EQ(contentOf(file()), "bad");
  EXPECT_TRUE(std::regex_match(files[0].filename().string(),
                               std::regex(R"(file\.aside-\d{4}-\d\d-\d\d-\d{6})")));
}

TEST_F(PutAsideTest, KeepsNoDuplicateAndNoEmptyFile) {
  for (int i = 0; i < 3; ++i)
    EXPECT_TRUE(keep("bad"));
  EXPECT_TRUE(keep(""));
  EXPECT_EQ(PutAside::all(file()).size(), 1U);
  EXPECT_TRUE(keep("worse"));
  EXPECT_EQ(PutAside::all(file()).size(), 2U);
}

TEST_F(PutAsideTest, RemovesOnlyTheOldestJunk) {
  const std::string large(PutAside::mostBytesOfJunk + 1, 'x');
  EXPECT_TRUE(keep("good"));
  EXPECT_TRUE(keep(large));
  for (int i = 0; i < 20; ++i)
    EXPECT_TRUE(keep("junk " + std::to_string(i)));
  const auto files = PutAside::all(file());
  EXPECT_EQ(files.size(), PutAside::mostFiles);
  std::set<std::string> contents;
  for (const fs::path& kept : files)
    contents.insert(contentOf(kept));
  EXPECT_TRUE(contents.contains("good") && contents.contains(large));
  EXPECT_TRUE(contents.contains("junk 19"));
  EXPECT_FALSE(contents.contains("junk 0"));
}

TEST_F(PutAsideTest, RenamesWhatCannotBeReadOrCopied) {
  put(file(), "unreadable");
  {
    const FileFaults faults({{0, FileFault::notPermitted}}); // open
    EXPECT_TRUE(keep());
  }
  EXPECT_FALSE(fs::exists(file()));
  put(file(), "no room for a copy");
  const SafeFile::Reading reading = SafeFile::read(file());
  {
    const FileFaults faults({{3, FileFault::noSpace}, {4, FileFault::noSpace}});
    EXPECT_TRUE(PutAside::keep(file(), reading, decodes));
  }
  EXPECT_EQ(PutAside::all(file()).size(), 2U);
}

TEST_F(PutAsideTest, FailsIfTheFileCannotBeKept) {
  fs::create_directories(file());
  EXPECT_FALSE(keep());
  fs::remove(file());
  put(file(), "bad");
  SafeFile::Reading reading = SafeFile::read(file());
  reading.state = State::exhausted;
  EXPECT_FALSE(PutAside::keep(file(), reading, decodes));
  EXPECT_EQ(contentOf(file()), "bad");
  EXPECT_EQ(PutAside::all(file()).size(), 0U);
}

// ---- Moving ----

class MoveFile : public FileTest {
protected:
  // Moves to another file system, with a fault.
  void move(std::size_t number, FileFault fault) const {
    const FileFaults faults({{number, fault}});
    Folders::moveFile(file(), there());
  }
  // The number of file operations of a move that succeeds.
  [[nodiscard]] std::size_t operationsOfAMove() const {
    put(file(), "text");
    const FileFaults none;
    Folders::moveFile(file(), there());
    return FileFaults::operationsSoFar();
  }
  [[nodiscard]] fs::path there() const { return other_.path() / "moved"; }
  void SetUp() override {
    struct stat here {};
    struct stat other {};
    if (::stat(scratch_.path().c_str(), &here) != 0 || ::stat(other_.path().c_str(), &other) != 0 ||
        here.st_dev == other.st_dev)
      GTEST_SKIP() << "no second file system at /dev/shm";
  }

  ScratchFolder other_{"/dev/shm"};
};

TEST_F(MoveFile, FailsWithoutLosingAByte) {
  const std::size_t operations = operationsOfAMove();
  for (const bool replaces : {false, true})
    for (std::size_t number = 0; number < operations; ++number) {
      put(file(), "text");
      fs::remove(there());
      if (replaces)
        put(there(), "older");
      move(number, FileFault::inputOutputError);
      EXPECT_TRUE(contentOf(file()) == "text" || contentOf(there()) == "text") << number;
      const bool isMoved = fs::exists(there()) && contentOf(there()) == "text";
      EXPECT_EQ(fs::exists(there()), isMoved || replaces) << number;
      EXPECT_EQ(entries(other_.path()), fs::exists(there()) ? 1U : 0U) << number;
    }
}

TEST_F(MoveFile, CutShortAnywhereLeavesNoPartialFile) {
  const std::size_t operations = operationsOfAMove();
  for (std::size_t number = 0; number < operations; ++number)
    for (const FileFault fault : {FileFault::death, FileFault::lateDeath}) {
      put(file(), "text");
      fs::remove(there());
      Forked mover([&] { move(number, fault); });
      EXPECT_EQ(mover.ended(), 128 + SIGKILL) << number;
      EXPECT_TRUE(!fs::exists(there()) || contentOf(there()) == "text") << number;
      EXPECT_TRUE(fs::exists(there()) || contentOf(file()) == "text") << number;
    }
}

TEST_F(MoveFile, ForcesTheCopyAndThenItsFolderToTheDisk) {
  put(file(), "text");
  const std::size_t before = kit::SlowDisk::waitsOfThisThread();
  Folders::moveFile(file(), there());
  EXPECT_EQ(kit::SlowDisk::waitsOfThisThread() - before, 2U);
  EXPECT_EQ(contentOf(there()), "text");
  EXPECT_FALSE(fs::exists(file()));
}

TEST_F(MoveFile, AFullDiskLeavesTheOriginalAlone) {
  const bool allowed = kit::withOwnMounts([&] {
    ASSERT_EQ(::mount("tmpfs", other_.path().c_str(), "tmpfs", 0, "size=4k"), 0);
    const std::string large(100000, 'x');
    put(file(), large);
    Folders::moveFile(file(), there());
    EXPECT_EQ(contentOf(file()), large);
    EXPECT_TRUE(fs::is_empty(other_.path()));
  });
  if (!allowed)
    GTEST_SKIP() << "mounting is not permitted";
}

// ---- FolderLock ----

TEST_F(FileTest, AFolderLockWaitsNoLongerThanItsPatience) {
  using namespace std::chrono_literals;
  const FolderLock held(file(), FolderLock::Use::writing, 0ms);
  EXPECT_FALSE(held.isRefused());
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(FolderLock(file(), FolderLock::Use::writing, 0ms).isRefused());
  EXPECT_TRUE(FolderLock(file(), FolderLock::Use::reading, 0ms).isRefused());
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 20ms);
  EXPECT_TRUE(FolderLock(file(), FolderLock::Use::writing, 50ms).isRefused());
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 50ms);
}

} // namespace
} // namespace velto
