#include "Assignment.h"

#include "Rendering.h"
#include "kit/Files.h"

#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <string>

using namespace velto;

namespace {

namespace fs = std::filesystem;

const TrialList list{.difficulty = TrialList::Difficulty::fixed,
                     .trials = {{Drill::frequency, Material::pinkNoise, 40, 0x9e3779b97f4a7c15},
                                {Drill::polarity, Material::pad, 40, 0x3c6ef372fe94f82a},
                                {Drill::dynamics, Material::drums, 0, 0}}};

class AssignmentTest : public ::testing::Test {
protected:
  AssignmentTest() { kit::put(listFile(), list.text()); }

  [[nodiscard]] fs::path listFile() const { return scratch_.path() / "test.velto"; }
  [[nodiscard]] fs::path results() const { return scratch_.path() / "mine.csv"; }

  // The line of a failure, with the scratch folder left out; empty if both files can be used.
  [[nodiscard]] std::string failure(const fs::path& listPath, const fs::path& resultsPath) const {
    const auto opened = Assignment::open(listPath, resultsPath);
    const auto* line = std::get_if<std::string>(&opened);
    if (line == nullptr)
      return "";
    std::string text = *line;
    const std::string folder = scratch_.path().string() + "/";
    if (text.starts_with(folder))
      text.erase(0, folder.size());
    return text;
  }

  // A line of results for the list's first trial.
  [[nodiscard]] static std::string firstLine(const TrialList& of = list) {
    Sitting sitting(of);
    const Trial trial = *sitting.next();
    return Results::line(of.id(), 1,
                         {.trial = trial, .given = {.answer = 1000}, .grade = sitting.take(1000)});
  }

  kit::ScratchFolder scratch_;
};

// FNV-1a over the bits of all samples of a trial as it is played.
std::uint64_t hashOf(const Trial& trial) {
  std::uint64_t value = 0xcbf29ce484222325;
  for (const Slot& slot : Drills::render(trial, 3.2, Noise::audible))
    for (const auto& channel : {*slot.l, *slot.r})
      for (const float sample : channel)
        for (int byte = 0; byte < 4; ++byte)
          value = (value ^ ((std::bit_cast<std::uint32_t>(sample) >> (8 * byte)) & 0xff)) *
                  0x100000001b3;
  return value;
}

} // namespace

TEST_F(AssignmentTest, StartsWithAnEmptyFile) {
  const auto opened = std::get<Assignment>(Assignment::open(listFile(), results()));
  EXPECT_EQ(opened.reading.sitting.list(), list);
  EXPECT_EQ(opened.reading.sitting.answered(), 0U);
  EXPECT_EQ(opened.file->held(), "");
  EXPECT_TRUE(fs::exists(results()));
  EXPECT_EQ(kit::contentOf(results()), "");
}

TEST_F(AssignmentTest, GoesOnAfterTheLastWholeLine) {
  const std::string whole = std::string(Results::header()) + firstLine();
  kit::put(results(), whole + "L10");
  const auto opened = std::get<Assignment>(Assignment::open(listFile(), results()));
  EXPECT_EQ(opened.reading.sitting.answered(), 1U);
  EXPECT_EQ(opened.file->held(), whole);
  EXPECT_EQ(kit::contentOf(results()), whole + "L10") << "changed only with the next answer";
}

TEST_F(AssignmentTest, NamesTheFileThatCannotBeUsed) {
  const fs::path folder = scratch_.path();
  EXPECT_EQ(failure(folder / "none.velto", results()), "none.velto: there is no such file");
  EXPECT_EQ(failure(folder, results()), folder.string() + ": not a regular file");
  EXPECT_FALSE(fs::exists(results())) << "a bad list leaves no results";
  EXPECT_EQ(failure(listFile(), listFile()), "test.velto: line 1: not a results file");
  EXPECT_EQ(failure(listFile(), folder), folder.string() + ": not a regular file");
  EXPECT_EQ(failure(listFile(), folder / "none/mine.csv"),
            "none/mine.csv: No such file or directory");
  kit::put(folder / "bad.velto", list.text() + " ");
  EXPECT_TRUE(failure(folder / "bad.velto", results()).starts_with("bad.velto: line 6: "));
}

TEST_F(AssignmentTest, RefusesResultsOfAnotherListAndChangedOnes) {
  TrialList other = list;
  other.trials[2].seed = 1;
  const std::string header(Results::header());
  kit::put(results(), header + firstLine(other));
  EXPECT_EQ(failure(listFile(), results()), "mine.csv: line 2: belongs to another list");
  std::string changed = firstLine();
  const auto hit = changed.find(",0,0.000,");
  ASSERT_NE(hit, changed.npos) << changed;
  kit::put(results(), header + changed.replace(hit, 2, ",1"));
  EXPECT_EQ(failure(listFile(), results()),
            "mine.csv: line 2: was changed, it does not follow from the list");
  EXPECT_EQ(kit::contentOf(results()), header + changed);
}

// The same samples from every compiler and on every machine.
TEST(FixedTrials, HaveTheSameSlotsEverywhere) {
  const auto trials = fixedTrials(list);
  ASSERT_TRUE(trials);
  ASSERT_EQ(trials->size(), 3U);
  EXPECT_EQ(hashOf((*trials)[0]), 5178975148519394709U);
  EXPECT_EQ(hashOf((*trials)[1]), 15865477140202041573U);
  EXPECT_EQ(hashOf((*trials)[2]), 17667541977511982365U);
  TrialList staircase = list;
  staircase.difficulty = TrialList::Difficulty::staircase;
  EXPECT_FALSE(fixedTrials(staircase));
}
