// Immutable, shared audio of rendered trials.
#pragma once

#include "DSP.h"

#include <memory>
#include <span>
#include <utility>

namespace velto {

// Shared ownership of immutable samples. Copies share the samples, and several buffers may share
// one allocation. As thread-safe as std::shared_ptr.
class SharedSamples {
public:
  SharedSamples() = default;
  // `owner` keeps `samples` alive.
  SharedSamples(std::shared_ptr<const void> owner, std::span<const float> samples)
      : owner_(std::move(owner)), samples_(samples) {}
  explicit SharedSamples(Samples samples);

  // True if there is a buffer, even an empty one.
  explicit operator bool() const { return owner_ != nullptr; }
  // What keeps the samples alive.
  [[nodiscard]] const std::shared_ptr<const void>& owner() const { return owner_; }
  const std::span<const float>& operator*() const { return samples_; }
  const std::span<const float>* operator->() const { return &samples_; }

  // Pointer equality: true if both refer to the same samples.
  friend bool operator==(const SharedSamples& a, const SharedSamples& b) {
    return a.samples_.data() == b.samples_.data() && a.samples_.size() == b.samples_.size();
  }

private:
  std::shared_ptr<const void> owner_;
  std::span<const float> samples_;
};

// One slot of a rendered trial: left and right buffers of equal length. Identical slots and
// channels share a buffer.
struct Slot {
  SharedSamples l, r;
};

} // namespace velto
