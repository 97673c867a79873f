// The end of the process after a programming error.
#pragma once

#include <string_view>

namespace velto {

// Writes "Velto: " and `message` to standard error and aborts: for programming errors only.
[[noreturn]] void fatalError(std::string_view message);

} // namespace velto
