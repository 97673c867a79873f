// Standard input, output and error.
//
// Main thread only.
#pragma once

#include <string_view>

namespace velto::StandardStreams {

// Call once, before anything is opened or printed. Ignores SIGPIPE, so that writes fail when the
// reader goes away. Replaces closed standard streams, so that no file opened later gets their
// descriptors.
void prepare();

// Writes all bytes, unbuffered. Waits while a pipe is full, even a non-blocking one. Returns 0, or
// errno on failure.
[[nodiscard]] int writeToOutput(std::string_view bytes);

// Writes to standard error in one attempt. Failures are ignored.
void writeToError(std::string_view bytes);

// True if standard error is a terminal.
[[nodiscard]] bool isErrorATerminal();

} // namespace velto::StandardStreams
