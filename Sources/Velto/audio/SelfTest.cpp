#include "SelfTest.h"

#include "DSP.h"
#include "Numbers.h"

#include <cstddef>

namespace velto {

Trial SelfTest::trial() {
  return {.drill = Drill::frequency,
          .seed = 31337,
          .material = Material::pinkNoise,
          .slots = 2,
          .targetFreq = 800,
          .boostDB = 12,
          .boostQ = 2};
}

bool SelfTest::judge(std::span<const float> captured, const Print& print) {
  constexpr std::size_t leastFrames = 20000;
  if (captured.size() <= leastFrames) {
    print("FAIL  nothing came off the mixer");
    return false;
  }
  const double rms = Measure::rmsDB(captured);
  const double peak = Measure::peakDB(captured);
  print("level     : " + Numbers::fixed(rms, 2) + " dB RMS, " + Numbers::fixed(peak, 2) +
        " dB peak");
  const bool passed = peak < 0 && -32 < rms && rms < -12;
  print(passed ? "PASS  signal reaches the output bus at the expected level"
               : "FAIL  level off - signal is not what was scheduled");
  return passed;
}

} // namespace velto
