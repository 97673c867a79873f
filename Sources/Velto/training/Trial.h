// One exercise, generated from a seed.
#pragma once

#include "Drill.h"

#include <cstdint>

namespace velto {

// One generated exercise. Fields that the drill does not use are 0 (`correlation`: 1).
struct Trial {
  Drill drill = Drill::frequency;
  std::uint64_t seed = 0; // as passed to makeTrial
  Material material = Material::pinkNoise;
  double difficulty = 0;    // as passed to makeTrial, nominally 0 to 100
  std::int64_t slots = 2;   // number of audio slots
  double targetFreq = 0;    // frequency: centre of the boosted band, Hz
  double boostDB = 0;       // frequency: gain of the boost, dB
  double boostQ = 0;        // frequency: quality factor of the boost
  double targetLevelDB = 0; // level: how much louder B is than A, dB
  double targetGRdB = 0;    // dynamics: largest gain reduction in B, dB
  std::int64_t oddSlot = 0; // polarity: index of the flipped slot
  double correlation = 1;   // polarity: correlation of left and right, 0 to 1

  bool operator==(const Trial&) const = default;
};

namespace Drills {

// Generates a trial; the same arguments give the same trial, bit for bit. A `difficulty` outside 0
// to 100 is stored as passed, but clamped for the targets. From difficulty 0 to 100:
// - frequency: the boost falls from 12 to 3 dB and its Q rises from 2 to 5; any band;
// - level: the largest target falls from 6 to 0.4 dB; targets are 45 to 100 % of it, in steps of
//   0.05 dB;
// - dynamics: the largest target falls from 12 to 2 dB; targets are 40 to 100 % of it, in steps of
//   0.1 dB;
// - polarity: the correlation falls from 1 to 0.35; any of three slots is flipped.
[[nodiscard]] Trial makeTrial(double difficulty, Material material, std::uint64_t seed,
                              Drill drill);

// Mixes `counter` into a seed, so that neighbouring counters give unrelated seeds: one step of
// SplitMix64 (G. L. Steele, D. Lea, C. H. Flood, "Fast splittable pseudorandom number generators",
// OOPSLA 2014). A bijection: different counters give different seeds.
[[nodiscard]] std::uint64_t mixedSeed(std::uint64_t counter);

} // namespace Drills

} // namespace velto
