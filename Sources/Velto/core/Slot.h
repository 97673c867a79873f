// Rendered audio that is shared and never written again.
#pragma once

#include "DSP.h"

#include <memory>
#include <span>
#include <utility>

namespace velto {

// Samples that are never written again: a pointer to them that keeps them alive. Copies share the
// samples, and several buffers may lie in one allocation. As thread-safe as std::shared_ptr.
class SharedSamples {
public:
  SharedSamples() = default;
  // The samples live as long as `owner`.
  SharedSamples(std::shared_ptr<const void> owner, std::span<const float> samples)
      : owner_(std::move(owner)), samples_(samples) {}
  explicit SharedSamples(Samples samples);

  // Whether there is a buffer, be it one without samples.
  explicit operator bool() const { return owner_ != nullptr; }
  // What keeps the samples alive.
  [[nodiscard]] const std::shared_ptr<const void>& owner() const { return owner_; }
  const std::span<const float>& operator*() const { return samples_; }
  const std::span<const float>* operator->() const { return &samples_; }

  // Whether both point to the same samples, like other pointers.
  friend bool operator==(const SharedSamples& a, const SharedSamples& b) {
    return a.samples_.data() == b.samples_.data() && a.samples_.size() == b.samples_.size();
  }

private:
  std::shared_ptr<const void> owner_;
  std::span<const float> samples_;
};

// One slot of a rendered trial: a left and a right buffer of equal length. Slots and channels that
// sound the same share one.
struct Slot {
  SharedSamples l, r;
};

} // namespace velto
