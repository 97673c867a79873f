#include "ListMaker.h"

#include "Trial.h"
#include "Xorshift64.h"

#include <algorithm>
#include <cmath>

namespace velto {

namespace {

// SplitMix64 from a mixed start.
class Seeds {
public:
  explicit Seeds(std::uint64_t randomSeed) : counter_(Drills::mixedSeed(randomSeed)) {}

  std::uint64_t next() {
    counter_ += 0x9E3779B97F4A7C15;
    return Drills::mixedSeed(counter_);
  }

private:
  std::uint64_t counter_;
};

// A seed for a trial of `listed`: for a frequency trial, seeds are drawn until the target's band
// passes a draw by its weight.
std::uint64_t seedFor(const ListedTrial& listed, const std::optional<BandWeights>& weights,
                      Seeds& seeds) {
  while (true) {
    const std::uint64_t seed = seeds.next();
    if (!weights || listed.drill != Drill::frequency)
      return seed;
    const Trial trial = Drills::makeTrial(listed.difficulty, listed.material, seed, listed.drill);
    const double weight = (*weights)[Bands::nearestIndex(trial.targetFreq)];
    if (weight == TrialList::heaviestBand ||
        Xorshift64::unit(seeds.next()) < weight / TrialList::heaviestBand)
      return seed;
  }
}

BandWeights rounded(BandWeights weights) {
  const double heaviest = *std::max_element(weights.begin(), weights.end());
  for (double& weight : weights)
    weight = std::round(TrialList::heaviestBand * weight / heaviest);
  return weights;
}

} // namespace

TrialList makeList(const ListRequest& request) {
  TrialList list{.difficulty = request.difficulty, .trials = {}};
  if (request.bandWeights)
    list.bandWeights = rounded(*request.bandWeights);
  Seeds seeds(request.randomSeed);
  for (std::size_t i = 0; i < request.count; ++i) {
    const ListRequest::Part& part = request.parts[i % request.parts.size()];
    ListedTrial trial{.drill = part.drill,
                      .material = request.material.value_or(Drills::defaultMaterial(part.drill)),
                      .difficulty = part.difficulty};
    trial.seed = seedFor(trial, list.bandWeights, seeds);
    list.trials.push_back(trial);
  }
  return list;
}

} // namespace velto
