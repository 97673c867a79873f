// velto_first_frame PROGRAM BARE [RUNS]
//
// Prints the time from exec to the first frame on the screen: of the program, and of BARE, which
// opens a window of the same size with one rectangle. The two alternate, so that both meet the same
// load. Run on a private desk.
#include "Median.h"

#include "kit/Desktop.h"
#include "kit/ProgramRunner.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace velto::kit;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t ground = 0xFAF3EF;

// Milliseconds until the light palette's background is on the screen. Both programs paint their
// first frame whole. Polls without waiting long, because the measured times are short.
double firstFrame(Desktop& desktop, const std::string& program) {
  const ProgramRunner runner(program, {"--appearance", "light"});
  std::optional<WindowId> window;
  while (!window || desktop.picture(*window, {4, 4, 1, 1}) != std::vector<std::uint32_t>{ground}) {
    std::this_thread::sleep_for(std::chrono::microseconds(300));
    if (!window)
      window = desktop.findWindow("MORLA Velto", runner.pid());
    if (Clock::now() - runner.startTime() > std::chrono::seconds(20))
      throw std::runtime_error(program + " shows no window");
  }
  return std::chrono::duration<double, std::milli>(Clock::now() - runner.startTime()).count();
}

void run(const std::string& program, const std::string& bare, int runs) {
  Desktop desktop;
  std::vector<double> own, floor;
  for (const std::string* warm : {&bare, &program}) // files into the cache
    static_cast<void>(firstFrame(desktop, *warm));
  for (int i = 0; i < runs; ++i) {
    floor.push_back(firstFrame(desktop, bare));
    own.push_back(firstFrame(desktop, program));
  }
  const double least = velto::reportMedian("a bare Qt Quick window", floor);
  const double median = velto::reportMedian("velto", own);
  std::printf("first frame: %.2f times a bare window\n", median / least);
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: velto_first_frame PROGRAM BARE [RUNS]\n", stderr);
    return 2;
  }
  try {
    run(argv[1], argv[2], argc > 3 ? std::max(std::atoi(argv[3]), 1) : 20);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
