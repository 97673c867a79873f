// Prints response times and resource use of the program, without checking them. Run on a private
// desk on an otherwise idle machine.
#include "kit/Alignment.h"
#include "kit/Desktop.h"
#include "kit/Footprint.h"
#include "kit/ProgramRunner.h"
#include "kit/Recorder.h"

#include "Numbers.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace velto;
using namespace velto::kit;
using Clock = std::chrono::steady_clock;

double milliseconds(Clock::duration duration) {
  return std::chrono::duration<double, std::milli>(duration).count();
}

void report(const std::string& what, std::vector<double> values, const std::string& unit) {
  std::sort(values.begin(), values.end());
  std::cout << what << ": median " << Numbers::fixed(values[values.size() / 2], 1) << ", worst "
            << Numbers::fixed(values.back(), 1) << ' ' << unit << " (" << values.size()
            << " runs)\n";
}

// Includes the recorder's own latency of about 20 ms.
double untilChange(Recorder& recorder, const std::function<bool(const Recording&)>& changed,
                   Clock::time_point from) {
  while (!changed(recorder.recording()))
    recorder.waitForMore(240);
  return milliseconds(Clock::now() - from);
}

// From exec to the first pixel in the window's own background colour.
double firstFrame(Desktop& desktop) {
  ProgramRunner program(VELTO_PROGRAM, {"--appearance", "light"});
  const WindowId window = desktop.waitForWindow("MORLA Velto", program.pid());
  while (desktop.picture(window, {4, 4, 1, 1}) != std::vector<std::uint32_t>{0xFAF3EF})
    desktop.waitUntil([&] { return desktop.isViewable(window); }, "the window is there");
  return milliseconds(Clock::now() - program.startTime());
}

// A slot switch: a frame of the loop recurs after 153600 frames unless the slot has changed.
double slotSwitch(Desktop& desktop, Recorder& recorder) {
  recorder.waitForMore(153600 + 24000);
  std::size_t at = recorder.frames();
  const auto pressed = Clock::now();
  desktop.press(Keys::space);
  static_cast<void>(untilChange(
      recorder,
      [&](const Recording& sound) {
        while (at < sound.frames() && sound.l[at] == sound.l[at - 153600])
          ++at;
        return at < sound.frames();
      },
      pressed));
  return milliseconds(recorder.arrival(at) - pressed);
}

double nextTrial(Desktop& desktop, Recorder& recorder) {
  const std::size_t begin = recorder.frames();
  const auto pressed = Clock::now();
  desktop.press(Keys::n);
  std::size_t first = 0;
  static_cast<void>(untilChange(
      recorder,
      [&](const Recording& sound) {
        const std::size_t silence = firstSilence(sound, begin, 2400);
        first = firstSound(sound, silence);
        return first < sound.frames();
      },
      pressed));
  const double duration = milliseconds(recorder.arrival(first) - pressed);
  recorder.waitForMore(24000);
  return duration;
}

template <typename Measure>
std::vector<double> repeated(int times, Measure measure) {
  std::vector<double> figures;
  for (int i = 0; i < times; ++i)
    figures.push_back(measure());
  return figures;
}

// Processor time of the program while `seconds` seconds are played.
double processorSeconds(Recorder& recorder, const ProgramRunner& program, std::size_t seconds) {
  const double before = Footprint::of(program.pid()).processorSeconds;
  recorder.waitForMore(seconds * 48000);
  return Footprint::of(program.pid()).processorSeconds - before;
}

void reportLoad(Desktop& desktop, Recorder& recorder, const ProgramRunner& program,
                WindowId window) {
  std::cout << "processor while playing: "
            << Numbers::fixed(100 * processorSeconds(recorder, program, 20) / 20, 2)
            << " % of a core over 20 s\nresident while playing: "
            << Numbers::fixed(Footprint::of(program.pid()).residentMegabytes, 1) << " MB\n";
  desktop.minimise(window);
  recorder.waitForMore(std::size_t{2} * 48000);
  std::cout << "processor while suspended: "
            << Numbers::fixed(processorSeconds(recorder, program, 10), 2) << " s over 10 s\n";
}

void run() {
  Desktop desktop;
  report("first frame after exec", repeated(12, [&] { return firstFrame(desktop); }), "ms");

  Recorder recorder;
  ProgramRunner program(VELTO_PROGRAM, {"--drill", "level", "--appearance", "light"});
  const WindowId window = desktop.waitForWindow("MORLA Velto", program.pid());
  desktop.waitForActive(window);
  recorder.waitForMore(48000);
  report("slot key to the first changed frame in the recording",
         repeated(10, [&] { return slotSwitch(desktop, recorder); }), "ms");
  report("n to the first frame of the next trial in the recording",
         repeated(10, [&] { return nextTrial(desktop, recorder); }), "ms");
  reportLoad(desktop, recorder, program, window);
}

} // namespace

int main() {
  try {
    run();
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
