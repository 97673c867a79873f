// Termination after a fatal error.
#pragma once

#include <string_view>

namespace velto {

// Writes "Velto: " and `message` to standard error and aborts. For programming errors, and for an
// environment in which Velto cannot run at all.
[[noreturn]] void fatalError(std::string_view message);

} // namespace velto
