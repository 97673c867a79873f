// What the drum voices have in common in every loop: all of the kick, and of snare and hi-hat all
// but their noise.
#pragma once

#include <vector>

namespace velto {

// One value for each frame of a voice at 48000 Hz.
struct DrumVoices {
  std::vector<double> kick;
  std::vector<double> snareTone, snareEnvelope;
  std::vector<double> closedHatEnvelope, openHatEnvelope;

  // The tables, a third of a megabyte, made at the first call. Any thread.
  [[nodiscard]] static const DrumVoices& shared();

private:
  DrumVoices();
};

} // namespace velto
