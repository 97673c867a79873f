// Plays through the player and the sound server for VELTO_PLAYBACK_SECONDS (an hour by default),
// switches slots every few seconds, and compares every frame at the sink with what it must be. Run
// on a private desk; for the whole hour, by hand:
//
//   Tests/desk/desk --no-display --buffer 1000 -- build/bin/velto_long_playback
//
// Prints its measurements. Exits with 0 if no frame was lost, repeated or altered, memory varied by
// at most 2 MB, and no handle or thread leaked.
#include "Player.h"

#include "Numbers.h"
#include "kit/Footprint.h"
#include "kit/LoopWatch.h"
#include "kit/SinkStream.h"
#include "kit/Slots.h"
#include "kit/TestPlayer.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace velto;
using namespace velto::kit;

constexpr std::size_t loopFrames = 153600;                    // 3.2 s, as a trial
constexpr std::size_t startLead = 5760 - outputLatencyFrames; // a start delay of 0.12 s
constexpr std::uint64_t second = 48000;
constexpr double allowedGrowthMegabytes = 2;

std::uint64_t wantedSeconds() {
  const char* text = std::getenv("VELTO_PLAYBACK_SECONDS");
  const double seconds = text != nullptr ? std::atof(text) : 3600;
  return static_cast<std::uint64_t>(std::clamp(seconds, 10.0, 1e6));
}

// Footprints of this process, sampled after the warm-up.
struct Growth {
  Footprint first, last;
  double lowest = 1e9, highest = 0;

  void sample() {
    last = Footprint::ofThisProcess();
    if (highest == 0)
      first = last;
    lowest = std::min(lowest, last.residentMegabytes);
    highest = std::max(highest, last.residentMegabytes);
  }
  [[nodiscard]] bool isFlat() const { return highest - lowest <= allowedGrowthMegabytes; }
  [[nodiscard]] bool leaksNothing() const {
    return first.handles == last.handles && first.threads == last.threads;
  }
};

void printProgress(const LoopWatch& watch, const Footprint& now) {
  std::cout << watch.frames() / second << " s: " << watch.switches() << " switches, "
            << watch.breaks().size() << " breaks, " << Numbers::fixed(now.residentMegabytes, 2)
            << " MB, " << now.handles << " handles, " << now.threads << " threads\n"
            << std::flush;
}

bool report(const LoopWatch& watch, const Growth& growth) {
  std::cout << "frames recorded: " << watch.frames() << " ("
            << Numbers::fixed(static_cast<double>(watch.frames()) / 48000, 1) << " s)\n"
            << "of the current slot at the common phase, bit for bit: " << watch.exactFrames()
            << '\n'
            << "in crossfades, each as computed: " << watch.fadedFrames() << '\n'
            << "switches: " << watch.switches() << ", not heard: " << watch.pendingSwitches()
            << '\n'
            << "breaks: " << watch.breaks().size() << '\n';
  for (const std::string& words : watch.breaks())
    std::cout << "  " << words << '\n';
  std::cout << "memory once warm: " << Numbers::fixed(growth.lowest, 2) << " to "
            << Numbers::fixed(growth.highest, 2) << " MB\n"
            << "handles: " << growth.first.handles << ", then " << growth.last.handles
            << "; threads: " << growth.first.threads << ", then " << growth.last.threads << '\n';
  const bool passed = watch.breaks().empty() && watch.pendingSwitches() == 0 &&
                      watch.exactFrames() > 0 && growth.isFlat() && growth.leaksNothing();
  std::cout << (passed ? "PASS" : "FAIL") << '\n';
  return passed;
}

bool run(std::uint64_t seconds) {
  const std::vector<Slot> slots{noiseSlot(loopFrames, 1), noiseSlot(loopFrames, 2),
                                noiseSlot(loopFrames, 3)};
  SinkStream stream;
  std::vector<float> samples;
  if (!stream.read(samples))
    return false;
  kit::TestPlayer player;
  player.load(slots, 0);
  if (!player.isPlaying())
    return false;

  LoopWatch watch(slots, 0, startLead);
  Growth growth;
  const std::uint64_t end = seconds * second;
  const std::uint64_t warm = std::min(60 * second, end / 3);
  std::uint64_t nextSwitch = 2 * second, nextSample = warm, pause = 0;
  std::size_t chosen = 0, toldBreaks = 0;
  while (watch.frames() < end) {
    for (float& sample : samples)
      sample /= outputHeadroom;
    const std::size_t whole = samples.size() / 2 * 2;
    watch.take(std::span(samples).first(whole));
    samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(whole));
    while (toldBreaks + 1 < watch.breaks().size())
      std::cout << watch.breaks()[toldBreaks++] << '\n' << std::flush;
    // Switches are 1 to 4 s apart. None comes at the very end, so that all are heard.
    if (watch.frames() >= nextSwitch && watch.frames() + 2 * second < end) {
      pause = (pause * 7919 + 12345) % (3 * second);
      nextSwitch = watch.frames() + second + pause;
      chosen = (chosen + 1 + pause % 2) % slots.size();
      watch.expectSwitch(chosen);
      player.switchTo(static_cast<std::int64_t>(chosen));
    }
    if (watch.frames() >= nextSample) {
      growth.sample();
      nextSample += std::min(10 * second, warm);
      if (nextSample % (300 * second) == 0)
        printProgress(watch, growth.last);
    }
    if (!stream.read(samples)) {
      std::cout << "the recording ended by itself\n";
      report(watch, growth);
      return false;
    }
  }
  return report(watch, growth);
}

} // namespace

int main() {
  if (std::getenv("VELTO_DESK") == nullptr) {
    std::cerr << "velto_long_playback: run it on a private desk\n";
    return 2;
  }
  try {
    return run(wantedSeconds()) ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "velto_long_playback: " << error.what() << '\n';
    return 1;
  }
}
