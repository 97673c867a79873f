// Trials as files: a WAV file per slot, and what is true of them as JSON.
#pragma once

#include "Signals.h"
#include "Trial.h"

#include <filesystem>
#include <string>

namespace velto::Lab::TrialFiles {

// Renders a trial as Velto plays it, but 6 dB louder, and writes NAME-A.wav and NAME-B.wav, or
// NAME-1.wav to NAME-3.wav for polarity, and NAME.json. The JSON has the trial, the right answer,
// whether it was rendered as with --fair (`noise` is audible), the hash of the trial and that of
// each slot (RenderHash), and measured levels. The same trial gives the same bytes. `folder`
// exists. Throws Failure. Main thread only.
void write(const std::filesystem::path& folder, const std::string& name, const Trial& trial,
           Noise noise);

// Writes what a teacher plays: for each of the 27 bands three boosts of Q 2, as
// "1000Hz+6dB.wav", the same sound without a boost as "flat.wav", and explore.json. All have the
// same source. Shows its progress.
void writeBands(const std::filesystem::path& folder, Material material, std::uint64_t seed,
                Noise noise);

} // namespace velto::Lab::TrialFiles
