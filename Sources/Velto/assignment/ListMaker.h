// Makes lists of trials.
#pragma once

#include "Drill.h"
#include "Targets.h"
#include "TrialList.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace velto {

struct ListRequest {
  struct Part {
    Drill drill = Drill::frequency;
    double difficulty = 20; // 0 to 100; with a staircase, its start
  };

  std::vector<Part> parts{};          // 1 or more, each drill at most once; the trials take turns
  std::size_t count = 20;             // 1 to TrialList::mostTrials
  std::optional<Material> material{}; // each drill's default material if there is none
  TrialList::Difficulty difficulty = TrialList::Difficulty::fixed;
  std::uint64_t randomSeed = 0;
  std::optional<BandWeights> bandWeights{}; // how often each band is the target; all alike if none
};

// The same request gives the same list. Seeds are spread over 64 bits: those of different random
// seeds and of different trials are unrelated. Weights are rounded to thousandths of the heaviest.
// Any thread.
[[nodiscard]] TrialList makeList(const ListRequest& request);

} // namespace velto
