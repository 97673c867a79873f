#include "SoundRecovery.h"

#include <algorithm>
#include <utility>

namespace velto {

SoundRecovery::Step SoundRecovery::next(Sound sound, Time now) {
  if (sound == Sound::opening) {
    if (!openingSince_)
      openingSince_ = now;
    return {.load = false, .report = now - *openingSince_ >= openingPatience && reportOnce()};
  }
  openingSince_.reset();
  switch (sound) {
  case Sound::plays:
    *this = {};
    return {};
  case Sound::ready:
    return {.load = true, .report = false};
  case Sound::refused: {
    // The failed opening counts as the first try, no matter who requested it.
    if (!nextTry_)
      nextTry_ = now + wait_;
    const bool load = tryAgain(now);
    return {.load = load, .report = reportOnce()};
  }
  default:
    return {.load = tryAgain(now), .report = false};
  }
}

bool SoundRecovery::reportOnce() {
  return !std::exchange(isReported_, true);
}

bool SoundRecovery::tryAgain(Time now) {
  if (nextTry_ && now < *nextTry_)
    return false;
  if (nextTry_)
    wait_ = std::min(2 * wait_, longestWait);
  nextTry_ = now + wait_;
  return true;
}

} // namespace velto
