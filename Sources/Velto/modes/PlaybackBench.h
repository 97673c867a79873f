// A load to measure the player with from outside.
#pragma once

namespace velto::PlaybackBench {

// Runs the player for 25 seconds, with a fixed trial loaded or idle, and returns the exit status 0.
// Main thread only.
int run(bool loaded);

} // namespace velto::PlaybackBench
