#include "WholeFile.h"

#include "kit/Files.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace velto {
namespace {

namespace fs = std::filesystem;

class WholeFileTest : public ::testing::Test {
protected:
  [[nodiscard]] fs::path file() const { return scratch_.path() / "a file"; }
  [[nodiscard]] std::ptrdiff_t files() const {
    return std::distance(fs::directory_iterator(scratch_.path()), fs::directory_iterator());
  }
  kit::ScratchFolder scratch_;
};

TEST_F(WholeFileTest, ReadsBackWhatItWrites) {
  const std::string bytes = std::string(200000, 'x') + std::string("\0\n", 2);
  EXPECT_EQ(WholeFile::write(file(), bytes), 0);
  const auto reading = WholeFile::read(file());
  EXPECT_EQ(reading.error, 0);
  EXPECT_EQ(reading.bytes, bytes);
  EXPECT_EQ(files(), 1);
}

TEST_F(WholeFileTest, KeepsPermissionsAndLinks) {
  kit::put(file(), "old");
  fs::permissions(file(), fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink(file(), scratch_.path() / "link");
  EXPECT_EQ(WholeFile::write(scratch_.path() / "link", "new"), 0);
  EXPECT_EQ(kit::contentOf(file()), "new");
  EXPECT_TRUE(fs::is_symlink(scratch_.path() / "link"));
  EXPECT_EQ(fs::status(file()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(WholeFileTest, WritesToDevices) {
  EXPECT_EQ(WholeFile::write("/dev/null", "x"), 0);
  EXPECT_EQ(WholeFile::write("/dev/full", "x"), ENOSPC);
  EXPECT_EQ(WholeFile::read("/dev/null").error, 0);
}

TEST_F(WholeFileTest, TellsWhatWentWrong) {
  EXPECT_EQ(WholeFile::read(file()).error, ENOENT);
  EXPECT_EQ(WholeFile::read(scratch_.path()).error, EISDIR);
  EXPECT_EQ(WholeFile::write(scratch_.path(), "x"), EISDIR);
  EXPECT_EQ(WholeFile::write(scratch_.path() / "none" / "file", "x"), ENOENT);
  kit::put(file(), "x");
  EXPECT_EQ(WholeFile::write(file() / "below", "x"), ENOTDIR);
  EXPECT_EQ(files(), 1);
}

} // namespace
} // namespace velto
