#include "RecordCheck.h"

#include "BackupFile.h"
#include "Coding.h"
#include "DateText.h"
#include "FolderLock.h"
#include "kit/RecordTesting.h"

namespace velto {
namespace {

namespace fs = std::filesystem;
using testing::put;

// 2026-11-22 05:10:00 UTC is 817017000 seconds after 2001-01-01.
constexpr double morning = 817017000;

Stored recordOf(int answers, double first = morning) {
  Stored stored;
  for (int i = 0; i < answers; ++i) {
    stored.attempts.emplace_back();
    stored.attempts.back().id = UUID::random();
    stored.attempts.back().date = {first + i * 86400};
  }
  return stored;
}

std::string encoded(const Stored& stored) {
  return Coding::encode(stored).value();
}

class Checked : public ::testing::Test {
protected:
  [[nodiscard]] ProfileLocation location() const { return {scratch_.path(), std::nullopt}; }
  [[nodiscard]] fs::path file() const { return location().file(); }
  [[nodiscard]] RecordCheck check() const { return RecordCheck::of(location()); }
  [[nodiscard]] std::size_t files() const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(scratch_.path()), fs::directory_iterator()));
  }

  testing::ScratchFolder scratch_;
};

TEST(DateText, WritesTheCalendarsDate) {
  EXPECT_EQ(DateText::utc({0}), "2001-01-01T00:00:00Z");
  EXPECT_EQ(DateText::utc({morning + 0.9}), "2026-11-22T05:10:00Z");
  EXPECT_EQ(DateText::utc({-978307200.5}), "1969-12-31T23:59:59Z");
  EXPECT_EQ(DateText::utc({-63113904000}), "0001-01-01T00:00:00Z");
  EXPECT_EQ(DateText::utc({252423993599.5}), "9999-12-31T23:59:59Z");
  EXPECT_EQ(DateText::utc({252423993600}), std::nullopt);
  EXPECT_EQ(DateText::utc({1e300}), std::nullopt);
  EXPECT_EQ(DateText::utc({std::numeric_limits<double>::quiet_NaN()}), std::nullopt);
}

TEST_F(Checked, TellsWhatTheRecordHolds) {
  EXPECT_EQ(check().words(), file().string() + "\n  no record yet; it can be written\n"
                                               "velto-lab restore has nothing to bring back.\n");
  EXPECT_TRUE(check().passes());
  EXPECT_EQ(files(), 0U);

  put(file(), encoded(recordOf(3)));
  EXPECT_EQ(check().words(), file().string() +
                                 "\n  3 answers from 2026-11-22 to 2026-11-24; it can be written\n"
                                 "velto-lab restore has nothing to bring back.\n");
  EXPECT_EQ(check().json(),
            "{\"file\":\"" + file().string() +
                "\",\"reading\":\"readable\",\"answers\":3,\"oldest\":\"2026-11-22T05:10:00Z\","
                "\"newest\":\"2026-11-24T05:10:00Z\",\"writable\":true,\"room\":true,"
                "\"locked\":false,\"beside\":[]}\n");

  put(file(), "{");
  EXPECT_EQ(check().reading, RecordCheck::Reading::damaged);
  EXPECT_FALSE(check().passes());
  fs::remove(file());
  fs::create_directory(file());
  EXPECT_EQ(check().reading, RecordCheck::Reading::unreadable);
  EXPECT_FALSE(check().passes());
}

TEST_F(Checked, DoesNotCreateTheFolder) {
  const ProfileLocation deep{scratch_.path() / "a" / "b", std::nullopt};
  EXPECT_TRUE(RecordCheck::of(deep).passes());
  EXPECT_FALSE(fs::exists(scratch_.path() / "a"));
}

TEST_F(Checked, ListsWhatLiesBeside) {
  put(file(), encoded(recordOf(2)));
  put(file().string() + ".aside-2026-11-20-101010", encoded(recordOf(1, morning - 86400)));
  put(file().string() + ".aside-2026-11-19-101010", "junk");
  put(file().string() + ".aside-2026-11-19-101010.part", "junk");
  BackupFile running(file(), "backup-12345678");
  ASSERT_EQ(running.write(encoded(recordOf(4)), BackupFile::Durability::surviveKill),
            SafeFile::Written::done);
  const RecordCheck found = check();
  ASSERT_EQ(found.beside.size(), 3U);
  EXPECT_EQ(found.beside[0].kind, RecordFile::Copy::Kind::running);
  EXPECT_EQ(found.beside[0].contents->answers, 4U);
  EXPECT_EQ(found.restoredFrom, "profile.json.aside-2026-11-20-101010");
  EXPECT_EQ(found.restored->answers, 1U);
  const std::string words = found.words();
  EXPECT_NE(words.find("profile.json.backup-12345678\n  copy of a running Velto: 4 answers from "
                       "2026-11-22 to 2026-11-25\n"),
            words.npos)
      << words;
  EXPECT_NE(words.find("aside-2026-11-19-101010\n  put aside: damaged\n"), words.npos) << words;
  EXPECT_TRUE(words.ends_with("velto-lab restore would bring back 1 answer of 2026-11-21: "
                              "profile.json.aside-2026-11-20-101010\n"))
      << words;
}

TEST_F(Checked, TellsWhatVeltoBringsBackItself) {
  const Stored left = recordOf(3);
  put(file(), "{\"attempts\":[");
  put(file().string() + ".backup-12345678", Coding::encodeBackup(encoded(left), {}, 0, 1).value());
  const RecordCheck found = check();
  EXPECT_EQ(found.restored->answers, 3U);
  EXPECT_TRUE(found.words().ends_with(
      "3 answers from 2026-11-22 to 2026-11-24, as Velto does at its next start.\n"))
      << found.words();
  EXPECT_EQ(found.beside[0].kind, RecordFile::Copy::Kind::left);
}

TEST_F(Checked, TellsThatAProgramIsSaving) {
  const FolderLock lock(file(), FolderLock::Use::writing, std::chrono::milliseconds(0));
  EXPECT_TRUE(check().isLocked);
}

} // namespace
} // namespace velto
