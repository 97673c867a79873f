// Tests what each gate of the probe requests and where its limits are. This program is linked with
// the test doubles below in place of rendering, compressor, grading, staircase and record; the
// measurements are the reference model's.

#include "ProbeGates.h"

#include "Bands.h"
#include "Calendar.h"
#include "Compressor.h"
#include "DSP.h"
#include "Drill.h"
#include "Grading.h"
#include "Probe.h"
#include "Profile.h"
#include "ProfileStore.h"
#include "RandomBytes.h"
#include "Rendering.h"
#include "Signals.h"
#include "Slot.h"
#include "Staircase.h"
#include "Trial.h"
#include "kit/CapturedOutput.h"
#include "reference/ReferenceModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <numbers>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace velto {

namespace {

struct Rendered {
  Trial trial;
  double seconds = 0;

  bool operator==(const Rendered&) const = default;
};

// What the doubles do, and the calls that they received.
struct Doubles {
  std::function<std::vector<Slot>(const Trial&)> render;
  std::vector<Rendered> rendered;
  double peakOffDB = 0; // what a peaking design adds to its gain
  double reductionDB = 0;
  std::vector<std::pair<double, Samples>> compressed;
  std::function<bool(double)> grade;
  std::vector<std::pair<double, Trial>> graded;
  std::function<void(Staircase&, bool)> move;
  std::vector<std::vector<bool>> answers; // of each staircase
  std::function<void(Stored&)> trim = [](Stored&) {};
  std::function<Stats()> stats = [] { return Stats{}; };
  std::vector<std::vector<Attempt>> histories;
  std::vector<std::string> calls; // of the record
  std::set<std::string> folders;
};
Doubles doubles;

reference::Samples copyOf(std::span<const float> x) {
  return {x.begin(), x.end()};
}

Biquad section(const reference::Biquad& design) {
  return {design.b0, design.b1, design.b2, design.a1, design.a2};
}

} // namespace

// ---- The doubles ----

std::vector<Slot> Drills::render(const Trial& trial, double seconds, Noise) {
  doubles.rendered.push_back({trial, seconds});
  return doubles.render(trial);
}

Drills::Compressed Drills::compressorHitting(double targetGRdB, std::span<const float> x) {
  doubles.compressed.emplace_back(targetGRdB, Samples(x.begin(), x.end()));
  return {{}, doubles.reductionDB};
}

// Returns its arguments as samples.
Samples Signals::drums(double seconds, std::uint64_t seed) {
  return {static_cast<float>(seconds), static_cast<float>(seed)};
}

Drills::Grade Drills::grade(double answer, const Trial& trial) {
  doubles.graded.emplace_back(answer, trial);
  return {doubles.grade(answer), 0, {}, {}, {}};
}

void Staircase::record(bool correct) {
  if (*this == Staircase{})
    doubles.answers.emplace_back();
  doubles.answers.back().push_back(correct);
  doubles.move(*this, correct);
}

Profile::Profile() {
  doubles.folders.insert(std::getenv("VELTO_PROFILE_DIR"));
}
Profile::~Profile() = default;
void Profile::replace(std::vector<Attempt> attempts, std::map<std::string, Staircase> staircases) {
  doubles.calls.emplace_back("replace");
  doubles.histories.push_back(attempts);
  stored_ = {std::move(attempts), std::move(staircases), {}};
}
void Profile::trim() {
  doubles.calls.emplace_back("trim");
  doubles.trim(stored_);
}
void Profile::recompute() {
  doubles.calls.emplace_back("recompute");
  stats_ = doubles.stats();
}
void Profile::save() {
  doubles.calls.emplace_back("save");
}

// Counts up instead: 6000 random identifiers would take too long.
void fillRandomly(std::span<std::uint8_t> bytes) {
  static std::uint64_t count = 0;
  std::memcpy(bytes.data(), &++count, std::min(bytes.size(), sizeof count));
}

Biquad Biquad::peaking(double f0, double gainDB, double q, double sampleRate) {
  return section(reference::peaking(f0, gainDB + doubles.peakOffDB, q, sampleRate));
}
Biquad Biquad::bandpass(double f0, double q, double sampleRate) {
  return section(reference::bandpass(f0, q, sampleRate));
}
double Biquad::responseDB(double frequency, double sampleRate) const {
  return reference::responseDB({b0, b1, b2, a1, a2}, frequency, sampleRate);
}
double Measure::rmsDB(std::span<const float> x) {
  return reference::rmsDB(copyOf(x));
}
double Measure::peakDB(std::span<const float> x) {
  return reference::peakDB(copyOf(x));
}
double Measure::magnitudeAt(std::span<const float> x, double freq, double sampleRate) {
  return reference::magnitudeAt(copyOf(x), freq, sampleRate);
}

namespace {

// ---- Running a gate ----

struct Check {
  bool passed = false;
  std::string detail;
};

// The checks that a gate prints, by name.
std::map<std::string, Check> checksOf(void (*gate)()) {
  kit::CapturedOutput output;
  gate();
  std::map<std::string, Check> checks;
  for (const std::string& line : kit::linesOf(output.text())) {
    if (!line.starts_with("  PASS  ") && !line.starts_with("  FAIL  "))
      continue;
    const std::size_t end = line.find("  ", 8);
    const std::size_t detail = line.find_first_not_of(' ', end);
    checks[line.substr(8, end - 8)] = {line.starts_with("  PASS"), line.substr(detail)};
  }
  return checks;
}

std::string print(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

double factor(double dB) {
  return std::pow(10, dB / 20);
}

class ProbeGate : public ::testing::Test {
protected:
  ProbeGate() { doubles = {}; }
};

Slot mono(const Samples& x) {
  const SharedSamples shared(x);
  return {shared, shared};
}

Samples scaled(Samples x, double gain) {
  for (float& sample : x)
    sample = static_cast<float>(static_cast<double>(sample) * gain);
  return x;
}

// ---- Frequency ----

struct Tone {
  double frequency, amplitude;
};

Samples tones(const std::vector<Tone>& parts) {
  std::vector<double> sum(4800);
  for (const auto& [frequency, amplitude] : parts)
    for (std::size_t i = 0; i < sum.size(); ++i)
      sum[i] += amplitude *
                std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i) / sampleRateHz);
  return {sum.begin(), sum.end()};
}

// A tone at the target and one far below it; B's upper one is louder by `liftDB`.
std::vector<Slot> lifted(double target, double below, double liftDB) {
  return {mono(tones({{target, 0.1}, {below, 0.1}})),
          mono(tones({{target, 0.1 * factor(liftDB)}, {below, 0.1}}))};
}

std::vector<Slot> liftedAsAsked(const Trial& trial) {
  return lifted(trial.targetFreq, trial.targetFreq / 8, trial.boostDB);
}

// Returns a function that sets the lift of trials with this target and boost.
std::function<void(double)> liftOf(double target, double boostDB) {
  return [=](double liftDB) {
    doubles.render = [=](const Trial& trial) {
      return trial.boostDB == boostDB && trial.targetFreq == target
                 ? lifted(target, target / 8, liftDB)
                 : liftedAsAsked(trial);
    };
  };
}

// A tone at every centre. In B, the one at `centre` is 6 dB louder, and the RMS level is
// `overallDB` above that of A.
std::vector<Slot> oneBandLouder(double centre, double overallDB) {
  std::vector<Tone> even, uneven;
  for (const double band : Bands::centres) {
    even.push_back({band, 0.01});
    uneven.push_back({band, band == centre ? 0.01 * factor(6) : 0.01});
  }
  const Samples a = tones(even), b = tones(uneven);
  const double differenceDB = reference::rmsDB(b) - reference::rmsDB(a);
  return {mono(a), mono(scaled(b, factor(overallDB - differenceDB)))};
}

void loudenBand(double centre, double overallDB) {
  doubles.render = [=](const Trial& trial) {
    return trial.targetFreq == 3150 ? oneBandLouder(centre, overallDB) : liftedAsAsked(trial);
  };
}

TEST_F(ProbeGate, FrequencyFindsTheLoudestBandThroughFiltersOfQ4) {
  const std::string name = "peak lands on the target band (3.15k)";
  for (const double centre : {2500.0, 3150.0, 4000.0}) {
    loudenBand(centre, 0);
    const Check check = checksOf(ProbeGates::frequency).at(name);
    EXPECT_EQ(check.passed, centre == 3150) << centre;
    const auto slots = oneBandLouder(centre, 0);
    const auto bandDB = [centre](std::span<const float> x) {
      reference::Biquad band = reference::bandpass(centre, 4, sampleRateHz);
      reference::Samples out;
      for (const float sample : x)
        out.push_back(band.process(sample));
      return reference::rmsDB(out);
    };
    EXPECT_EQ(check.detail, "peak at " + print("%.0f", centre) + " Hz, +" +
                                print("%.1f", bandDB(*slots[1].l) - bandDB(*slots[0].l)));
  }
}

// ---- Level ----

// Returns a function that sets the level difference of trials that request `requestDB`.
std::function<void(double)> levelOf(double requestDB) {
  return [=](double levelDB) {
    const Samples a = tones({{440, 0.5}});
    doubles.render = [=](const Trial& trial) -> std::vector<Slot> {
      return {mono(a), mono(scaled(a, factor(trial.targetLevelDB == requestDB ? levelDB : 0)))};
    };
  };
}

// ---- Dynamics ----

// Square waves, alternately 20 ms at `topDB` and 20 ms at `bottomDB`: the spread is half the
// difference.
Samples turns(double topDB, double bottomDB) {
  Samples x;
  for (std::size_t i = 0; i < 19200; ++i)
    x.push_back(
        static_cast<float>(factor(i / 960 % 2 == 0 ? topDB : bottomDB) * (i % 2 == 0 ? 1 : -1)));
  return x;
}

// Renders `compressed` as B of the trial that requests 8 dB, and `untouched` as B of the one that
// requests 0 dB. A's spread is 3 dB.
void renderB(const Samples& compressed, const Samples& untouched = turns(-10, -16)) {
  doubles.render = [=](const Trial& trial) -> std::vector<Slot> {
    return {mono(turns(-10, -16)), mono(trial.targetGRdB == 8 ? compressed : untouched)};
  };
}

// ---- Polarity ----

// Two orthogonal patterns of ±0.5.
Samples firstPattern() {
  Samples x;
  for (std::size_t i = 0; i < 4000; ++i)
    x.push_back(i % 4 < 2 ? 0.5f : -0.5f);
  return x;
}
Samples secondPattern() {
  Samples x;
  for (std::size_t i = 0; i < 4000; ++i)
    x.push_back(i % 4 == 1 || i % 4 == 2 ? 0.5f : -0.5f);
  return x;
}

// Renders the same pattern as every left channel, and its multiples as the right ones. In the hard
// trial, the channels of the first slot have the given correlation.
void renderPolarity(double first, double second, double third, double correlation = 0.5) {
  doubles.render = [=](const Trial& trial) -> std::vector<Slot> {
    const Samples x = firstPattern();
    std::vector<Slot> slots;
    for (const double gain : {first, second, third})
      slots.push_back({SharedSamples(x), SharedSamples(scaled(x, gain))});
    if (trial.correlation != 1) {
      Samples r = scaled(x, correlation);
      const Samples other = scaled(secondPattern(), std::sqrt(1 - correlation * correlation));
      for (std::size_t i = 0; i < r.size(); ++i)
        r[i] += other[i];
      slots[0].r = SharedSamples(r);
    }
    return slots;
  };
}

TEST_F(ProbeGate, PolarityComparesEveryLeftSampleOfEverySlot) {
  const std::string name = "left channel is identical across all three slots";
  renderPolarity(1, -1, 1);
  EXPECT_TRUE(checksOf(ProbeGates::polarity).at(name).passed);
  const auto plain = doubles.render;
  for (const std::size_t slot : {0U, 1U, 2U}) {
    doubles.render = [=](const Trial& trial) {
      auto slots = plain(trial);
      Samples l(slots[slot].l->begin(), slots[slot].l->end());
      l.back() = std::nextafter(l.back(), 1.0f);
      slots[slot].l = SharedSamples(l);
      return slots;
    };
    EXPECT_FALSE(checksOf(ProbeGates::polarity).at(name).passed) << slot;
  }
}

// ---- Requests and limits of the gates of sound ----

// Expects a gate to render `trial` for `seconds`, with `field` set to each of `values` in turn.
void expectRendered(void (*gate)(), double seconds, Trial trial, double Trial::*field,
                    const std::vector<double>& values) {
  doubles.rendered.clear();
  checksOf(gate);
  std::vector<Rendered> expected;
  for (const double value : values) {
    trial.*field = value;
    expected.push_back({trial, seconds});
  }
  EXPECT_EQ(doubles.rendered, expected);
}

TEST_F(ProbeGate, EachRendersItsTrials) {
  doubles.render = liftedAsAsked;
  checksOf(ProbeGates::frequency);
  const auto boosted = [](double targetFreq, double boostDB, Material material) {
    return Rendered{{.drill = Drill::frequency,
                     .seed = 4242,
                     .material = material,
                     .targetFreq = targetFreq,
                     .boostDB = boostDB,
                     .boostQ = 3},
                    2.0};
  };
  EXPECT_EQ(doubles.rendered,
            (std::vector<Rendered>{
                boosted(1000, 9, Material::pinkNoise), boosted(1000, 0, Material::pinkNoise),
                boosted(3150, 9, Material::pinkNoise), boosted(2000, 10, Material::pinkNoise),
                boosted(2000, 10, Material::drums), boosted(2000, 10, Material::pad)}));

  levelOf(3)(3);
  Trial trial{.drill = Drill::level, .seed = 7, .material = Material::drums, .difficulty = 50};
  expectRendered(ProbeGates::level, 2, trial, &Trial::targetLevelDB, {3.0, 0.4, 0});

  renderB(turns(-10, -14));
  trial = {.drill = Drill::dynamics, .seed = 11, .material = Material::drums, .difficulty = 30};
  expectRendered(ProbeGates::dynamics, 3, trial, &Trial::targetGRdB, {8, 0});
  EXPECT_EQ(doubles.compressed,
            (std::vector<std::pair<double, Samples>>{{8, Signals::drums(3.0, 11)}}));

  renderPolarity(1, -1, 1);
  trial = {.drill = Drill::polarity, .seed = 21, .material = Material::drums, .slots = 3};
  trial.oddSlot = 1;
  expectRendered(ProbeGates::polarity, 2, trial, &Trial::correlation, {1, 0.35});
}

// A check, a function that makes it measure a given figure, and figures at which it passes or
// fails.
struct Limit {
  const char* check;
  std::function<void(double)> set;
  std::vector<double> passing, failing;
  std::string detail = {}; // printed for the last failing figure
};

// A limit on both sides of `middle`, between the distances `inside` and `outside`.
Limit around(double middle, double inside, double outside, const char* check,
             const std::function<void(double)>& set, const std::string& detail = {}) {
  return {
      check, set, {middle - inside, middle + inside}, {middle - outside, middle + outside}, detail};
}

void expectLimits(void (*gate)(), const std::vector<Limit>& limits) {
  for (const Limit& limit : limits) {
    SCOPED_TRACE(limit.check);
    doubles = {};
    Check check;
    const auto passes = [&](double figure) {
      limit.set(figure);
      check = checksOf(gate).at(limit.check);
      return check.passed;
    };
    for (const double figure : limit.passing)
      EXPECT_TRUE(passes(figure)) << figure;
    for (const double figure : limit.failing)
      EXPECT_FALSE(passes(figure)) << figure;
    if (!limit.detail.empty()) {
      EXPECT_EQ(check.detail, limit.detail);
    }
  }
}

TEST_F(ProbeGate, EachCheckPassesWithinItsLimitAndFailsBeyond) {
  // How far the gate's design lifts 1 kHz above 125 Hz.
  const reference::Biquad design = reference::peaking(1000, 9, 3, sampleRateHz);
  const double designed = reference::responseDB(design, 1000, sampleRateHz) -
                          reference::responseDB(design, 125, sampleRateHz);
  const auto offDesign = [](double dB) {
    doubles.render = liftedAsAsked;
    doubles.peakOffDB = dB;
  };
  const auto boostedLevel = [](double dB) { loudenBand(3150, dB); };
  expectLimits(
      ProbeGates::frequency,
      {around(designed, 0.245, 0.255, "rendered audio matches the filter's designed response",
              liftOf(1000, 9),
              "measured " + print("%.2f", designed + 0.255) + " dB, designed " +
                  print("%.2f", designed) + " dB"),
       around(0, 0.295, 0.305, "that design really is a +9 dB peak", offDesign),
       around(0, 0.095, 0.105, "0 dB boost measures flat (negative control)", liftOf(1000, 0)),
       around(0, 0.149, 0.151, "boosted version is loudness-matched", boostedLevel),
       around(10, 0.49, 0.51, "Pink: +10 dB at 2 kHz survives", liftOf(2000, 10)),
       around(10, 0.49, 0.51, "Drums: +10 dB at 2 kHz survives", liftOf(2000, 10)),
       around(10, 0.49, 0.51, "Pad: +10 dB at 2 kHz survives", liftOf(2000, 10))});

  expectLimits(
      ProbeGates::level,
      {around(3, 0.0199, 0.0201, "3.00 dB request produces 3.00 dB", levelOf(3)),
       around(0.4, 0.0199, 0.0201, "0.40 dB request survives at the hard end", levelOf(0.4)),
       around(0, 0.00099, 0.00101, "0 dB request is silent-identical (negative control)",
              levelOf(0))});

  const auto reduction = [](double dB) {
    renderB(turns(-10, -14));
    doubles.reductionDB = dB;
  };
  const auto level = [](double dB) { renderB(scaled(turns(-10, -16), factor(dB))); };
  const auto bottom = [](double dB) { renderB(turns(-10, dB)); };
  const auto spread = [](double dB) { renderB(turns(-10, -14), turns(-10, -10 - 2 * dB)); };
  const auto firstSample = [](double gain) {
    Samples b = turns(-10, -16);
    b[0] *= static_cast<float>(gain);
    renderB(b);
  };
  expectLimits(
      ProbeGates::dynamics,
      {around(8, 0.99, 1.01, "compressor lands on the requested 8 dB GR", reduction, "9.01 dB GR"),
       around(0, 0.099, 0.101, "compressed version is loudness-matched", level),
       {"short-term loudness spread shrinks", bottom, {-13.98}, {-14.02}, "3.00 dB -> 2.01 dB"},
       around(3, 0.195, 0.205, "0 dB GR leaves the envelope untouched (negative control)", spread),
       // Passes with a higher peak, and with the same peak at a lower level.
       {"transients survive the 5 ms attack (documented)", firstSample, {1.01, 0.5}, {1}}});

  const auto residual = [](double dB) { renderPolarity(1, -1 + factor(dB), 1); };
  const auto sum = [](double dB) { renderPolarity(1, -1, factor(dB) - 1); };
  const auto correlation = [](double r) { renderPolarity(1, -1, 1, r); };
  expectLimits(
      ProbeGates::polarity,
      {{"flipped channel nulls against the normal one",
        residual,
        {-80.1},
        {-79.9},
        "-79.9 dB residual"},
       around(6.02, 0.049, 0.051, "two in-phase slots sum to +6 dB (negative control)", sum),
       {"hard setting really decorrelates L/R", correlation, {0.599}, {0.601}, "r = 0.601"}});
}

// ---- Staircase ----

const std::vector<std::string> staircaseChecks{
    "one correct answer does not move it yet", "two in a row make it harder",
    "one wrong answer makes it easier", "difficulty is clamped at 0",
    "difficulty is clamped at 100"};

// The verdicts of the checks, in order, for a staircase whose record() is `move`.
std::vector<bool> verdicts(const std::function<void(Staircase&, bool)>& move) {
  doubles.move = move;
  const auto checks = checksOf(ProbeGates::staircase);
  std::vector<bool> result;
  for (const std::string& name : staircaseChecks)
    result.push_back(checks.at(name).passed);
  return result;
}

TEST_F(ProbeGate, StaircaseChecksTheDirectionOfEachMove) {
  EXPECT_EQ(verdicts([](Staircase&, bool) {}),
            (std::vector<bool>{true, false, false, false, false}));
  EXPECT_EQ(verdicts([](Staircase& s, bool) { s.difficulty += 0.5; }),
            (std::vector<bool>{false, true, false, false, false}));
  EXPECT_EQ(verdicts([](Staircase& s, bool) { s.difficulty -= 0.5; }),
            (std::vector<bool>{false, false, true, false, false}));
}

TEST_F(ProbeGate, StaircaseRequiresExactly0And100) {
  for (const double off : {-0.5, 0.0, 0.5})
    EXPECT_EQ(
        verdicts([off](Staircase& s, bool correct) { s.difficulty = (correct ? 100 : 0) + off; }),
        (std::vector<bool>{false, true, true, off == 0, off == 0}));
}

TEST_F(ProbeGate, StaircaseRecordsItsAnswersInOrder) {
  verdicts([](Staircase& s, bool) { ++s.reversals; });
  ASSERT_EQ(doubles.answers.size(), 5U);
  EXPECT_EQ(doubles.answers[0], std::vector<bool>(1, true));
  EXPECT_EQ(doubles.answers[1], std::vector<bool>(2, true));
  EXPECT_EQ(doubles.answers[2], std::vector<bool>(1, false));
  // More than it takes to cross the range with the smallest step.
  EXPECT_GT(doubles.answers[3].size(), 34U);
  EXPECT_EQ(doubles.answers[3], std::vector<bool>(doubles.answers[3].size(), false));
  EXPECT_GT(doubles.answers[4].size(), 68U);
  EXPECT_EQ(doubles.answers[4], std::vector<bool>(doubles.answers[4].size(), true));
}

// ---- Record ----

// Rolls the gate's history up correctly.
void rollUp(Stored& stored) {
  if (stored.attempts.size() != 6000)
    return;
  stored.attempts.erase(stored.attempts.begin(), stored.attempts.begin() + 1000);
  stored.lifetime = {{5, {500, 0, 500}}, {6, {500, 500, 50}}};
}

Stats rolledUpStats() {
  Stats stats;
  for (std::int64_t band = 0; band < 27; ++band)
    stats.bands.push_back({.index = band});
  stats.bands[5] = {.index = 5, .attempts = 3000, .hits = 0, .meanErrorOct = 1};
  stats.bands[6] = {.index = 6, .attempts = 3000, .hits = 3000, .meanErrorOct = 0.1};
  stats.weakest = stats.bands[5];
  return stats;
}

class ProbeRecordGate : public ProbeGate {
protected:
  ProbeRecordGate() {
    doubles.trim = rollUp;
    doubles.stats = rolledUpStats;
  }

  static Check check(const std::string& name) { return checksOf(ProbeGates::record).at(name); }

  // Whether the check passes with the record changed after trim(), or with changed statistics.
  static bool passesWithStored(const std::string& name, const std::function<void(Stored&)>& spoil) {
    doubles.trim = [=](Stored& stored) {
      rollUp(stored);
      spoil(stored);
    };
    return check(name).passed;
  }
  static bool passesWithStats(const std::string& name, const std::function<void(Stats&)>& spoil) {
    doubles.stats = [=] {
      Stats stats = rolledUpStats();
      spoil(stats);
      return stats;
    };
    return check(name).passed;
  }
};

TEST_F(ProbeRecordGate, RollsUp6000AlternatingAnswers) {
  const Date before = Date::now();
  checksOf(ProbeGates::record);
  const Date after = Date::now();
  const std::vector<Attempt>& history = doubles.histories.at(0);
  ASSERT_EQ(history.size(), 6000U);
  for (std::size_t i = 0; i < history.size(); ++i) {
    const bool miss = i % 2 == 0;
    const Attempt expected{.id = history[i].id,
                           .date = history[i].date,
                           .drill = Drill::frequency,
                           .material = Material::pinkNoise,
                           .difficulty = 50,
                           .correct = !miss,
                           .error = miss ? 1.0 : 0.1,
                           .bandIndex = miss ? 5 : 6};
    ASSERT_EQ(history[i], expected) << i;
    ASSERT_GE(history[i].date.secondsSinceReferenceDate, before.secondsSinceReferenceDate);
    ASSERT_LE(history[i].date.secondsSinceReferenceDate, after.secondsSinceReferenceDate);
  }
  EXPECT_EQ(doubles.histories.at(1).size(), 100U);
}

TEST_F(ProbeRecordGate, SavesOnceAndUsesASeparateFolderForEachRecord) {
  ASSERT_EQ(std::getenv("VELTO_PROFILE_DIR"), nullptr);
  checksOf(ProbeGates::record);
  const std::vector<std::string> start(doubles.calls.begin(), doubles.calls.begin() + 4);
  EXPECT_EQ(start, (std::vector<std::string>{"replace", "trim", "recompute", "save"}));
  EXPECT_EQ(std::count(doubles.calls.begin(), doubles.calls.end(), "save"), 1);
  EXPECT_EQ(doubles.folders.size(), 6U);
  EXPECT_EQ(std::getenv("VELTO_PROFILE_DIR"), nullptr);
}

TEST_F(ProbeRecordGate, EachCheckFailsIfAnyFigureIsOff) {
  using StoredChange = std::function<void(Stored&)>;
  using StatsChange = std::function<void(Stats&)>;
  const auto attemptsOff = [](std::int64_t band, std::int64_t off) {
    return StoredChange([=](auto& s) { s.lifetime[band].attempts += off; });
  };
  const struct {
    const char* check;
    const char* detail;
    std::vector<StoredChange> stored;
    std::vector<StatsChange> stats = {};
  } rows[] = {
      {"detail rows are capped",
       "5000 kept of 6000",
       {[](auto& s) { s.attempts.pop_back(); },
        [](auto& s) { s.attempts.push_back(s.attempts.front()); }}},
      {"no attempt is lost to the roll-up",
       "6000 in all",
       {attemptsOff(5, -1), attemptsOff(5, 1), attemptsOff(6, -1), attemptsOff(6, 1),
        [](auto& s) { s.lifetime.erase(6); }, [](auto& s) { s.attempts[0].bandIndex = 7; }}},
      {"rolled-up accuracy is exact",
       "band 5: 0 of 3000, band 6: 3000 of 3000",
       {},
       {[](auto& s) { s.bands[5].hits = 1; }, [](auto& s) { s.bands[6].hits = 2999; },
        [](auto& s) { s.bands[5].attempts = 0; },
        [](auto& s) { s.bands[6].attempts = s.bands[6].hits = 0; }}},
      {"the weak band is the one that was always wrong",
       "weakest = band 5",
       {},
       {[](auto& s) { s.weakest = s.bands[6]; }, [](auto& s) { s.weakest.reset(); }}},
      {"under the cap nothing is rolled up (negative control)",
       "100 rows",
       {[](auto& s) { s.attempts.pop_back(); }, [](auto& s) { s.lifetime[0].attempts = 1; }}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.check);
    doubles.trim = rollUp;
    doubles.stats = rolledUpStats;
    EXPECT_TRUE(check(row.check).passed);
    EXPECT_EQ(check(row.check).detail, row.detail);
    for (const StoredChange& spoil : row.stored)
      EXPECT_FALSE(passesWithStored(row.check, spoil));
    for (const StatsChange& spoil : row.stats)
      EXPECT_FALSE(passesWithStats(row.check, spoil));
  }
  doubles.stats = rolledUpStats;
  EXPECT_TRUE(passesWithStored("no attempt is lost to the roll-up",
                               [](auto& s) { s.lifetime[7].attempts = 3; }));
}

TEST_F(ProbeRecordGate, AcceptsAMeanErrorWithinABillionth) {
  const std::string name = "rolled-up mean error is exact";
  for (const double sign : {-1.0, 1.0}) {
    EXPECT_TRUE(passesWithStats(name, [=](Stats& s) { s.bands[5].meanErrorOct += sign * 0.9e-9; }));
    EXPECT_FALSE(
        passesWithStats(name, [=](Stats& s) { s.bands[5].meanErrorOct += sign * 1.1e-9; }));
  }
}

TEST_F(ProbeRecordGate, RequiresEachStreakExactly) {
  const struct {
    const char* name;
    std::int64_t streak;
  } rows[] = {{"streak counts consecutive days", 3},
              {"streak stops at a gap", 2},
              {"streak survives not having practised yet today", 2},
              {"streak is zero after missing two days (negative control)", 0}};
  for (const auto& row : rows)
    for (const std::int64_t off : {-1, 0, 1})
      EXPECT_EQ(passesWithStats(row.name, [&](Stats& s) { s.streak = row.streak + off; }), off == 0)
          << row.name << ", " << row.streak + off;
}

TEST_F(ProbeRecordGate, RecordsPracticeOnTheDaysOfEachStreak) {
  Calendar calendar;
  const auto today = calendar.day(Date::now()).value();
  checksOf(ProbeGates::record);
  if (calendar.day(Date::now()) != today)
    GTEST_SKIP() << "midnight passed during the test";
  std::vector<std::vector<std::int64_t>> daysAgo;
  for (std::size_t i = 2; i < doubles.histories.size(); ++i) {
    daysAgo.emplace_back();
    for (const Attempt& attempt : doubles.histories[i])
      daysAgo.back().push_back(today - calendar.day(attempt.date).value());
  }
  EXPECT_EQ(daysAgo,
            (std::vector<std::vector<std::int64_t>>{{2, 1, 0}, {3, 1, 0}, {2, 1}, {4, 3, 2}}));
}

// ---- Grading ----

TEST_F(ProbeGate, GradingChecksThreeHitsAndThreeMisses) {
  const std::vector<std::string> hits{"one band off is a hit (0.32 oct < 1/3)",
                                      "0.5 dB error is a hit", "picking the flipped slot is a hit"};
  const std::vector<std::string> misses{"two bands off is a miss", "1.0 dB error is a miss",
                                        "picking another slot is a miss"};
  for (const bool verdict : {true, false}) {
    doubles.grade = [=](double) { return verdict; };
    const auto checks = checksOf(ProbeGates::grading);
    for (const std::string& name : hits)
      EXPECT_EQ(checks.at(name).passed, verdict) << name;
    for (const std::string& name : misses)
      EXPECT_EQ(checks.at(name).passed, !verdict) << name;
  }

  doubles.graded.clear();
  checksOf(ProbeGates::grading);
  const Trial frequency{.drill = Drill::frequency, .targetFreq = 1000};
  const Trial level{.drill = Drill::level, .targetLevelDB = 3.0};
  const Trial polarity{.drill = Drill::polarity, .slots = 3, .oddSlot = 2};
  EXPECT_EQ(doubles.graded, (std::vector<std::pair<double, Trial>>{{1250, frequency},
                                                                   {1600, frequency},
                                                                   {3.5, level},
                                                                   {4.0, level},
                                                                   {2, polarity},
                                                                   {0, polarity}}));
}

// ---- Determinism ----

TEST_F(ProbeGate, DeterminismComparesEverySampleForTwoSeeds) {
  const std::string same = "same seed renders bit-identical audio";
  const std::string different = "a different seed renders different audio (negative control)";
  const auto run =
      [](const std::function<void(std::vector<Slot>&, std::size_t, const Trial&)>& spoil) {
        doubles.rendered.clear();
        doubles.render = [=](const Trial& trial) {
          std::vector<Slot> slots{mono(Samples(10, 0.5f)), mono(Samples(10, 0.25f))};
          spoil(slots, doubles.rendered.size(), trial);
          return slots;
        };
        return checksOf(ProbeGates::determinism);
      };
  const auto nothing = run([](auto&, std::size_t, const Trial&) {});
  EXPECT_TRUE(nothing.at(same).passed);
  EXPECT_FALSE(nothing.at(different).passed);

  const Trial trial{.drill = Drill::frequency,
                    .seed = 5150,
                    .material = Material::drums,
                    .difficulty = 40,
                    .boostQ = 3.2};
  Trial other = trial;
  other.seed = 5151;
  EXPECT_EQ(doubles.rendered, (std::vector<Rendered>{{trial, 1.0}, {trial, 1.0}, {other, 1.0}}));

  Samples changed(10, 0.25f);
  changed[9] = std::nextafter(0.25f, 1.0f);
  const auto second = run([&](auto& slots, std::size_t render, const Trial&) {
    if (render == 2)
      slots[1].r = SharedSamples(changed);
  });
  EXPECT_FALSE(second.at(same).passed);
  const auto bySeed = run([&](auto& slots, std::size_t, const Trial& seeded) {
    if (seeded.seed == 5151)
      slots[1].r = SharedSamples(changed);
  });
  EXPECT_TRUE(bySeed.at(same).passed);
  EXPECT_TRUE(bySeed.at(different).passed);
}

// ---- The run ----

TEST(ProbeRun, ReturnsFalseAndPrintsTheNumberOfFailures) {
  doubles = {};
  doubles.render = [](const Trial&) { return std::vector<Slot>(3, mono(firstPattern())); };
  doubles.move = [](Staircase&, bool) {};
  doubles.grade = [](double) { return true; };
  kit::CapturedOutput output;
  EXPECT_FALSE(Probe::run());
  const auto lines = kit::linesOf(output.text());
  const auto failed = std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
    return line.starts_with("  FAIL  ");
  });
  EXPECT_GT(failed, 20);
  EXPECT_EQ(lines.back(), "43 checks, " + std::to_string(failed) + " FAILURES");
}

} // namespace
} // namespace velto
