// Precomputed tables of the drum voices, shared by all loops. The kick is complete. Snare and
// hi-hat lack their noise, which differs for each hit.
#pragma once

#include <vector>

namespace velto {

// One value per frame at 48000 Hz.
struct DrumVoices {
  std::vector<double> kick;
  std::vector<double> snareTone, snareEnvelope;
  std::vector<double> closedHatEnvelope, openHatEnvelope;

  // The tables (344 kB), built on first use. Any thread.
  [[nodiscard]] static const DrumVoices& shared();

private:
  DrumVoices();
};

} // namespace velto
