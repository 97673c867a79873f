// The gates of the probe, in order of execution.
#pragma once

namespace velto::ProbeGates {

// Each prints a header line and then, by Probe::check(), all of its checks, even after a failure.
// Main thread only.
void frequency();
void level();
void dynamics();
void polarity();
void staircase();
void record(); // roll-up and streak; uses a temporary record
void grading();
void determinism();

} // namespace velto::ProbeGates
