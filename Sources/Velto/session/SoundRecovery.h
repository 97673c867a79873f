// Decides when to retry lost sound and when to report an outage.
#pragma once

#include <chrono>
#include <optional>

namespace velto {

// An outage begins when sound that should play stops or does not start, and ends when it plays. It
// is reported once, as soon as an opening has failed or has taken `openingPatience`. Lost sound is
// retried at once, then after 0.5 s, and every second.
//
// The caller supplies the time. Main thread only.
class SoundRecovery {
public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::milliseconds shortestWait{500};
  static constexpr std::chrono::milliseconds longestWait{1000};
  // An opening that takes longer counts as an outage: the sound server does not answer.
  static constexpr std::chrono::milliseconds openingPatience{2000};

  enum class Sound {
    plays,
    ready,   // the output is open, but nothing has been loaded into it
    opening, // the output is being opened
    refused, // the last opening failed
    lost,    // the output has failed, or has not been requested
  };

  struct Step {
    bool load = false;   // load the slots again: plays them, or requests the output
    bool report = false; // report that there is no sound

    bool operator==(const Step&) const = default;
  };

  // What to do now. Call while sound should play.
  [[nodiscard]] Step next(Sound sound, Time now);

  // Call while no sound should play. Does not end an outage.
  void rest() { openingSince_.reset(); }

private:
  [[nodiscard]] bool reportOnce();
  [[nodiscard]] bool tryAgain(Time now);

  bool isReported_ = false;
  std::optional<Time> openingSince_;
  std::optional<Time> nextTry_; // nullopt before the first try of an outage
  std::chrono::milliseconds wait_ = shortestWait;
};

} // namespace velto
