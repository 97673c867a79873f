#include "TemporaryRecord.h"

#include "Profile.h"
#include "kit/RecordTesting.h"

#include <cstdlib>
#include <regex>
#include <string>

namespace velto {
namespace {

namespace fs = std::filesystem;
using testing::ScopedVariable;
using testing::ScratchFolder;

const char* profileFolder() {
  return std::getenv("VELTO_PROFILE_DIR");
}

TEST(TemporaryRecord, UsesAFolderNamedByPrefixAndUUIDInTheTemporaryDirectory) {
  const ScratchFolder folder;
  const ScopedVariable temporary("TMPDIR", folder.path().string());
  const TemporaryRecord record("velto-bench-");
  ASSERT_NE(profileFolder(), nullptr);
  const fs::path path(profileFolder());
  EXPECT_EQ(path.parent_path(), folder.path());
  EXPECT_TRUE(std::regex_match(
      path.filename().string(),
      std::regex(
          "velto-bench-[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")))
      << path;
}

TEST(TemporaryRecord, RemovesItsFolderOnDestruction) {
  const ScratchFolder folder;
  const ScopedVariable temporary("TMPDIR", folder.path().string());
  {
    const TemporaryRecord record("velto-test-");
    Profile profile;
    profile.save();
    EXPECT_TRUE(fs::exists(fs::path(profileFolder()) / "profile.json"));
  }
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(TemporaryRecord, RestoresTheVariable) {
  {
    const ScopedVariable variable("VELTO_PROFILE_DIR", "elsewhere");
    { const TemporaryRecord record("velto-test-"); }
    EXPECT_STREQ(profileFolder(), "elsewhere");
  }
  const ScopedVariable variable("VELTO_PROFILE_DIR", std::nullopt);
  { const TemporaryRecord record("velto-test-"); }
  EXPECT_EQ(profileFolder(), nullptr);
}

TEST(TemporaryRecord, RecordsShareNoAnswers) {
  const ScratchFolder folder;
  const ScopedVariable temporary("TMPDIR", folder.path().string());
  const TemporaryRecord first("velto-test-");
  Profile profile;
  profile.record(Trial{}, Drills::Grade{});
  const TemporaryRecord second("velto-test-");
  EXPECT_TRUE(Profile().attempts().empty());
}

TEST(TemporaryRecord, ProfilesWorkWithoutATemporaryDirectory) {
  const ScopedVariable temporary("TMPDIR", "/dev/null/nowhere");
  const TemporaryRecord record("velto-test-");
  Profile profile;
  profile.record(Trial{}, Drills::Grade{});
  EXPECT_EQ(profile.attempts().size(), 1U);
}

} // namespace
} // namespace velto
