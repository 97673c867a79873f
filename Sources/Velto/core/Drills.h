// The training model: drills, trials, grading, the staircase, and the audio of a trial.
//
// Plain values and pure functions. Any thread but the audio thread: values hold strings, and
// rendering takes milliseconds and allocates.
#pragma once

#include "Bands.h"
#include "Compressor.h"
#include "Drill.h"
#include "Grading.h"
#include "Rendering.h"
#include "Slot.h"
#include "Staircase.h"
#include "Trial.h"
