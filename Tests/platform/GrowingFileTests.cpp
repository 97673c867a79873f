#include "GrowingFile.h"

#include "kit/FileFaults.h"
#include "kit/Files.h"
#include "kit/Forked.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>

namespace velto {
namespace {

using kit::FileFault;
using kit::FileFaults;

namespace fs = std::filesystem;

class GrowingFileTest : public ::testing::Test {
protected:
  [[nodiscard]] fs::path path() const { return scratch_.path() / "file"; }
  [[nodiscard]] std::string content() const { return kit::contentOf(path()); }

  kit::ScratchFolder scratch_;
};

TEST_F(GrowingFileTest, AppendsLines) {
  GrowingFile file(path(), "");
  EXPECT_EQ(file.append("one\r\ntwo\r\n"), std::nullopt);
  EXPECT_EQ(file.append("three\r\n"), std::nullopt);
  EXPECT_EQ(content(), "one\r\ntwo\r\nthree\r\n");
  EXPECT_EQ(file.held(), content());
}

TEST_F(GrowingFileTest, ForcesEachLineToTheDiskAndTheFolderOnce) {
  GrowingFile file(path(), "");
  const auto flushesOfAppend = [&](const char* line) {
    const std::size_t before = kit::SlowDisk::waitsOfThisThread();
    EXPECT_EQ(file.append(line), std::nullopt);
    return kit::SlowDisk::waitsOfThisThread() - before;
  };
  EXPECT_EQ(flushesOfAppend("one\n"), 2U);
  EXPECT_EQ(flushesOfAppend("two\n"), 1U);
}

TEST_F(GrowingFileTest, DropsAnUnfinishedLine) {
  kit::put(path(), "one\ntw");
  GrowingFile file(path(), "one\n");
  EXPECT_EQ(file.append("three\n"), std::nullopt);
  EXPECT_EQ(content(), "one\nthree\n");
}

TEST_F(GrowingFileTest, NoticesThatAnotherProgramChangedIt) {
  for (const char* changed : {"one\ntwo\n", "one\ntwo\nthr", "on", "One\n", ""}) {
    kit::put(path(), changed);
    GrowingFile file(path(), "one\n");
    EXPECT_EQ(file.append("mine\n"), "Another program has changed the file") << changed;
    EXPECT_EQ(content(), changed);
    EXPECT_EQ(file.held(), "one\n");
  }
  fs::remove(path());
  GrowingFile file(path(), "one\n");
  EXPECT_EQ(file.append("mine\n"), "Another program has changed the file");
}

TEST_F(GrowingFileTest, SaysWhyItCannotBeWritten) {
  EXPECT_EQ(GrowingFile(path(), "").refusal(), std::nullopt);
  EXPECT_TRUE(fs::exists(path()));
  EXPECT_EQ(GrowingFile(scratch_.path() / "none/file", "").refusal(), "No such file or directory");
  EXPECT_EQ(GrowingFile(scratch_.path(), "").refusal(), "Is a directory");
  const fs::path pipe = scratch_.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(GrowingFile(pipe, "").refusal(), "Not a regular file");
  EXPECT_EQ(GrowingFile(pipe, "").append("line\n"), "Not a regular file");
}

// Whichever operation fails, the lines count as written exactly if append() says so, and the next
// append succeeds.
TEST_F(GrowingFileTest, CanBeTriedAgainAfterEveryFailure) {
  using enum FileFault;
  for (const FileFault fault : {inputOutputError, noSpace, notPermitted, halfAndError}) {
    std::size_t failures = 0;
    for (std::size_t operation = 0;; ++operation) {
      kit::put(path(), "one\ncut");
      GrowingFile file(path(), "one\n");
      std::size_t operations = 0;
      std::optional<std::string> error;
      {
        const FileFaults faults({{operation, fault}});
        error = file.append("two\nthree\n");
        operations = FileFaults::operationsSoFar();
      }
      if (operation >= operations) {
        EXPECT_EQ(error, std::nullopt);
        break;
      }
      if (error)
        ++failures;
      EXPECT_EQ(file.held(), error ? "one\n" : "one\ntwo\nthree\n");
      EXPECT_EQ(file.append("four\n"), std::nullopt) << operation;
      EXPECT_EQ(content(), error ? "one\nfour\n" : "one\ntwo\nthree\nfour\n") << operation;
    }
    EXPECT_GE(failures, 4U) << "opening, writing, flushing the file and the folder";
  }
}

TEST_F(GrowingFileTest, LeavesNothingOfLinesThatItCouldNotFlush) {
  kit::put(path(), "one\n");
  GrowingFile file(path(), "one\n");
  for (std::size_t operation = 0; operation < 6; ++operation) {
    const FileFaults faults({{operation, FileFault::noSpace}});
    if (file.append("two\n")) {
      EXPECT_EQ(content(), "one\n") << operation;
    } else {
      break;
    }
  }
}

// A kill at any operation leaves the line missing, cut or whole, and nothing before it changed.
TEST_F(GrowingFileTest, SurvivesAKillAtAnyOperation) {
  using enum FileFault;
  for (const FileFault fault : {death, halfAndDeath, lateDeath})
    for (std::size_t operation = 0; operation < 12; ++operation) {
      kit::put(path(), "one\ncut");
      kit::Forked child([&] {
        const FileFaults faults({{operation, fault}});
        static_cast<void>(GrowingFile(path(), "one\n").append("two\n"));
      });
      static_cast<void>(child.ended());
      const std::string left = content();
      EXPECT_TRUE(left == "one\ncut" ||
                  (left.starts_with("one\n") && std::string("one\ntwo\n").starts_with(left)))
          << left;
      EXPECT_EQ(GrowingFile(path(), left.ends_with('\n') ? left : "one\n").append("three\n"),
                std::nullopt);
      EXPECT_EQ(content(), left == "one\ntwo\n" ? "one\ntwo\nthree\n" : "one\nthree\n");
    }
}

TEST_F(GrowingFileTest, TellsThatTheDiskIsFull) {
  const bool allowed = kit::withOwnMounts([&] {
    ASSERT_EQ(::mount("tmpfs", scratch_.path().c_str(), "tmpfs", 0, "size=8k"), 0);
    GrowingFile file(path(), "");
    EXPECT_EQ(file.append("one\n"), std::nullopt);
    kit::put(scratch_.path() / "large", std::string(100000, 'x'));
    const std::string line(5000, 'y');
    EXPECT_EQ(file.append(line + "\n"), "No space left on device");
    EXPECT_EQ(content(), "one\n");
    fs::remove(scratch_.path() / "large");
    EXPECT_EQ(file.append("two\n"), std::nullopt);
    EXPECT_EQ(content(), "one\ntwo\n");
  });
  if (!allowed)
    GTEST_SKIP() << "mounting is not permitted";
}

} // namespace
} // namespace velto
