// Reads any bytes as a profile file: they are either rejected, or decoded to a record that the rest
// of the program can handle.
#include "Bands.h"
#include "Coding.h"
#include "FatalError.h"
#include "Progress.h"
#include "Statistics.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace {

using namespace velto;

void require(bool holds, const char* message) {
  if (!holds)
    fatalError(message);
}

void computeFigures(const Stored& stored) {
  const Stats stats = Statistics::compute(stored.attempts, stored.lifetime, Date{801234567});
  require(stats.bands.size() == Bands::centres.size(), "a band is missing");
  static_cast<void>(Progress::weakest(stats.weakest));
  static_cast<void>(Progress::streak(stats.streak));
  for (const BandStat& band : stats.bands) {
    const auto bar = Progress::bar(band);
    require(bar.height >= 0 && bar.height <= 34, "a bar is taller than the map");
  }
  for (const auto& [drill, difficulties] : stats.curves)
    static_cast<void>(Progress::curve(difficulties, 100, 50));
  for (const auto& [drill, share] : stats.accuracy) {
    require(share >= 0 && share <= 1, "an accuracy out of range");
    static_cast<void>(Progress::accuracy(share));
  }
}

void practise(Staircase staircase) {
  for (const Drill drill : Drill::allCases) {
    const Trial trial = Drills::makeTrial(staircase.difficulty, Material::pad, 5, drill);
    require(trial.boostDB >= 0 && trial.boostDB <= 12, "a boost out of range");
    require(trial.targetLevelDB >= 0 && trial.targetLevelDB <= 6, "a level out of range");
    require(trial.targetGRdB >= 0 && trial.targetGRdB <= 12, "a reduction out of range");
  }
  for (const bool correct : {true, false, true, true}) {
    const bool isSecond = staircase.consecutiveCorrect >= 1;
    staircase.record(correct);
    require(correct || staircase.difficulty >= 0, "a move down went below 0");
    require(!correct || !isSecond || staircase.difficulty <= 100, "a move up went above 100");
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto stored =
      Coding::decodeStored(std::string_view(reinterpret_cast<const char*>(data), size));
  if (!stored)
    return 0;
  const auto written = Coding::encode(*stored);
  require(written.has_value(), "a decoded record cannot be encoded");
  require(Coding::decodeStored(*written) == stored, "an encoded record decodes differently");
  computeFigures(*stored);
  for (const auto& [drill, staircase] : stored->staircases)
    practise(staircase);
  BandRoll sum;
  for (const auto& attempt : stored->attempts)
    sum.add(attempt);
  require(sum.hits <= sum.attempts, "more hits than answers");
  return 0;
}
