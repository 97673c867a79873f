// Players on an output of the test's.
#pragma once

#include "AudioEngine.h"
#include "Player.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>

namespace velto::kit {

[[nodiscard]] inline std::unique_ptr<Player>
makePlayer(OutputDeviceFactory makeDevice,
           std::chrono::milliseconds closeDelay = Engine::defaultCloseDelay,
           Player::Opening opening = Player::Opening::awaited) {
  return std::make_unique<Player>(std::make_unique<Engine>(std::move(makeDevice), closeDelay),
                                  opening);
}

// A player whose engine a test can reach.
class TestPlayer : public Player {
public:
  // Player has no virtual destructor.
  static void* operator new(std::size_t) = delete;

  explicit TestPlayer(OutputDeviceFactory makeDevice = systemOutput(),
                      std::chrono::milliseconds closeDelay = Engine::defaultCloseDelay,
                      Opening opening = Opening::awaited)
      : TestPlayer(new Engine(std::move(makeDevice), closeDelay), opening) {}

  [[nodiscard]] Engine& engine() { return engine_; }

private:
  TestPlayer(Engine* engine, Opening opening)
      : Player(std::unique_ptr<PlaybackEngine>(engine), opening), engine_(*engine) {}

  Engine& engine_;
};

} // namespace velto::kit
