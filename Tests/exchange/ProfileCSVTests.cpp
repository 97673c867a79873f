#include "ProfileCSV.h"

#include "Coding.h"
#include "kit/RecordTesting.h"

namespace velto {
namespace {

using testing::changed;

// By hand.
const std::string header =
    "kind,id,date,drill,material,difficulty,correct,error,band,attempts,hits,errorSum,"
    "consecutiveCorrect,reversals,lastDirection\r\n";
const std::string answer =
    "answer,9F0C6B1E-3C4B-4E0B-8B57-0B6B0B7B3D2A,770000000.25,frequency,Pink noise,20,1,0.1,14,"
    ",,,,,\r\n";
const std::string staircase = "staircase,,,level,,32,,,,,,,1,2,-1\r\n";
const std::string band = "band,,,,,,,,3,10,4,2.5,,,\r\n";
const std::string whole = header + answer + staircase + band + "end,,,,,,,,,3,,,,,\r\n";

Stored record() {
  Stored stored;
  stored.attempts.push_back({.id = UUID::fromString("9F0C6B1E-3C4B-4E0B-8B57-0B6B0B7B3D2A").value(),
                             .date = {770000000.25},
                             .drill = Drill::frequency,
                             .material = Material::pinkNoise,
                             .difficulty = 20,
                             .correct = true,
                             .error = 0.1,
                             .bandIndex = 14});
  stored.staircases["level"] = {32, 1, 2, -1};
  stored.lifetime[3] = {10, 4, 2.5};
  return stored;
}

std::string damageIn(const std::string& text) {
  try {
    static_cast<void>(ProfileCSV::read(text));
  } catch (const CSV::Damaged& problem) {
    return problem.what();
  }
  return "";
}

TEST(ProfileCSV, HasARowPerAnswerStaircaseAndBand) {
  EXPECT_EQ(ProfileCSV::write(record()), whole);
  EXPECT_EQ(ProfileCSV::read(whole), record());
  EXPECT_EQ(ProfileCSV::read(header + "end,,,,,,,,,0,,,,,\r\n"), Stored{});
}

TEST(ProfileCSV, RefusesADamagedFileWithItsLine) {
  EXPECT_EQ(damageIn(""), "line 1: not the header of a practice record");
  EXPECT_EQ(damageIn(answer), "line 1: not the header of a practice record");
  EXPECT_EQ(damageIn(header), "line 1: the file ends here, without its last row");
  EXPECT_EQ(damageIn(header + answer + staircase),
            "line 3: the file ends here, without its last row");
  EXPECT_EQ(damageIn(whole + answer), "line 6: a row behind the last one");
  EXPECT_EQ(damageIn(header + answer + "\r\n"), "line 3: 1 fields instead of 15");
  const auto damaged = [](const std::string& from, const std::string& to) {
    return damageIn(changed(whole, from, to));
  };
  EXPECT_EQ(damaged("end,,,,,,,,,3", "end,,,,,,,,,4"), "line 5: 3 rows instead of 4");
  EXPECT_EQ(damaged("end", "End"), "line 5: kind is neither answer, staircase, band nor end");
  EXPECT_EQ(damaged("9F0C", "9F0"), "line 2: id is no UUID");
  EXPECT_EQ(damaged("770000000.25", "2026-11-22"), "line 2: date is no number");
  EXPECT_EQ(damaged("frequency", "Frequency"), "line 2: drill is no drill");
  EXPECT_EQ(damaged("Pink noise", "Pink"), "line 2: material is no material");
  EXPECT_EQ(damaged(",20,1,", ",,1,"), "line 2: difficulty is no number");
  EXPECT_EQ(damaged(",20,1,", ",20,true,"), "line 2: correct is neither 0 nor 1");
  EXPECT_EQ(damaged(",0.1,14", ",nan,14"), "line 2: error is no number");
  EXPECT_EQ(damaged(",0.1,14", ",0.1,14.5"), "line 2: band is no whole number");
  EXPECT_EQ(damaged(",0.1,14,", ",0.1,14,0"), "line 2: attempts is not empty");
  EXPECT_EQ(damaged(",,level", ",,lev\xFF"), "line 3: drill is not UTF-8");
  EXPECT_EQ(damaged(",1,2,-1", ",1,,-1"), "line 3: reversals is no whole number");
  EXPECT_EQ(damaged("level,,", "level,Drum loop,"), "line 3: material is not empty");
  EXPECT_EQ(damaged(",2.5,", ",,"), "line 4: errorSum is no number");
}

TEST(ProfileCSV, RefusesTheSameRowTwice) {
  const std::string twice = "there already is such a row";
  for (const std::string& row : {answer, staircase, band})
    EXPECT_EQ(damageIn(header + row + row), "line 3: " + twice);
}

RC_GTEST_PROP(ProfileCSVLaw, ReadsBackWhatItWrites, ()) {
  const Stored stored = testing::anyStored();
  const std::string text = ProfileCSV::write(stored);
  const Stored read = ProfileCSV::read(text);
  RC_ASSERT(ProfileCSV::write(read) == text);
  // The bytes tell -0 from 0, which == does not.
  RC_ASSERT(Coding::encode(read) == Coding::encode(stored));
}

// A file that was cut off anywhere is refused.
RC_GTEST_PROP(ProfileCSVLaw, RefusesEveryBeginningOfAFile, ()) {
  const std::string text = ProfileCSV::write(testing::anyStored());
  const auto length = *rc::gen::inRange<std::size_t>(0, text.size() - 2); // without CR LF
  RC_ASSERT(!damageIn(text.substr(0, length)).empty());
}

} // namespace
} // namespace velto
