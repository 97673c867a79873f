#include "Probe.h"

#include "Calendar.h"
#include "Drills.h"
#include "Numbers.h"
#include "Profile.h"
#include "Report.h"
#include "Signals.h"
#include "TemporaryRecord.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace velto {

namespace {

using Numbers::fixed;

std::int64_t checks = 0;
std::int64_t failures = 0;

// ---- Measuring ----

Samples filtered(std::span<const float> x, Biquad section) {
  Samples out(x.size());
  std::transform(x.begin(), x.end(), out.begin(),
                 [&section](float sample) { return section.process(sample); });
  return out;
}

Samples sum(std::span<const float> x, std::span<const float> y) {
  Samples out(x.size());
  std::transform(x.begin(), x.end(), y.begin(), out.begin(), std::plus<>());
  return out;
}

bool haveSameBits(std::span<const float> x, std::span<const float> y) {
  return std::equal(x.begin(), x.end(), y.begin(), y.end(), [](float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
  });
}

bool haveSameBits(const std::vector<Slot>& x, const std::vector<Slot>& y) {
  return std::equal(x.begin(), x.end(), y.begin(), y.end(), [](const Slot& a, const Slot& b) {
    return haveSameBits(*a.l, *b.l) && haveSameBits(*a.r, *b.r);
  });
}

double crestDB(std::span<const float> x) {
  return Measure::peakDB(x) - Measure::rmsDB(x);
}

// The left channels of slots A and B.
struct Pair {
  Samples a, b;

  explicit Pair(const std::vector<Slot>& slots)
      : a(slots[0].l->begin(), slots[0].l->end()), b(slots[1].l->begin(), slots[1].l->end()) {}

  // How much louder B is.
  [[nodiscard]] double levelDB() const { return Measure::rmsDB(b) - Measure::rmsDB(a); }

  // How much louder B is at `frequency` Hz.
  [[nodiscard]] double liftDB(double frequency) const {
    const auto magnitude = [frequency](std::span<const float> x) {
      return std::max(Measure::magnitudeAt(x, frequency, sampleRateHz), 1e-12);
    };
    return 20 * std::log10(magnitude(b) / magnitude(a));
  }

  // How much louder B is in a band around `centre` Hz.
  [[nodiscard]] double bandLiftDB(double centre) const {
    const Biquad band = Biquad::bandpass(centre, 4, sampleRateHz);
    return Measure::rmsDB(filtered(b, band)) - Measure::rmsDB(filtered(a, band));
  }
};

// ---- Frequency ----

constexpr double boostQ = 3;

Pair boostedPair(double frequency, double boostDB, Material material) {
  return Pair(Drills::render({.drill = Drill::frequency,
                              .seed = 4242,
                              .material = material,
                              .targetFreq = frequency,
                              .boostDB = boostDB,
                              .boostQ = boostQ},
                             2.0));
}

void checkResponse() {
  const Biquad design = Biquad::peaking(1000, 9, boostQ, sampleRateHz);
  const double peakDB = design.responseDB(1000, sampleRateHz);
  const double designed = peakDB - design.responseDB(125, sampleRateHz);
  const Pair boosted = boostedPair(1000, 9, Material::pinkNoise);
  const double measured = boosted.liftDB(1000) - boosted.liftDB(125);
  Probe::check("rendered audio matches the filter's designed response",
               std::abs(measured - designed) < 0.25,
               "measured " + fixed(measured, 2) + " dB, designed " + fixed(designed, 2) + " dB");
  Probe::check("that design really is a +9 dB peak", std::abs(peakDB - 9) < 0.3,
               fixed(peakDB, 2) + " dB");

  const Pair flat = boostedPair(1000, 0, Material::pinkNoise);
  const double lift = flat.liftDB(1000) - flat.liftDB(125);
  Probe::check("0 dB boost measures flat (negative control)", std::abs(lift) < 0.1,
               fixed(lift, 2) + " dB lift");
}

void checkTargetBand() {
  constexpr double target = 3150;
  const Pair boosted = boostedPair(target, 9, Material::pinkNoise);
  double loudest = 0;
  double largestLift = -std::numeric_limits<double>::infinity();
  for (const double centre : Bands::centres) {
    const double lift = boosted.bandLiftDB(centre);
    if (lift <= largestLift)
      continue;
    loudest = centre;
    largestLift = lift;
  }
  Probe::check("peak lands on the target band (3.15k)", loudest == target,
               "peak at " + fixed(loudest, 0) + " Hz, +" + fixed(largestLift, 1));
  const double difference = boosted.levelDB();
  Probe::check("boosted version is loudness-matched", std::abs(difference) < 0.15,
               fixed(difference, 3) + " dB overall");
}

std::string shortName(Material material) {
  switch (material) {
  case Material::pinkNoise:
    return "Pink";
  case Material::drums:
    return "Drums";
  case Material::pad:
    return "Pad";
  }
  fatalError("an unknown material");
}

void frequencyGate() {
  Probe::line("── frequency");
  checkResponse();
  checkTargetBand();
  for (const Material material : Material::allCases) {
    const Pair boosted = boostedPair(2000, 10, material);
    const double lift = boosted.liftDB(2000) - boosted.liftDB(250);
    Probe::check(shortName(material) + ": +10 dB at 2 kHz survives", std::abs(lift - 10) < 0.5,
                 fixed(lift, 2) + " dB");
  }
}

// ---- Level ----

double renderedLevelDB(double targetDB) {
  return Pair(Drills::render({.drill = Drill::level,
                              .seed = 7,
                              .material = Material::drums,
                              .difficulty = 50,
                              .targetLevelDB = targetDB},
                             2.0))
      .levelDB();
}

void levelGate() {
  Probe::line("── level");
  const double easy = renderedLevelDB(3.0);
  Probe::check("3.00 dB request produces 3.00 dB", std::abs(easy - 3.0) < 0.02,
               fixed(easy, 4) + " dB");
  const double hard = renderedLevelDB(0.4);
  Probe::check("0.40 dB request survives at the hard end", std::abs(hard - 0.4) < 0.02,
               fixed(hard, 4) + " dB");
  const double none = renderedLevelDB(0);
  Probe::check("0 dB request is silent-identical (negative control)", std::abs(none) < 0.001,
               fixed(none, 6) + " dB");
}

// ---- Dynamics ----

Pair compressedPair(double targetGRdB) {
  return Pair(Drills::render({.drill = Drill::dynamics,
                              .seed = 11,
                              .material = Material::drums,
                              .difficulty = 30,
                              .targetGRdB = targetGRdB},
                             3.0));
}

std::string change(double a, double b) {
  return fixed(a, 2) + " dB -> " + fixed(b, 2) + " dB";
}

void dynamicsGate() {
  constexpr double targetGRdB = 8;
  constexpr double windowMS = 20;
  Probe::line("── dynamics");
  const double reached = Drills::compressorHitting(targetGRdB, Signals::drums(3.0, 11)).grDB;
  Probe::check("compressor lands on the requested 8 dB GR", std::abs(reached - targetGRdB) < 1.0,
               fixed(reached, 2) + " dB GR");

  const Pair compressed = compressedPair(targetGRdB);
  const double difference = compressed.levelDB();
  Probe::check("compressed version is loudness-matched", std::abs(difference) < 0.1,
               fixed(difference, 4) + " dB");
  const double spreadA = Probe::envelopeSpreadDB(compressed.a, windowMS);
  const double spreadB = Probe::envelopeSpreadDB(compressed.b, windowMS);
  Probe::check("short-term loudness spread shrinks", spreadA - spreadB > 1.0,
               change(spreadA, spreadB));

  const double untouched = Probe::envelopeSpreadDB(compressedPair(0).b, windowMS);
  Probe::check("0 dB GR leaves the envelope untouched (negative control)",
               std::abs(spreadA - untouched) < 0.2,
               fixed(spreadA, 2) + " dB vs " + fixed(untouched, 2) + " dB");
  const double crestA = crestDB(compressed.a);
  const double crestB = crestDB(compressed.b);
  Probe::check("transients survive the 5 ms attack (documented)", crestA < crestB,
               "crest " + change(crestA, crestB));
}

// ---- Polarity ----

std::vector<Slot> polaritySlots(double correlation) {
  return Drills::render({.drill = Drill::polarity,
                         .seed = 21,
                         .material = Material::drums,
                         .slots = 3,
                         .oddSlot = 1,
                         .correlation = correlation},
                        2.0);
}

void polarityGate() {
  Probe::line("── polarity");
  const std::vector<Slot> slots = polaritySlots(1);
  const std::span<const float> even = *slots[0].r;
  const double evenDB = Measure::rmsDB(even);
  const double residual = Measure::rmsDB(sum(*slots[1].r, even)) - evenDB;
  Probe::check("flipped channel nulls against the normal one", residual < -80,
               fixed(residual, 1) + " dB residual");
  const double doubled = Measure::rmsDB(sum(even, *slots[2].r)) - evenDB;
  Probe::check("two in-phase slots sum to +6 dB (negative control)",
               std::abs(doubled - 6.02) < 0.05, fixed(doubled, 2) + " dB");
  Probe::check("left channel is identical across all three slots",
               haveSameBits(*slots[0].l, *slots[1].l) && haveSameBits(*slots[0].l, *slots[2].l),
               "bit-exact");

  const Slot hard = polaritySlots(0.35).front();
  const double r = Probe::correlation(*hard.l, *hard.r);
  Probe::check("hard setting really decorrelates L/R", r < 0.6, "r = " + fixed(r, 3));
}

// ---- Staircase ----

double difficultyAfter(int answers, bool correct) {
  Staircase staircase;
  for (int i = 0; i < answers; ++i)
    staircase.record(correct);
  return staircase.difficulty;
}

void staircaseGate() {
  constexpr int many = 100;
  Probe::line("── staircase");
  const double fresh = Staircase().difficulty;
  const auto from = [fresh](double difficulty) {
    return fixed(fresh, 0) + " -> " + fixed(difficulty, 0);
  };
  const double afterOne = difficultyAfter(1, true);
  Probe::check("one correct answer does not move it yet", afterOne == fresh, from(afterOne));
  const double afterTwo = difficultyAfter(2, true);
  Probe::check("two in a row make it harder", afterTwo > fresh, from(afterTwo));
  const double afterWrong = difficultyAfter(1, false);
  Probe::check("one wrong answer makes it easier", afterWrong < fresh, from(afterWrong));
  const double lowest = difficultyAfter(many, false);
  Probe::check("difficulty is clamped at 0", lowest == 0, from(lowest));
  const double highest = difficultyAfter(many, true);
  Probe::check("difficulty is clamped at 100", highest == 100, from(highest));
}

// ---- Profile roll-up ----

constexpr std::int64_t weakBand = 5;   // 125 Hz
constexpr std::int64_t strongBand = 6; // 160 Hz

Attempt frequencyAnswer(Date date, bool correct) {
  return {.id = UUID::random(),
          .date = date,
          .drill = Drill::frequency,
          .material = Material::pinkNoise,
          .difficulty = 50,
          .correct = correct,
          .error = correct ? 0.1 : 1.0,
          .bandIndex = correct ? strongBand : weakBand};
}

// Misses in the weak band and hits in the strong one by turns.
std::vector<Attempt> alternatingAnswers(std::size_t count) {
  const Date now = Date::now();
  std::vector<Attempt> attempts;
  for (std::size_t i = 0; i < count; ++i)
    attempts.push_back(frequencyAnswer(now, i % 2 == 1));
  return attempts;
}

std::int64_t answersKept(const Profile& profile) {
  std::int64_t kept = 0;
  for (const std::int64_t band : {weakBand, strongBand}) {
    const auto roll = profile.lifetime().find(band);
    kept += roll == profile.lifetime().end() ? 0 : roll->second.attempts;
    kept += std::count_if(profile.attempts().begin(), profile.attempts().end(),
                          [band](const Attempt& row) { return row.mappedBand() == band; });
  }
  return kept;
}

BandStat statOf(const Profile& profile, std::int64_t band) {
  const auto& bands = profile.stats().bands;
  const auto found = std::find_if(bands.begin(), bands.end(),
                                  [band](const BandStat& stat) { return stat.index == band; });
  return found == bands.end() ? BandStat{} : *found;
}

std::string hitsOf(const BandStat& stat) {
  return std::to_string(stat.hits) + " of " + std::to_string(stat.attempts);
}

void checkRollUp() {
  constexpr std::int64_t answers = 6000;
  const TemporaryRecord scratch("velto-probe-");
  Profile profile;
  profile.replace(alternatingAnswers(answers), {});
  profile.trim();
  profile.recompute();
  profile.save();

  const std::size_t rows = profile.attempts().size();
  Probe::check("detail rows are capped", rows == 5000,
               std::to_string(rows) + " kept of " + std::to_string(answers));
  const std::int64_t kept = answersKept(profile);
  Probe::check("no attempt is lost to the roll-up", kept == answers,
               std::to_string(kept) + " in all");
  const BandStat weak = statOf(profile, weakBand);
  const BandStat strong = statOf(profile, strongBand);
  Probe::check("rolled-up mean error is exact", std::abs(weak.meanErrorOct - 1.0) < 1e-9,
               fixed(weak.meanErrorOct, 9) + " oct");
  Probe::check("rolled-up accuracy is exact",
               weak.attempts > 0 && weak.hits == 0 && strong.attempts > 0 &&
                   strong.hits == strong.attempts,
               "band 5: " + hitsOf(weak) + ", band 6: " + hitsOf(strong));
  const auto weakest = profile.stats().weakest;
  Probe::check("the weak band is the one that was always wrong",
               weakest && weakest->index == weakBand,
               "weakest = band " + (weakest ? std::to_string(weakest->index) : "none"));
}

void checkUnderTheCap() {
  constexpr std::size_t answers = 100;
  const TemporaryRecord scratch("velto-probe-");
  Profile profile;
  profile.replace(alternatingAnswers(answers), {});
  profile.trim();
  profile.recompute();
  const std::size_t rows = profile.attempts().size();
  Probe::check("under the cap nothing is rolled up (negative control)",
               rows == answers && profile.lifetime().empty(), std::to_string(rows) + " rows");
}

// ---- Streak ----

// A moment that lies `days` civil days before the day of `now`: the same time of day, or, where the
// clocks were changed meanwhile, one that is near it.
Date daysBefore(Date now, std::int64_t days) {
  constexpr double hour = 3600;
  Calendar calendar;
  const auto wanted = *calendar.day(now) - days;
  Date date{now.secondsSinceReferenceDate - static_cast<double>(days) * 24 * hour};
  while (calendar.day(date) > wanted)
    date.secondsSinceReferenceDate -= hour;
  while (calendar.day(date) < wanted)
    date.secondsSinceReferenceDate += hour;
  return date;
}

// The streak after practice on the days that lie so many days back. Starts over where midnight came
// in between.
std::int64_t streakAfter(std::initializer_list<std::int64_t> daysAgo) {
  const TemporaryRecord scratch("velto-probe-");
  while (true) {
    const Date now = Date::now();
    std::vector<Attempt> attempts;
    for (const std::int64_t days : daysAgo)
      attempts.push_back(frequencyAnswer(daysBefore(now, days), true));
    Profile profile;
    profile.replace(std::move(attempts), {});
    profile.recompute();
    Calendar calendar;
    if (calendar.day(now) == calendar.day(Date::now()))
      return profile.stats().streak;
  }
}

void checkStreaks() {
  const std::int64_t consecutive = streakAfter({2, 1, 0});
  Probe::check("streak counts consecutive days", consecutive == 3,
               std::to_string(consecutive) + " days");
  Probe::check("streak stops at a gap", streakAfter({3, 1, 0}) == 2, "gap at day 2");
  Probe::check("streak survives not having practised yet today", streakAfter({2, 1}) == 2,
               "yesterday-anchored");
  Probe::check("streak is zero after missing two days (negative control)",
               streakAfter({4, 3, 2}) == 0, "stale");
}

void rollUpGate() {
  Probe::line("── profile roll-up");
  checkRollUp();
  checkUnderTheCap();
  checkStreaks();
}

// ---- Grading ----

void gradingGate() {
  Probe::line("── grading");
  const Trial frequency{.drill = Drill::frequency, .targetFreq = 1000};
  const Trial level{.drill = Drill::level, .targetLevelDB = 3.0};
  const Trial polarity{.drill = Drill::polarity, .slots = 3, .oddSlot = 2};
  const auto isHit = [](double answer, const Trial& trial) {
    return Drills::grade(answer, trial).correct;
  };
  Probe::check("one band off is a hit (0.32 oct < 1/3)", isHit(1250, frequency), "1250 vs 1000");
  Probe::check("two bands off is a miss", !isHit(1600, frequency), "1600 vs 1000");
  Probe::check("0.5 dB error is a hit", isHit(3.5, level), "3.5 vs 3.0");
  Probe::check("1.0 dB error is a miss", !isHit(4.0, level), "4.0 vs 3.0");
  Probe::check("picking the flipped slot is a hit", isHit(2, polarity), "slot 3");
  Probe::check("picking another slot is a miss", !isHit(0, polarity), "slot 1");
}

// ---- Determinism ----

std::vector<Slot> seeded(std::uint64_t seed) {
  return Drills::render({.drill = Drill::frequency,
                         .seed = seed,
                         .material = Material::drums,
                         .difficulty = 40,
                         .boostQ = 3.2},
                        1.0);
}

void determinismGate() {
  Probe::line("── determinism");
  const std::vector<Slot> slots = seeded(5150);
  Probe::check("same seed renders bit-identical audio", haveSameBits(slots, seeded(5150)),
               "1 s of drums");
  Probe::check("a different seed renders different audio (negative control)",
               !haveSameBits(slots, seeded(5151)), "seed 5150 vs 5151");
}

} // namespace

bool Probe::run() {
  checks = 0;
  failures = 0;
  line("Velto DSP probe — all measurements taken on Drills.render() output");
  line("");
  frequencyGate();
  levelGate();
  dynamicsGate();
  polarityGate();
  staircaseGate();
  rollUpGate();
  gradingGate();
  determinismGate();
  line("");
  const std::string count = std::to_string(checks) + " checks, ";
  line(count + (failures == 0 ? "0 failures" : std::to_string(failures) + " FAILURES"));
  return failures == 0;
}

void Probe::check(std::string_view name, bool ok, std::string_view detail) {
  constexpr std::size_t nameWidth = 48;
  ++checks;
  if (!ok)
    ++failures;
  line(Report::check(ok, name, nameWidth, detail));
}

void Probe::line(std::string_view text) {
  Report::line(text);
}

double Probe::envelopeSpreadDB(std::span<const float> x, double windowMS) {
  constexpr double silenceDB = -60;
  const auto window = static_cast<std::size_t>(windowMS * 0.001 * sampleRateHz);
  std::vector<double> levels;
  for (std::size_t start = 0; start + window <= x.size(); start += window)
    if (const double level = Measure::rmsDB(x.subspan(start, window)); level > silenceDB)
      levels.push_back(level);
  if (levels.size() < 2)
    return 0;

  const auto count = static_cast<double>(levels.size());
  double total = 0;
  for (const double level : levels)
    total += level;
  const double mean = total / count;
  double squares = 0;
  for (const double level : levels)
    squares += (level - mean) * (level - mean);
  return std::sqrt(squares / count);
}

double Probe::correlation(std::span<const float> l, std::span<const float> r) {
  double products = 0, squaresL = 0, squaresR = 0;
  for (std::size_t i = 0; i < std::min(l.size(), r.size()); ++i) {
    const auto left = static_cast<double>(l[i]);
    const auto right = static_cast<double>(r[i]);
    products += left * right;
    squaresL += left * left;
    squaresR += right * right;
  }
  return products / std::max(std::sqrt(squaresL * squaresR), 1e-12);
}

} // namespace velto
