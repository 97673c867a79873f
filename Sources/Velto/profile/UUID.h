// Identifiers of recorded answers.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velto {

// 128 bits, written as "9F0C6B1E-3C4B-4E0B-8B57-0B6B0B7B3D2A" (RFC 4122).
struct UUID {
  std::array<std::uint8_t, 16> bytes{};

  static constexpr std::size_t textLength = 36;

  // A random UUID (version 4). Any thread.
  [[nodiscard]] static UUID random();

  // Parses the form above, with hexadecimal digits of either case and any version. nullopt for
  // anything else.
  [[nodiscard]] static std::optional<UUID> fromString(std::string_view text);

  // In upper case.
  [[nodiscard]] std::string string() const;

  bool operator==(const UUID&) const = default;
};

} // namespace velto
