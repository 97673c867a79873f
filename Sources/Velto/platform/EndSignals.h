// Requests by signal to end the program: SIGTERM, SIGINT and SIGHUP.
#pragma once

#include <chrono>

namespace velto::EndSignals {

// From now on these signals no longer end the process; received() reports them. A signal that is
// ignored stays ignored. Call once. Returns a descriptor that becomes readable when a signal
// arrives; -1 on failure, after which the signals still end the process.
int hold();

// The number of the first signal that arrived since hold(); 0 if none did. Main thread only.
[[nodiscard]] int received();

// Waits for a signal until `time`. Returns received(). Main thread only.
[[nodiscard]] int waitUntil(std::chrono::steady_clock::time_point time);

// The exit status of a program that `signal` ended, as in a shell.
[[nodiscard]] constexpr int exitStatus(int signal) {
  return 128 + signal;
}

} // namespace velto::EndSignals
