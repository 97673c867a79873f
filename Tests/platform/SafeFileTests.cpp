#include "SafeFile.h"

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
#include <map>
#include <set>

namespace velto {
namespace {

using namespace testing;
using kit::FileFault;
using kit::FileFaults;
using kit::Forked;

namespace fs = std::filesystem;

constexpr std::array allFaults{FileFault::inputOutputError,
                               FileFault::noSpace,
                               FileFault::notPermitted,
                               FileFault::interrupted,
                               FileFault::half,
                               FileFault::halfAndError,
                               FileFault::death,
                               FileFault::halfAndDeath,
                               FileFault::lateDeath};

// Contents of successive saves. No mixture or part of them is itself a version.
const std::array<std::string, 4> versions{"<" + std::string(300, 'a') + ">",
                                          "<" + std::string(900, 'b') + ">",
                                          "<" + std::string(200, 'c') + ">", "<d>"};

// The number of the version with exactly these bytes; nullopt if there is none.
std::optional<std::size_t> versionOf(std::string_view bytes) {
  const auto found = std::find(versions.begin(), versions.end(), bytes);
  return found == versions.end()
             ? std::nullopt
             : std::optional(static_cast<std::size_t>(found - versions.begin()));
}

bool isDeadly(FileFault fault) {
  return fault == FileFault::death || fault == FileFault::halfAndDeath ||
         fault == FileFault::lateDeath;
}

std::string described(std::size_t number, FileFault fault) {
  return "operation " + std::to_string(number) + ", fault " +
         std::to_string(static_cast<int>(fault));
}

class SafeFileTest : public ::testing::Test {
protected:
  [[nodiscard]] fs::path folder() const { return scratch_.path() / "folder"; }
  [[nodiscard]] fs::path file() const { return folder() / "file"; }
  [[nodiscard]] std::optional<std::size_t> loaded() const {
    return SafeFile::load(file(), versionOf);
  }
  [[nodiscard]] bool save(std::size_t version) const {
    return SafeFile::write(file(), versions[version]);
  }
  void restart() const {
    fs::remove_all(folder());
    put(file(), versions[0]);
  }
  [[nodiscard]] std::set<std::string> names() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder()))
      names.insert(entry.path().filename());
    return names;
  }
  void expectOnly(std::size_t version) const {
    EXPECT_EQ(contentOf(file()), versions[version]);
    EXPECT_EQ(loaded(), version);
    EXPECT_EQ(names(), std::set<std::string>{"file"});
  }

  // Saves with a fault in one operation. Returns whether that succeeded; nullopt if the fault
  // killed the process.
  [[nodiscard]] std::optional<bool> saveWith(std::size_t version, std::size_t number,
                                             FileFault fault) const {
    const auto saveFaulty = [&] {
      const FileFaults faults({{number, fault}});
      return save(version);
    };
    if (!isDeadly(fault))
      return saveFaulty();
    Forked dying([&] { static_cast<void>(saveFaulty()); });
    EXPECT_EQ(dying.ended(), 128 + SIGKILL);
    return std::nullopt;
  }

  // The number of operations of a save without faults.
  [[nodiscard]] std::size_t operations() const {
    restart();
    const FileFaults counting;
    EXPECT_TRUE(save(1));
    return FileFaults::operationsSoFar();
  }

  ScratchFolder scratch_;
};

// ---- Loading ----

TEST_F(SafeFileTest, LoadsWhatWasSavedAndLeavesNoOtherFile) {
  fs::create_directories(folder());
  EXPECT_EQ(loaded(), std::nullopt);
  for (std::size_t version = 0; version < versions.size(); ++version) {
    EXPECT_TRUE(save(version));
    expectOnly(version);
  }
}

TEST_F(SafeFileTest, LoadsTheBackupOnlyIfTheFileExistsButCannotBeDecoded) {
  put(file(), versions[0]);
  put(SafeFile::backup(file()), versions[1]);
  EXPECT_EQ(loaded(), 0U);
  for (const std::string& damaged : {std::string(), std::string("<"), versions[0] + "x"}) {
    put(file(), damaged);
    EXPECT_EQ(loaded(), 1U);
    EXPECT_EQ(contentOf(file()), damaged);
    EXPECT_EQ(contentOf(SafeFile::backup(file())), versions[1]);
  }
  fs::remove(file());
  EXPECT_EQ(loaded(), std::nullopt); // a deleted file is not restored
  put(file(), "<");
  put(SafeFile::backup(file()), "<b");
  EXPECT_EQ(loaded(), std::nullopt);
}

TEST_F(SafeFileTest, NeverLoadsAPartialBackup) {
  put(file(), "<");
  put(SafeFile::backupPart(file()), versions[1]);
  EXPECT_EQ(loaded(), std::nullopt);
}

TEST_F(SafeFileTest, TheNextSaveRemovesLeftovers) {
  put(file(), versions[0]);
  put(SafeFile::backup(file()), "<bb");
  put(SafeFile::backupPart(file()), "<b");
  EXPECT_TRUE(save(2));
  expectOnly(2);
}

TEST_F(SafeFileTest, DoesNotReadAFileAboveTheLimit) {
  put(file(), "");
  fs::resize_file(file(), SafeFile::mostBytes + 1); // sparse
  EXPECT_EQ(SafeFile::contents(file()), std::nullopt);
}

TEST_F(SafeFileTest, NeitherReadsNorWritesAPipe) {
  fs::create_directories(folder());
  ASSERT_EQ(::mkfifo(file().c_str(), S_IRUSR | S_IWUSR), 0);
  EXPECT_EQ(SafeFile::contents(file()), std::nullopt);
  EXPECT_FALSE(save(1));
  EXPECT_TRUE(fs::is_fifo(file()));
}

// Keeps hard links and the mode.
TEST_F(SafeFileTest, WritesTheFileInPlace) {
  put(file(), versions[0]);
  fs::permissions(file(), fs::perms::owner_read | fs::perms::owner_write);
  fs::create_hard_link(file(), scratch_.path() / "link");
  EXPECT_TRUE(save(1));
  EXPECT_EQ(contentOf(scratch_.path() / "link"), versions[1]);
  EXPECT_EQ(fs::status(file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(SafeFileTest, OthersCannotReadTheBackup) {
  put(file(), versions[0]);
  const std::size_t last = operations() - 1;
  restart();
  static_cast<void>(saveWith(1, last - 1, FileFault::death)); // before the backup is removed
  EXPECT_EQ(names().size(), 2U);
  for (const auto& entry : fs::directory_iterator(folder()))
    if (entry.path() != file()) {
      EXPECT_EQ(entry.status().permissions(), fs::perms::owner_read | fs::perms::owner_write);
    }
}

// ---- Faults ----

// Injects every fault into every operation of a save.
TEST_F(SafeFileTest, NoSingleFaultLosesThePreviousSave) {
  const std::size_t count = operations();
  ASSERT_GE(count, 9U);
  for (std::size_t number = 0; number < count; ++number) {
    for (const FileFault fault : allFaults) {
      SCOPED_TRACE(described(number, fault));
      restart();
      const auto saved = saveWith(1, number, fault);
      EXPECT_EQ(saved.has_value(), !isDeadly(fault));
      if (fault == FileFault::half || fault == FileFault::interrupted) {
        EXPECT_EQ(saved, true);
      }
      if (saved == true) {
        EXPECT_EQ(contentOf(file()), versions[1]);
      }
      EXPECT_LE(loaded().value_or(99), 1U);
      EXPECT_TRUE(save(2));
      expectOnly(2);
    }
  }
}

// The second save starts from whatever the first left behind.
TEST_F(SafeFileTest, NoTwoFaultsInSuccessiveSavesLoseThePreviousOne) {
  constexpr std::array faults{FileFault::inputOutputError, FileFault::halfAndError,
                              FileFault::death, FileFault::halfAndDeath};
  const std::size_t count = operations();
  for (std::size_t first = 0; first < count; ++first) {
    for (std::size_t second = 0; second < count; ++second) {
      for (const FileFault firstFault : faults) {
        for (const FileFault secondFault : faults) {
          restart();
          static_cast<void>(saveWith(1, first, firstFault));
          const auto before = loaded();
          static_cast<void>(saveWith(2, second, secondFault));
          ASSERT_TRUE(before && *before <= 1) << described(first, firstFault);
          ASSERT_TRUE(loaded() == before || loaded() == 2U)
              << described(first, firstFault) << ", then " << described(second, secondFault);
        }
      }
    }
  }
}

TEST_F(SafeFileTest, AFaultyDiskLeavesTheFileUntouchedUntilTheBackupIsComplete) {
  const std::size_t count = operations();
  std::size_t untouched = 0;
  for (std::size_t number = 2; number < count; ++number) {
    for (const FileFault fault : {FileFault::noSpace, FileFault::inputOutputError}) {
      restart();
      const auto before = fs::last_write_time(file());
      const FileFaults faults({{number, fault}});
      if (save(1))
        continue;
      if (fs::last_write_time(file()) == before && contentOf(file()) == versions[0])
        ++untouched;
    }
  }
  // open, write, close and rename of the backup, and open of the file itself.
  EXPECT_EQ(untouched, 10U);
}

// ---- Folders and disks ----

void letAllEnter(const fs::path& folder) {
  fs::permissions(folder, fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
}

TEST_F(SafeFileTest, WritesWithoutABackupWhereTheFolderTakesNoNewFile) {
  restart();
  letAllEnter(scratch_.path());
  fs::permissions(file(), fs::perms::all & ~fs::perms::owner_exec);
  fs::permissions(folder(), fs::perms::all & ~fs::perms::owner_write & ~fs::perms::group_write &
                                ~fs::perms::others_write);
  Forked saving([&] {
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0) {
      ASSERT_EQ(::setuid(nobody), 0);
    }
    EXPECT_FALSE(std::ofstream(folder() / "new"));
    EXPECT_TRUE(save(1));
  });
  EXPECT_EQ(saving.ended(), EXIT_SUCCESS);
  fs::permissions(folder(), fs::perms::owner_all);
  expectOnly(1);
}

TEST_F(SafeFileTest, FailsOnAReadOnlyDiskUntilItIsWritable) {
  restart();
  const bool allowed = kit::withOwnMounts([&] {
    const std::string folderName = folder();
    const char* place = folderName.c_str();
    ASSERT_EQ(::mount(place, place, nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(::mount(nullptr, place, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
    EXPECT_FALSE(save(1));
    expectOnly(0);
    ASSERT_EQ(::mount(nullptr, place, nullptr, MS_REMOUNT | MS_BIND, nullptr), 0);
    EXPECT_TRUE(save(2));
    expectOnly(2);
  });
  if (!allowed)
    GTEST_SKIP() << "mounting is not permitted";
}

TEST_F(SafeFileTest, WritesWithoutABackupWhereOnlyTheFileIsWritable) {
  restart();
  put(scratch_.path() / "writable", versions[0]);
  const bool allowed = kit::withOwnMounts([&] {
    const std::string folderName = folder();
    const char* place = folderName.c_str();
    ASSERT_EQ(::mount(place, place, nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(
        ::mount((scratch_.path() / "writable").c_str(), file().c_str(), nullptr, MS_BIND, nullptr),
        0);
    ASSERT_EQ(::mount(nullptr, place, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
    EXPECT_TRUE(save(1));
    expectOnly(1);
  });
  if (!allowed)
    GTEST_SKIP() << "mounting is not permitted";
  EXPECT_EQ(contentOf(scratch_.path() / "writable"), versions[1]);
}

TEST_F(SafeFileTest, FailsWithoutTheFolderUntilItIsBack) {
  restart();
  fs::rename(folder(), scratch_.path() / "elsewhere");
  EXPECT_FALSE(save(1));
  EXPECT_FALSE(fs::exists(folder()));
  EXPECT_EQ(loaded(), std::nullopt);
  fs::rename(scratch_.path() / "elsewhere", folder());
  expectOnly(0);
  EXPECT_TRUE(save(2));
  expectOnly(2);
}

// ---- Locks ----

int heldFolder(const fs::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  EXPECT_EQ(::flock(descriptor, LOCK_EX), 0);
  return descriptor;
}

TEST_F(SafeFileTest, LoadsButDoesNotSaveWhileAnotherHoldsTheLock) {
  restart();
  const int held = heldFolder(folder());
  EXPECT_FALSE(save(1));
  expectOnly(0);
  ::close(held);
  EXPECT_TRUE(save(1));
  expectOnly(1);
}

TEST_F(SafeFileTest, ConcurrentSavesNeverLeaveAMixture) {
  restart();
  const auto saveOften = [&](std::size_t version) {
    return [this, version] {
      for (int i = 0; i < 400; ++i)
        static_cast<void>(save(version));
    };
  };
  Forked long1(saveOften(1));
  Forked short1(saveOften(3));
  Forked loading([&] {
    for (int i = 0; i < 800; ++i)
      EXPECT_TRUE(loaded().has_value());
  });
  EXPECT_EQ(long1.ended(), EXIT_SUCCESS);
  EXPECT_EQ(short1.ended(), EXIT_SUCCESS);
  EXPECT_EQ(loading.ended(), EXIT_SUCCESS);
  EXPECT_TRUE(versionOf(contentOf(file())).has_value());
  EXPECT_EQ(names(), std::set<std::string>{"file"});
}

} // namespace
} // namespace velto
