// JSON strings (RFC 8259).
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velto::JSONStrings {

struct Token {
  std::string_view value;
  std::size_t length; // of the token, with its quotes, in bytes
};

// The string at the beginning of `text`, which begins with a quote; nullopt if it is malformed: not
// closed, not UTF-8, with a control character, an unknown escape or half a surrogate pair. The
// value lies in `text` or in `buffer`. Any thread.
[[nodiscard]] std::optional<Token> first(std::string_view text, std::string& buffer);

} // namespace velto::JSONStrings
