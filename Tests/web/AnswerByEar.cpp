// Answers a trial of the practice page by what is heard of it.
//
//   velto_answer_by_ear DRILL RECORDING SLOT:BEGIN:END...
//
// DRILL is a drill's name. RECORDING holds 32-bit floats, stereo, at 48000 Hz, in which SLOT, an
// index, is heard alone from frame BEGIN to frame END. Prints the answer: the place on the scale,
// from 0 to 1, or the index of the slot. Fails if nothing is heard.
#include "Bands.h"
#include "Scales.h"
#include "kit/Highpass.h"
#include "kit/Listener.h"
#include "web/RecordingFile.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace velto;
using namespace velto::kit;

constexpr std::size_t loopFrames = 153600; // a trial lasts 3.2 s

std::vector<Listener::Part> read(const std::string& file, std::span<char*> places) {
  const Recording all = highpassed(readRecording(file), 20);
  std::vector<Listener::Part> parts;
  for (const char* place : places) {
    std::size_t slot = 0, begin = 0, end = 0;
    if (std::sscanf(place, "%zu:%zu:%zu", &slot, &begin, &end) != 3 || begin > end ||
        end > all.frames())
      throw std::runtime_error(std::string("no part of the recording: ") + place);
    parts.push_back({.slot = slot, .begin = begin, .sound = all.part(begin, end - begin)});
  }
  return parts;
}

double answer(const std::string& drill, const std::vector<Listener::Part>& parts) {
  if (drill == "polarity") {
    const auto slot = Listener::flippedSlot(parts, loopFrames);
    if (!slot)
      throw std::runtime_error("no slot is heard to be flipped");
    return static_cast<double>(*slot);
  }
  if (parts.size() != 2)
    throw std::runtime_error("two parts are compared");
  if (drill == "dynamics") {
    const auto [a, b] = Listener::everyPlace(parts[0], parts[1], loopFrames);
    return Listener::gainReductionByPiecesDB(a, b) / 14;
  }
  const auto [a, b] = Listener::samePlace(parts[0], parts[1], loopFrames);
  if (drill == "level")
    return Listener::levelDifferenceDB(a, b) / 7;
  const auto band = Listener::boostedBand(a, b);
  if (!band)
    throw std::runtime_error("no band is heard to be boosted");
  return frequencyScale.position(Bands::centres[*band], 1);
}

} // namespace

int main(int count, char** arguments) {
  const std::span all(arguments, static_cast<std::size_t>(count));
  if (all.size() < 4) {
    std::fprintf(stderr, "usage: velto_answer_by_ear DRILL RECORDING SLOT:BEGIN:END...\n");
    return 2;
  }
  try {
    const double heard = answer(all[1], read(all[2], all.subspan(3)));
    if (!std::isfinite(heard))
      throw std::runtime_error("nothing is heard");
    std::printf("%.17g\n", heard);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "  %s\n", error.what());
    return 1;
  }
  return 0;
}
