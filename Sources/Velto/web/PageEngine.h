// The sound output of the practice page.
#pragma once

#include "PageHost.h"
#include "PlaybackEngine.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velto {

// Plays through a mixer that the browser runs on its audio thread. Cannot wait: use it with
// Player::Opening::inBackground.
class PageEngine final : public PlaybackEngine {
public:
  // `host` outlives the engine.
  explicit PageEngine(PageHost& host) : host_(host) {}

  // The output that was requested is open, and is heard `latencySeconds` late.
  void opened(double latencySeconds);
  // It could not be opened, or has closed.
  void failed(std::string reason);

  // As startAtOnce(), with an error if the output is not open.
  [[nodiscard]] std::optional<std::string> start() override;
  [[nodiscard]] bool startAtOnce() override;
  void whenOpeningEnds(std::function<void()> call) override { openingEnds_ = std::move(call); }
  [[nodiscard]] Output output() const override { return output_; }
  [[nodiscard]] std::optional<std::string> error() const override { return error_; }
  [[nodiscard]] bool isRunning() const override { return isStarted_ && output_ == Output::open; }
  void play(std::vector<Slot> slots, std::int64_t chosen, double secondsToSound,
            Switching switching) override;
  void switchTo(std::int64_t chosen) override { host_.switchTo(chosen); }
  void stop() override;
  // Always 0: the page does not ask the audio thread.
  [[nodiscard]] float volume(std::size_t) const override { return 0; }
  [[nodiscard]] BusFormat outputFormat() const override;
  // Nothing is captured.
  [[nodiscard]] Samples captureLeft(std::chrono::milliseconds) override { return {}; }

private:
  PageHost& host_;
  Output output_ = Output::closed;
  std::optional<std::string> error_;
  std::function<void()> openingEnds_;
  double latencySeconds_ = 0;
  bool isStarted_ = false;
};

} // namespace velto
