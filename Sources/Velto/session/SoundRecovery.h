// When to try for lost sound again, and when to report an outage.
#pragma once

#include <chrono>
#include <optional>

namespace velto {

// An outage begins when sound that is due breaks off or does not start, and ends when it plays. It
// is reported once, when an opening has failed or has taken suspiciously long. Lost sound is tried
// at once, then after 0.5 s, 1 s, and every 2 s.
//
// The caller supplies the time. Main thread only.
class SoundRecovery {
public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::milliseconds shortestWait{500};
  static constexpr std::chrono::milliseconds longestWait{2000};
  // An opening that takes longer counts as an outage: the sound server does not answer.
  static constexpr std::chrono::milliseconds openingPatience{2000};

  enum class Sound {
    plays,
    ready,   // the output is open, but nothing has been loaded into it
    opening, // the output is being opened
    refused, // the last opening failed
    lost,    // the output broke, or nobody has asked for it
  };

  struct Step {
    bool load = false;   // load the slots again: plays them, or asks for the output
    bool report = false; // say that there is no sound

    bool operator==(const Step&) const = default;
  };

  // What to do now about sound that is due.
  [[nodiscard]] Step next(Sound sound, Time now);

  // Sound is not due for now. An outage continues.
  void rest() { openingSince_.reset(); }

private:
  [[nodiscard]] bool reportOnce();
  [[nodiscard]] bool tryAgain(Time now);

  bool isReported_ = false;
  std::optional<Time> openingSince_;
  std::optional<Time> nextTry_; // none: no try yet in this outage
  std::chrono::milliseconds wait_ = shortestWait;
};

} // namespace velto
