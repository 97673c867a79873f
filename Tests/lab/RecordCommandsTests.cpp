// velto-lab check, export, import and restore, on a record of their own.
#include "BackupFile.h"
#include "Coding.h"
#include "FolderLock.h"
#include "ProfileCSV.h"
#include "PutAside.h"

#include "LabRunner.h"
#include "kit/Forked.h"
#include "kit/RecordTesting.h"

#include <sys/mount.h>

namespace velto {
namespace {

namespace fs = std::filesystem;
using kit::ChildResult;
using testing::contentOf;
using testing::isOneComplaint;
using testing::LabRunner;
using testing::put;
using Stream = kit::ChildOptions::Stream;

Stored someRecord(int answers) {
  Stored stored;
  for (int i = 0; i < answers; ++i) {
    stored.attempts.push_back(
        testing::row(Drill::frequency, i % 27, i % 3 == 0, i / 7.0, {817017000.0 + i}));
    stored.attempts.back().id = {};
    stored.attempts.back().id.bytes[0] = static_cast<std::uint8_t>(i);
    stored.attempts.back().difficulty = i;
  }
  stored.staircases["frequency"] = {41, 1, 3, -1};
  stored.staircases["of, \"another\"\nversion"] = {-0.0, 0, 0, 0};
  stored.lifetime[26] = {3, 1, 0.1 + 0.2};
  return stored;
}

std::string encoded(const Stored& stored) {
  return Coding::encode(stored).value();
}

void expectFailure(const ChildResult& result, const std::string& part) {
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_TRUE(isOneComplaint(result.error)) << result.error;
  EXPECT_NE(result.error.find(part), std::string::npos) << result.error;
}

void expectDone(const ChildResult& result) {
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.error, "");
}

TEST(LabRecord, ExportImportAndExportGiveTheSameBytes) {
  const LabRunner from, to;
  put(from.record(), encoded(someRecord(30)));
  expectDone(from.run({"export", "one.csv"}));
  const fs::path one = from.folder() / "one.csv", two = to.folder() / "two.csv";
  EXPECT_EQ(contentOf(one), ProfileCSV::write(someRecord(30)));
  expectDone(to.run({"import", one.string()}));
  expectDone(to.run({"export", two.string()}));
  EXPECT_EQ(contentOf(one), contentOf(two));
  EXPECT_EQ(contentOf(to.record()), contentOf(from.record()));
}

RC_GTEST_PROP(LabRecordLaw, ExportImportAndExportGiveTheSameBytes, ()) {
  const LabRunner from, to;
  put(from.record(), encoded(testing::anyStored()));
  const ChildResult first = from.run({"export", "-"});
  RC_ASSERT(first.status == 0);
  put(to.folder() / "x.csv", first.out);
  RC_ASSERT(to.run({"import", "x.csv"}).status == 0);
  RC_ASSERT(to.run({"export", "-"}).out == first.out);
}

TEST(LabRecord, ReadsAndWritesStandardStreams) {
  const LabRunner from, to;
  put(from.record(), encoded(someRecord(4)));
  put(to.folder() / "answers", from.run({"export", "-"}).out);
  const auto result = kit::runChild({"/bin/sh", "-c", VELTO_LAB " import - <answers"},
                                    {.environment = {{"VELTO_PROFILE_DIR", to.folder().string()}},
                                     .folder = to.folder().string()});
  expectDone(result);
  EXPECT_EQ(contentOf(to.record()), contentOf(from.record()));
}

TEST(LabRecord, ImportAddsAnswersOnceAndKeepsTheFormerRecord) {
  const LabRunner lab;
  Stored present = someRecord(10);
  present.attempts.resize(6);
  put(lab.record(), encoded(present));
  put(lab.folder() / "all.csv", ProfileCSV::write(someRecord(10)));
  const ChildResult result = lab.run({"import", "all.csv"});
  expectDone(result);
  EXPECT_EQ(result.out.substr(0, result.out.find('\n')),
            "The file has 10 answers; the record had 6 and has 10.");
  EXPECT_EQ(Coding::decodeStored(contentOf(lab.record()))->attempts, someRecord(10).attempts);
  const auto aside = PutAside::all(lab.record());
  ASSERT_EQ(aside.size(), 1U);
  EXPECT_EQ(contentOf(aside[0]), encoded(present));
  EXPECT_NE(result.out.find("The former one is kept: " + aside[0].string() + "\n"),
            std::string::npos);

  expectDone(lab.run({"import", "all.csv"}));
  EXPECT_EQ(PutAside::all(lab.record()).size(), 1U);
}

TEST(LabRecord, ImportRefusesADamagedFileWhole) {
  const LabRunner lab;
  put(lab.record(), encoded(someRecord(2)));
  const std::string file = ProfileCSV::write(someRecord(10));
  put(lab.folder() / "cut.csv", file.substr(0, file.find("end,")));
  expectFailure(lab.run({"import", "cut.csv"}), "cut.csv: line ");
  put(lab.folder() / "odd.csv", testing::changed(file, ",5,0,", ",5,maybe,"));
  expectFailure(lab.run({"import", "odd.csv"}), "odd.csv: line 7: correct is neither 0 nor 1");
  expectFailure(lab.run({"import", "none.csv"}), "none.csv: No such file or directory");
  expectFailure(lab.run({"import", "."}), ".: Is a directory");
  EXPECT_EQ(contentOf(lab.record()), encoded(someRecord(2)));
  EXPECT_TRUE(PutAside::all(lab.record()).empty());
}

TEST(LabRecord, ExportFailsWithoutARecord) {
  const LabRunner lab;
  expectFailure(lab.run({"export", "x.csv"}), "there is no record");
  put(lab.record(), "{}");
  expectFailure(lab.run({"export", "x.csv"}), "the record cannot be read");
  EXPECT_FALSE(fs::exists(lab.folder() / "x.csv"));
}

TEST(LabRecord, ExportLeavesTheFormerFileIfTheDiskIsFull) {
  const LabRunner lab;
  put(lab.record(), encoded(someRecord(200)));
  expectFailure(lab.run({"export", "/dev/full"}), "No space left on device");
  expectFailure(lab.run({"export", "-"}, {.out = Stream::fullDisk}), "No space left on device");
  expectFailure(lab.run({"export", "none/x.csv"}), "No such file or directory");
  const bool allowed = kit::withOwnMounts([&] {
    const fs::path disk = lab.folder() / "disk";
    fs::create_directory(disk);
    ASSERT_EQ(::mount("none", disk.c_str(), "tmpfs", 0, "size=8k"), 0);
    put(disk / "x.csv", "former");
    expectFailure(lab.run({"export", "disk/x.csv"}), "No space left on device");
    EXPECT_EQ(contentOf(disk / "x.csv"), "former");
    EXPECT_EQ(std::distance(fs::directory_iterator(disk), fs::directory_iterator()), 1);
  });
  if (!allowed)
    GTEST_SKIP() << "mounting is not permitted";
}

TEST(LabRecord, ImportSurvivesAFullDisk) {
  const LabRunner lab;
  put(lab.folder() / "all.csv", ProfileCSV::write(someRecord(200)));
  const bool allowed = kit::withOwnMounts([&] {
    const fs::path disk = lab.folder() / "disk";
    fs::create_directory(disk);
    ASSERT_EQ(::mount("none", disk.c_str(), "tmpfs", 0, "size=16k"), 0);
    put(disk / "profile.json", encoded(someRecord(20)));
    expectFailure(
        lab.run({"import", "all.csv"}, {.environment = {{"VELTO_PROFILE_DIR", disk.string()}}}),
        "");
    EXPECT_EQ(contentOf(disk / "profile.json"), encoded(someRecord(20)));
  });
  if (!allowed)
    GTEST_SKIP() << "mounting is not permitted";
}

TEST(LabRecord, WaitsForNobodyForLong) {
  const LabRunner lab;
  put(lab.record(), encoded(someRecord(2)));
  put(lab.folder() / "all.csv", ProfileCSV::write(someRecord(3)));
  put(lab.record().string() + ".aside-2026-11-20-101010", encoded(someRecord(1)));
  const FolderLock lock(lab.record(), FolderLock::Use::writing, std::chrono::milliseconds(0));
  ASSERT_FALSE(lock.isRefused());
  expectFailure(lab.run({"import", "all.csv"}), "another program is saving the record");
  expectFailure(lab.run({"restore"}), "another program is saving the record");
  EXPECT_EQ(contentOf(lab.record()), encoded(someRecord(2)));
}

TEST(LabRecord, RestoreBringsBackWhatAnImportReplaced) {
  const LabRunner lab;
  const std::string former = encoded(someRecord(5));
  put(lab.record(), former);
  put(lab.folder() / "all.csv", ProfileCSV::write(someRecord(9)));
  expectDone(lab.run({"import", "all.csv"}));
  const std::string imported = contentOf(lab.record());
  const std::string name = PutAside::all(lab.record()).at(0).filename().string();
  EXPECT_TRUE(lab.run({"check"}).out.ends_with(
      "velto-lab restore would bring back 5 answers of 2026-11-22: " + name + "\n"));
  expectDone(lab.run({"restore"}));
  EXPECT_EQ(contentOf(lab.record()), former);
  expectDone(lab.run({"restore"}));
  EXPECT_EQ(contentOf(lab.record()), imported);
  expectDone(lab.run({"restore", name}));
  EXPECT_EQ(contentOf(lab.record()), former);
}

TEST(LabRecord, RestoreTakesTheFileThatIsNamed) {
  const LabRunner lab;
  expectFailure(lab.run({"restore"}), "there is nothing to bring back");
  expectFailure(lab.run({"restore", "elsewhere.json"}), "No such file or directory");
  put(lab.folder() / "elsewhere.json", "{}");
  expectFailure(lab.run({"restore", "elsewhere.json"}), "no practice record");
  put(lab.folder() / "elsewhere.json", encoded(someRecord(3)));
  expectDone(lab.run({"restore", "elsewhere.json"}));
  EXPECT_EQ(contentOf(lab.record()), encoded(someRecord(3)));
}

TEST(LabRecord, RestoreRefusesWhileVeltoRuns) {
  const LabRunner lab;
  put(lab.record(), encoded(someRecord(3)));
  put(lab.record().string() + ".aside-2026-11-20-101010", encoded(someRecord(1)));
  BackupFile running(lab.record(), "backup-12345678");
  ASSERT_EQ(running.write(encoded(someRecord(3)), BackupFile::Durability::surviveKill),
            SafeFile::Written::done);
  expectFailure(lab.run({"restore"}), "Velto is running with this record; close it first");
  EXPECT_EQ(contentOf(lab.record()), encoded(someRecord(3)));
}

TEST(LabRecord, CheckFailsIfTheRecordCannotBeUsed) {
  const LabRunner lab;
  expectDone(lab.run({"check"}));
  put(lab.record(), encoded(someRecord(3)));
  expectDone(lab.run({"check"}));
  EXPECT_TRUE(lab.run({"check", "--json"})
                  .out.starts_with("{\"file\":\"" + lab.record().string() +
                                   "\",\"reading\":\"readable\",\"answers\":3,"));
  put(lab.record(), "damaged");
  const ChildResult result = lab.run({"check"});
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(isOneComplaint(result.error)) << result.error;
  EXPECT_NE(result.out.find("damaged: it cannot be read"), std::string::npos) << result.out;
}

} // namespace
} // namespace velto
