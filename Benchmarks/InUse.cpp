// velto_in_use PROGRAM BARE [KEYS [SECONDS]]
//
// Prints what a listener gets and what it costs while a trial plays: the time from a key to the
// changed frame on the screen (median of KEYS, 60 by default), processor time over SECONDS (20) and
// memory, in parts beside those of BARE, a program with a bare window. Run on a private desk.
#include "Median.h"

#include "kit/Desktop.h"
#include "kit/Footprint.h"
#include "kit/MemoryParts.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace velto;
using namespace velto::kit;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Picture = std::vector<std::uint32_t>;

constexpr std::size_t rate = 48000;

// The smallest rectangle that holds every pixel in which two pictures of `width` differ.
WindowGeometry difference(const Picture& one, const Picture& other, int width) {
  int left = width, top = 0, right = -1, bottom = -1;
  for (std::size_t i = 0; i < one.size(); ++i) {
    if (one[i] == other[i])
      continue;
    const int x = static_cast<int>(i) % width, y = static_cast<int>(i) / width;
    if (bottom < 0)
      top = y;
    bottom = y;
    left = std::min(left, x);
    right = std::max(right, x);
  }
  if (bottom < 0)
    throw std::runtime_error("the key changes nothing");
  return {left, top, right - left + 1, bottom - top + 1};
}

// Presses the space bar, which switches between the two slots.
class SlotSwitch {
public:
  SlotSwitch(Desktop& desktop, WindowId window) : desktop_(desktop), window_(window) {
    WindowGeometry all = desktop.geometry(window);
    all.x = all.y = 0;
    const Picture before = settled(all), after = pressed(all);
    part_ = difference(before, after, all.width);
    looks_[1] = settled(part_);
    looks_[0] = pressed(part_);
  }

  // Milliseconds until all of the new frame is on the screen. Polls without waiting long, because
  // the measured times are short.
  double measure() {
    std::swap(looks_[0], looks_[1]);
    const auto begin = Clock::now();
    desktop_.keyDown(Keys::space);
    while (desktop_.picture(window_, part_) != looks_[0]) {
      std::this_thread::sleep_for(200us);
      if (Clock::now() - begin > 5s)
        throw std::runtime_error("the key does not change the picture");
    }
    const auto end = Clock::now();
    desktop_.keyUp(Keys::space);
    // Keys come at any time of the screen's and the sound's periods.
    std::this_thread::sleep_for(60ms + pause_);
    pause_ = (pause_ + 7ms) % 23ms;
    return std::chrono::duration<double, std::milli>(end - begin).count();
  }

private:
  Picture settled(const WindowGeometry& part) {
    std::this_thread::sleep_for(500ms);
    return desktop_.picture(window_, part);
  }

  Picture pressed(const WindowGeometry& part) {
    desktop_.press(Keys::space);
    return settled(part);
  }

  Desktop& desktop_;
  const WindowId window_;
  WindowGeometry part_; // that the key changes
  Picture looks_[2];    // of this part: now, and after the next key
  std::chrono::milliseconds pause_{0};
};

// Waits while `seconds` seconds are played. Returns the processor time that `program` took.
double processorSeconds(Recorder& recorder, const ProgramRunner& program, std::size_t seconds) {
  const double before = Footprint::of(program.pid()).processorSeconds;
  recorder.waitForMore(seconds * rate);
  return Footprint::of(program.pid()).processorSeconds - before;
}

void reportProcessor(const char* when, double used, std::size_t seconds) {
  std::printf("processor while %s: %.2f %% of a core over %zu s\n", when,
              100 * used / static_cast<double>(seconds), seconds);
}

MemoryParts partsOfBareWindow(Desktop& desktop, const std::string& path) {
  const ProgramRunner program(path, {});
  static_cast<void>(desktop.waitForWindow("MORLA Velto", program.pid()));
  std::this_thread::sleep_for(2s);
  return memoryParts(program.pid());
}

void reportParts(const MemoryParts& bare, const MemoryParts& program) {
  std::printf("memory in parts, MB resident     bare window  velto\n");
  double bareSum = 0, programSum = 0;
  for (const auto& [part, megabytes] : program) {
    const double bareMegabytes = bare.contains(part) ? bare.at(part) : 0;
    std::printf("  %-36s %5.1f  %5.1f\n", part.c_str(), bareMegabytes, megabytes);
    bareSum += bareMegabytes;
    programSum += megabytes;
  }
  std::printf("  %-36s %5.1f  %5.1f\n", "sum", bareSum, programSum);
}

void run(const std::string& path, const std::string& barePath, int keys, std::size_t seconds) {
  Desktop desktop;
  const MemoryParts bare = partsOfBareWindow(desktop, barePath);
  Recorder recorder;
  const ProgramRunner program(path, {"--drill", "level", "--appearance", "light"});
  const WindowId window = desktop.waitForWindow("MORLA Velto", program.pid());
  desktop.waitForActive(window);
  recorder.waitForMore(2 * rate);

  reportProcessor("playing", processorSeconds(recorder, program, seconds), seconds);
  const Footprint footprint = Footprint::of(program.pid());
  std::printf("memory while playing: %.1f MB resident, %.1f MB with shared pages divided\n",
              footprint.residentMegabytes, footprint.proportionalMegabytes);
  reportParts(bare, memoryParts(program.pid()));

  constexpr int trials = 20;
  for (int i = 0; i < trials; ++i) {
    for (const int step : {0, 1}) { // answers the trial, then starts the next one
      static_cast<void>(step);
      desktop.press(Keys::returnKey);
      recorder.waitForMore(rate / 4);
    }
  }
  std::printf("memory after %d trials: %.1f MB resident\n", trials,
              Footprint::of(program.pid()).residentMegabytes);

  SlotSwitch slotSwitch(desktop, window);
  std::vector<double> times;
  for (int i = 0; i < keys; ++i)
    times.push_back(slotSwitch.measure());
  reportMedian("key to changed frame", times);

  desktop.minimise(window);
  recorder.waitForMore(2 * rate);
  reportProcessor("minimised", processorSeconds(recorder, program, seconds / 2), seconds / 2);

  const auto sound = recorder.stop();
  if (std::all_of(sound.l.begin(), sound.l.end(), [](auto sample) { return sample == 0; }))
    throw std::runtime_error("nothing was played");
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: velto_in_use PROGRAM BARE [KEYS [SECONDS]]\n", stderr);
    return 2;
  }
  try {
    run(argv[1], argv[2], argc > 3 ? std::max(std::atoi(argv[3]), 1) : 60,
        argc > 4 ? static_cast<std::size_t>(std::max(std::atoi(argv[4]), 2)) : 20);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
