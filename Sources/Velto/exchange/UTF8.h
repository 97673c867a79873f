// Text in UTF-8.
#pragma once

#include <string_view>

namespace velto::UTF8 {

// True if `text` is well-formed (RFC 3629): neither overlong forms, surrogates nor stray bytes. Any
// thread.
[[nodiscard]] bool isValid(std::string_view text);

} // namespace velto::UTF8
