// A player whose engine a test can reach.
#pragma once

#include "AudioEngine.h"
#include "Player.h"

#include <chrono>
#include <memory>
#include <utility>

namespace velto::kit {

class TestPlayer : public Player {
public:
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
