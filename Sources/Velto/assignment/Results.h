// The answers to a list of trials, and their file.
//
// CSV (RFC 4180) with the columns
//
//   list        the list's id
//   trial       its number in the list, from 1
//   drill       frequency, level, dynamics or polarity
//   difficulty  of the trial, 0 to 100
//   truth       the right answer: Hz, dB, dB of gain reduction, or the slot from 0
//   answer      the listener's, in the same unit
//   error       as graded: octaves, dB, dB, or 0 or 1, with four decimals
//   hit         1 or 0
//   seconds     from the first sound of the trial to the answer, with three decimals
//   switches    how often the listener changed to another slot meanwhile
#pragma once

#include "Grading.h"
#include "Sitting.h"
#include "Trial.h"
#include "TrialList.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velto::Results {

// What the listener did in one trial.
struct Given {
  double answer = 0;
  double seconds = 0; // 0 or more, finite
  std::int64_t switches = 0;

  bool operator==(const Given&) const = default;
};

struct Row {
  Trial trial;
  Given given;
  Drills::Grade grade; // from the list, not from the file

  bool operator==(const Row&) const = default;
};

// The first line of the file, with its line end.
[[nodiscard]] std::string_view header();

// The line of trial number `number` (from 1) of the list `id`, with its line end.
[[nodiscard]] std::string line(std::string_view id, std::size_t number, const Row& row);

struct Reading {
  Sitting sitting;
  std::vector<Row> rows;
  std::size_t held = 0; // bytes of whole lines; what follows is a line that was cut
  // The first line that this program did not write so: something besides answer, seconds and
  // switches was changed.
  std::optional<std::size_t> changedLine;
};

// Reads a results file and grades it again. An unfinished last line is dropped; a file without a
// whole line is empty. Returns "line 3: ..." for any other text, also for results of another list.
// Any thread.
[[nodiscard]] std::variant<Reading, std::string> read(const TrialList& list, std::string_view text);

} // namespace velto::Results
