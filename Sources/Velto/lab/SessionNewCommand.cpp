#include "SessionNewCommand.h"

#include "Arguments.h"
#include "Assignment.h"
#include "Coding.h"
#include "Console.h"
#include "Date.h"
#include "ListMaker.h"
#include "Numbers.h"
#include "ProfileLocation.h"
#include "RandomBytes.h"
#include "RecordFile.h"
#include "Scores.h"
#include "StandardStreams.h"
#include "Statistics.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

namespace {

// A band's weight among targets: 1 if it is always found, rising to 4 for a mean error of an octave
// or more. A band without answers counts as one with an error of a third of an octave.
constexpr double weightPerOctave = 3;
constexpr double unknownError = 1.0 / 3;

struct Wishes {
  std::vector<Drill> drills;
  std::optional<Material> material;
  std::uint64_t count = 20;
  std::optional<double> difficulty;
  std::optional<std::uint64_t> randomSeed;
  std::string record; // empty: none
  bool isStaircase = false;
};

Stored recordIn(const std::string& path) {
  // Beside a profile.json there may be copies of a program that did not end cleanly.
  const auto file = std::filesystem::absolute(path);
  const ProfileLocation location{file.parent_path(), std::nullopt};
  if (file == location.file())
    if (auto record = RecordFile::load(location))
      return *std::move(record);
  const auto text = Assignment::textOf(path);
  if (const auto* failure = std::get_if<Assignment::Failure>(&text))
    throw Lab::Failure(failure->line);
  auto stored = Coding::decodeStored(std::get<std::string>(text));
  if (!stored)
    throw Lab::Failure(path + ": not a practice record");
  return *std::move(stored);
}

BandWeights weightsOf(const Stored& stored) {
  const Stats stats = Statistics::compute(stored.attempts, stored.lifetime, Date::now());
  BandWeights weights{};
  for (const BandStat& band : stats.bands) {
    const double error = band.attempts > 0 ? band.meanErrorOct : unknownError;
    weights.at(static_cast<std::size_t>(band.index)) = 1 + weightPerOctave * std::min(error, 1.0);
  }
  return weights;
}

double difficultyOf(Drill drill, const Wishes& wishes, const Stored& stored) {
  if (wishes.difficulty)
    return *wishes.difficulty;
  const auto found = stored.staircases.find(std::string(drill.rawValue()));
  const Staircase staircase = found == stored.staircases.end() ? Staircase{} : found->second;
  return std::clamp(staircase.difficulty, 0.0, 100.0);
}

ListRequest requestOf(const Wishes& wishes) {
  ListRequest request{.parts = {},
                      .count = wishes.count,
                      .material = wishes.material,
                      .difficulty = wishes.isStaircase ? TrialList::Difficulty::staircase
                                                       : TrialList::Difficulty::fixed,
                      .randomSeed = 0};
  Stored stored;
  if (!wishes.record.empty()) {
    if (std::find(wishes.drills.begin(), wishes.drills.end(), Drill::frequency) ==
        wishes.drills.end())
      throw Lab::WrongUse("--for weights the bands of frequency trials, but there are none");
    stored = recordIn(wishes.record);
    request.bandWeights = weightsOf(stored);
  }
  for (const Drill drill : wishes.drills)
    request.parts.push_back({.drill = drill, .difficulty = difficultyOf(drill, wishes, stored)});
  std::array<std::uint8_t, 8> bytes{};
  fillRandomly(bytes);
  request.randomSeed = wishes.randomSeed.value_or(std::bit_cast<std::uint64_t>(bytes));
  return request;
}

std::string percent(double share) {
  return Numbers::fixed(100 * share, 0) + " %";
}

// What one gets without listening, and whether that is much.
std::string guessLine(const TrialList& list, const ListRequest::Part& part, BlindAnswers& blind) {
  const double start = blind.at(part.drill, part.difficulty).hitRate;
  double most = start;
  std::string line = "velto-lab: " + std::string(part.drill.rawValue()) + " at difficulty " +
                     Numbers::shortest(part.difficulty) +
                     ": the best guess without listening hits " + percent(start);
  if (list.difficulty == TrialList::Difficulty::staircase) {
    const double end = blind.at(part.drill, 100).hitRate;
    most = std::max(start, end);
    if (percent(end) != percent(start))
      line += ", at difficulty 100 " + percent(end);
  }
  return line + (most > 0.5 ? "; warning: hits prove little\n" : "\n");
}

void addDrills(CLI::App& arguments, std::vector<Drill>& drills) {
  const auto take = [&drills](const std::string& word) {
    const auto drill = Drill::fromRawValue(word);
    if (!drill)
      throw Lab::WrongUse("--drill: '" + word + "' is no drill");
    if (std::find(drills.begin(), drills.end(), *drill) != drills.end())
      throw Lab::WrongUse("--drill: " + word + " is there twice");
    drills.push_back(*drill);
  };
  arguments
      .add_option_function<std::vector<std::string>>(
          "--drill",
          [take](const std::vector<std::string>& words) {
            std::for_each(words.begin(), words.end(), take);
          },
          "a drill; may be repeated (all drills)")
      ->type_name("DRILL")
      ->expected(1)
      ->take_all();
}

void make(Wishes wishes) {
  if (wishes.drills.empty())
    wishes.drills.assign(Drill::allCases.begin(), Drill::allCases.end());
  const ListRequest request = requestOf(wishes);
  const TrialList list = makeList(request);
  Lab::Console::print(list.text());
  // Not to standard output, which has the list.
  BlindAnswers blind = blindAnswersTo(list);
  for (const ListRequest::Part& part : request.parts)
    StandardStreams::writeToError(guessLine(list, part, blind));
}

} // namespace

Lab::Action Lab::declareSessionNew(CLI::App& arguments) {
  // What the switches are stored in, before it is known which were given.
  struct Values {
    Wishes wishes;
    double difficulty = 0;
    std::uint64_t randomSeed = 0;
  };
  const auto values = std::make_shared<Values>();
  Wishes& wishes = values->wishes;
  addDrills(arguments, wishes.drills);
  Arguments::addMaterial(arguments, wishes.material, "one material (each drill's own)");
  Arguments::addCount(arguments, "--count", wishes.count, 1, TrialList::mostTrials,
                      "how many trials (20)");
  Arguments::addNumber(arguments, "--difficulty", values->difficulty, 0, 100,
                       "of all trials (20, or that of the record)");
  Arguments::addCount(arguments, "--random-seed", values->randomSeed, 0, UINT64_MAX,
                      "the same one makes the same list");
  arguments.add_option("--for", wishes.record, "ask more often for the weak bands of this record")
      ->type_name("FILE");
  arguments.add_flag("--staircase", wishes.isStaircase, "adapt the difficulty to the answers")
      ->disable_flag_override();
  const CLI::Option* difficulty = arguments.get_option("--difficulty");
  const CLI::Option* randomSeed = arguments.get_option("--random-seed");
  return [values, difficulty, randomSeed] {
    if (difficulty->count() > 0)
      values->wishes.difficulty = values->difficulty;
    if (randomSeed->count() > 0)
      values->wishes.randomSeed = values->randomSeed;
    make(values->wishes);
  };
}

} // namespace velto
