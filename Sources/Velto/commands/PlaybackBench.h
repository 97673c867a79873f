// Runs the player, so that other tools can measure its load.
#pragma once

#include "OutputDevice.h"

namespace velto::PlaybackBench {

// Runs the player on devices from `makeDevice` for 25 seconds, with a fixed trial if `loaded`, else
// idle. Returns exit status 0, also without sound. If the output takes long to open, the time is
// cut short: it ends within 27 s. A signal to end the process ends it with a fade, and with the
// status of that signal. Main thread only.
int run(bool loaded, OutputDeviceFactory makeDevice);

} // namespace velto::PlaybackBench
