// A list of trials for a class, and its file.
//
//   velto-session 1
//   difficulty fixed
//   frequency pink 40 a3f1c0de98765432
//   level drums 12.5 0123456789abcdef
//   end 2 cbf29ce484222325
//
// UTF-8, lines that end with a line feed, words separated by one space. The second line says
// "fixed" or "staircase". If some bands are asked for more often than others, a line "bands" comes
// next, with the weight of each of the 27 bands: whole numbers from 0 to 1000, the heaviest 1000.
// Then one line a trial: drill, material ("pink", "drums" or "pad"),
// difficulty (0 to 100) and seed (16 hexadecimal digits). In a "staircase" list the difficulty is
// where the drill's staircase starts, the same in all of the drill's lines. The last line has the
// number of trials and a hash of all lines before it.
#pragma once

#include "Drill.h"
#include "Targets.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velto {

struct ListedTrial {
  Drill drill = Drill::frequency;
  Material material = Material::pinkNoise;
  double difficulty = 0; // 0 to 100; with a staircase, its start
  std::uint64_t seed = 0;

  bool operator==(const ListedTrial&) const = default;
};

struct TrialList {
  enum class Difficulty : std::uint8_t { fixed, staircase };

  static constexpr std::size_t mostTrials = 1000;
  static constexpr double heaviestBand = 1000;

  Difficulty difficulty = Difficulty::fixed;
  std::vector<ListedTrial> trials; // 1 to mostTrials
  // How often each band was asked for when the list was made: whole numbers from 0 to
  // heaviestBand, which is the largest; all alike if there is none.
  std::optional<BandWeights> bandWeights{};

  // The text of the list's file. Aborts if the list breaks one of the rules above.
  [[nodiscard]] std::string text() const;

  // Identifies the list: "L" and the hash in its file.
  [[nodiscard]] std::string id() const;

  // The list, or what is wrong with the text: "line 3: unknown drill". Each list has one text, and
  // a text with a single damaged byte is refused. Any thread.
  [[nodiscard]] static std::variant<TrialList, std::string> parse(std::string_view text);

  bool operator==(const TrialList&) const = default;
};

} // namespace velto
