// Times the renders that the practice page is compared with: as a browser compiles them, without
// AVX2.
//
//   velto_render_times BATCHES RENDERS
//
// Prints a line for each drill, without and with audible noise: its index, that of its material,
// seed, difficulty, 0 or 1 for the noise, and the milliseconds of a render: the least mean of
// BATCHES batches, in turns, of RENDERS renders each.
#include "ReferenceTrial.h"
#include "Rendering.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <vector>

using namespace velto;

namespace {

struct Job {
  Trial trial;
  Noise noise;
  double milliseconds = std::numeric_limits<double>::infinity();
};

double millisecondsOf(const Job& job, int renders) {
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < renders; ++i)
    if (Drills::render(job.trial, benchmarks::trialSeconds, job.noise).empty())
      std::abort();
  const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - begin;
  return passed.count() / renders;
}

} // namespace

int main(int count, char** arguments) {
  const int batches = count == 3 ? std::atoi(arguments[1]) : 0;
  const int renders = count == 3 ? std::atoi(arguments[2]) : 0;
  if (batches < 1 || renders < 1) {
    std::fputs("usage: velto_render_times BATCHES RENDERS\n", stderr);
    return 2;
  }
  std::vector<Job> jobs;
  for (const Noise noise : {Noise::asDrawn, Noise::audible})
    for (const Drill drill : Drill::allCases)
      jobs.push_back({benchmarks::trialOf(drill), noise});
  for (int batch = 0; batch < batches; ++batch)
    for (Job& job : jobs)
      job.milliseconds = std::min(job.milliseconds, millisecondsOf(job, renders));
  for (const Job& job : jobs)
    std::printf("%d %d %" PRIu64 " %.17g %d %.3f\n", static_cast<int>(Drill::Case(job.trial.drill)),
                static_cast<int>(Material::Case(job.trial.material)), job.trial.seed,
                job.trial.difficulty, job.noise == Noise::audible ? 1 : 0, job.milliseconds);
}
