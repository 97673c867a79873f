// Standard input, output and error.
//
// Main thread only.
#pragma once

#include <string_view>

namespace velto::StandardStreams {

// Call once, before anything is opened or printed. A reader that goes away then makes a write fail
// instead of ending the process. A closed standard stream is replaced, so that no file that is
// opened later takes its descriptor.
void prepare();

// Writes all bytes, unbuffered. Waits for the reader of a full pipe, also of a non-blocking one.
// Returns 0 or the errno value of the failure.
[[nodiscard]] int writeToOutput(std::string_view bytes);

// Writes to standard error once; failures are ignored.
void writeToError(std::string_view bytes);

} // namespace velto::StandardStreams
