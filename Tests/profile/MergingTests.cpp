#include "Merging.h"

#include "Coding.h"
#include "kit/RecordTesting.h"

#include <algorithm>

namespace velto {
namespace {

using namespace testing;

constexpr std::size_t cap = 10;

// Answers `from` to `to` - 1, all in band 3. The number of each is its difficulty and its date.
std::vector<Attempt> numbered(int from, int to) {
  std::vector<Attempt> rows;
  for (int i = from; i < to; ++i) {
    rows.push_back(row(Drill::frequency, 3, true, 0.5, Date{static_cast<double>(i)}));
    rows.back().difficulty = i;
  }
  return rows;
}

std::vector<Attempt> joined(std::vector<Attempt> a, const std::vector<Attempt>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

std::int64_t answersIn(const Stored& stored) {
  std::int64_t count = static_cast<std::int64_t>(stored.attempts.size());
  for (const auto& [band, roll] : stored.lifetime)
    count += roll.attempts;
  return count;
}

bool isSorted(const std::vector<Attempt>& rows) {
  return std::is_sorted(rows.begin(), rows.end(), [](const Attempt& a, const Attempt& b) {
    return a.date.secondsSinceReferenceDate < b.date.secondsSinceReferenceDate;
  });
}

TEST(Merging, KeepsTheAnswersOfBothSidesOnceSortedByDate) {
  const auto common = numbered(0, 3);
  const Stored base{joined(common, numbered(4, 6)), {}, {}};
  const auto own = numbered(3, 5);
  const Stored mine{joined(common, own), {}, {}};
  const Stored both = Merging::merged(base, mine, own, 100);
  EXPECT_EQ(both.attempts.size(), 7U);
  EXPECT_TRUE(isSorted(both.attempts));
  EXPECT_EQ(Merging::merged(both, mine, own, 100), both);
}

TEST(Merging, KeepsTheOrderOfAFileWhoseDatesAreUnsorted) {
  const Stored base{joined(numbered(50, 52), numbered(0, 2)), {}, {}};
  const auto own = numbered(2, 3);
  EXPECT_EQ(Merging::merged(base, {}, own, 100).attempts, joined(base.attempts, own));
}

TEST(Merging, TakesEachStaircaseFromTheSideWithItsDrillsLastAnswer) {
  Stored base{{row(Drill::level, {}, true, 0, Date{5}), row(Drill::dynamics, {}, true, 0, Date{5})},
              {{"level", {1, 0, 0, 0}}, {"dynamics", {2, 0, 0, 0}}, {"zoom", {9, 0, 0, 0}}},
              {}};
  Stored mine{{row(Drill::level, {}, true, 0, Date{6}), row(Drill::dynamics, {}, true, 0, Date{4})},
              {{"level", {3, 0, 0, 0}}, {"dynamics", {4, 0, 0, 0}}, {"polarity", {5, 0, 0, 0}}},
              {}};
  EXPECT_EQ(Merging::merged(base, mine, {}, 100).staircases,
            (std::map<std::string, Staircase>{{"level", {3, 0, 0, 0}},
                                              {"dynamics", {2, 0, 0, 0}},
                                              {"polarity", {5, 0, 0, 0}},
                                              {"zoom", {9, 0, 0, 0}}}));
}

// Three sides start from one record, and each records answers and rolls rows up on its own. In any
// order of merging, no answer is lost or counted twice.
RC_GTEST_PROP(MergingLaw, EveryAnswerIsKeptOnceAroundTheCap, ()) {
  const auto initial = *rc::gen::inRange(0, 15);
  Stored file{numbered(0, initial), {}, {}};
  file.trim(cap);
  struct Side {
    Stored memory;
    std::vector<Attempt> unsaved;
  };
  std::vector<Side> sides(3, Side{file, {}});
  int answers = initial;
  const int turns = *rc::gen::inRange(0, 60);
  for (int turn = 0; turn < turns; ++turn) {
    Side& side = sides[*rc::gen::inRange<std::size_t>(0, sides.size())];
    const auto answer = numbered(answers, answers + 1);
    ++answers;
    side.memory.attempts.push_back(answer[0]);
    side.unsaved.push_back(answer[0]);
    side.memory.trim(cap);
    if (*rc::gen::inRange(0, 3) == 0) // this save fails
      continue;
    file = Merging::merged(file, side.memory, side.unsaved, cap);
    file.trim(cap);
    side = {file, {}};
  }
  for (const Side& side : sides)
    file = Merging::merged(file, side.memory, side.unsaved, cap);
  RC_ASSERT(answersIn(file) == answers);
}

TEST(Merging, AnswersWithTheDateOfTheOldestRowAreNotRolledUpTwice) {
  auto rows = numbered(0, 12);
  for (Attempt& attempt : rows)
    attempt.date = {};
  const Stored mine{rows, {}, {}};
  Stored base = mine;
  base.trim(cap);
  EXPECT_EQ(answersIn(Merging::merged(base, mine, {}, cap)), 12);
}

// ---- Recovery ----

Backup backupOf(const std::vector<Attempt>& rows, std::optional<std::int64_t> fileChanged,
                const std::vector<Attempt>& unsaved = {}) {
  return {Stored{rows, {}, {}}, unsaved, fileChanged, 1};
}

std::size_t recoveredRows(const Merging::File& file, const std::vector<Backup>& backups) {
  const auto record = Merging::recovered(file, backups, 100);
  return record ? record->attempts.size() : 0;
}

TEST(Recovery, ABackupWinsOverAFileThatHasNotChangedSince) {
  const auto rows = numbered(0, 9);
  const Stored older{{rows.begin(), rows.begin() + 4}, {}, {}};
  EXPECT_EQ(recoveredRows({true, 20, older}, {backupOf(rows, 20)}), 9U);
  EXPECT_EQ(recoveredRows({true, 19, older}, {backupOf(rows, 20)}), 9U);
}

TEST(Recovery, ABackupWinsOverAFileThatDoesNotDecode) {
  EXPECT_EQ(recoveredRows({true, 99, {}}, {backupOf(numbered(0, 9), 20)}), 9U);
  EXPECT_EQ(recoveredRows({true, 99, {}}, {backupOf(numbered(0, 9), {})}), 9U);
}

TEST(Recovery, AFileThatWasReplacedSinceGainsOnlyUnsavedAnswers) {
  const auto rows = numbered(0, 9);
  const Stored other{numbered(100, 103), {}, {}};
  EXPECT_EQ(Merging::recovered({true, 21, other}, {backupOf(rows, 20)}, 100), other);
  EXPECT_EQ(recoveredRows({true, 21, other}, {backupOf(rows, 20, {rows[8]})}), 4U);
}

TEST(Recovery, AMissingFileIsRestoredOnlyIfThereWasNoneAtTheBackup) {
  const auto rows = numbered(0, 9);
  EXPECT_EQ(Merging::recovered({}, {backupOf(rows, 20, {rows[8]})}, 100), std::nullopt);
  EXPECT_EQ(recoveredRows({}, {backupOf(rows, {})}), 9U);
}

TEST(Recovery, TheNewestBackupWinsAndTheOthersAddTheirUnsavedAnswers) {
  const auto rows = numbered(0, 8);
  auto newest = backupOf(rows, 20);
  newest.lifetime[3] = {4, 2, 1};
  auto older = backupOf({rows.begin(), rows.begin() + 5}, 10, numbered(50, 52));
  older.lifetime[3] = {2, 1, 1};
  const auto record = Merging::recovered({true, 5, Stored{}}, {newest, older}, 100);
  EXPECT_EQ(record->attempts.size(), 10U);
  EXPECT_EQ(record->lifetime, newest.lifetime);
}

// ---- Coding of backups ----

TEST(BackupCoding, ABackupIsAProfileFileWithMoreKeys) {
  const Stored stored{numbered(0, 2), {{"level", {}}}, {{3, {1, 1, 0.5}}}};
  const std::string bytes = Coding::encode(stored).value();
  for (const auto changed : {std::optional<std::int64_t>(1234567890123456789), {}}) {
    const std::string text = Coding::encodeBackup(bytes, {stored.attempts[1]}, changed, 7).value();
    EXPECT_EQ(Coding::decodeStored(text), stored);
    const Backup backup = Coding::decodeBackup(text).value();
    EXPECT_EQ(static_cast<const Stored&>(backup), stored);
    EXPECT_EQ(backup.unsaved, std::vector<Attempt>{stored.attempts[1]});
    EXPECT_EQ(backup.fileChanged, changed);
    EXPECT_EQ(backup.save, 7);
  }
}

TEST(BackupCoding, ABackupOfAnEarlierVersionIsUsedOnlyForADamagedFile) {
  const Stored stored{numbered(0, 2), {}, {}};
  const Backup backup = Coding::decodeBackup(Coding::encode(stored).value()).value();
  EXPECT_EQ(recoveredRows({true, 1, {}}, {backup}), 2U);
  EXPECT_EQ(recoveredRows({true, 1, Stored{}}, {backup}), 0U);
  EXPECT_EQ(recoveredRows({}, {backup}), 0U);
}

} // namespace
} // namespace velto
