// What an exercise is: drills, trials, grading, the adaptive staircase, and the audio of a trial.
//
// Plain values and pure functions; everything may run on any thread. Nothing here is for the audio
// thread but reading samples: values hold texts, rendering takes milliseconds and allocates.
#pragma once

#include "Compressor.h"
#include "DSP.h"
#include "Signals.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velto {

// The four kinds of exercise. The raw value is the identity, the serialised form and the key of
// per-drill maps.
class Drill {
public:
  enum Case : std::uint8_t {
    frequency, // which band is boosted in B
    level,     // by how many dB B is louder than A
    dynamics,  // how many dB of gain reduction B has
    polarity   // which of three slots has its right channel flipped
  };

  constexpr Drill(Case value) : value_(value) {}     // NOLINT: a case is a drill
  constexpr operator Case() const { return value_; } // NOLINT: and so that it can be switched over

  // None for a text that is no drill's.
  [[nodiscard]] static std::optional<Drill> fromRawValue(std::string_view rawValue);
  // "frequency", "level", "dynamics" or "polarity".
  [[nodiscard]] std::string_view rawValue() const;
  [[nodiscard]] std::string_view id() const { return rawValue(); }

  // All drills, in the order in which they are shown and stored.
  static const std::array<Drill, 4> allCases;

private:
  Case value_;
};

inline constexpr std::array<Drill, 4> Drill::allCases{Drill::frequency, Drill::level,
                                                      Drill::dynamics, Drill::polarity};

// The synthesised source materials. The raw value is the display name and the serialised form.
class Material {
public:
  enum Case : std::uint8_t { pinkNoise, drums, pad };

  constexpr Material(Case value) : value_(value) {}  // NOLINT: a case is a material
  constexpr operator Case() const { return value_; } // NOLINT: and so that it can be switched over

  // None for a text that is no material's.
  [[nodiscard]] static std::optional<Material> fromRawValue(std::string_view rawValue);
  // "Pink noise", "Drum loop" or "Synth pad".
  [[nodiscard]] std::string_view rawValue() const;
  // "Pink", "Drums" or "Pad": for a button.
  [[nodiscard]] std::string_view shortName() const;

  // All materials, in the order in which they are shown.
  static const std::array<Material, 3> allCases;

private:
  Case value_;
};

inline constexpr std::array<Material, 3> Material::allCases{Material::pinkNoise, Material::drums,
                                                            Material::pad};

namespace Bands {

// Nominal third-octave centres from 40 Hz to 16 kHz, in Hz, ascending. The rounded nominal figures:
// neighbours are not all exactly a third of an octave apart.
inline constexpr std::array<double, 27> centres{
    40,   50,   63,   80,   100,  125,  160,  200,  250,  315,  400,   500,   630,  800,
    1000, 1250, 1600, 2000, 2500, 3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000};

// `frequency` in Hz as a short text without a unit: "315", "1.25k". From 1000 Hz on four
// significant digits, below whole numbers.
[[nodiscard]] std::string label(double frequency);

// The index of the centre nearest to `frequency` (Hz) on a logarithmic scale; the lower one of a
// tie. 0 for what is not a positive finite number.
[[nodiscard]] std::size_t nearestIndex(double frequency);

} // namespace Bands

// One generated exercise. A field that does not belong to the drill is 0 (`correlation`: 1).
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

// The adaptive difficulty of one drill: two right answers in a row make it harder, one wrong answer
// easier, in steps that shrink as the direction reverses (H. Levitt, "Transformed up-down methods
// in psychoacoustics", J. Acoust. Soc. Am. 49, 1971).
struct Staircase {
  double difficulty = 20;              // 0 (easiest) to 100 (hardest) after any record
  std::int64_t consecutiveCorrect = 0; // right answers since the last move
  std::int64_t reversals = 0;          // changes of direction so far; saturates
  std::int64_t lastDirection = 0;      // +1 harder, -1 easier, 0 never moved

  // Moves the staircase after one graded answer.
  void record(bool correct);

  bool operator==(const Staircase&) const = default;
};

// Samples that are never written again: a pointer to them that keeps them alive. Copies share the
// samples, and several buffers may lie in one allocation. As thread-safe as std::shared_ptr.
class SharedSamples {
public:
  SharedSamples() = default;
  // The samples live as long as `owner`.
  SharedSamples(std::shared_ptr<const void> owner, std::span<const float> samples)
      : owner_(std::move(owner)), samples_(samples) {}
  explicit SharedSamples(Samples samples);

  // Whether there is a buffer, be it one without samples.
  explicit operator bool() const { return owner_ != nullptr; }
  // What keeps the samples alive.
  [[nodiscard]] const std::shared_ptr<const void>& owner() const { return owner_; }
  const std::span<const float>& operator*() const { return samples_; }
  const std::span<const float>* operator->() const { return &samples_; }

  // Whether both point to the same samples, like other pointers.
  friend bool operator==(const SharedSamples& a, const SharedSamples& b) {
    return a.samples_.data() == b.samples_.data() && a.samples_.size() == b.samples_.size();
  }

private:
  std::shared_ptr<const void> owner_;
  std::span<const float> samples_;
};

// One slot of a rendered trial: a left and a right buffer of equal length. Slots and channels that
// sound the same share one.
struct Slot {
  SharedSamples l, r;
};

namespace Drills {

// The verdict on one answer.
struct Grade {
  bool correct = false;
  double error = 0;       // octaves (frequency), dB (level, dynamics), 0 or 1 (polarity)
  std::string errorText;  // "0.32 oct off"
  std::string truthText;  // "1k Hz"
  std::string answerText; // "1.25k Hz"

  bool operator==(const Grade&) const = default;
};

// The material that a drill starts with.
[[nodiscard]] Material defaultMaterial(Drill drill);

// The trial of a seed: the same arguments always give the same trial, bit for bit. A `difficulty`
// outside 0 to 100 is kept in the trial but acts as the nearest end. From difficulty 0 to 100:
// - frequency: boosts of 12 down to 3 dB with a Q of 2 up to 5, on any band;
// - level: 45 to 100 % of 6 down to 0.4 dB, in steps of 0.05 dB;
// - dynamics: 40 to 100 % of 12 down to 2 dB, in steps of 0.1 dB;
// - polarity: any of three slots, at a correlation of 1 down to 0.35.
[[nodiscard]] Trial makeTrial(double difficulty, Material material, std::uint64_t seed,
                              Drill drill);

// A seed for the trial number `counter` that tells nothing of its neighbours: the output function
// of SplitMix64 (G. L. Steele, D. Lea, C. H. Flood, "Fast splittable pseudorandom number
// generators", OOPSLA 2014). A bijection: different counters give different seeds.
[[nodiscard]] std::uint64_t mixedSeed(std::uint64_t counter);

// Grades `answer`: Hz (frequency), dB (level, dynamics), or a slot index (polarity; truncated
// toward zero, and one that is not finite stops the process). A hit is within a third of an octave,
// 0.75 dB or 2 dB, bounds included, or the flipped slot.
[[nodiscard]] Grade grade(double answer, const Trial& trial);

// The slots of `trial`, in slot order: three for polarity, two for the others, each of
// Signals::frameCount(seconds) frames at 48000 Hz. The first slot is the material at an RMS level
// of -20 dB; so are boosted and compressed ones, a louder one is `targetLevelDB` above. Samples may
// lie beyond full scale. `noise` is what pink noise and the right channel of a polarity trial are
// made of. `seconds` is finite and not negative, else the process stops; 0 gives empty buffers.
[[nodiscard]] std::vector<Slot> render(const Trial& trial, double seconds,
                                       Noise noise = Noise::asDrawn);

} // namespace Drills

} // namespace velto

template <>
struct std::hash<velto::Drill> {
  std::size_t operator()(velto::Drill drill) const noexcept {
    return std::hash<std::string_view>{}(drill.rawValue());
  }
};

template <>
struct std::hash<velto::Material> {
  std::size_t operator()(velto::Material material) const noexcept {
    return std::hash<velto::Material::Case>{}(material);
  }
};
