#include "Help.h"

#include "Folders.h"
#include "ProfileLocation.h"
#include "Report.h"

#include <array>

namespace velto {

namespace {

constexpr std::array allSwitches{
    Help::Switch{"--fair", "", "only listening helps, and pink noise can be heard", true},
    Help::Switch{"--drill", "DRILL", "start with frequency, level, dynamics or polarity", true},
    Help::Switch{"--appearance", "LOOK", "light or dark, whatever the desktop prefers", true},
    Help::Switch{"--shot", "FILE", "take a picture of the window (PNG) and end", true},
    Help::Switch{"--answer", "NUMBER", "before --shot, answer: Hz, dB, or a slot from 0", true},
    Help::Switch{"--help", "", "print this text", false},
    Help::Switch{"--version", "", "print the version", false},
    Help::Switch{"--probe", "", "measure the rendered sound against its design", false},
    Help::Switch{"--bench-audio", "on|off",
                 "play 25 s with or without a trial, to measure the load", false},
    Help::Switch{"--brand-check", "", "check that the wordmark is drawn in its own face", false},
    Help::Switch{"--bench", "", "time the rendering and the statistics", false},
    Help::Switch{"--audio-selftest", "", "check that what is played reaches the output", false},
    Help::Switch{"--seed-demo", "", "fill the folder VELTO_PROFILE_DIR with made-up answers",
                 false},
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
    return std::string("nowhere: ") + ProfileLocation::noDirectory;
  return Folders::absolute(location->file()).string();
}

} // namespace

std::span<const Help::Switch> Help::switches() {
  return allSwitches;
}

std::string Help::text(const Environment& environment) {
  return "Usage: velto [SWITCH]...\n"
         "\n"
         "Trains your ears: which band is boosted, how much louder, how much compressed,\n"
         "in which version a channel is flipped. Without a switch it opens its window.\n"
         "\n"
         "The window:\n" +
         linesOf(true) +
         "\n"
         "Instead of the window, whichever comes first in this list:\n" +
         linesOf(false) +
         "\n"
         "A switch that it does not know, or that lacks its value, is ignored. The status\n"
         "is 0 for done or passed, 1 for a failure.\n"
         "\n"
         "The record of your answers is profile.json in the folder \"MORLA Velto\" of\n" +
         ProfileLocation::dataDirectoryInWords +
         ", or in the folder that\n"
         "VELTO_PROFILE_DIR names. With the present environment that is\n"
         "  " +
         recordLine(environment);
}

std::string Help::version() {
  return "velto " VELTO_VERSION;
}

} // namespace velto
