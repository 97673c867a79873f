#include "RenderCommand.h"

#include "Arguments.h"
#include "Folders.h"
#include "Staircase.h"
#include "Trial.h"
#include "TrialFiles.h"

#include <CLI/CLI.hpp>

#include <limits>
#include <memory>
#include <string>

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
};

void run(const Options& options) {
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
  arguments.add_flag("--fair", options->isFair, "as velto --fair plays it, with a mixed seed")
      ->disable_flag_override();
  arguments
      .add_flag("--explore", options->explores,
                "instead, 27 bands with three boosts each, and none")
      ->disable_flag_override()
      ->excludes(&drill)
      ->excludes(&difficulty);
  return [options] { run(*options); };
}

} // namespace velto
