#include "Probe.h"

#include "DSP.h"
#include "kit/CapturedOutput.h"

#include "kit/RecordTesting.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <regex>
#include <string>
#include <vector>

namespace velto {
namespace {

namespace fs = std::filesystem;
using testing::ScopedVariable;
using testing::ScratchFolder;

struct ProbeRun {
  bool passed = false;
  std::vector<std::string> lines;
};

ProbeRun runProbe() {
  kit::CapturedOutput output;
  const bool passed = Probe::run();
  return {passed, kit::linesOf(output.text())};
}

struct Expected {
  std::string name;   // of a check, or a whole line
  std::string detail; // regular expression; empty for a line that is not a check
};

const std::string number = "-?[0-9]+\\.";
const std::string d1 = number + "[0-9]", d2 = number + "[0-9]{2}", d3 = number + "[0-9]{3}",
                  d4 = number + "[0-9]{4}", d6 = number + "[0-9]{6}", d9 = number + "[0-9]{9}";

// All that the probe prints.
const std::vector<Expected> battery{
    {"Velto DSP probe — all measurements taken on Drills.render() output", ""},
    {"", ""},
    {"── frequency", ""},
    {"rendered audio matches the filter's designed response",
     "measured " + d2 + " dB, designed " + d2 + " dB"},
    {"that design really is a +9 dB peak", d2 + " dB"},
    {"0 dB boost measures flat (negative control)", d2 + " dB lift"},
    {"peak lands on the target band (3.15k)", "peak at 3150 Hz, \\+" + d1},
    {"boosted version is loudness-matched", d3 + " dB overall"},
    {"Pink: +10 dB at 2 kHz survives", d2 + " dB"},
    {"Drums: +10 dB at 2 kHz survives", d2 + " dB"},
    {"Pad: +10 dB at 2 kHz survives", d2 + " dB"},
    {"── level", ""},
    {"3.00 dB request produces 3.00 dB", d4 + " dB"},
    {"0.40 dB request survives at the hard end", d4 + " dB"},
    {"0 dB request is silent-identical (negative control)", d6 + " dB"},
    {"── dynamics", ""},
    {"compressor lands on the requested 8 dB GR", d2 + " dB GR"},
    {"compressed version is loudness-matched", d4 + " dB"},
    {"short-term loudness spread shrinks", d2 + " dB -> " + d2 + " dB"},
    {"0 dB GR leaves the envelope untouched (negative control)", d2 + " dB vs " + d2 + " dB"},
    {"transients survive the 5 ms attack (documented)", "crest " + d2 + " dB -> " + d2 + " dB"},
    {"── polarity", ""},
    {"flipped channel nulls against the normal one", d1 + " dB residual"},
    {"two in-phase slots sum to +6 dB (negative control)", d2 + " dB"},
    {"left channel is identical across all three slots", "bit-exact"},
    {"hard setting really decorrelates L/R", "r = " + d3},
    {"── staircase", ""},
    {"one correct answer does not move it yet", "20 -> 20"},
    {"two in a row make it harder", "20 -> 32"},
    {"one wrong answer makes it easier", "20 -> 8"},
    {"difficulty is clamped at 0", "20 -> 0"},
    {"difficulty is clamped at 100", "20 -> 100"},
    {"── profile roll-up", ""},
    {"detail rows are capped", "5000 kept of 6000"},
    {"no attempt is lost to the roll-up", "6000 in all"},
    {"rolled-up mean error is exact", "1\\.000000000 oct"},
    {"rolled-up accuracy is exact", "band 5: 0 of 3000, band 6: 3000 of 3000"},
    {"the weak band is the one that was always wrong", "weakest = band 5"},
    {"under the cap nothing is rolled up (negative control)", "100 rows"},
    {"streak counts consecutive days", "3 days"},
    {"streak stops at a gap", "gap at day 2"},
    {"streak survives not having practised yet today", "yesterday-anchored"},
    {"streak is zero after missing two days (negative control)", "stale"},
    {"── grading", ""},
    {"one band off is a hit (0.32 oct < 1/3)", "1250 vs 1000"},
    {"two bands off is a miss", "1600 vs 1000"},
    {"0.5 dB error is a hit", "3\\.5 vs 3\\.0"},
    {"1.0 dB error is a miss", "4\\.0 vs 3\\.0"},
    {"picking the flipped slot is a hit", "slot 3"},
    {"picking another slot is a miss", "slot 1"},
    {"── determinism", ""},
    {"same seed renders bit-identical audio", "1 s of drums"},
    {"a different seed renders different audio (negative control)", "seed 5150 vs 5151"},
    {"", ""},
    {"43 checks, 0 failures", ""},
};

TEST(Probe, PrintsAllItsChecksInOrderAndPasses) {
  const ProbeRun run = runProbe();
  EXPECT_TRUE(run.passed);
  ASSERT_EQ(run.lines.size(), battery.size());
  int checks = 0;
  for (std::size_t i = 0; i < battery.size(); ++i) {
    if (battery[i].detail.empty()) {
      EXPECT_EQ(run.lines[i], battery[i].name);
      continue;
    }
    ++checks;
    std::string start = "  PASS  " + battery[i].name;
    start.resize(std::max<std::size_t>(start.size(), 8 + 48), ' ');
    start += "  ";
    EXPECT_EQ(run.lines[i].substr(0, start.size()), start);
    const std::string detail = run.lines[i].substr(std::min(start.size(), run.lines[i].size()));
    EXPECT_TRUE(std::regex_match(detail, std::regex(battery[i].detail))) << detail;
  }
  EXPECT_EQ(checks, 43);
}

TEST(Probe, PrintsTheSameEveryTime) {
  EXPECT_EQ(runProbe().lines, runProbe().lines);
}

// The current date differs between them, and some have clock changes.
TEST(Probe, PassesInEveryTimeZone) {
  for (const char* zone : {"UTC", "Pacific/Kiritimati", "Pacific/Niue", "America/New_York",
                           "Europe/Berlin", "Asia/Kathmandu", "Australia/Lord_Howe"}) {
    const testing::ScopedTimeZone scoped(zone);
    const ProbeRun run = runProbe();
    EXPECT_TRUE(run.passed) << zone;
    EXPECT_EQ(run.lines.back(), "43 checks, 0 failures") << zone;
  }
}

TEST(Probe, RemovesItsFolderAndRestoresTheVariable) {
  const ScratchFolder folder;
  const ScopedVariable temporary("TMPDIR", folder.path().string());
  const ScopedVariable record("VELTO_PROFILE_DIR", (folder.path() / "own").string());
  EXPECT_TRUE(runProbe().passed);
  EXPECT_TRUE(fs::is_empty(folder.path()));
  EXPECT_STREQ(std::getenv("VELTO_PROFILE_DIR"), (folder.path() / "own").c_str());
}

TEST(Probe, PassesWithoutATemporaryDirectory) {
  const ScopedVariable temporary("TMPDIR", "/dev/null/nowhere");
  EXPECT_TRUE(runProbe().passed);
}

TEST(Probe, PadsNamesTo48CharactersAndNeverTruncatesThem) {
  kit::CapturedOutput output;
  Probe::check("short", true, "detail");
  Probe::check(std::string(47, 'n'), false, "detail");
  Probe::check(std::string(48, 'n'), true, "detail");
  Probe::check(std::string(49, 'n'), false, "detail");
  Probe::line("a line");
  EXPECT_EQ(output.text(), "  PASS  short" + std::string(43 + 2, ' ') + "detail\n" + "  FAIL  " +
                               std::string(47, 'n') + "   detail\n" + "  PASS  " +
                               std::string(48, 'n') + "  detail\n" + "  FAIL  " +
                               std::string(49, 'n') + "  detail\na line\n");
}

TEST(Probe, CountsOnlyTheFailuresOfTheCurrentRun) {
  {
    kit::CapturedOutput output;
    Probe::check("one that fails before the run", false, "");
  }
  const ProbeRun run = runProbe();
  EXPECT_TRUE(run.passed);
  EXPECT_EQ(run.lines.back(), "43 checks, 0 failures");
}

// ---- The probe's own measurements ----

// Windows of 20 ms, each a square wave at its level in dB.
Samples windows(const std::vector<double>& levelsDB) {
  Samples x;
  for (const double level : levelsDB)
    for (int i = 0; i < 960; ++i)
      x.push_back(static_cast<float>(std::pow(10, level / 20) * (i % 2 == 0 ? 1 : -1)));
  return x;
}

TEST(EnvelopeSpread, IsTheStandardDeviationOfTheWindowsLevels) {
  EXPECT_NEAR(Probe::envelopeSpreadDB(windows({-10, -10, -10}), 20), 0, 1e-6);
  EXPECT_NEAR(Probe::envelopeSpreadDB(windows({-10, -16}), 20), 3, 1e-5);
  // Population, not sample: sqrt((36 + 0 + 36) / 3).
  EXPECT_NEAR(Probe::envelopeSpreadDB(windows({-10, -16, -22}), 20), std::sqrt(24), 1e-5);
}

TEST(EnvelopeSpread, ExcludesWindowsBelowMinus60Decibels) {
  Samples x = windows({-10, -16});
  const double spread = Probe::envelopeSpreadDB(x, 20);
  x.insert(x.begin(), 960, 0.0F);
  EXPECT_EQ(Probe::envelopeSpreadDB(x, 20), spread);
  EXPECT_NEAR(Probe::envelopeSpreadDB(windows({-10, -60.01, -16}), 20), 3, 1e-5);
  EXPECT_NEAR(Probe::envelopeSpreadDB(windows({-50, -59.99}), 20), 4.995, 1e-4);
}

TEST(EnvelopeSpread, DropsAPartialWindowAtTheEnd) {
  Samples x = windows({-10, -16, -40});
  x.pop_back();
  EXPECT_NEAR(Probe::envelopeSpreadDB(x, 20), 3, 1e-5);
}

TEST(EnvelopeSpread, IsZeroWithFewerThanTwoWindows) {
  EXPECT_EQ(Probe::envelopeSpreadDB({}, 20), 0);
  EXPECT_EQ(Probe::envelopeSpreadDB(windows({-10}), 20), 0);
  EXPECT_EQ(Probe::envelopeSpreadDB(windows({-10, -70}), 20), 0);
}

TEST(EnvelopeSpread, UsesWindowsOfTheGivenLength) {
  // Levels that alternate every 20 ms are even over 40 ms.
  const Samples x = windows({-10, -16, -10, -16});
  EXPECT_NEAR(Probe::envelopeSpreadDB(x, 20), 3, 1e-5);
  EXPECT_NEAR(Probe::envelopeSpreadDB(x, 40), 0, 1e-6);
  EXPECT_NEAR(Probe::envelopeSpreadDB(x, 10), 3, 1e-5);
}

TEST(Correlation, IsOneForEqualAndMinusOneForInvertedChannels) {
  const Samples x{0.25F, -0.5F, 0.75F, 0.1F};
  Samples opposite;
  for (const float sample : x)
    opposite.push_back(-2 * sample);
  EXPECT_NEAR(Probe::correlation(x, x), 1, 1e-12);
  EXPECT_NEAR(Probe::correlation(x, opposite), -1, 1e-12);
}

TEST(Correlation, IsZeroForOrthogonalSilentAndEmptyChannels) {
  EXPECT_EQ(Probe::correlation(Samples{1, 1}, Samples{1, -1}), 0);
  EXPECT_EQ(Probe::correlation(Samples{0, 0}, Samples{1, -1}), 0);
  EXPECT_EQ(Probe::correlation({}, {}), 0);
}

TEST(Correlation, DoesNotSubtractTheMean) {
  EXPECT_NEAR(Probe::correlation(Samples{1, 1, 1}, Samples{2, 2, 2}), 1, 1e-12);
  EXPECT_NEAR(Probe::correlation(Samples{1, 0}, Samples{1, 1}), std::sqrt(0.5), 1e-12);
}

TEST(Correlation, UsesTheShorterLength) {
  EXPECT_NEAR(Probe::correlation(Samples{1, 1, -9}, Samples{1, 1}), 1, 1e-12);
  EXPECT_NEAR(Probe::correlation(Samples{1, 1}, Samples{1, 1, -9}), 1, 1e-12);
}

} // namespace
} // namespace velto
