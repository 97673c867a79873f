#include "Probe.h"

#include "ProbeGates.h"
#include "Report.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace velto {

namespace {

std::int64_t checks = 0;
std::int64_t failures = 0;

} // namespace

bool Probe::run() {
  checks = 0;
  failures = 0;
  line("Velto DSP probe — all measurements taken on Drills.render() output");
  line("");
  ProbeGates::frequency();
  ProbeGates::level();
  ProbeGates::dynamics();
  ProbeGates::polarity();
  ProbeGates::staircase();
  ProbeGates::record();
  ProbeGates::grading();
  ProbeGates::determinism();
  line("");
  const std::string count = std::to_string(checks) + " checks, ";
  line(count + (failures == 0 ? "0 failures" : std::to_string(failures) + " FAILURES"));
  return failures == 0;
}

void Probe::check(std::string_view name, bool ok, std::string_view detail) {
  constexpr std::size_t nameWidth = 48;
  ++checks;
  if (!ok)
    ++failures;
  line(Report::check(ok, name, nameWidth, detail));
}

void Probe::line(std::string_view text) {
  Report::line(text);
}

} // namespace velto
