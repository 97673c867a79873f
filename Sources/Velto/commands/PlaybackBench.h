// Runs the player, so that other tools can measure its load.
#pragma once

namespace velto::PlaybackBench {

// Runs the player for 25 seconds, with a fixed trial if `loaded`, else idle. Returns exit status 0.
// Main thread only.
int run(bool loaded);

} // namespace velto::PlaybackBench
