// Stored types: answers, the roll-up of old ones, and the contents of the profile file.
#pragma once

#include "Date.h"
#include "Drill.h"
#include "Staircase.h"
#include "UUID.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velto {

// One recorded answer.
struct Attempt {
  UUID id;
  Date date; // when it was recorded
  Drill drill = Drill::frequency;
  Material material = Material::pinkNoise;
  double difficulty = 0; // of the trial
  bool correct = false;
  double error = 0;                      // octaves (frequency), dB (level, dynamics), 0 or 1
  std::optional<std::int64_t> bandIndex; // frequency: the centre in Bands::centres, 0 to 26

  // True if the answer counts in the weakness map, for band `bandIndex`.
  [[nodiscard]] bool isMapped() const { return drill == Drill::frequency && bandIndex; }
  // The band of the weakness map for which the answer counts; nullopt if none.
  [[nodiscard]] std::optional<std::int64_t> mappedBand() const;

  bool operator==(const Attempt&) const = default;
};

// Totals of old `frequency` answers in one band. Sums and counts rather than averages, so that the
// mean error and the share of hits over roll-up and rows are those of all answers ever given.
struct BandRoll {
  std::int64_t attempts = 0;
  std::int64_t hits = 0; // of those
  double errorSum = 0;   // octaves

  // Adds one answer in this band. The counters saturate.
  void add(const Attempt& attempt);

  bool operator==(const BandRoll&) const = default;
};

// Contents of the profile file.
struct Stored {
  std::vector<Attempt> attempts;               // oldest first
  std::map<std::string, Staircase> staircases; // by raw drill name; unknown names are kept
  std::map<std::int64_t, BandRoll> lifetime;   // by band index

  bool operator==(const Stored&) const = default;
};

} // namespace velto
