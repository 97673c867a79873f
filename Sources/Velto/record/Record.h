// What is kept of practice: the answers, the roll-up of old ones, and the whole of the profile
// file.
#pragma once

#include "Date.h"
#include "Drills.h"
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

  // Whether the answer counts for a band of the weakness map: that of its `bandIndex`.
  [[nodiscard]] bool isMapped() const { return drill == Drill::frequency && bandIndex; }
  // The band of the weakness map that the answer counts for, if any.
  [[nodiscard]] std::optional<std::int64_t> mappedBand() const;

  bool operator==(const Attempt&) const = default;
};

// What is left of old `frequency` answers in one band. Sums and counts, so that the mean error and
// the share of hits over roll-up and rows are those over all answers ever given.
struct BandRoll {
  std::int64_t attempts = 0;
  std::int64_t hits = 0; // of those
  double errorSum = 0;   // octaves

  // Adds one answer in this band. The counters saturate.
  void add(const Attempt& attempt);

  bool operator==(const BandRoll&) const = default;
};

// What the profile file holds.
struct Stored {
  std::vector<Attempt> attempts;               // oldest first
  std::map<std::string, Staircase> staircases; // by raw drill name; foreign names are kept
  std::map<std::int64_t, BandRoll> lifetime;   // by band index

  bool operator==(const Stored&) const = default;
};

} // namespace velto
