// The figures of the user's guide are those of the program.
#include "Bands.h"
#include "Compressor.h"
#include "DSP.h"
#include "Drill.h"
#include "Grading.h"
#include "Numbers.h"
#include "OutputDevice.h"
#include "Profile.h"
#include "ProfileLocation.h"
#include "Progress.h"
#include "Scales.h"
#include "Session.h"
#include "Signals.h"
#include "Staircase.h"
#include "Statistics.h"
#include "Trial.h"
#include "kit/Files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace velto {
namespace {

using Pairs = std::set<std::pair<double, double>>;

const std::string& guide() {
  static const std::string text =
      kit::contentOf(std::filesystem::path(VELTO_SOURCE_DIR) / "Documentation/guide.md");
  return text;
}

// The numbers that the groups of `pattern` capture in the only place where it matches. A point ends
// a sentence or separates decimals; groups capture digits only up to the number's last one.
std::vector<double> figures(const std::string& pattern) {
  const std::regex regex(pattern);
  const auto begin = std::sregex_iterator(guide().begin(), guide().end(), regex);
  EXPECT_EQ(std::distance(begin, std::sregex_iterator()), 1) << pattern;
  std::vector<double> numbers;
  if (begin == std::sregex_iterator())
    return {0, 0, 0, 0, 0, 0, 0, 0};
  for (std::size_t i = 1; i < begin->size(); ++i) {
    std::istringstream text((*begin)[i]);
    text.imbue(std::locale::classic());
    double number = std::numeric_limits<double>::quiet_NaN();
    text >> number;
    numbers.push_back(number);
  }
  return numbers;
}

constexpr const char* number = "(-?[0-9]+(?:\\.[0-9]+)?)";

// `pattern` with each "#" standing for a number.
std::vector<double> numbersIn(std::string pattern) {
  for (std::size_t at = pattern.find('#'); at != pattern.npos; at = pattern.find('#', at))
    pattern.replace(at, 1, number);
  return figures(pattern);
}

// The pairs of the row of the neighbours' table that begins with `name`.
Pairs neighbours(const std::string& name) {
  const std::regex row("\\| " + name + " \\| ([^|]+) \\|");
  std::smatch match;
  EXPECT_TRUE(std::regex_search(guide(), match, row)) << name;
  const std::string cell = match[1];
  const std::regex pair("([0-9]+)–([0-9]+)");
  Pairs pairs;
  for (auto at = std::sregex_iterator(cell.begin(), cell.end(), pair); at != std::sregex_iterator();
       ++at)
    pairs.emplace(std::stod((*at)[1]), std::stod((*at)[2]));
  return pairs;
}

bool isHit(double answer, const Trial& trial) {
  return Drills::grade(answer, trial).correct;
}

bool isHit(double answer, double truth) {
  Trial trial;
  trial.targetFreq = truth;
  return isHit(answer, trial);
}

// The largest error that counts as a hit, of errors in steps of a thousandth.
double largestHit(const Trial& trial, double truth) {
  int most = 0;
  for (int step = 0; step <= 5000; ++step)
    if (isHit(truth + step / 1000.0, trial))
      most = step;
  return most / 1000.0;
}

TEST(Guide, SortsTheNeighboursOfTheBands) {
  Pairs hits, misses;
  for (std::size_t i = 0; i + 1 < Bands::centres.size(); ++i) {
    const double low = Bands::centres.at(i), high = Bands::centres.at(i + 1);
    EXPECT_EQ(isHit(low, high), isHit(high, low));
    (isHit(low, high) ? hits : misses).emplace(low, high);
  }
  EXPECT_EQ(neighbours("are a hit for each other"), hits);
  EXPECT_EQ(neighbours("are a miss for each other"), misses);
}

TEST(Guide, NamesTheBandsWithoutNeighbours) {
  const std::regex sentence("At ([0-9, and]+) Hz only the band itself is a hit");
  std::smatch match;
  ASSERT_TRUE(std::regex_search(guide(), match, sentence));
  const std::string list = match[1];
  std::set<double> listed, alone;
  const std::regex digits("[0-9]+");
  for (auto at = std::sregex_iterator(list.begin(), list.end(), digits);
       at != std::sregex_iterator(); ++at)
    listed.insert(std::stod(at->str()));
  for (const double centre : Bands::centres)
    if (std::count_if(Bands::centres.begin(), Bands::centres.end(),
                      [&](double answer) { return isHit(answer, centre); }) == 1)
      alone.insert(centre);
  EXPECT_EQ(listed, alone);
  EXPECT_NE(guide().find("Two bands off is always a miss."), std::string::npos);
  for (std::size_t i = 0; i + 2 < Bands::centres.size(); ++i)
    EXPECT_FALSE(isHit(Bands::centres.at(i), Bands::centres.at(i + 2)));
}

TEST(Guide, DescribesTheBands) {
  const auto bands = numbersIn("one of # a third of an octave apart, from # Hz to # kHz");
  EXPECT_EQ(bands[0], Bands::centres.size());
  EXPECT_EQ(bands[1], Bands::centres.front());
  EXPECT_EQ(bands[2] * 1000, Bands::centres.back());
  EXPECT_NE(guide().find("an answer within a third of an octave."), std::string::npos);
  EXPECT_TRUE(isHit(1000 * std::exp2(0.3333), 1000));
  EXPECT_FALSE(isHit(1000 * std::exp2(0.3334), 1000));
}

TEST(Guide, NamesTheErrorsThatCountAsHits) {
  Trial level{.drill = Drill::level};
  level.targetLevelDB = 3;
  EXPECT_EQ(numbersIn("an answer at most # dB off, above or below")[0], largestHit(level, 3));
  Trial dynamics{.drill = Drill::dynamics};
  dynamics.targetGRdB = 6;
  EXPECT_EQ(numbersIn("an answer at most # dB off\\.\n")[0], largestHit(dynamics, 6));
}

TEST(Guide, DescribesTheScales) {
  const auto level = numbersIn("by how many dB, on a scale from # to # dB in steps of # dB");
  EXPECT_EQ(level[0], levelScale.lowest);
  EXPECT_EQ(level[1], levelScale.highest);
  EXPECT_EQ(level[2], levelScale.step);
  const auto dynamics = numbersIn("at its largest, on a scale from # to # dB in steps of # dB");
  EXPECT_EQ(dynamics[0], dynamicsScale.lowest);
  EXPECT_EQ(dynamics[1], dynamicsScale.highest);
  EXPECT_EQ(dynamics[2], dynamicsScale.step);
}

// The compressor, from outside.
TEST(Guide, DescribesTheCompressor) {
  const auto design = numbersIn("ratio #:1, attack # ms, release # ms");
  constexpr double rate = 48000;
  constexpr std::ptrdiff_t second = 48000;
  // Two seconds of -20 dB, two of -26 dB and two of silence, as constant samples.
  std::vector<float> steps(6 * second, 0.1F);
  std::fill(steps.begin() + 2 * second, steps.end(), static_cast<float>(0.1 * std::pow(10, -0.3)));
  std::fill(steps.begin() + 4 * second, steps.end(), 1e-4F);
  const Drills::Compressed compressed = Drills::compressorHitting(12, steps);
  const auto reduction = [&](double seconds) {
    const auto at = static_cast<std::size_t>(seconds * rate);
    return 20 *
           std::log10(static_cast<double>(steps[at]) / static_cast<double>(compressed.out[at]));
  };
  const double loud = reduction(1.999), quiet = reduction(3.999);
  EXPECT_NEAR(6 / (6 - (loud - quiet)), design[0], 0.01);
  // After its time constant, one-pole smoothing has covered 63 % of its way.
  EXPECT_NEAR(reduction(design[1] / 1000) / loud, 1 - std::exp(-1), 0.01);
  EXPECT_NEAR(reduction(4 + design[2] / 1000) / quiet, std::exp(-1), 0.01);
}

TEST(Guide, DescribesTheStaircase) {
  const auto begin = numbersIn("from # to #; it begins at #");
  EXPECT_EQ(begin[2], Staircase().difficulty);
  Staircase staircase;
  for (int i = 0; i < 100; ++i)
    staircase.record(false);
  EXPECT_EQ(staircase.difficulty, begin[0]);
  for (int i = 0; i < 200; ++i)
    staircase.record(true);
  EXPECT_EQ(staircase.difficulty, begin[1]);

  const auto steps = numbersIn("The step is # at first\\. It falls to # when the direction has "
                               "changed # times, to # after # changes, and to # after #\\.");
  std::vector<double> described, real;
  for (std::int64_t reversals = 0; reversals <= 10; ++reversals) {
    const auto count = static_cast<double>(reversals);
    described.push_back(count >= steps[6]   ? steps[5]
                        : count >= steps[4] ? steps[3]
                        : count >= steps[2] ? steps[1]
                                            : steps[0]);
    Staircase one{.difficulty = 50, .reversals = reversals};
    one.record(false);
    real.push_back(50 - one.difficulty);
  }
  EXPECT_EQ(described, real);
  EXPECT_NE(guide().find("Two hits in a row raise it, one miss lowers it."), std::string::npos);
  Staircase two;
  two.record(true);
  EXPECT_EQ(two.difficulty, Staircase().difficulty);
  two.record(true);
  EXPECT_GT(two.difficulty, Staircase().difficulty);
  // Two hits in a row are as likely as not.
  EXPECT_EQ(numbersIn("where you hit about # % of the trials")[0],
            std::round(std::sqrt(0.5) * 100));
}

// A row of the table of difficulties, as makeTrial has it.
std::string difficultyRow(double difficulty) {
  constexpr std::uint64_t seeds = 3000;
  std::array<double, 2> levels{9, 0}, reductions{99, 0};
  const auto spread = [](std::array<double, 2>& ends, double value) {
    ends[0] = std::min(ends[0], value);
    ends[1] = std::max(ends[1], value);
  };
  for (std::uint64_t i = 0; i < seeds; ++i) {
    const auto trial = [&](Drill drill) {
      return Drills::makeTrial(difficulty, Material::pinkNoise, Drills::mixedSeed(i), drill);
    };
    spread(levels, trial(Drill::level).targetLevelDB);
    spread(reductions, trial(Drill::dynamics).targetGRdB);
  }
  const Trial frequency = Drills::makeTrial(difficulty, Material::pinkNoise, 1, Drill::frequency);
  const Trial polarity = Drills::makeTrial(difficulty, Material::pinkNoise, 1, Drill::polarity);
  using Numbers::fixed;
  return "| " + fixed(difficulty, 0) + " | " + fixed(frequency.boostDB, 1) + " dB, " +
         fixed(frequency.boostQ, 1) + " | " + fixed(levels[0], 2) + " to " + fixed(levels[1], 2) +
         " dB | " + fixed(reductions[0], 1) + " to " + fixed(reductions[1], 1) + " dB | " +
         fixed(polarity.correlation, 2) + " |\n";
}

TEST(Guide, TabulatesTheDifficulties) {
  std::string table;
  for (const double difficulty : {0, 20, 40, 60, 80, 100})
    table += difficultyRow(difficulty);
  const std::size_t head = guide().find("| difficulty | boost, Q |");
  ASSERT_NE(head, std::string::npos);
  const std::size_t begin = guide().find("| 0 |", head);
  EXPECT_EQ(guide().substr(begin, guide().find("\n\n", begin) + 1 - begin), table);
}

TEST(Guide, DescribesTheSidePanel) {
  EXPECT_EQ(numbersIn("hits in the newest # answers")[0], Statistics::accuracyWindow);
  EXPECT_EQ(numbersIn("difficulty of the newest # answers")[0], Statistics::curveLength);
  EXPECT_EQ(numbersIn("among those with at least # answers")[0], Statistics::answersToNameABand);
  EXPECT_EQ(numbersIn("The newest # answers are kept one by one")[0], Profile::detailRows);
  const double full = numbersIn("From # octaves on it is full")[0];
  EXPECT_EQ(Progress::bar({.attempts = 1, .meanErrorOct = full}).height, Progress::tallestBar);
  EXPECT_LT(Progress::bar({.attempts = 1, .meanErrorOct = full - 0.01}).height,
            Progress::tallestBar);
  const auto lines = numbersIn("The lines are at #, # and #");
  const std::string view = kit::contentOf(std::filesystem::path(VELTO_SOURCE_DIR) /
                                          "Sources/Velto/ui/qml/Sparkline.qml");
  std::string drawn = "[";
  for (const double line : lines)
    drawn.append(drawn.size() > 1 ? ", " : "").append(Numbers::shortest(line / 100));
  EXPECT_NE(view.find(drawn + "]"), std::string::npos) << drawn;
}

TEST(Guide, NamesTheLevelAndTheLength) {
  const auto level = numbersIn("renders at # dBFS RMS and plays # dB below that, at # kHz");
  const Samples noise = Signals::pink(2, 1, Noise::audible);
  EXPECT_NEAR(Measure::rmsDB(noise), level[0], 0.01);
  EXPECT_NEAR(-20 * std::log10(static_cast<double>(outputHeadroom)), level[1], 0.03);
  EXPECT_EQ(static_cast<double>(Signals::frameCount(1)), level[2] * 1000);
  EXPECT_EQ(numbersIn("pink noise \\(`--fair`, frequency drill, version A\\) has # dBFS RMS")[0],
            level[0] - level[1]);
  // A calibrated room, as much quieter as Velto's noise.
  const auto room = numbersIn("calibrated to # dB SPL for # dBFS RMS \\(Katz 2000\\) show # dB");
  EXPECT_EQ(room[2] - room[0], level[0] - level[1] - room[1]);
  EXPECT_EQ(numbersIn("plays versions of the same # s of sound")[0], Session::trialSeconds);
}

TEST(Guide, NamesTheFolderOfTheRecord) {
  const std::string home = "/home/someone";
  const Environment environment{
      [&](const std::string& name) { return name == "HOME" ? std::optional(home) : std::nullopt; },
      [] { return std::nullopt; }};
  const auto location = ProfileLocation::find(environment);
  ASSERT_TRUE(location);
  std::string text = "`";
  text.append(location->file().filename().string()).append("` in the folder `~");
  text.append(location->directory.string(), home.size()).append("`");
  EXPECT_NE(guide().find(text), std::string::npos) << text;
}

// Anchors are headings in lower case, with dashes for spaces.
TEST(Guide, LinksToWhatIsThere) {
  namespace fs = std::filesystem;
  std::set<std::string> anchors;
  const std::regex heading("\n#+ ([^\n]+)");
  for (auto at = std::sregex_iterator(guide().begin(), guide().end(), heading);
       at != std::sregex_iterator(); ++at) {
    std::string anchor = (*at)[1];
    std::transform(anchor.begin(), anchor.end(), anchor.begin(), [](char letter) {
      return letter == ' '                    ? '-'
             : letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 'a' - 'A')
                                              : letter;
    });
    anchors.insert(anchor);
  }
  const std::string packaging =
      kit::contentOf(fs::path(VELTO_SOURCE_DIR) / "Packaging/CMakeLists.txt");
  const std::regex link("\\]\\(([^)]+)\\)");
  std::size_t count = 0;
  for (auto at = std::sregex_iterator(guide().begin(), guide().end(), link);
       at != std::sregex_iterator(); ++at, ++count) {
    const std::string target = (*at)[1];
    if (target.starts_with("#"))
      EXPECT_TRUE(anchors.contains(target.substr(1))) << target;
    else
      EXPECT_NE(packaging.find("/Documentation/" + target), std::string::npos) << target;
  }
  EXPECT_GE(count, 3U);
}

} // namespace
} // namespace velto
