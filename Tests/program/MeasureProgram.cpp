// Prints how soon the program's sound answers a key, without checking it. Run on a private desk on
// an otherwise idle machine.
#include "kit/Alignment.h"
#include "kit/Desktop.h"
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

void run() {
  Desktop desktop;
  Recorder recorder;
  ProgramRunner program(VELTO_PROGRAM, {"--drill", "level", "--appearance", "light"});
  const WindowId window = desktop.waitForWindow("MORLA Velto", program.pid());
  desktop.waitForActive(window);
  recorder.waitForMore(48000);
  report("slot key to the first changed frame in the recording",
         repeated(10, [&] { return slotSwitch(desktop, recorder); }), "ms");
  report("n to the first frame of the next trial in the recording",
         repeated(10, [&] { return nextTrial(desktop, recorder); }), "ms");
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
