#include "Help.h"

#include "Folders.h"
#include "ProfileLocation.h"
#include "Report.h"

#include <array>

namespace velto {

namespace {

constexpr std::array allSwitches{
    Help::Switch{"--fair", "", "fair trials without shortcuts, and audible pink noise", true},
    Help::Switch{"--session", "FILE", "play this list of trials, once; needs --results", true},
    Help::Switch{"--results", "FILE", "append the answers to this file, or go on after them", true},
    Help::Switch{"--drill", "DRILL", "start with frequency, level, dynamics or polarity", true},
    Help::Switch{"--appearance", "LOOK", "light or dark, regardless of the desktop", true},
    Help::Switch{"--shot", "FILE", "save a screenshot of the window (PNG) and exit", true},
    Help::Switch{"--answer", "NUMBER", "with --shot, answer first: Hz, dB or a slot from 0", true},
    Help::Switch{"--help", "", "print this text", false},
    Help::Switch{"--version", "", "print the version", false},
    Help::Switch{"--probe", "", "compare the rendered sound with its design", false},
    Help::Switch{"--bench-audio", "on|off", "run the player for 25 s, with a trial or idle", false},
    Help::Switch{"--brand-check", "", "check that the wordmark is drawn in its own face", false},
    Help::Switch{"--bench", "", "time the rendering and the statistics", false},
    Help::Switch{"--audio-selftest", "", "check that sound reaches the mixer's output", false},
    Help::Switch{"--seed-demo", "", "store demonstration answers in VELTO_PROFILE_DIR", false},
};

std::string lineOf(const Help::Switch& one) {
  constexpr std::size_t nameWidth = 20;
  std::string name(one.name);
  if (!one.value.empty())
    name.append(" ").append(one.value);
  return "  " + Report::leftAligned(name, nameWidth) + " " + std::string(one.explanation) + "\n";
}

std::string linesOf(bool startsWindow) {
  std::string lines;
  for (const Help::Switch& one : allSwitches)
    if (one.startsWindow == startsWindow)
      lines += lineOf(one);
  return lines;
}

std::string recordLine(const Environment& environment) {
  const auto location = ProfileLocation::find(environment);
  if (!location)
    return std::string("unknown: ") + ProfileLocation::noDirectory;
  return Folders::absolute(location->file()).string();
}

} // namespace

std::span<const Help::Switch> Help::switches() {
  return allSwitches;
}

std::string Help::text(const Environment& environment) {
  return "Usage: velto [SWITCH]...\n"
         "\n"
         "An ear trainer: find the boosted band, the level difference, the amount of\n"
         "compression, or the version with a flipped channel. Opens a window, unless one\n"
         "of the modes below is given.\n"
         "\n"
         "Window:\n" +
         linesOf(true) +
         "\n"
         "Modes without a window (of several, the first in this list runs):\n" +
         linesOf(false) +
         "\n"
         "Unknown switches, and switches without their value, are ignored, except\n"
         "--session and --results. The exit status is 0 on success, 1 on failure, and 2\n"
         "if the files of --session and --results cannot be used.\n"
         "\n"
         "The user's guide is guide.md in share/doc/velto of the installation.\n"
         "\n"
         "Your answers are stored in profile.json in the folder \"MORLA Velto\" of\n" +
         ProfileLocation::dataDirectoryInWords +
         ", or in the folder that\n"
         "VELTO_PROFILE_DIR names. In the current environment that is\n"
         "  " +
         recordLine(environment);
}

std::string Help::version() {
  return "velto " VELTO_VERSION;
}

} // namespace velto
