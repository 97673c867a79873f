#include "SelfTest.h"

#include "Numbers.h"
#include "Player.h"
#include "Report.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <utility>

namespace velto {

namespace {

constexpr std::int64_t audible = 1; // the boosted slot

Trial boostedNoise() {
  return {.drill = Drill::frequency,
          .seed = 31337,
          .material = Material::pinkNoise,
          .slots = 2,
          .targetFreq = 800,
          .boostDB = 12,
          .boostQ = 2};
}

// The left channel of the mixer's output during the next 1.2 s, which outlast the start delay and
// the fade-in.
Samples captureLeft(Engine& engine) {
  constexpr std::chrono::milliseconds duration{1200};
  constexpr std::size_t bufferFrames = 4096;
  std::mutex mutex;
  Samples captured; // guarded by mutex while the tap is installed
  const auto end = std::chrono::steady_clock::now() + duration;
  engine.installTap(bufferFrames, [&mutex, &captured](const TapBuffer& buffer) {
    const auto left = buffer.channels.front();
    const std::lock_guard lock(mutex);
    captured.insert(captured.end(), left.begin(), left.end());
  });
  std::this_thread::sleep_until(end);
  engine.removeTap();
  const std::lock_guard lock(mutex);
  return captured;
}

} // namespace

bool Player::selfTest(OutputDeviceFactory makeDevice) {
  Player player(std::move(makeDevice));
  player.load(Drills::render(boostedNoise(), 2.0), audible);
  if (!player.engine().isRunning()) {
    Report::line("FAIL  engine did not start");
    return false;
  }
  const Samples captured = captureLeft(player.engine());
  player.stop();
  const BusFormat bus = Engine::outputFormat();
  Report::line("output bus: " + Numbers::fixed(bus.sampleRateHz, 0) + " Hz, " +
               std::to_string(bus.channelCount) + " ch");
  Report::line("captured  : " + std::to_string(captured.size()) + " frames");
  return SelfTest::judge(captured);
}

bool SelfTest::judge(std::span<const float> captured) {
  constexpr std::size_t leastFrames = 20000;
  if (captured.size() <= leastFrames) {
    Report::line("FAIL  nothing came off the mixer");
    return false;
  }
  const double rms = Measure::rmsDB(captured);
  const double peak = Measure::peakDB(captured);
  Report::line("level     : " + Numbers::fixed(rms, 2) + " dB RMS, " + Numbers::fixed(peak, 2) +
               " dB peak");
  const bool passed = peak < 0 && -32 < rms && rms < -12;
  Report::line(passed ? "PASS  signal reaches the output bus at the expected level"
                      : "FAIL  level off - signal is not what was scheduled");
  return passed;
}

} // namespace velto
