// Hashes that tell whether two machines computed the same samples.
//
// Any thread but the audio thread: a pass over all samples.
#pragma once

#include "Slot.h"
#include "Trial.h"

#include <cstdint>
#include <span>
#include <string>

namespace velto {

// FNV-1a with 64 bits (G. Fowler, L. C. Noll, K.-P. Vo), over the bytes of little-endian numbers.
class RenderHash {
public:
  // The targets of a trial, then every slot.
  [[nodiscard]] static RenderHash of(const Trial& trial, std::span<const Slot> slots);
  // One slot.
  [[nodiscard]] static RenderHash of(const Slot& slot);

  // The number of samples, then their bits.
  void add(std::span<const float> samples);
  void add(double value);
  void add(std::uint64_t value);

  // 16 hexadecimal digits.
  [[nodiscard]] std::string text() const;

private:
  void addBytes(std::uint64_t value, int bytes);

  std::uint64_t value_ = 0xcbf29ce484222325;
};

} // namespace velto
