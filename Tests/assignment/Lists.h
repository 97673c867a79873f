// Random lists of trials, for laws.
#pragma once

#include "TrialList.h"

#include <rapidcheck.h>

#include <algorithm>
#include <utility>

namespace velto::testing {

[[nodiscard]] inline rc::Gen<ListedTrial> listedTrials() {
  return rc::gen::apply(
      [](Drill drill, Material material, double difficulty, std::uint64_t seed) {
        return ListedTrial{
            .drill = drill, .material = material, .difficulty = difficulty, .seed = seed};
      },
      rc::gen::elementOf(std::vector<Drill>(Drill::allCases.begin(), Drill::allCases.end())),
      rc::gen::elementOf(
          std::vector<Material>(Material::allCases.begin(), Material::allCases.end())),
      rc::gen::oneOf(
          rc::gen::map(rc::gen::inRange(0, 101), [](int k) { return 1.0 * k; }),
          rc::gen::map(rc::gen::inRange(0, 1 << 30), [](int k) { return 100.0 * k / (1 << 30); })),
      rc::gen::arbitrary<std::uint64_t>());
}

// Of at most 60 trials.
[[nodiscard]] inline rc::Gen<TrialList> trialLists() {
  return rc::gen::apply(
      [](bool isStaircase, bool isWeighted, BandWeights weights, std::vector<ListedTrial> trials) {
        trials.resize(std::min<std::size_t>(trials.size(), 60));
        TrialList list{.difficulty = TrialList::Difficulty::fixed, .trials = std::move(trials)};
        if (isWeighted) {
          weights[weights.size() / 2] = TrialList::heaviestBand;
          list.bandWeights = weights;
        }
        if (isStaircase) {
          list.difficulty = TrialList::Difficulty::staircase;
          for (ListedTrial& trial : list.trials)
            trial.difficulty =
                std::find_if(list.trials.begin(), list.trials.end(), [&](const ListedTrial& first) {
                  return first.drill == trial.drill;
                })->difficulty;
        }
        return list;
      },
      rc::gen::arbitrary<bool>(), rc::gen::arbitrary<bool>(),
      rc::gen::container<BandWeights>(
          rc::gen::map(rc::gen::inRange(0, 1001), [](int k) { return 1.0 * k; })),
      rc::gen::nonEmpty(rc::gen::container<std::vector<ListedTrial>>(listedTrials())));
}

// An answer that the window can give to a trial of the drill.
[[nodiscard]] inline rc::Gen<double> answersTo(Drill drill) {
  switch (drill) {
  case Drill::frequency:
    return rc::gen::map(rc::gen::inRange(40, 16001), [](int hertz) { return 1.0 * hertz; });
  case Drill::level:
    return rc::gen::map(rc::gen::inRange(0, 141), [](int k) { return k * 0.05; });
  case Drill::dynamics:
    return rc::gen::map(rc::gen::inRange(0, 29), [](int k) { return k * 0.5; });
  case Drill::polarity:
    break;
  }
  return rc::gen::map(rc::gen::inRange(0, 3), [](int slot) { return 1.0 * slot; });
}

} // namespace velto::testing
