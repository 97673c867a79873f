// A profile whose answers are numbered, so that a lost or doubled one shows.
#pragma once

#include "Coding.h"
#include "Profile.h"
#include "kit/NumberedAnswers.h"
#include "kit/RecordTesting.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace velto::testing {

// Answers have their index as difficulty. All are of the frequency drill, so that the roll-up
// counts each of them.
inline std::vector<Attempt> numberedRows(std::int64_t count) {
  std::vector<Attempt> rows;
  for (std::int64_t i = 0; i < count; ++i) {
    rows.push_back(
        row(Drill::frequency, i % 27, i % 2 == 0, static_cast<double>(i % 64) / 64, Date::now()));
    rows.back().difficulty = static_cast<double>(i);
  }
  return rows;
}

class NumberedProfile : public ::testing::Test {
protected:
  static constexpr std::chrono::seconds patience{30};

  [[nodiscard]] ProfileLocation location() const { return {folder(), std::nullopt}; }
  [[nodiscard]] std::filesystem::path folder() const { return scratch_.path() / "profile"; }
  [[nodiscard]] std::filesystem::path file() const { return folder() / "profile.json"; }
  // As the next program loads them: from the file and from copies.
  [[nodiscard]] std::int64_t answersOnFile() const { return answersIn(Profile(location())); }
  // In the file alone; nullopt if it does not decode.
  [[nodiscard]] std::optional<Stored> stored() const {
    return Coding::decodeStored(contentOf(file()));
  }

  void restart(std::int64_t count) const {
    std::filesystem::remove_all(folder());
    put(file(), Coding::encode(Stored{numberedRows(count), {}, {}}).value());
  }
  // The names of all other files in the folder.
  [[nodiscard]] std::set<std::string> besideTheFile() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder()))
      if (entry.path() != file())
        names.insert(entry.path().filename());
    return names;
  }
  void expectNothingBesideTheFile() const { EXPECT_EQ(besideTheFile(), std::set<std::string>{}); }

  ScratchFolder scratch_;
};

} // namespace velto::testing
