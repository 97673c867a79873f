// Statistics, encoding and decoding of a full record, compared with a pass over its rows or bytes;
// recording an answer.

#include "Bands.h"
#include "Coding.h"
#include "Grading.h"
#include "Profile.h"
#include "Statistics.h"
#include "Trial.h"
#include "UUID.h"
#include "Xorshift64.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <optional>
#include <string>

namespace velto::benchmarks {
namespace {

constexpr std::int64_t fullRecord = 5000; // rows that a profile keeps

// `count` answers, `secondsBetween` apart, the last one now.
Stored recordOf(std::int64_t count, double secondsBetween) {
  const double now = Date::now().secondsSinceReferenceDate;
  Xorshift64 generator(1);
  Stored stored;
  for (std::int64_t i = 0; i < count; ++i) {
    const auto index = static_cast<std::size_t>(i);
    Attempt attempt{.id = UUID::random(),
                    .date = {now - secondsBetween * static_cast<double>(count - 1 - i)},
                    .drill = Drill::allCases[index % Drill::allCases.size()],
                    .material = Material::allCases[index % Material::allCases.size()],
                    .difficulty = 50,
                    .correct = generator.nextUnit() < 0.7,
                    .error = generator.nextUnit(),
                    .bandIndex = std::nullopt};
    const std::uint64_t band = generator.next() % Bands::centres.size();
    if (attempt.drill == Drill::frequency)
      attempt.bandIndex = static_cast<std::int64_t>(band);
    stored.attempts.push_back(attempt);
  }
  return stored;
}

void statistics(benchmark::State& state) {
  const Stored record = recordOf(state.range(0), static_cast<double>(state.range(1)));
  const Date now = Date::now();
  for (auto _ : state)
    benchmark::DoNotOptimize(Statistics::compute(record.attempts, record.lifetime, now));
}
// All answers today, and spread over a year.
BENCHMARK(statistics)
    ->ArgNames({"rows", "seconds between"})
    ->Args({200, 0})
    ->Args({2000, 0})
    ->Args({fullRecord, 0})
    ->Args({fullRecord, 6000})
    ->Unit(benchmark::kMicrosecond);

void rowPass(benchmark::State& state) {
  const Stored record = recordOf(fullRecord, 0);
  for (auto _ : state)
    benchmark::DoNotOptimize(
        std::accumulate(record.attempts.begin(), record.attempts.end(), 0.0,
                        [](double sum, const Attempt& attempt) { return sum + attempt.error; }));
}
BENCHMARK(rowPass)->Name("statistics/floor: a sum over the rows")->Unit(benchmark::kMicrosecond);

void save(benchmark::State& state) {
  const Stored record = recordOf(fullRecord, 6000);
  for (auto _ : state)
    benchmark::DoNotOptimize(Coding::encode(record));
}
BENCHMARK(save)->Unit(benchmark::kMillisecond);

// What the main thread spends on an answer to a full record. `state.range(0)`: another program has
// changed the file before.
void answer(benchmark::State& state) {
  const auto folder = std::filesystem::temp_directory_path() / ("velto-" + UUID::random().string());
  std::filesystem::create_directory(folder);
  const ProfileLocation location{folder, std::nullopt};
  const std::string full = Coding::encode(recordOf(fullRecord, 6000)).value();
  std::ofstream(location.file()) << full;
  {
    Profile profile(location);
    const Trial trial{.drill = Drill::frequency, .targetFreq = 1000};
    for (auto _ : state) {
      state.PauseTiming();
      profile.waitForDisk(std::chrono::minutes(1));
      if (state.range(0) != 0)
        std::ofstream(location.file()) << full;
      state.ResumeTiming();
      profile.record(trial, Drills::grade(1000, trial));
    }
  }
  std::filesystem::remove_all(folder);
}
BENCHMARK(answer)->ArgName("merge due")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void load(benchmark::State& state) {
  const std::string bytes = Coding::encode(recordOf(fullRecord, 6000)).value();
  for (auto _ : state)
    benchmark::DoNotOptimize(Coding::decodeStored(bytes));
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes.size()) * state.iterations());
}
BENCHMARK(load)->Unit(benchmark::kMillisecond);

void bytePass(benchmark::State& state) {
  const std::string bytes = Coding::encode(recordOf(fullRecord, 6000)).value();
  for (auto _ : state) {
    std::uint64_t hash = 0;
    for (const char byte : bytes)
      hash = hash * 31 + static_cast<unsigned char>(byte);
    benchmark::DoNotOptimize(hash);
  }
}
BENCHMARK(bytePass)->Name("load/floor: a hash over the bytes")->Unit(benchmark::kMillisecond);

} // namespace
} // namespace velto::benchmarks
