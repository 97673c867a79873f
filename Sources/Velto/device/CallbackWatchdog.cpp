#include "CallbackWatchdog.h"

#include <algorithm>

namespace velto {

bool CallbackWatchdog::isSilent(std::uint64_t callbacks, Time now) {
  const std::lock_guard lock(mutex_);
  if (isSilent_)
    return true;
  if (callbacks != callbacks_)
    silence_ = {};
  else
    silence_ += std::min<Time::duration>(std::max(now, last_) - last_, longestStep);
  callbacks_ = callbacks;
  last_ = now;
  isSilent_ = silence_ >= (callbacks < startCallbacks ? startPatience_ : patience);
  return isSilent_;
}

} // namespace velto
