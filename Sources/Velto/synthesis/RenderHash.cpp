#include "RenderHash.h"

#include <bit>
#include <string_view>

namespace velto {

RenderHash RenderHash::of(const Trial& trial, std::span<const Slot> slots) {
  RenderHash hash;
  for (const double value : {trial.difficulty, trial.targetFreq, trial.boostDB, trial.boostQ,
                             trial.targetLevelDB, trial.targetGRdB, trial.correlation})
    hash.add(value);
  hash.add(static_cast<std::uint64_t>(trial.oddSlot));
  for (const Slot& slot : slots) {
    hash.add(*slot.l);
    hash.add(*slot.r);
  }
  return hash;
}

RenderHash RenderHash::of(const Slot& slot) {
  RenderHash hash;
  hash.add(*slot.l);
  hash.add(*slot.r);
  return hash;
}

void RenderHash::addBytes(std::uint64_t value, int bytes) {
  constexpr std::uint64_t prime = 0x100000001b3;
  for (int i = 0; i < bytes; ++i)
    value_ = (value_ ^ ((value >> (8 * i)) & 0xff)) * prime;
}

void RenderHash::add(std::uint64_t value) {
  addBytes(value, sizeof value);
}

void RenderHash::add(double value) {
  add(std::bit_cast<std::uint64_t>(value));
}

void RenderHash::add(std::span<const float> samples) {
  add(static_cast<std::uint64_t>(samples.size()));
  for (const float sample : samples)
    addBytes(std::bit_cast<std::uint32_t>(sample), sizeof sample);
}

std::string RenderHash::text() const {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (int shift = 60; shift >= 0; shift -= 4)
    text += digits[(value_ >> shift) & 0xf];
  return text;
}

} // namespace velto
