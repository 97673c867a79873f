#include "PlaybackBench.h"

#include "AudioEngine.h"
#include "Drill.h"
#include "EndSignals.h"
#include "Player.h"
#include "Rendering.h"
#include "Session.h"
#include "Trial.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace velto {

int PlaybackBench::run(bool loaded, OutputDeviceFactory makeDevice) {
  using namespace std::chrono_literals;
  EndSignals::hold();
  const auto begin = std::chrono::steady_clock::now();
  Player player(std::make_unique<Engine>(std::move(makeDevice)));
  if (loaded) {
    const Trial trial{.drill = Drill::frequency,
                      .seed = 9,
                      .material = Material::pinkNoise,
                      .slots = 2,
                      .targetFreq = 40,
                      .boostDB = 12,
                      .boostQ = 2};
    player.load(Drills::render(trial, Session::trialSeconds), 0);
  }
  // The rest of the 27 s is for an output that does not close.
  const int signal =
      EndSignals::waitUntil(std::min(std::chrono::steady_clock::now() + 25s, begin + 25300ms));
  player.stop();
  return signal == 0 ? 0 : EndSignals::exitStatus(signal);
}

} // namespace velto
