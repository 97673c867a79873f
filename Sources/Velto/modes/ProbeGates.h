// The gates of the probe, in the order in which it runs them.
#pragma once

namespace velto::ProbeGates {

// Each prints its header line, then its checks by Probe::check, all of them whatever fails. Main
// thread only.
void frequency();
void level();
void dynamics();
void polarity();
void staircase();
void record(); // the roll-up and the streak; touches no practice record but its own
void grading();
void determinism();

} // namespace velto::ProbeGates
