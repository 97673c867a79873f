#include "Player.h"

#include "FatalError.h"
#include "Numbers.h"
#include "Rendering.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <limits>
#include <utility>
#include <vector>

namespace velto {

namespace {

void checkPlayable(const Slot& slot) {
  if (!slot.l || !slot.r)
    fatalError("a slot without buffers cannot be played");
  if (slot.l->size() != slot.r->size())
    fatalError("the left and right buffers of a slot differ in length");
  if (slot.l->size() > std::numeric_limits<std::uint32_t>::max())
    fatalError("a slot is too long to be played");
}

} // namespace

Player::Player(std::unique_ptr<PlaybackEngine> engine, Opening opening)
    : engine_(std::move(engine)),
      opening_(opening), nodes_{PlayerNode(*engine_, 0), PlayerNode(*engine_, 1),
                                PlayerNode(*engine_, 2)} {}

void Player::load(std::span<const Slot> slots, std::int64_t startAt, Switching switching) {
  const auto playable = slots.first(std::min(slots.size(), nodeCount));
  std::for_each(playable.begin(), playable.end(), checkPlayable);
  stop();
  if (!startEngine())
    return;
  engine_->play({playable.begin(), playable.end()}, startAt, startDelaySeconds, switching);
  current_ = startAt;
  isPlaying_ = true;
}

bool Player::startEngine() {
  if (opening_ == Opening::inBackground)
    return engine_->startAtOnce();
  const auto error = engine_->start();
  if (error)
    reportFailure(*error);
  return !error;
}

void Player::reportFailure(const std::string& reason) {
  std::cerr << "Velto: engine start failed - " + reason + "\n";
}

void Player::switchTo(std::int64_t slot) {
  if (!isPlaying_ || slot >= static_cast<std::int64_t>(nodeCount))
    return;
  current_ = slot;
  engine_->switchTo(slot);
}

void Player::stop() {
  engine_->stop();
  isPlaying_ = false;
}

bool Player::selfTest(std::unique_ptr<PlaybackEngine> engine, const SelfTest::Print& print) {
  Player player(std::move(engine));
  player.load(Drills::render(SelfTest::trial(), 2.0), SelfTest::audibleSlot);
  if (!player.isRunning()) {
    print("FAIL  engine did not start");
    return false;
  }
  // Longer than the start delay and the fade-in.
  const Samples captured = player.engine_->captureLeft(std::chrono::milliseconds(1200));
  player.stop();
  const BusFormat bus = player.engine_->outputFormat();
  print("output bus: " + Numbers::fixed(bus.sampleRateHz, 0) + " Hz, " +
        std::to_string(bus.channelCount) + " ch");
  print("captured  : " + std::to_string(captured.size()) + " frames");
  return SelfTest::judge(captured, print);
}

} // namespace velto
