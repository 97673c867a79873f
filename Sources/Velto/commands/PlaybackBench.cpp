#include "PlaybackBench.h"

#include "AudioEngine.h"
#include "Drill.h"
#include "Player.h"
#include "Rendering.h"
#include "Session.h"
#include "Trial.h"

#include <chrono>
#include <thread>

namespace velto {

int PlaybackBench::run(bool loaded) {
  Player player(std::make_unique<Engine>());
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
  std::this_thread::sleep_for(std::chrono::seconds(25));
  player.stop();
  return 0;
}

} // namespace velto
