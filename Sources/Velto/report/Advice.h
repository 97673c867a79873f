// What to practise next, and why.
#pragma once

#include "ReportData.h"

#include <string>
#include <vector>

namespace velto {

struct Advice {
  std::string what; // a sentence
  std::string why;  // one or two sentences with the figures that it rests on

  bool operator==(const Advice&) const = default;

  static constexpr std::size_t most = 4;
  static constexpr std::int64_t fewAnswers = 50; // of a drill: its figures are vague
  static constexpr Calendar::Day longAgo = 14;   // days without a drill
  static constexpr Calendar::Day lately = 28;    // days in which practice is counted
  static constexpr std::int64_t regularDays = 8; // of these

  // At least one and at most `most` pieces, the most useful first.
  [[nodiscard]] static std::vector<Advice> from(const ReportData& data);
};

} // namespace velto
