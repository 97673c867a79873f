// The keys of the practice page.
#pragma once

#include "KeyMoves.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace velto::PageKeys {

// A key press as the browser reports it.
struct Press {
  std::string_view key;    // KeyboardEvent.key: "a", "ArrowLeft"
  bool isModified = false; // with Shift, Control, Alt or Meta, or on the numeric keypad
  bool isLocked = false;   // while caps lock is on
  bool isRepeat = false;   // because the key is held down
};

enum class Command : std::uint8_t {
  cycleSlot,
  firstSlot,
  secondSlot,
  thirdSlot,
  newTrial,
  advance
};

// What a key does wherever the focus is; nullopt if nothing.
[[nodiscard]] std::optional<Command> command(const Press& press);

// The move that a key requests of a scale or a group of choices; nullopt if none.
[[nodiscard]] std::optional<Move> move(const Press& press);

} // namespace velto::PageKeys
