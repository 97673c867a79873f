#include "RenderCommand.h"

#include "Arguments.h"
#include "Assignment.h"
#include "Console.h"
#include "Folders.h"
#include "Sitting.h"
#include "Staircase.h"
#include "Trial.h"
#include "TrialFiles.h"

#include <CLI/CLI.hpp>

#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace velto {

namespace {

struct Options {
  std::string folder;
  Drill drill = Drill::frequency;
  std::optional<Material> material;
  double difficulty = Staircase{}.difficulty;
  std::uint64_t seed = 1;
  bool isFair = false;
  bool explores = false;
  std::string list; // empty: a single trial
};

// Every trial of a list, as velto --session plays it: "01-frequency-A.wav" and so on.
void renderList(const std::string& folder, const std::string& file) {
  const auto list = Assignment::listIn(file);
  if (const auto* wrong = std::get_if<std::string>(&list))
    throw Lab::Failure(*wrong);
  const auto trials = fixedTrials(std::get<TrialList>(list));
  if (!trials)
    throw Lab::Failure(file + ": the trials of a staircase follow from the answers");
  Folders::create(folder);
  Lab::Progress progress("rendering", trials->size());
  const std::size_t digits = std::to_string(trials->size()).size();
  for (std::size_t i = 0; i < trials->size(); ++i) {
    std::string number = std::to_string(i + 1);
    number.insert(0, digits - number.size(), '0');
    const Trial& trial = (*trials)[i];
    Lab::TrialFiles::write(folder, number + "-" + std::string(trial.drill.rawValue()), trial,
                           Noise::audible);
    progress.advance();
  }
}

void run(const Options& options) {
  if (!options.list.empty())
    return renderList(options.folder, options.list);
  Folders::create(options.folder);
  const Noise noise = options.isFair ? Noise::audible : Noise::asDrawn;
  const std::uint64_t seed = options.isFair ? Drills::mixedSeed(options.seed) : options.seed;
  if (options.explores) {
    Lab::TrialFiles::writeBands(options.folder, options.material.value_or(Material::pinkNoise),
                                seed, noise);
    return;
  }
  const Material material = options.material.value_or(Drills::defaultMaterial(options.drill));
  const Trial trial = Drills::makeTrial(options.difficulty, material, seed, options.drill);
  Lab::TrialFiles::write(options.folder, std::string(options.drill.rawValue()), trial, noise);
}

} // namespace

Lab::Action Lab::declareRender(CLI::App& arguments) {
  const auto options = std::make_shared<Options>();
  Arguments::addPath(arguments, "FOLDER", options->folder, "where to write; created if needed");
  CLI::Option& drill = Arguments::addDrill(arguments, options->drill,
                                           "frequency (default), level, dynamics or polarity");
  Arguments::addMaterial(arguments, options->material,
                         "pink, drums or pad; by default the drill's own");
  CLI::Option& difficulty = Arguments::addNumber(arguments, "--difficulty", options->difficulty, 0,
                                                 100, "of the trial, 0 to 100; by default 20");
  Arguments::addCount(arguments, "--seed", options->seed, 0,
                      std::numeric_limits<std::uint64_t>::max(), "of the trial; by default 1");
  CLI::Option* fair =
      arguments.add_flag("--fair", options->isFair, "as velto --fair plays it, with a mixed seed")
          ->disable_flag_override();
  CLI::Option* explore = arguments
                             .add_flag("--explore", options->explores,
                                       "instead, 27 bands with three boosts each, and none")
                             ->disable_flag_override()
                             ->excludes(&drill)
                             ->excludes(&difficulty);
  arguments.add_option("--session", options->list, "instead, all trials of this list, fair")
      ->type_name("LIST");
  const std::vector<const CLI::Option*> ofOneTrial{
      &drill, &difficulty, arguments.get_option("--material"), arguments.get_option("--seed"),
      fair,   explore};
  return [options, ofOneTrial] {
    for (const CLI::Option* other : ofOneTrial)
      if (!options->list.empty() && other->count() > 0)
        throw WrongUse("--session excludes " + other->get_name());
    run(*options);
  };
}

} // namespace velto
