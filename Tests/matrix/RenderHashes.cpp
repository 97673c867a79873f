// Prints the hashes of many renders, one per line. Two builds that print the same lines compute the
// same samples.
//
//   velto_render_hashes [short]   the renders; with "short", only brief ones
//   velto_render_hashes libm      one line: a hash of results of the elementary functions, to tell
//                                 whether two runs really used different implementations

#include "DSP.h"
#include "Drill.h"
#include "Rendering.h"
#include "Signals.h"
#include "Slot.h"
#include "Trial.h"
#include "Xorshift64.h"
#include "kit/Materials.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

namespace {

using namespace velto;

// FNV-1a with 64 bits.
class Hash {
public:
  void add(std::uint64_t word, int bytes) {
    for (int i = 0; i < bytes; ++i)
      value_ = (value_ ^ ((word >> (8 * i)) & 0xff)) * 0x100000001b3;
  }
  void add(double value) { add(std::bit_cast<std::uint64_t>(value), 8); }
  void add(std::span<const float> samples) {
    add(samples.size(), 8);
    for (const float sample : samples)
      add(std::bit_cast<std::uint32_t>(sample), 4);
  }
  void print(const std::string& title) const {
    std::printf("%s %016llx\n", title.c_str(), static_cast<unsigned long long>(value_));
  }

private:
  std::uint64_t value_ = 0xcbf29ce484222325;
};

constexpr int seedCount = 20;

// 0, then seeds with well-distributed bits.
std::uint64_t seedNumber(int index) {
  return static_cast<std::uint64_t>(index) * 0x9E3779B97F4A7C15;
}

double difficultyNumber(int index) {
  return 100.0 * index / (seedCount - 1);
}

void hashTrial(const Trial& trial, double seconds, Noise noise, const std::string& title) {
  Hash hash;
  for (const double value : {trial.difficulty, trial.targetFreq, trial.boostDB, trial.boostQ,
                             trial.targetLevelDB, trial.targetGRdB, trial.correlation})
    hash.add(value);
  hash.add(static_cast<std::uint64_t>(trial.oddSlot), 8);
  for (const Slot& slot : Drills::render(trial, seconds, noise)) {
    hash.add(*slot.l);
    hash.add(*slot.r);
  }
  hash.print(title);
}

void hashRenders(double seconds, Noise noise, std::string_view length) {
  for (int index = 0; index < seedCount; ++index) {
    const std::uint64_t seed = seedNumber(index);
    const double difficulty = difficultyNumber(index);
    for (const Material material : Material::allCases) {
      const std::string tail = std::string(material.rawValue()) + ", seed " +
                               std::to_string(index) + ", " + std::string(length) + ":";
      for (const Drill drill : Drill::allCases)
        hashTrial(Drills::makeTrial(difficulty, material, seed, drill), seconds, noise,
                  std::string(drill.rawValue()) + ", " + tail);

      const Samples mono = kit::source(material, seconds, seed, noise);
      Hash material1;
      material1.add(mono);
      material1.print("material, " + tail);
      const auto [left, right] = Signals::stereoise(mono, 1 - difficulty / 100, seed, noise);
      Hash stereo;
      stereo.add(left);
      stereo.add(right);
      stereo.print("stereoise, " + tail);
    }
  }
}

void hashElementaryFunctions() {
  Hash hash;
  Xorshift64 generator(1);
  for (int i = 0; i < 200000; ++i) {
    const double x = generator.nextUnit();
    hash.add(std::sin(1000 * x));
    hash.add(std::cos(1000 * x));
    hash.add(std::exp(-10 * x));
    hash.add(std::log10(x));
    hash.add(std::pow(10.0, -x));
  }
  hash.print("elementary functions:");
}

} // namespace

int main(int argumentCount, char** arguments) {
  const std::string_view mode = argumentCount > 1 ? arguments[1] : "";
  if (mode == "libm") {
    hashElementaryFunctions();
    return 0;
  }
  hashRenders(0.35, Noise::asDrawn, "short");
  hashRenders(0.35, Noise::audible, "short, audible noise");
  if (mode == "short")
    return 0;
  hashRenders(3.2, Noise::asDrawn, "whole");
  hashRenders(3.2, Noise::audible, "whole, audible noise");
}
